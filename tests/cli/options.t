What each option changes, where no other session types it.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml a.yaml; cp $EXAMPLES/imx708-blend.yaml blend.yaml
    $ cp $EXAMPLES/imx477-dusk.csv dusk.csv; cp $EXAMPLES/calibrations/imx477-measured.json calibrated.json

Imports: what is not said is said by the calibration, the rows are divided, and of a stretch and an extrapolation is told.

    $ IMPORT='imgtune import calibrated.json --cts 2360,4000,9050 --method blend --fit points'
    $ $IMPORT -o named.yaml --name other >report.txt; head -n 4 named.yaml | grep name; grep -c clipped report.txt
    name: "other"
    2
    $ $IMPORT -o plain.yaml >plain.txt; $IMPORT -o divide.yaml --rows divide >divide.txt; cmp plain.txt divide.txt
    $ sed -i '/^name:/d' plain.yaml divide.yaml named.yaml; cmp plain.yaml divide.yaml; cmp plain.yaml named.yaml
    $ python3 - <<END
    > import json
    > c = json.load(open("calibrated.json"))
    > for m in c["rpi.ccm"]["ccms"]: m["ccm"][0] += 0.1
    > json.dump(c, open("off.json", "w"))
    > END
    $ for rows in divide diagonal; do ${IMPORT/calibrated/off} --rows $rows -o $rows.yaml --force 2>&1 >/dev/null | head -n 1; done
    off.json:1: warning: a row of the matrix at 2360 K sums to 1.1000, not 1; each row was divided by its sum [C110]
    off.json:1: warning: a row of the matrix at 2360 K sums to 1.1000, not 1; the diagonal takes what is missing [C110]
    $ imgtune diff divide.yaml diagonal.yaml | head -n 4
    ccm.rows.normal.0.matrix[0]: 820 -> 851
    ccm.rows.normal.0.matrix[1]: -110 -> -121
    ccm.rows.normal.0.matrix[2]: -198 -> -218
    ccm.rows.normal.1.matrix[0]: 1050 -> 1105
    $ $IMPORT -o low.yaml --low-light-saturation 1 --flash-share 0 >low.txt; grep 'low light\|flash' low.txt
    low light     saturation 1
    flash         0 of the way to the matrix at 4000 K, nearest 5600 K
    $ $IMPORT -o flash.yaml --flash-ct 2360 --flash-share 1 >flash.txt; grep 'flash  ' flash.txt
    flash         1 of the way to the matrix at 2360 K, nearest 2360 K
    $ $IMPORT --flash-share 1.5
    --flash-share: 1.5: allowed are 0 to 1
    Run with --help for more information.
    [2]
    $ $IMPORT -o stretched.yaml --stretch 1.5 --extrapolate 2>&1 | head -n 3
    Raspberry Pi form of libcamera, version 1: 10 locus points, 11 matrices
    method        2, blend of the tuned matrices, as calibrated
    tuned CTs     2360, 4000, 9050 K, as named

