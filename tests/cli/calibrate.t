Photographs to a tuning.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/captures/* .
    $ imgtune calibrate *_*k.dng --corners corners.csv --flat flat.dng --reference reference.csv --method polynomial -o phone.yaml --calibration phone.json
    reference     reference.csv
                                    gain           CIEDE2000 left over
    kelvin  light              shots    red   blue   mean  worst  at             clipped    noise  slope    glare  uneven
      2856  a_2856k                1  1.795  2.900   2.38   6.74  cyan                 0    3.0 %   1.00    0.0 %     6 %
      4000  tl84_4000k             1  2.352  2.188   1.50   4.47  cyan                 0    1.8 %   1.00    0.1 %     3 %
      5003  d50_5003k              1  2.688  1.759   1.19   3.40  cyan                 0    2.8 %   1.00    0.0 %     6 %
      6504  d65_6504k              1  3.037  1.484   0.86   2.01  cyan                 0    1.9 %   0.99    0.1 %     4 %
    kelvin are labels: no picture shows them, and the library tells lights by gains
    method        1, polynomial of the gain, fitted to lights
    tuned CTs     2856, 4000, 6504 K
    low light     saturation 0.6
    flash         0.5 of the way to the matrix at 6504 K, nearest 5600 K
    
    The library's matrix against the calibrated one: CIEDE2000 over 24 patches and all
    lights along the locus and up to 3.6 % beside it; * is chosen
      method     tuned matrices           CTs    mean   worst  patch and light
      polynomial as calibrated              3    0.62    3.94  blue at 4000 K
      polynomial as calibrated              4    0.61    4.27  blue at 4000 K, gains 1.8 % high
    * polynomial fitted to lights           3    0.65    2.70  blue at 4000 K, gains 1.8 % high
    
    The chosen one in the calibrated lights; * is tuned; left out: made without that light
       kelvin     red    blue    mean   worst  patch         left out: mean, worst
    *    2856   1.795   2.900    1.05    2.58  blue            1.36    3.50  clipped: an end
    *    4000   2.352   2.188    1.05    2.63  blue            2.15    5.65
         5003   2.688   1.758    0.94    2.22  blue            1.02    2.39
    *    6504   3.037   1.484    0.97    2.48  blue            1.68    4.56  clipped: an end
    
    Of 4 lights, the best two for the polynomial, 4000, 5003 K, give a mean of 0.55 and a worst patch of 3.99; all of them, 0.65 and 2.70: these few suffice.
    Of 4 lights, the best three for the blend, 2856, 4000, 6504 K, give a mean of 0.55 and a worst patch of 2.91; all of them, 0.65 and 2.70: these few suffice.
    The light that the others tell least of is 4000 K: made without it, a tuning has a mean of 2.15 there.
    $ imgtune check phone.yaml | tail -n 1
    phone.yaml: no findings
    $ imgtune import phone.json --method polynomial --name phone -o again.yaml >/dev/null 2>&1; imgtune diff phone.yaml again.yaml | grep -v Poly22
    [1]
    $ imgtune replay phone.yaml $EXAMPLES/imx477-walk.csv --only ccm --every 200 | cut -d, -f1-12
    frame,lv,cct,full_r,full_g,full_b,awb_r,awb_g,awb_b,flash,scene,profile
    1,151,5475,1773,512,683,1773,512,683,0,0,0
    201,118,7635,1995,512,569,1995,512,569,0,0,0
    401,60,3506,1281,512,918,1292,512,907,0,0,0
    601,38,2530,981,512,1395,1016,512,1334,0,0,0
    801,20,1936,715,512,2041,760,512,1891,0,0,0
    $ imgtune calibrate *_*k.dng --corners corners.csv --flat flat.dng --reference reference.csv --method polynomial --name phone -o - 2>/dev/null | cmp - phone.yaml
    $ imgtune calibrate d65_6504k.dng --corners corners.csv -o phone.yaml
    imgtune: phone.yaml: already exists; choose another file or pass --force
    [2]
    $ imgtune calibrate d65_6504k.dng -o one.yaml; ls one.yaml
    d65_6504k.dng: error: no corners are given [P101]
        try: write a line 'file,x1,y1,x2,y2,x3,y3,x4,y4' for it into the table of --corners: the outer corners of patches 1, 6, 24 and 19
    ls: cannot access 'one.yaml': No such file or directory
    [2]
    $ head -c 20000 d65_6504k.dng >cut_6504k.dng; sed 's/^d65/cut/' corners.csv >cut.csv
    $ imgtune calibrate cut_6504k.dng --corners cut.csv -o one.yaml
    imgtune: cut_6504k.dng: not a raw file that LibRaw reads, or cut off; give DNG or another raw file, a 16-bit TIFF or PNG (.tif, .png), or CSV of the 24 patch means
    [2]
    $ echo words >words_5000k.nef; echo words_5000k.nef,1,1,2,1,2,2,1,2 >words.csv
    $ imgtune calibrate words_5000k.nef --corners words.csv -o one.yaml
    imgtune: words_5000k.nef: not a raw file that LibRaw reads, or cut off; give DNG or another raw file, a 16-bit TIFF or PNG (.tif, .png), or CSV of the 24 patch means
    [2]
    $ cp d65_6504k.dng d65.dng; imgtune calibrate d65.dng --corners corners.csv -o one.yaml 2>&1 | grep -v P004
        try: the line is passed over
        try: the line is passed over
        try: the line is passed over
        try: the line is passed over
    d65.dng: error: nothing says the kelvin of its light, and no picture shows it [P001]
        try: put it into the name (d65_6500k.dng), or give --kelvin or --kelvins
    $ sed 's/27.7,24.0,167.2/27.7,24.0,60.2/' corners.csv >wrong.csv
    $ imgtune calibrate d65_6504k.dng --corners wrong.csv -o one.yaml 2>&1 | grep 'd65.*error'
    d65_6504k.dng: error: no chart can be measured at the corners: patches leave what is lit, are a few pixels small, or their greys are black or clipped [P102]
    $ imgtune calibrate d65_6504k.dng --corners corners.csv --weight teal=2 -o one.yaml
    imgtune: --weight 'teal=2': write PATCH=WEIGHT, the patch by name or number 1 to 24, the weight 0 to 1000
    [2]
    $ imgtune calibrate d65_6504k.dng --pick pick.html && grep -c '<h1>Corners of the chart' pick.html
    1
