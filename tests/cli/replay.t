What replay writes, chooses, guards and refuses.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml $EXAMPLES/imx708-blend.yaml $EXAMPLES/imx477-flash-shot.csv .
    $ grep -v '^#' imx477-flash-shot.csv | head -n 4 > short.csv

Columns by name and glob; the frame's number always comes first.

    $ imgtune replay imx477-polynomial.yaml short.csv --fields 'lv,c?,ccm5,Global.*,Luma.PY[3]'
    frame,lv,c0,c1,c2,c3,c4,c5,c6,c7,c8,ccm5,Global.B,Global.C,Global.S,Luma.PY[3]
    1,45,723,-179,-32,-78,661,-71,36,-260,736,0x000002E0,1033,252,241,75
    2,45,775,-223,-40,-97,698,-89,45,-325,792,0x00000318,1033,252,241,75
    3,45,841,-279,-50,-121,744,-111,56,-406,862,0x0000035E,1033,252,241,75
    $ imgtune replay imx477-polynomial.yaml short.csv --only ccm --every 2 | cut -d, -f1-15
    frame,lv,cct,full_r,full_g,full_b,awb_r,awb_g,awb_b,flash,scene,profile,capture,c0,c1
    1,45,2850,1155,512,1189,1155,512,1189,0,0,0,0,723,-179
    3,45,2850,1155,512,1189,1155,512,1189,0,0,0,0,841,-279
    $ imgtune replay imx477-polynomial.yaml short.csv --fields Globl.S
    imgtune: no column fits 'Globl.S', did you mean 'Global.S'?; * stands for any characters
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv --only ccm --fields Global.S
    imgtune: no column fits 'Global.S'; * stands for any characters
    [2]

A job that no column shows does not run, unless its trace lines are asked for.

    $ imgtune replay imx477-polynomial.yaml short.csv --fields c0,c4 --set debug.smooth_color.dump=1 2>lines
    frame,c0,c4
    1,723,661
    2,775,698
    3,841,744
    $ grep -c 'In Ram' lines
    3

A value keeps its sign, and what is odd about a log is told once each kind.

    $ printf 'lv,cct,awb_r,awb_g,awb_b\n-1,0,800,512,1200\n300,4000,0,0,-5\n301,4000,1,512,9\n' > odd.csv
    $ imgtune replay imx477-polynomial.yaml odd.csv --fields lv,cct,awb_b
    frame,lv,cct,awb_b
    1,-1,0,1200
    2,300,4000,-5
    3,301,4000,9
    odd.csv:3: warning: lv is 300, beyond 255, and 1 more such frame [F101]
        on the camera: the saturation ratio and the outdoor ramp see its low byte only
        try: check the unit of lv
    odd.csv:2: warning: lv is -1, negative [F102]
        on the camera: the library takes it as a very large one: no low-light matrix, no LSP
        try: use 0 for the dark
    odd.csv:2: warning: cct is 0 [F103]
        on the camera: every block takes the lower-CT image
        try: write the temperature in kelvin
    odd.csv:3: warning: a gain of 0 for red or blue [F106]
        on the camera: it is clipped to an end of the tuned gains
        try: gains are fixed point, 512 = 1.0
    odd.csv:3: warning: a negative gain, -5 [F107]
        on the camera: it is clipped to an end of the tuned gains
        try: gains are fixed point, 512 = 1.0
    odd.csv:3: warning: a green gain of 0 [F108]
        try: write 512, which is 1.0
    $ echo lv,cct,awb_r,awb_g,awb_b | imgtune replay imx477-polynomial.yaml - --fields c0
    frame,c0
    standard input: warning: the log has no frames, only a header [F100]
        try: add one line a frame below the header
    $ printf 'lv,cct,awb_r,awb_g,awb_b,\n' | imgtune replay imx477-polynomial.yaml -
    imgtune: standard input:1: column 6 has no name: is there a comma too many at the end of the line?
    [2]

