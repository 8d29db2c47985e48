Calibrations in and out.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/calibrations/imx477-measured.json $EXAMPLES/calibrations/imx708.json .
    $ imgtune import imx477-measured.json -o a.yaml
    Raspberry Pi form of libcamera, version 1: 10 locus points, 11 matrices
    method        2, blend of the tuned matrices
    tuned CTs     2360, 3700, 3870, 4000, 4400, 4715, 5920, 9050 K (the best of 84 sets tried)
    low light     saturation 0.6
    flash         0.5 of the way to the matrix at 5920 K, nearest 5600 K
    error of the library's matrix    of a coefficient      CIEDE2000, 24 patches
                                     largest                 mean  largest
      dropped CTs (3)                 100/512 at 2970 K     0.76     2.32
      kept CTs (8)                    178/512 at 5920 K     0.97     6.89
      all, polynomial instead (11)    168/512 at 3700 K     1.54     7.02
    $ imgtune import imx477-measured.json -o a.yaml
    imgtune: a.yaml: already exists; choose another file or pass --force
    [2]
    $ imgtune check a.yaml | tail -n 1
    a.yaml: 0 errors, 1 warning
    $ CTS=2360,3700,3870,4000,4400,4715,5920,9050
    $ imgtune export a.yaml --cts $CTS --form yaml -o b.yaml; head -n 5 b.yaml
    a.yaml: warning: only gains and matrices of the normal row have a place in a calibration; left out: low-light and flash rows, polynomials [C303]
    version: 1
    algorithms:
      - Awb:
          colourGains:
            - { ct: 2360, gains: [ 1.664062, 3.232422 ] }
    $ imgtune import b.yaml --name imx477-measured -o c.yaml >/dev/null
    $ imgtune diff a.yaml c.yaml | grep 'normal\|Poly22\.'
    [1]
    $ imgtune export a.yaml --cts 3000,4000 -o b.json
    a.yaml: error: 2 CTs named for 8 tuned ones [C302]
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
      "tuned_cts": [
        2964.0,
