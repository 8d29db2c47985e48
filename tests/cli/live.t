A phone's log as it comes; the demonstration stands in for a phone.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx708-blend.yaml a.yaml; grep -v '^#' $EXAMPLES/imx708-walk.csv | sed -n 1,25p > walk.csv
    $ imgtune watch a.yaml walk.csv --demo --fps 1000 --record frames.csv --log phone.log > told.txt
    $ grep -c '^frame ' told.txt; tail -n 2 told.txt
    24
    24 frames, 5952 trace lines compared: equal
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    $ imgtune verify a.yaml phone.log
    24 frames, 5952 trace lines compared: equal
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    $ imgtune frames phone.log | cmp - frames.csv
    $ imgtune watch a.yaml phone.log --fps 1000 | cmp - told.txt
    $ imgtune replay a.yaml frames.csv --summary --json > summary.json
    $ imgtune watch a.yaml - --json < phone.log > told.json
    $ python3 - <<'END'
    > import json
    > *frames, end = map(json.loads, open("told.json"))
    > print(len(frames), frames[-1]["frame"], frames[-1]["verify"]["equal"])
    > print(end["summary"] == json.load(open("summary.json")))
    > END
    24 24 True
    True
    $ sed 's/weights: \[2,/weights: [3,/' a.yaml > b.yaml
    $ imgtune watch b.yaml phone.log | tail -n 2; echo ${PIPESTATUS[0]}
      likely cause: the phone's camera stack passes other settings (caller.weights)
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    1
    $ { head -n 700 phone.log; printf '06-01 12:00:00.000 1 1 D ispfeature: \033[2J\033]0;x\007 Fullgain = 9\n\000\n'; head -c 100 phone.log; } > hostile.log
    $ imgtune watch a.yaml hostile.log > told.txt; grep "lines compared" told.txt; grep -c $'[\033\007]' told.txt
    hostile.log: 1 call left out: the lines with their inputs are missing
    3 frames, 700 trace lines compared: equal
    0
    [1]

Ctrl-C is an end, and what was asked for is kept.

    $ timeout --preserve-status -s INT 2 $IMGTUNE watch a.yaml --demo --record ctrl-c.csv > told.txt; echo $?
    0
    $ [ $(wc -l < ctrl-c.csv) -gt 10 ] && grep -c 'frames  ' told.txt
    1
    $ imgtune watch a.yaml --demo --record walk.csv
    imgtune: walk.csv: already exists and is no earlier result of this kind; choose another file or pass --force
    [2]
    $ imgtune watch a.yaml
    imgtune: what adb logcat prints is missing: '-' or a file, or --demo without a phone
    [2]
    $ imgtune watch - - < a.yaml
    imgtune: only one of tuning and log can be standard input
    [2]
    $ grep -v ispfeature phone.log | imgtune watch a.yaml - --log none.log; wc -l < none.log
    imgtune: standard input: none of its 0 lines is a trace of the library; 'imgtune props' tells how to switch it on, and the forms brief, tag, time, threadtime and long can be read
    0
