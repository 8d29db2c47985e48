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
