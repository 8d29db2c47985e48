The smoothing that meets a wish, over logs.

    $ alias imgtune=$IMGTUNE; shopt -s expand_aliases
    $ cp $EXAMPLES/imx477-polynomial.yaml phone.yaml; cp $EXAMPLES/imx477-walk.csv walk.csv; cp $EXAMPLES/imx477-dusk.csv dusk.csv

Every share of the weights is tried; what is chosen, what binds, and what there was to choose from.

    $ imgtune smooth phone.yaml walk.csv dusk.csv --settle 25 --step 1.2 -o smoother.yaml
    Matrix average, 526 weights tried; CIEDE2000 of the patch that shows it most
                 weights         frames    step  at rest  flicker
      wish                           25    1.20     1.00     0.00
      as it is   2, 1, 1              2    4.72     0.14     0.00
      chosen     1, 5, 2             11    1.18     0.97     0.00
      the wish is met; what binds is the step, at 98 % of its limit
    
    Smallest step for the frames it takes
                 7, 2, 0              0    7.56     0.14     0.00
                 7, 1, 4              1    5.72     0.14     0.00
                 1, 1, 0              2    4.72     0.14     0.00
                 4, 2, 5              3    3.45     0.27     0.00
                 4, 3, 7              4    2.68     0.41     0.00
                 3, 4, 4              5    2.62     0.41     0.00
                 3, 5, 5              6    2.17     0.55     0.00
                 3, 8, 8              7    1.46     0.83     0.00
                 2, 6, 7              9    1.19     0.97     0.00
                 1, 5, 2             11    1.18     0.97     0.00
    
    Colour engine, smallest step a frame with which its registers settle in time
      lum_speed  1                   19
      hue_speed  1                    2
      sat_speed  3                   20

The tuning differs in these values alone; comments and layout stay, and a result is not overwritten.

    $ diff phone.yaml smoother.yaml | sed 's/^>/+/'
    12c12
    <   weights: [2, 1, 1]  # new matrix, ring entry 0, ring entry 1
    ---
    +   weights: [1, 5, 2]  # new matrix, ring entry 0, ring entry 1
    75,76c75,76
    <       lum_speed: 4   # largest steps a frame
    <       hue_speed: 2
    ---
    +       lum_speed: 1   # largest steps a frame
    +       hue_speed: 1
    88c88
    <       lum_speed: 6
    ---
    +       lum_speed: 1
    $ imgtune smooth phone.yaml walk.csv dusk.csv -o smoother.yaml
    imgtune: smoother.yaml: already exists; choose another file or pass --force
    [2]

It does what was promised.

    $ printf 'format: imgtune-limits/1\nlimits: {visible_step: 1.2, settling_frames: 25, error_at_rest: 1, flicker_strength: 0}\n' > wish.yaml
    $ imgtune judge smoother.yaml --limits wish.yaml walk.csv dusk.csv
    log         frames  verdict        step      settle     at rest     flicker
    walk.csv       841  accepted       1.18          11        0.97           0
    dusk.csv       420  accepted      0.155           0       0.901           0
    
    accepted: 0 of 2 logs refused, 1261 frames in all

A wish that nothing meets: the nearest, and why.

    $ imgtune smooth phone.yaml walk.csv --settle 4 --step 1.5 --at-rest 0.5
    Matrix average, 526 weights tried; CIEDE2000 of the patch that shows it most
                 weights         frames    step  at rest  flicker
      wish                            4    1.50     0.50     0.00
      as it is   2, 1, 1              2    4.72     0.14     0.00
      nearest    3, 5, 5              6    2.17     0.55     0.00
      nothing meets the wish; the nearest has 6 frames to settle, the wish 4
      settling in 4 frames takes a step of 2.68
    
    Smallest step for the frames it takes
                 7, 2, 0              0    7.56     0.14     0.00
                 7, 1, 4              1    5.72     0.14     0.00
                 1, 1, 0              2    4.72     0.14     0.00
                 4, 2, 5              3    3.45     0.27     0.00
                 4, 3, 7              4    2.68     0.41     0.00
                 3, 4, 4              5    2.62     0.41     0.00
                 1, 1, 2              6    2.36     0.41     0.00
    
    Colour engine, smallest step a frame with which its registers settle in time
      lum_speed  4                    4
      hue_speed  1                    2
      sat_speed  13                   4
    [1]

The answer is the same for any number of cores.

    $ cmp <(imgtune smooth phone.yaml walk.csv --json --workers 1) <(imgtune smooth phone.yaml walk.csv --json --workers 3)
    $ imgtune smooth phone.yaml walk.csv --json | grep -A 6 '"chosen"'
      "chosen": {
        "weights": [
          1,
          5,
          2
        ],
        "settle": 11.0,
    $ imgtune smooth phone.yaml none.csv
    imgtune: none.csv: cannot open: No such file or directory
    [2]
