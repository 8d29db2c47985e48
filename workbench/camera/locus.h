#ifndef IMGTUNE_WORKBENCH_CAMERA_LOCUS_H
#define IMGTUNE_WORKBENCH_CAMERA_LOCUS_H

#include <imgtune/awb_gain.h>

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/frames/frame_log.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The AWB gain that goes with a colour temperature: linear in mired between known points, the
/// nearest end beyond them.
class Locus {
  public:
    struct Point {
        double mired;
        AWB_GAIN_T gain;
    };

    explicit Locus(std::vector<Point> points);  ///< at least one, in any order

    AWB_GAIN_T at(std::uint32_t kelvin) const;

  private:
    std::vector<Point> points_;  ///< by rising mired
};

/// The tuned gains of LV row 0, spread evenly over the grid of tuned CTs: the first at the lowest
/// CT of the grid, the last at the highest. With five tuned gains each has one CT of the grid.
Locus tuned_locus(const Tuning& tuning);

/// The CTs and AWB gains of a frame log.
Locus read_locus(FrameLog& log);

}  // namespace imgtune::workbench

#endif
