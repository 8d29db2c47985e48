#ifndef IMGTUNE_WORKBENCH_CALIBRATION_CANDIDATES_H
#define IMGTUNE_WORKBENCH_CALIBRATION_CANDIDATES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "workbench/calibration/lights.h"
#include "workbench/calibration/tuned_row.h"

namespace imgtune::workbench {

/// How tuned values come of calibrated matrices.
enum class CcmFit {
    points,  ///< the tuned matrices are the calibrated ones; a polynomial is laid through these
    lights,  ///< by least squares over lights along and beside the locus, through what the library
             ///< makes of them
};

/// CIEDE2000 over the chart's 24 patches between what the library's matrix shows and what the
/// calibrated one does: the matrix alone, gains taken as perfect.
struct LightsError {
    double mean = 0.0;   ///< over patches and lights
    double worst = 0.0;  ///< of any patch in any light
    std::size_t worst_patch = 0;
    double worst_kelvin = 0.0;
    double worst_beside = 0.0;  ///< in ln gain, as in JudgedLight
};

LightsError lights_error(const Tuning& tuning, const std::vector<JudgedLight>& lights);

/// One way to tune, judged by the library itself along the whole locus and beside it.
struct Candidate {
    CcmMethod method = CcmMethod::blend;
    CcmFit fit = CcmFit::points;
    std::vector<double> kelvins;  ///< tuned CTs, rising
    LightsError error;
    std::uint64_t sets = 0;  ///< sets of CTs that were compared for this one; 0: they were named

    /// The lower the better: the mean, and a sixth of the worst patch.
    double score() const { return error.mean + error.worst / kWorstCounts; }
    static constexpr double kWorstCounts = 6.0;
};

/// What the user decided; the rest is tried.
struct TrialChoices {
    std::optional<CcmMethod> method;
    std::optional<CcmFit> fit;
    std::vector<TunedPoint> named;  ///< tuned points; none: chosen among the calibrated ones
    std::size_t most = 8;           ///< of tuned points, 3..8
    double stretch = 1.0;           ///< of all gains; those of `named` are stretched already
};

struct Trials {
    std::vector<Candidate> candidates;
    std::size_t chosen = 0;
    /// Of the chosen one: as they are tuned, and the polynomial to go with them.
    std::vector<TunedPoint> points;
    ISP_CCM_POLY22_T polynomial{};
};

/// The blend of most points with the calibrated matrices, which is what tuning point by point
/// gives; none where the choices leave no such candidate.
const Candidate* point_by_point(const std::vector<Candidate>& candidates);

/// Tries every count of tuned points from 3 on, both methods and both fits, as far as the choices
/// leave them open. The choice has the least score among those candidates that are no worse than
/// the blend of most calibrated points, in the mean and in the worst patch.
/// @param empty a tuning without a normal row, but with codec and caller settings
Trials try_all(const Sensor& sensor, const TrialChoices& choices, const Tuning& empty);

/// A tuning with these points, made by one method and fit; its error is not measured.
Tuning tune_points(const Sensor& sensor, const std::vector<TunedPoint>& points, CcmMethod method,
                   CcmFit fit, double stretch, const Tuning& empty);

}  // namespace imgtune::workbench

#endif
