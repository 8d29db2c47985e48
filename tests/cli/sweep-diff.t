What sweep and diff tell.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx708-blend.yaml a.yaml; cp $EXAMPLES/imx477-flash-shot.csv shot.csv
    $ imgtune sweep a.yaml --cct 3000:5000:1000 --lv 10:60:50 --only ccm --fields 'lv,cct,c*' --slope
    frame,lv,cct,capture,c0,c1,c2,c3,c4,c5,c6,c7,c8,ccm0,ccm1,ccm2,ccm3,ccm4,ccm5,ccm_slope,ccm_slope_field,ccm_largest,chart_mean,chart_worst,chart_patch
    1,10,3000,1,555,57,-100,-60,678,-106,74,-135,573,0x0039022B,0x00001F9C,0x02A61FC4,0x00001F96,0x1F79004A,0x0000023D,423,c8,1,9.56,30.58,yellow
    2,10,4000,1,498,106,-92,-83,729,-134,25,27,460,0x006A01F2,0x00001FA4,0x02D91FAD,0x00001F7A,0x001B0019,0x000001CC,363,c8,0,9.52,30.53,yellow
    3,10,5000,1,501,105,-94,-72,727,-143,30,22,460,0x006901F5,0x00001FA2,0x02D71FB8,0x00001F71,0x0016001E,0x000001CC,364,c8,0,9.45,30.39,yellow
    4,60,3000,1,870,-229,-129,-154,807,-141,69,-553,996,0x1F1B0366,0x00001F7F,0x03271F66,0x00001F73,0x1DD70045,0x000003E4,423,c8,1,9.56,30.58,yellow
    5,60,4000,1,797,-185,-100,-171,851,-168,9,-320,823,0x1F47031D,0x00001F9C,0x03531F55,0x00001F58,0x1EC00009,0x00000337,363,c8,0,9.52,30.53,yellow
    6,60,5000,1,796,-186,-98,-158,849,-179,13,-325,824,0x1F46031C,0x00001F9E,0x03511F62,0x00001F4D,0x1EBB000D,0x00000338,364,c8,0,9.45,30.39,yellow
    $ imgtune sweep a.yaml --cct 3000 --lv 60 --fields Global.S
    frame,Global.S
    1,241
    $ imgtune sweep a.yaml --steepest
    Steepest step of the matrix over light, in CIEDE2000 of the chart's 24 patches; seen are
    0.5 on average and 1.0 in one patch, side by side. Lights are one mired apart or less.
    
    row        gains                    mean  worst  patch         from and to
    normal     as tuned                 2.89   7.17  orange        7576 K 1330,512,740 to 7590 K 1331,512,740, a jump
    normal     red and blue under 2 %   2.92   7.32  orange        7195 K 1267,512,740 to 7208 K 1268,512,739, a jump
    low_light  as tuned                 3.41   9.82  blue          7576 K 1330,512,740 to 7590 K 1331,512,740, a jump
    low_light  red and blue under 2 %   3.46   9.94  blue          7195 K 1267,512,740 to 7208 K 1268,512,739, a jump
    flash      as tuned                 1.47   3.66  orange        7576 K 1330,512,740 to 7590 K 1331,512,740, a jump
    flash      red and blue over 2 %    1.47   3.69  orange        7313 K 1330,512,765 to 7320 K 1331,512,765, a jump
    LV         as tuned                 0.33   0.98  yellow        LV 20 to 21 at 7590 K 1331,512,740
    
    Tried, with the steepest step of all rows at the tuned gains, and how far the normal row's
    matrices are off the tuned ones at its points, on average:
    
      mean  worst  patch            off  change
      3.41   9.82  blue            0.44  as it is
      0.05   0.18  red             1.15  i4Method: polynomial
      0.08   0.36  red             0.70  the points 0, 1 and 4 of each row alone, i4NumCT: 3
      0.08   0.33  red             0.92  the points 0, 2 and 4 of each row alone, i4NumCT: 3
      0.20   0.48  orange          0.55  the points 0, 3 and 4 of each row alone, i4NumCT: 3
    $ imgtune sweep a.yaml --steepest --json | grep -c '"jump": true'
    9
    $ imgtune sweep a.yaml --steepest --lv 60
    --lv excludes --steepest
    Run with --help for more information.
    [2]
    $ imgtune check a.yaml
    a.yaml:25: warning: ccm.rows.normal.4 is where the matrix jumps: from gain 1330,512,740 to 1331,512,740 (7576 to 7590 K) the chart changes by CIEDE2000 2.9 on average and 7.2 in orange, in row low_light by 3.4 and 9.8, in row flash by 1.5 and 3.7; seen are 0.5 and 1.0 [T112]
        on the camera: colours flicker in a light that lies there, and step in one that passes
        try: the points 0, 3 and 4 of each row alone, i4NumCT: 3: the largest step is then 0.2 on average and 0.5 in orange; at the tuned gains the matrices are 0.5 off the tuned ones, today 0.4
    a.yaml: 0 errors, 1 warning
    [1]
    $ imgtune sweep a.yaml --cct 3000:2000:100
    imgtune: --cct 3000:2000:100: expected FROM:TO:STEP, whole numbers, FROM at most TO, STEP at least 1, such as 2300:6500:100
    [2]
    $ imgtune sweep a.yaml --cct 1:100000:1 --lv 0:9:1
    imgtune: 100000 CTs and 10 light values are 1000000 points, allowed are 100000; take larger steps
    [2]
    $ imgtune sweep a.yaml -o a.yaml
    imgtune: a.yaml: is also an input; name another file for the output
    [2]

