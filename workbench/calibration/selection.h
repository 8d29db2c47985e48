#ifndef IMGTUNE_WORKBENCH_CALIBRATION_SELECTION_H
#define IMGTUNE_WORKBENCH_CALIBRATION_SELECTION_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "workbench/calibration/points.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// i4Method.
enum class CcmMethod : std::int32_t { polynomial = 1, blend = 2 };

/// Fills in the normal row: gains, matrices, count and kelvin; for either method the polynomial
/// too. 3..8 points by rising CT.
void fill_normal_row(Tuning& tuning, std::span<const TunedPoint> points);

/// What the library makes of the light of a calibrated point, against the calibrated matrix.
struct PointError {
    double kelvin = 0.0;
    bool kept = false;                ///< a tuned point; else dropped
    std::int32_t largest = 0;         ///< of the nine coefficients, in 1/512
    double mean_difference = 0.0;     ///< CIEDE2000 over the chart's 24 patches
    double largest_difference = 0.0;  ///< CIEDE2000
};

/// Runs the camera in normal light at every point, without temporal average or output gamut.
std::vector<PointError> point_errors(const Tuning& tuning, std::span<const TunedPoint> points);

/// The points that a tuning keeps.
struct Selection {
    std::vector<std::size_t> kept;  ///< rising indices
    std::uint64_t tried = 0;        ///< sets of points that were judged
    bool all = false;               ///< these were all sets with both ends
};

/// Keeps both ends and those others that lose least by the library's own answer: the largest error
/// of a coefficient at the dropped points is the least; of equal ones, that at all points, then the
/// sum over all. Where there are more than some ten thousand sets, exchanges single points until
/// none helps.
/// @param most 3..8
Selection select_points(std::span<const TunedPoint> points, std::size_t most, CcmMethod method);

}  // namespace imgtune::workbench

#endif
