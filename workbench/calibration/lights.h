#ifndef IMGTUNE_WORKBENCH_CALIBRATION_LIGHTS_H
#define IMGTUNE_WORKBENCH_CALIBRATION_LIGHTS_H

#include <imgtune/awb_gain.h>

#include <cstddef>
#include <span>
#include <vector>

#include "workbench/appearance/real_matrix.h"
#include "workbench/calibration/points.h"

namespace imgtune::workbench {

/// A light that a tuning is judged in.
struct JudgedLight {
    double kelvin = 0.0;
    double beside = 0.0;  ///< of the gains, off the locus in ln gain; above 0: red and blue raised
    AWB_GAIN_T gain{};
    RealMatrix matrix{};  ///< the calibrated one of this CT, whatever the gains
};

/// What white balance leaves beside the locus outdoors: the standard deviation of ln gain over
/// 1,371 measured scenes in natural light (Cube++, challenge/train/general.csv).
inline constexpr double kLocusScatter = 0.018;

/// `along` lights evenly in mired from the lowest to the highest calibrated CT, and every
/// calibrated one; each on the locus and at every multiple of kLocusScatter up to `deviations`
/// on both sides of it. Gains are multiplied by `stretch`.
std::vector<JudgedLight> judged_lights(const Sensor& sensor, std::size_t along, int deviations,
                                       double stretch);

/// Evenly in mired, both ends exactly. At least two.
std::vector<double> even_kelvins(double lowest, double highest, std::size_t count);

AWB_GAIN_T stretched(const AWB_GAIN_T& gain, double factor);

}  // namespace imgtune::workbench

#endif
