What says yes or no to a tuning, and in which forms.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml a.yaml

The schema, for editors.

    $ imgtune schema -o s.json && head -n 4 s.json; imgtune schema -o s.json
    {
      "$schema": "https://json-schema.org/draft/2020-12/schema",
      "$id": "urn:imgtune:tuning:2",
      "title": "imgtune tuning",
    imgtune: s.json: already exists; choose another file or pass --force
    [2]

Findings for code reviews.

    $ sed 's/i4Method: .*/i4Method: 3/' a.yaml > bad.yaml; imgtune check bad.yaml --sarif f.sarif
    bad.yaml:15: error: ccm.i4Method is 3; allowed are 1, polynomial, and 2, blend [T101]
        on the camera: no matrix is generated: the identity, pale and tinted colours
    bad.yaml: 1 error, 0 warnings
    [3]
    $ grep -A 3 '"region"' f.sarif
                    "region": {
                      "startLine": 15,
                      "startColumn": 3,
                      "endColumn": 14
    $ imgtune check bad.yaml --sarif a.yaml
    imgtune: a.yaml: already exists and is no earlier result of this kind; choose another file or pass --force
    [2]
    $ imgtune check bad.yaml --sarif - --force | head -n 3
    {
      "$schema": "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json",
      "version": "2.1.0",

Stored images as git shows them.

    $ imgtune pack a.yaml -o images; sed 's/i4NumFlash: 1/i4NumFlash: 2/' a.yaml > b.yaml; imgtune pack b.yaml -o other
    $ diff <(imgtune unpack images/ccm.bin) <(imgtune unpack other/ccm.bin) | sed 's/^>/+/'
    4c4
    < ccm.i4NumFlash: 1
    ---
    + ccm.i4NumFlash: 2
    $ imgtune unpack images/pca.bin | head -n 1; imgtune unpack images/color.bin | tail -n 1
    color.tuning.normal.u4RatioHighLV: 18
    color.images.outdoor.4.ColorMap.W3.S.WGTU: 536
    $ imgtune unpack a.yaml
    imgtune: a.yaml: neither a stored image nor a folder of them; expected ccm.bin, or color.bin and pca.bin, or all three
    [2]

Yes or no, by limits that logs must hold.

    $ cp $EXAMPLES/imx477-flash-shot.csv flash.csv; echo lv > short.csv
    $ printf 'format: imgtune-limits/1\nlimits: {visible_step: 0.5, clipped_share: {no_worse_by: 0}, check_errors: 0}\n' > strict.yaml
    $ imgtune judge a.yaml --against a.yaml --limits strict.yaml flash.csv short.csv | grep -o 'short.csv: cannot be judged.*\|imgtune explain .*\|^refused: 2 of 2 logs'
    short.csv: cannot be judged: short.csv:1: column 'cct' is missing
    imgtune explain a.yaml --log flash.csv --frame 64 --only ccm
    refused: 2 of 2 logs
    $ imgtune judge a.yaml --limits strict.yaml flash.csv
    imgtune: strict.yaml: no_worse_by compares with an old tuning; name it with --against
    [2]
    $ imgtune judge --starter > limits.yaml; imgtune judge a.yaml --limits limits.yaml flash.csv > told.txt
    $ sed 's/visible_step/visible_stp/' limits.yaml > bad.yaml; imgtune judge a.yaml --limits bad.yaml flash.csv 2>&1 | grep -c 'did you mean'
    2

The worst log first, each broken limit with its frame, and commands that work as they stand.

    $ cp $EXAMPLES/imx477-hunting-awb.csv hunting.csv; cp $EXAMPLES/imx477-dusk.csv dusk.csv
    $ imgtune judge a.yaml --limits limits.yaml dusk.csv hunting.csv flash.csv
    log            frames  verdict        step      steady      settle     at rest   overshoot     flicker   flicker %   clipped %
    hunting.csv       300  refused         1.5           0           -           -           -        2.13!       92.3!          0
    flash.csv         186  accepted       3.85           0                   0.136           -           0           0           0
    dusk.csv          420  accepted      0.199      0.0825           0       0.136       0.288           0           0           0
    a.yaml: accepted, steepest 0.494, errors 0, warnings 0
    
    hunting.csv: flicker_strength is 2.125 CIEDE2000 at frame 21, red, 5.0 times a second until frame 297; allowed is 1
        imgtune replay a.yaml hunting.csv --summary --only ccm
    hunting.csv: flicker_share is 92.33 percent at frame 21; allowed is 1
        imgtune replay a.yaml hunting.csv --summary --only ccm
    
    settling_frames is not measured in 1 log: no change of light before light that holds for half a second, or no matrices
    error_at_rest is not measured in 1 log: no light holds for half a second, or no matrices
    overshoot is not measured in 2 logs: the picture came to rest after no change of light but those with a flash, or no matrices
    
    refused: 1 of 3 logs refused, 906 frames in all; broken: flicker_strength 1, flicker_share 1
    [1]
    $ imgtune judge a.yaml --limits strict.yaml --against a.yaml flash.csv hunting.csv | grep '^    imgtune' | while read -r command; do eval "$command" > shown.txt || echo "$command"; done
    $ sed 's/^fps: 30/fps: 60/; s/^flicker_patch: 1/flicker_patch: 3/; s/^flicker_mean: 0.5/flicker_mean: 2/' limits.yaml > wide.yaml
    $ imgtune judge a.yaml --limits wide.yaml hunting.csv | head -n 2
    log            frames  verdict        step      steady      settle     at rest   overshoot     flicker   flicker %   clipped %
    hunting.csv       300  refused         1.5         1.5!          -       0.123           -           0           0           0
    $ echo 'flicker_mean: 0' >> strict.yaml; imgtune judge a.yaml --limits strict.yaml hunting.csv
    imgtune: the limits cannot be used
    strict.yaml:3: error: flicker_mean is 0; allowed are 0.01..100 [T101]
    [2]
