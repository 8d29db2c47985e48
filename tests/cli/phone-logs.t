What a phone's log gives; the traces of a replay stand in for a phone's.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx708-blend.yaml a.yaml; grep -v '^#' $EXAMPLES/imx708-walk.csv | head -n 31 > walk.csv
    $ imgtune props --frames
    adb shell setprop debug.smooth_ccm.enable 1
    adb shell setprop debug.smooth_color.dump 1
    $ imgtune props --off | tail -n 1; imgtune props | wc -l
    adb shell setprop debug.smooth_color.dump.cm 0
    15
    $ imgtune replay a.yaml walk.csv -o rows.csv 2> brief.log \
    >     $(imgtune props | sed 's/adb shell setprop \(.*\) \(.\)/--set \1=\2/')
    $ sed 's/^D.ispfeature([ 0-9]*)/06-01 12:00:00.000  1234  1250 D ispfeature/' brief.log > phone.log
    $ imgtune frames phone.log -o frames.csv; head -n 2 frames.csv
    frame,lv,cct,full_r,full_g,full_b,awb_r,awb_g,awb_b,flash,scene,profile,capture,x_time,x_process,x_thread,x_line
    1,150,5523,,,,1112,512,854,0,0,0,0,06-01 12:00:00.000,1234,1250,1
    $ imgtune replay a.yaml frames.csv --fields 'c?,*.*' > again.csv
    $ imgtune replay a.yaml walk.csv --fields 'c?,*.*' | cmp - again.csv
    $ imgtune verify a.yaml phone.log
    30 frames, 7440 trace lines compared: equal
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    $ imgtune props | sed 's/adb shell setprop \(.*\) \(.\)/\1=\2/' > on.txt
    $ IMGTUNE_PROPERTIES=on.txt imgtune replay a.yaml walk.csv -o rows.csv 2>&1 | imgtune verify a.yaml -
    30 frames, 7440 trace lines compared: equal
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    $ sed 's/weights: \[2,/weights: [3,/' a.yaml > b.yaml
    $ imgtune verify b.yaml - < phone.log
    30 frames, 7440 trace lines compared: different
    30 of the frames differ
    first difference: frame 1, 06-01 12:00:00.000, line 1 of the log
      Coef1, Coef2, Coef3[0]
        phone  2
        desk   3
      likely cause: the phone's camera stack passes other settings (caller.weights)
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    [1]
    $ sed 's/hue_speed: .*/hue_speed: 1/' a.yaml > c.yaml
    $ imgtune verify c.yaml phone.log | grep -A 9 'seen to differ'
    1 field of the tuning seen to differ:
      color.tuning.normal.hue_speed: phone 002, desk 001 (from frame 1)
    not compared, as no frame of the log used it: ccm.rows.low_light, ccm.rows.flash, color.images.normal.0|1|2, color.tuning.scene, color.images.scene, color.tuning.flash, color.images.flash, color.images.outdoor.0|1|2
    $ imgtune verify c.yaml phone.log --json | python3 -c 'import json, sys; print(json.load(sys.stdin)["differing_fields"])'
    [{'field': 'color.tuning.normal.hue_speed', 'phone': '002', 'desk': '001', 'frame': 1}]
    $ imgtune verify a.yaml walk.csv
    imgtune: walk.csv: none of its 31 lines is a trace of the library; 'imgtune props' tells how to switch it on, and the forms brief, tag, time, threadtime and long can be read
    [2]
    $ grep -v 'SmoothCOLOR\|Fullgain' phone.log | imgtune frames - -o none.csv; ls none.csv
    imgtune: standard input: 7260 lines of the library, but no frame from its start; 'imgtune props' tells what to switch on
    ls: cannot access 'none.csv': No such file or directory
    [2]
    $ imgtune frames phone.log --camera 7
    imgtune: phone.log: no frame of that camera; the log has 1234:1250 (60 calls)
    [2]
    $ imgtune frames phone.log --camera 7:x
    imgtune: --camera '7:x': expected PID or PID:TID, such as 1234:1250
    [2]
