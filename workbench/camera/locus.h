#ifndef IMGTUNE_WORKBENCH_CAMERA_LOCUS_H
#define IMGTUNE_WORKBENCH_CAMERA_LOCUS_H

#include <imgtune/awb_gain.h>

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/frames/frame_log.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The AWB gain that goes with a colour temperature: between known points the ratios that it
/// balances, 512 / gain, are linear in mired; beyond them it is that of the nearest end.
class LightLocus {
  public:
    struct Point {
        double kelvin;
        AWB_GAIN_T gain;
    };

    explicit LightLocus(std::vector<Point> points);  ///< at least one, in any order

    AWB_GAIN_T at(double kelvin) const;

    const std::vector<Point>& points() const { return points_; }  ///< by rising kelvin

  private:
    std::vector<Point> points_;
};

/// Tuned CTs of a row, as many as the tables hold: 1..8.
std::size_t tuned_count(const Tuning& tuning);

/// The tuned gains of a LV row at the kelvin of the normal row's points.
LightLocus tuned_locus(const Tuning& tuning, std::size_t row = kRowNormal);

/// What tuned_locus assumes where the points have no kelvin: that they are spread evenly over the
/// grid of tuned CTs, the first at its lowest, the last at its highest. Empty where all have one.
std::string assumed_locus(const Tuning& tuning);

/// The CTs and AWB gains of a frame log.
LightLocus read_locus(FrameLog& log);

}  // namespace imgtune::workbench

#endif
