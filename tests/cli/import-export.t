Calibrations in and out.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/calibrations/imx477-measured.json $EXAMPLES/calibrations/imx708.json .
    $ imgtune import imx477-measured.json -o a.yaml
    Raspberry Pi form of libcamera, version 1: 10 locus points, 11 matrices
    method        2, blend of the tuned matrices, fitted through the blend
    tuned CTs     2360, 3700, 5920, 9050 K
    low light     saturation 0.6
    flash         0.5 of the way to the matrix at 5920 K, nearest 5600 K
    
    The library's matrix against the calibrated one: CIEDE2000 over 24 patches and all
    lights along the locus and up to 3.6 % beside it; * is chosen
      method     tuned matrices           CTs    mean   worst  patch and light
      blend      as calibrated              3    1.44    8.69  yellow at 5920 K, gains 3.6 % high
      blend      as calibrated              4    1.02    7.59  blue at 8451 K, gains 1.8 % low
      blend      as calibrated              5    1.02    7.59  blue at 8451 K, gains 1.8 % low
      blend      as calibrated              6    1.21   10.10  blue at 8451 K, gains 1.8 % low
      blend      as calibrated              7    1.23   10.40  blue at 8451 K, gains 1.8 % low
      blend      as calibrated              8    1.23   10.40  blue at 8451 K, gains 1.8 % low
      blend      fitted through the blend   3    0.78    5.06  blue at 5920 K, gains 3.6 % high
    * blend      fitted through the blend   4    0.70    5.38  blue at 5920 K, gains 3.6 % high
      blend      fitted through the blend   5    0.73    5.22  blue at 5920 K, gains 3.6 % high
      blend      fitted through the blend   6    0.76    5.02  blue at 8451 K, gains 1.8 % low
      blend      fitted through the blend   7    0.83    4.95  blue at 8451 K, gains 1.8 % low
      blend      fitted through the blend   8    0.84    5.02  blue at 8451 K, gains 1.8 % low
      polynomial as calibrated              3    2.07   11.53  yellow at 3870 K, gains 3.6 % low
      polynomial as calibrated              4    1.67    7.94  yellow at 3870 K, gains 3.6 % low
      polynomial as calibrated              5    1.48    6.64  yellow at 3870 K, gains 3.6 % low
      polynomial as calibrated              6    1.40    6.09  orange at 2360 K
      polynomial as calibrated              7    1.35    6.69  orange at 2360 K
      polynomial as calibrated              8    1.35    6.73  orange at 2360 K, gains 1.8 % low
      polynomial fitted to lights           3    1.38    6.31  orange at 2360 K, gains 1.8 % low
    
    The chosen one in the calibrated lights; * is tuned; left out: made without that light
       kelvin     red    blue    mean   worst  patch         left out: mean, worst
    *    2360   1.664   3.232    0.64    2.22  red             3.03    7.76  clipped: an end
         2870   1.980   2.541    0.59    1.95  red             0.64    1.99
         2970   2.092   2.369    0.86    2.17  yellow          0.98    2.53
         3000   2.104   2.350    0.94    2.15  orange          1.11    2.66
    *    3700   2.375   2.031    1.13    2.70  orange          0.91    1.79
         3870   2.477   1.936    1.01    2.24  red             1.38    2.95
         4000   2.521   1.896    0.66    1.31  green           0.68    1.39
         4400   2.701   1.766    0.89    2.01  red             0.93    2.14
         4715   2.932   1.627    0.88    2.24  blue            1.24    3.78
    *    5920   3.217   1.496    1.29    4.27  blue            2.36    6.76
    *    9050   3.963   1.273    0.02    0.06  orange          3.86    9.12  clipped: an end
    
    Of 11 lights, the best two for the polynomial, 3000, 4715 K, give a mean of 1.49 and a worst patch of 8.15; all of them, 0.70 and 5.38: the others are worth their photographs.
    Of 11 lights, the best three for the blend, 2360, 4000, 9050 K, give a mean of 1.08 and a worst patch of 6.91; all of them, 0.70 and 5.38: the others are worth their photographs.
    The light that the others tell least of is 9050 K: made without it, a tuning has a mean of 3.86 there.
    $ imgtune import imx477-measured.json -o a.yaml
    imgtune: a.yaml: already exists; choose another file or pass --force
    [2]
    $ imgtune check a.yaml | tail -n 1
    a.yaml: 0 errors, 1 warning
    $ CTS=2360,3700,5920,9050
    $ imgtune export a.yaml --cts $CTS --form yaml -o b.yaml; head -n 5 b.yaml
    a.yaml: warning: only gains and matrices of the normal row have a place in a calibration; left out: low-light and flash rows, polynomials [C303]
    version: 1
    algorithms:
      - Awb:
          colourGains:
            - { ct: 2360, gains: [ 1.664062, 3.232422 ] }
    $ imgtune import b.yaml --name imx477-measured --method blend --fit points --cts $CTS -o c.yaml >/dev/null
    $ imgtune diff a.yaml c.yaml | grep normal
    [1]
    $ imgtune export a.yaml --cts 3000,4000 -o b.json
    a.yaml: error: 2 CTs named for 4 tuned ones [C302]
        try: name the CT of each
    [2]
    $ sed 's/"ct_curve"/"curve"/' imx708.json >mono.json; imgtune import mono.json -o mono.yaml; ls mono.yaml
    mono.json:5: error: no grey locus: neither rpi.awb with a ct_curve nor Awb with colourGains [C002]
        try: calibrate white balance first, or give a table; sensors without a locus (monochrome, or without an infrared filter) cannot be imported
    ls: cannot access 'mono.yaml': No such file or directory
    [2]
    $ imgtune import imx708.json --cts 3000,4000,9000 -o mono.yaml
    imx708.json: warning: no matrix is calibrated at 3000 K; gains and matrix lie between its neighbours', in mired [C203]
    imx708.json: warning: no matrix is calibrated at 4000 K; gains and matrix lie between its neighbours', in mired [C203]
    imx708.json: error: no light of 9000 K is calibrated [C202]
        try: name CTs from 2964 to 7590 K
    [2]
    $ imgtune import imx708.json -o d.yaml --json --method polynomial | head -n 4
    {
      "findings": [],
      "method": "polynomial",
      "fit": "lights",
    $ imgtune import imx708.json -o e.yaml --method polynomial --fit blend
    imgtune: a polynomial is not fitted through the blend; choose the fit points, or leave it out
    [2]
    $ imgtune import imx708.json -o e.yaml --cts 2964,4640,7590 --report e.html | grep '^\*\|tuned CTs '
    tuned CTs     2964, 4640, 7590 K, as named
    * blend      fitted through the blend   3    0.61    3.20  orange at 5910 K, gains 3.6 % high
    *    2964   1.342   3.113    0.98    2.51  orange          2.14    5.75  clipped: an end
    *    4640   1.936   1.846    1.13    2.74  orange          0.47    1.14
    *    7590   2.600   1.445    1.28    2.92  orange yellow   2.87    7.21  clipped: an end