Several logs at once; one that fails does not keep the others back.

    $ cp short.csv second.csv; printf 'lv,cct\n' > broken.csv
    $ imgtune replay imx477-polynomial.yaml short.csv broken.csv second.csv -O out --workers 2
    imgtune: broken.csv:1: the gain is missing: columns 'awb_r', 'awb_g', 'awb_b' or 'full_r', 'full_g', 'full_b'
    [2]
    $ ls out; cmp out/short.csv out/second.csv
    second.csv
    short.csv
    $ imgtune replay imx477-polynomial.yaml short.csv second.csv
    imgtune: several logs need a folder for their results: -O FOLDER, or --summary
    [2]
    $ mkdir twin; cp short.csv twin; imgtune replay imx477-polynomial.yaml short.csv twin/short.csv -O out
    imgtune: short.csv and twin/short.csv would both be written to out/short.csv; run them separately
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv -O out --workers 65
    --workers: 65: allowed are 0 to 64
    Run with --help for more information.
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv -O .
    imgtune: ./short.csv: is also an input; name another file for the output
    [2]

Outputs that are inputs, and what cannot be set.

    $ imgtune replay imx477-polynomial.yaml short.csv -o short.csv
    imgtune: short.csv: is also an input; name another file for the output
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv -o ./imx477-polynomial.yaml
    imgtune: ./imx477-polynomial.yaml: is also an input; name another file for the output
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv --set debug.smooth_color.lok=1
    imgtune: the library reads no property 'debug.smooth_color.lok', did you mean 'debug.smooth_color.lock'?
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv --every 0
    --every: 0: allowed are 1 to 1000000000
    Run with --help for more information.
    [2]
    $ imgtune replay imx477-polynomial.yaml short.csv --only "$(printf '\033[31m')"
    --only: \x1b[31m not in {ccm,color}
    Run with --help for more information.
    [2]
    $ imgtune replay nowhere.yaml short.csv
    imgtune: the tuning cannot be used
    nowhere.yaml: error: cannot open the file: No such file or directory [T010]
        try: name a YAML file, or a folder of stored images
    [2]

A summary, as text and as JSON.

    $ imgtune replay imx477-polynomial.yaml imx477-flash-shot.csv --summary --only ccm | head -n 14
    frames            186 (6.2 s at 30 frames a second)
    same light        gains and colour temperature within 5 %, light value within 5; held for 15 frames (--noise)
    gain clipped      0 frames
    cold start        at rest after 15 frames if the first light holds
    changes of light  2
    
    What a viewer sees: CIEDE2000 of the chart's 24 patches through the matrix, white balance taken as perfect
    flicker           none: no swings of 0.5 in the mean or 1 in one patch that recur 0.5 to 15 times a second
    step, light holds none
    step at a change  1.58 in the mean, 3.85 in red, 1.16 in light skin, at frame 64
    settling          below 1 of rest: settled after 2 of 2, in 5 frames (0.2 s) (median), at most 6 frames (0.2 s) (change at frame 61-64)
      with the gains  settled after 2 of 2, in 5 frames (0.2 s) (median), at most 6 frames (0.2 s) (change at frame 61-64)
    overshoot         not measured in any change of light
    rests short       none visible: at most 0.14, at frame 123
    $ imgtune replay imx477-polynomial.yaml imx477-flash-shot.csv --summary --json |
    >     python3 -c 'import json, sys; s = json.load(sys.stdin); print(s["frames"], sorted(s)[:4])'
    186 ['changes', 'changes_not_listed', 'changes_of_light', 'clipped']

Numbers that are none, or not whole.

    $ imgtune explain $EXAMPLES/imx708-blend.yaml --lv 35.5 --cct 4000 --gain 700,512,1300 2>&1 | head -1
    --lv: 35.5: a whole number is needed
    $ imgtune explain $EXAMPLES/imx708-blend.yaml
    imgtune: --gain is missing: give --lv, --cct and --gain R,G,B, or --log and --frame
    [2]

A row of a live log is out before the next frame comes.

    $ mkfifo live; imgtune replay $EXAMPLES/imx708-blend.yaml - --fields c0 < live > rows.csv & exec 3> live
    $ printf 'lv,cct,awb_r,awb_g,awb_b\n60,4000,900,512,1000\n' >&3
    $ for i in $(seq 100); do [ "$(wc -l < rows.csv)" -ge 2 ] && break; sleep 0.05; done; wc -l < rows.csv
    2
    $ exec 3>&-; wait; wc -l < rows.csv
    2
