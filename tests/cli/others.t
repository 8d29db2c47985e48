The verbs that make, turn over, judge and explain tunings, and help.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml a.yaml
    $ imgtune new -o new.yaml; imgtune new -o new.yaml
    imgtune: new.yaml: already exists; choose another file or pass --force
    [2]
    $ imgtune check a.yaml new.yaml
    a.yaml: no findings
    new.yaml: no findings
    $ printf 'lv,cct,awb_r,awb_g,awb_b\n300,0,512,512,900\n300,0,512,512,900\nx\n' > odd.csv
    $ imgtune check a.yaml odd.csv --allow F103
    a.yaml: no findings
    odd.csv:2: warning: lv is 300, beyond 255, and 1 more such frame [F101]
        on the camera: the saturation ratio and the outdoor ramp see its low byte only
        try: check the unit of lv
    odd.csv:4: error: column 'lv': 'x' is not a whole number; allowed are whole numbers -2147483648..4294967295 [F001]
    odd.csv: 1 error, 1 warning
    [2]
    $ imgtune check odd.csv --allow F001
    imgtune: --allow F001: an input that cannot be read cannot be allowed
    [2]
    $ sed 's/weights: .*/weights: [1, 9, 9]/' a.yaml > stall.yaml; imgtune check stall.yaml | grep -o 'T118'
    T118
    $ imgtune check stall.yaml --allow T118
    stall.yaml: no findings
    $ imgtune check stall.yaml > stall.txt
    [1]
    $ sed 's/i4Method: .*/i4Method: 3/' a.yaml | imgtune check - > bad.txt
    [3]
    $ sed 's/^caller:/# mine\n&/' a.yaml > mine.yaml; imgtune convert mine.yaml -o out.yaml; head -n 3 out.yaml
    imgtune: 17 comments of mine.yaml are not carried over, the first in line 8: # mine
    # Sony IMX477, polynomial method.
    # Gains and matrices from a published calibration; NOTICE beside this file names source and licence.
    # The low-light row is the normal one at saturation 0.6, the flash row lies half way to the matrix
    $ imgtune pack a.yaml -o images; ls images; imgtune unpack images | imgtune diff a.yaml -
    caller.yaml
    ccm.bin
    color.bin
    pca.bin
    the tunings are equal
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 | head -n 5
    Frame
      light                   light value 100, 5000 K
      AWB gain                1600, 512, 800  (R, G, B; 512 = 1.0)
    
    Matrix
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 | wc -l
    34
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 --verbose | tail -n 1
      colour 116  0x02000200  ColorMap.W3.S.WGTL 512  ColorMap.W3.S.WGTU 512
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 --only color | grep -c Matrix
    0
    [1]
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 --from 100,2800,900,512,1300 --json |
    >     grep -A 2 '^  "resting"'
      "resting": {
        "ccm": {
          "still": true,
    $ imgtune explain a.yaml --lv 100 --cct 5000 --gain 1600,512,800 --from 100,2800,900
    imgtune: --from 100,2800,900: expected cold, or five whole numbers LV,CCT,R,G,B such as --from 100,2800,640,512,1650
    [2]
    $ imgtune chek a.yaml
    imgtune: no verb 'chek', did you mean 'check'?
    [2]
    $ imgtune
    imgtune: a verb is missing. First steps:
      imgtune new -o phone.yaml                      a commented tuning to start from
      imgtune check phone.yaml                       every fault of it
      imgtune replay phone.yaml walk.csv --summary   what it does with the light of a log
      imgtune explain phone.yaml --lv 35 --cct 4200 --gain 780,512,1010
                                                     why a frame gets its registers
      imgtune view phone.yaml walk.csv               the same as pictures
    'imgtune --help' lists all verbs, 'imgtune VERB --help' explains one.
    [2]
    $ imgtune help chek
    imgtune: no verb 'chek', did you mean 'check'?
    [2]
    $ imgtune help new
    Write a commented tuning to start from
    Usage: imgtune new [OPTIONS]
    
    Options:
      -h,--help                   Print this help message and exit
      -o,--output TEXT=-          YAML file; - is standard output
      --force                     Overwrite a file that holds something
    
    Example:
      imgtune new -o tuning.yaml && imgtune check tuning.yaml
    $ imgtune --version | grep -Exc 'imgtune [0-9]+\.[0-9]+\.[0-9]+( \([0-9a-f]{12}\))?'
    1

A report needs the page, and a log with frames.

    $ imgtune report a.yaml $EXAMPLES/imx477-walk.csv --page a.yaml -o r.html
    imgtune: a.yaml: not the page, or one that holds a report already
    [2]
    $ echo '<p><!-- report --></p>' > page.html; echo lv,cct,awb_r,awb_g,awb_b > none.csv
    $ imgtune report a.yaml none.csv --page page.html -o r.html
    imgtune: none.csv: the log has no frames
    [2]
    $ imgtune report a.yaml $EXAMPLES/imx477-walk.csv --page page.html --frame 842 -o r.html
    imgtune: imx477-walk.csv: there is no frame 842; the log has 841 frames
    [2]
    $ imgtune report a.yaml $EXAMPLES/imx477-walk.csv --page page.html -o r.html && sed 's/.*id="report">//;s/<.*//' r.html |
    >     base64 -d | gunzip | grep -o '"frames_name":"[^"]*"'
    "frames_name":"imx477-walk.csv"
    $ imgtune report a.yaml $EXAMPLES/imx477-walk.csv --page page.html -o r.html
    imgtune: r.html: already exists; choose another file or pass --force
    [2]

Each shell's completion is well-formed and offers the verbs.

    $ PATH=$(dirname $IMGTUNE):$PATH bash -c 'source $COMPLETIONS/imgtune.bash
    >     COMP_WORDS=(imgtune re) COMP_CWORD=1; _imgtune; echo "${COMPREPLY[@]}"'
    replay report
    $ for shell in zsh fish; do ! command -v $shell > /dev/null || $shell -n $COMPLETIONS/imgtune.$shell; done