One frame by its light, with every value.

    $ LIGHT='--lv 35 --cct 4200 --gain 1200,512,900'
    $ imgtune explain a.yaml $LIGHT --only ccm --verbose
    Frame
      light                   light value 35, 4200 K
      AWB gain                1200, 512, 900  (R, G, B; 512 = 1.0)
      full AWB gain           1200, 512, 900
      condition               flash 0, scene flag 0, capture 0
    
    Matrix
      method                  1, polynomial
      gain used               1200, 512, 900  (the AWB gain)
      after clipping          1200, 512, 900  (within the tuned range)
      LV row                  0, normal light
      projected on the locus  1473, 512, 1156
      polynomial about        red 1447.16 (deviation 416.19), blue 1183.15 (deviation 445.99)
      matrix                     969   -412    -45
                                -135    819   -172
                                  56   -446    902
      low light too (LV row 1):
      projected on the locus  1473, 512, 1156
      polynomial about        red 1447.16 (deviation 416.19), blue 1183.15 (deviation 445.99)
      its matrix                 969   -412    -45
                                -135    819   -172
                                  56   -446    902
      weight of low light     0.500000
      after low light            969   -412    -45
                                -135    819   -172
                                  56   -446    902
      average, weights        2, 1, 1  (new, ring 0, ring 1)
      ring 0                     967   -411    -44
                                -134    817   -171
                                  55   -445    902
      ring 1                     967   -411    -44
                                -134    817   -171
                                  55   -445    902
      average                    967   -411    -44
                                -134    817   -171
                                  55   -445    902
      output gamut            none
      written                    967   -411    -44
                                -134    817   -171
                                  55   -445    902
      wrapped on writing      none
      at rest                 after 15 frames of this light
      short of its target     c0 967 of 969; c1 -411 of -412; c2 -44 of -45; c3 -134 of -135; c4 817 of 819; c5 -171 of -172; c6 55 of 56; c7 -445 of -446
    
    Registers
      ccm 0       0x1E6503C7  c0 967  c1 -411
      ccm 1       0x00001FD4  c2 -44
      ccm 2       0x03311F7A  c3 -134  c4 817
      ccm 3       0x00001F55  c5 -171
      ccm 4       0x1E430037  c6 55  c7 -445
      ccm 5       0x00000386  c8 902
    $ imgtune explain blend.yaml $LIGHT --flash 1 --only ccm | head -n 4
    Frame
      light                   light value 35, 4200 K
      AWB gain                1200, 512, 900  (R, G, B; 512 = 1.0)
      condition               flash 1, scene flag 0, capture 0
    $ imgtune explain a.yaml $LIGHT --scene 1 --profile 3 --capture 1 --only color | head -n 3
    Frame
      light                   light value 35, 4200 K
      AWB gain                1200, 512, 900  (R, G, B; 512 = 1.0)
    $ imgtune explain a.yaml --log dusk.csv --frame 118 --only ccm | head -n 3
    Frame
      light                   light value 42, 3530 K
      AWB gain                1258, 512, 833  (R, G, B; 512 = 1.0)
    $ imgtune explain a.yaml $LIGHT --from 100,2147483647,2147483647,2147483647,2147483647 --only ccm | head -n 2
    Frame
      light                   light value 35, 4200 K
    $ imgtune explain a.yaml $LIGHT --from 100,4294967296,1,1,1
    imgtune: --from 100,4294967296,1,1,1: expected cold, or five whole numbers LV,CCT,R,G,B such as --from 100,2800,640,512,1650
    [2]

A sweep of one point has no slope; along gains of one's own, with flash and scene.

    $ imgtune sweep a.yaml --cct 4000 --lv 60 --only ccm --fields c0 --slope
    frame,c0,ccm_slope,ccm_slope_field,ccm_largest,chart_mean,chart_worst,chart_patch
    1,1002,0,,0,0.00,0.00,
    $ printf 'lv,cct,awb_r,awb_g,awb_b\n0,3000,1000,512,1100\n0,5000,1300,512,800\n' > gains.csv
    $ imgtune sweep a.yaml --cct 3000:5000:1000 --lv 60 --gains gains.csv --only ccm --fields 'cct,awb_r,awb_b,c0'
    frame,cct,awb_r,awb_b,c0
    1,3000,1000,1100,930
    2,4000,1169,891,968
    3,5000,1300,800,990
    $ imgtune sweep a.yaml --cct 4000 --lv 60 --flash 1 --scene 1 --fields c0,Global.S
    frame,c0,Global.S
    1,1032,236

Summaries: without tolerance every frame is a light of its own; time follows the frames a second.

    $ imgtune replay a.yaml dusk.csv --summary | grep -c '' 
    60
    $ imgtune replay a.yaml dusk.csv --summary --noise 0 | head -n 4
    frames            420 (14.0 s at 30 frames a second)
    same light        no value differs; held for 15 frames (--noise)
    gain clipped      0 frames
    cold start        at rest after 14 frames if the first light holds
    $ imgtune replay a.yaml dusk.csv --summary --fps 60 | head -n 4
    frames            420 (7.0 s at 60 frames a second)
    same light        gains and colour temperature within 5 %, light value within 5; held for 30 frames (--noise)
    gain clipped      0 frames
    cold start        at rest after 14 frames if the first light holds

A text without explanations, read as the same tuning.

    $ imgtune convert a.yaml -o bare.yaml --bare; grep -c '#' a.yaml bare.yaml
    imgtune: 36 comments of a.yaml are not carried over, the first in line 12: # new matrix, ring entry 0, ring entry 1
    a.yaml:41
    bare.yaml:5
    $ imgtune diff a.yaml bare.yaml
    the tunings are equal
