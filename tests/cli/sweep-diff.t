What sweep and diff tell.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx708-blend.yaml a.yaml; cp $EXAMPLES/imx477-flash-shot.csv shot.csv
    $ imgtune sweep a.yaml --cct 3000:5000:1000 --lv 10:60:50 --only ccm --fields 'lv,cct,c*' --slope
    frame,lv,cct,capture,c0,c1,c2,c3,c4,c5,c6,c7,c8,ccm0,ccm1,ccm2,ccm3,ccm4,ccm5,ccm_slope,ccm_slope_field,ccm_largest
    1,10,3000,1,494,109,-91,-91,732,-129,19,34,459,0x006D01EE,0x00001FA5,0x02DC1FA5,0x00001F7F,0x00220013,0x000001CB,356,c8,0
    2,10,4000,1,500,106,-94,-75,728,-141,28,25,459,0x006A01F4,0x00001FA2,0x02D81FB5,0x00001F73,0x0019001C,0x000001CB,362,c8,0
    3,10,5000,1,506,101,-95,-67,723,-144,35,9,468,0x006501FA,0x00001FA1,0x02D31FBD,0x00001F70,0x00090023,0x000001D4,368,c8,1
    4,60,3000,1,796,-184,-100,-179,853,-162,5,-308,815,0x1F48031C,0x00001F9C,0x03551F4D,0x00001F5E,0x1ECC0005,0x0000032F,356,c8,0
    5,60,4000,1,795,-185,-98,-161,849,-176,11,-320,821,0x1F47031B,0x00001F9E,0x03511F5F,0x00001F50,0x1EC0000B,0x00000335,362,c8,0
    6,60,5000,1,800,-189,-99,-153,845,-180,18,-342,836,0x1F430320,0x00001F9D,0x034D1F67,0x00001F4C,0x1EAA0012,0x00000344,368,c8,1
    $ imgtune sweep a.yaml --cct 3000 --lv 60 --fields Global.S
    frame,Global.S
    1,241
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
    
    matrix: 186 frames differ; the worst:
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
