#ifndef IMGTUNE_WORKBENCH_CALIBRATION_TUNED_ROW_H
#define IMGTUNE_WORKBENCH_CALIBRATION_TUNED_ROW_H

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "workbench/calibration/points.h"
#include "workbench/calibration/visible_fit.h"
#include "workbench/camera/camera.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// i4Method.
enum class CcmMethod : std::int32_t { polynomial = 1, blend = 2 };

/// Fills in the normal row: gains, matrices, count and kelvin; for either method the polynomial
/// too. 3..8 points by rising CT.
void fill_normal_row(Tuning& tuning, std::span<const TunedPoint> points);

/// The library in normal light, without temporal average or output gamut.
class Bench {
  public:
    explicit Bench(const Tuning& tuning);

    NSIspTuning::ISP_CCM_T matrix_at(const AWB_GAIN_T& gain);

  private:
    Camera camera_;
};

/// What the library makes its matrix of, asked of the library itself: its result is a sum of tuned
/// matrices, or of the polynomial's two terms, times shares that depend on the gains alone.
class Shares {
  public:
    /// Of a tuning whose normal row is filled in.
    explicit Shares(const Tuning& tuning);

    /// Blend: of each tuned matrix. Polynomial: 1, and the gain's place on the chord in
    /// standard deviations.
    std::array<double, kMostShares> at(const AWB_GAIN_T& gain);

  private:
    bool polynomial_;
    std::vector<Bench> probes_;
};

/// What the library makes of the light of a calibrated point, against the calibrated matrix.
struct PointError {
    double kelvin = 0.0;
    bool kept = false;                ///< a tuned point; else dropped
    std::int32_t largest = 0;         ///< of the nine coefficients, in 1/512
    double mean_difference = 0.0;     ///< CIEDE2000 over the chart's 24 patches
    double largest_difference = 0.0;  ///< CIEDE2000
};

std::vector<PointError> point_errors(const Tuning& tuning, std::span<const TunedPoint> points);

}  // namespace imgtune::workbench

#endif
