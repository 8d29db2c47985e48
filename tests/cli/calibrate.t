Photographs to a tuning.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/captures/* .
    $ imgtune calibrate *_*k.dng --corners corners.csv --flat flat.dng --reference reference.csv --method polynomial -o phone.yaml --calibration phone.json
    $ imgtune check phone.yaml | tail -n 1
    $ imgtune import phone.json --method polynomial --name phone -o again.yaml >/dev/null 2>&1; imgtune diff phone.yaml again.yaml
    $ imgtune replay phone.yaml $EXAMPLES/imx477-walk.csv --only ccm --every 200 | cut -d, -f1-12
    $ imgtune calibrate *_*k.dng --corners corners.csv --flat flat.dng --reference reference.csv --method polynomial -o - 2>/dev/null | cmp - phone.yaml
    $ imgtune calibrate d65_6504k.dng --corners corners.csv -o phone.yaml
    $ imgtune calibrate d65_6504k.dng -o one.yaml; ls one.yaml
    $ head -c 20000 d65_6504k.dng >cut_6504k.dng; sed 's/^d65/cut/' corners.csv >cut.csv
    $ imgtune calibrate cut_6504k.dng --corners cut.csv -o one.yaml
    $ echo words >words_5000k.nef; echo words_5000k.nef,1,1,2,1,2,2,1,2 >words.csv
    $ imgtune calibrate words_5000k.nef --corners words.csv -o one.yaml
    $ cp d65_6504k.dng d65.dng; imgtune calibrate d65.dng --corners corners.csv -o one.yaml 2>&1 | grep -v P004
    $ sed 's/27.7,24.0,167.2/27.7,24.0,60.2/' corners.csv >wrong.csv
    $ imgtune calibrate d65_6504k.dng --corners wrong.csv -o one.yaml 2>&1 | grep 'd65.*error'
    $ imgtune calibrate d65_6504k.dng --corners corners.csv --weight teal=2 -o one.yaml
    $ imgtune calibrate *_*k.dng --pick pick.html && grep -c 'Corners of the chart' pick.html
