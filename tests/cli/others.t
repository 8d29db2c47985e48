The verbs that make, turn over, judge and explain tunings, and help.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml a.yaml
    $ imgtune new -o new.yaml; imgtune new -o new.yaml
    imgtune: new.yaml: stands there already; name another, or use --force
    [2]
    $ imgtune check a.yaml new.yaml
    a.yaml: no findings
    new.yaml: no findings
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
    $ imgtune --version
    imgtune 1.0.0

Each shell's completion is well-formed and offers the verbs.

    $ PATH=$(dirname $IMGTUNE):$PATH bash -c 'source $COMPLETIONS/imgtune.bash
    >     COMP_WORDS=(imgtune re) COMP_CWORD=1; _imgtune; echo "${COMPREPLY[@]}"'
    replay
    $ for shell in zsh fish; do ! command -v $shell > /dev/null || $shell -n $COMPLETIONS/imgtune.$shell; done
