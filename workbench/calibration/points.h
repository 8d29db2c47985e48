#ifndef IMGTUNE_WORKBENCH_CALIBRATION_POINTS_H
#define IMGTUNE_WORKBENCH_CALIBRATION_POINTS_H

#include <imgtune/awb_gain.h>

#include <cstddef>
#include <vector>

#include "workbench/calibration/calibration.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// A point that a tuning can hold.
struct TunedPoint {
    double kelvin = 0.0;
    AWB_GAIN_T gain{};
    RealMatrix matrix{};
    bool published = true;  ///< false: between the calibrated ones
    int line = 0;           ///< of its matrix
};

/// As many at most, evenly by their place, both ends among them. `most` is two or more.
std::vector<TunedPoint> thinned(const std::vector<TunedPoint>& points, std::size_t most);

/// How faults of a calibration are met.
struct PointChoices {
    bool divide_rows = true;   ///< rows that do not sum to 1: divided by their sum; else the
                               ///< diagonal closes them
    bool extrapolate = false;  ///< matrices outside the locus: on its continuation; else left out
};

/// A calibration without its faults.
class Sensor {
  public:
    /// Sorts both lists by CT and leaves out what no tuning can hold; each finding is told in
    /// `faults`. After an error there the sensor has no points.
    Sensor(const Calibration& calibration, const PointChoices& choices, Faults& faults);

    /// Through points without faults, by rising CT. At least two.
    explicit Sensor(const std::vector<TunedPoint>& points);

    /// One point a calibrated matrix, by rising CT, red rising and blue falling; where these are
    /// fewer than three, also the ends and the middle of the locus.
    const std::vector<TunedPoint>& points() const { return points_; }

    /// The point at a CT: one of points(), or between them. Only with points.
    TunedPoint at(double kelvin) const;

  private:
    void take_locus(const Calibration& calibration, Faults& faults);
    void take_matrices(const Calibration& calibration, const PointChoices& choices, Faults& faults);
    void take_points(const Calibration& calibration, Faults& faults);

    std::vector<LocusPoint> locus_;
    std::vector<CalibratedMatrix> matrices_;
    std::vector<TunedPoint> points_;
};

}  // namespace imgtune::workbench

#endif