Two tunings, field by field and frame by frame.

    $ imgtune unpack --help > /dev/null
    $ imgtune pack a.yaml -o images && imgtune unpack images -o b.yaml && imgtune diff a.yaml b.yaml
    the tunings are equal
    $ imgtune diff a.yaml a.yaml --frames shot.csv
    the tunings are equal
    
    0 of 186 frames differ in their registers
    $ sed 's/hue_speed: .*/hue_speed: 1/; s/i4NumLV: .*/i4NumLV: 1/' a.yaml > c.yaml
    $ imgtune diff a.yaml c.yaml --frames shot.csv -o rows.csv | head -n 12; head -n 3 rows.csv
    ccm.i4NumLV: 2 -> 1
    color.tuning.normal.hue_speed: 2 -> 1
    color.tuning.scene.hue_speed: 2 -> 1
    color.tuning.flash.hue_speed: 255 -> 1
    color.tuning.outdoor.hue_speed: 2 -> 1
    
    186 of 186 frames differ in their registers
    
    matrix differs in 186 frames; the worst:
      frame 12        c8                         770 -> 831
      frame 14        c8                         771 -> 832
      frame 15        c8                         771 -> 832
    frame,field,a,b
    1,c0,630,655
    1,c1,-69,-94
    $ imgtune diff a.yaml c.yaml --frames shot.csv --json |
    >     python3 -c 'import json, sys; d = json.load(sys.stdin); print(d["differences"][0], d["frames"]["ccm"]["differing"])'
    {'field': 'ccm.i4NumLV', 'a': 2, 'b': 1} 186
    $ imgtune diff - -
    imgtune: only one of the tunings can be standard input
    [2]
    $ imgtune diff a.yaml b.yaml --frames shot.csv -o shot.csv
    imgtune: shot.csv: is also an input; name another file for the output
    [2]

A name that would command the terminal is shown, not obeyed; of JSON, too.

    $ printf 'format: imgtune-tuning/2\nname: "\\e[2J\\a\\u202e\\u009b"\n' > evil.yaml; sed '/^format:/d; /^name:/d' a.yaml >> evil.yaml
    $ imgtune diff a.yaml evil.yaml | grep name | cat -v
    name: Sony IMX708, blend -> \x1b[2J\x07\xe2\x80\xae\xc2\x9b
    $ imgtune diff a.yaml evil.yaml --json | grep '"b"'
          "b": "\u001b[2J\u0007\u202e\u009b"

Nothing but an earlier result of the same kind is replaced.

    $ imgtune sweep a.yaml --cct 3000 --lv 60 -o rows.csv
    imgtune: rows.csv: already exists and is no earlier result of this kind; choose another file or pass --force
    [2]
    $ imgtune sweep a.yaml --cct 3000 --lv 60 -o rows.csv --force && imgtune sweep a.yaml --cct 4000 --lv 60 -o rows.csv; wc -l < rows.csv
    2
    $ for verb in "sweep a.yaml" "replay a.yaml shot.csv" "diff a.yaml c.yaml --frames shot.csv" "frames $EXAMPLES/imx477-walk.csv"; do
    >     imgtune $verb -o b.yaml; done
    imgtune: b.yaml: already exists and is no earlier result of this kind; choose another file or pass --force
    imgtune: b.yaml: already exists and is no earlier result of this kind; choose another file or pass --force
    imgtune: b.yaml: already exists and is no earlier result of this kind; choose another file or pass --force
    imgtune: b.yaml: already exists and is no earlier result of this kind; choose another file or pass --force
    [2]
    $ printf 'frame,lv,cct,awb_r,awb_g,awb_b,x_note\n1,60,4000,900,512,1000,mine\n' > mine.csv
    $ imgtune sweep a.yaml --cct 3000 --lv 60 -o mine.csv
    imgtune: mine.csv: already exists and is no earlier result of this kind; choose another file or pass --force
    [2]
    $ grep -c '^format:' b.yaml
    1
