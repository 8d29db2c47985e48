#ifndef IMGTUNE_WORKBENCH_APPEARANCE_CHART_VIEW_H
#define IMGTUNE_WORKBENCH_APPEARANCE_CHART_VIEW_H

#include <array>
#include <cstddef>
#include <optional>

#include "workbench/appearance/patches.h"
#include "workbench/appearance/real_matrix.h"

namespace imgtune::workbench {

/// A colour difference is seen from here on: CIEDE2000, in one patch, and as the mean of the chart.
/// Half of all observers see 0.8 side by side (Paravina et al., J. Esthet. Restor. Dent. 27 S1,
/// 2015).
inline constexpr double kVisibleWorst = 1.0;
inline constexpr double kVisibleMean = 0.5;

/// CIEDE2000 of each patch, in the order of chart_patches().
using PatchDifferences = std::array<float, kPatchCount>;

/// The same in short.
struct ChartDifference {
    double mean = 0.0;
    double worst = 0.0;
    std::size_t worst_patch = 0;
    double chosen = 0.0;  ///< of the patch that was asked for
};

/// How a camera shows a scene: white balance off by a factor in each channel, then the matrix.
class ChartView {
  public:
    /// White balance is perfect.
    explicit ChartView(const RealMatrix& matrix);

    /// `gain_error`: red, green and blue gain over those that would make grey grey.
    ChartView(const RealMatrix& matrix, const std::array<double, 3>& gain_error);

    const RealMatrix& matrix() const { return matrix_; }

    /// Back from what is shown to the scene; none for a view that loses colours.
    const RealMatrix& inverse() const { return inverse_; }
    bool has_inverse() const { return has_inverse_; }

  private:
    RealMatrix matrix_;
    RealMatrix inverse_{};
    bool has_inverse_ = false;
};

/// Colours of all patches, a plane a component.
struct PatchLabs {
    alignas(16) std::array<float, kPatchCount> lightness;
    alignas(16) std::array<float, kPatchCount> a;
    alignas(16) std::array<float, kPatchCount> b;
};

/// Two views of one scene, ready to be compared; see patch_differences().
class ChartComparison {
  public:
    ChartComparison(const ChartView& reference, const ChartView& actual);

    PatchDifferences differences() const;
    /// Above them, patch by patch, by up to twice that and mostly less; for a tenth of the cost.
    PatchDifferences bounds() const;

  private:
    bool equal_;
    bool has_inverse_;
    PatchLabs wanted_;  ///< without an inverse alone
    PatchLabs shown_;
};

/// What differs between two views of one scene: that which `reference` shows as the chart's own
/// colours. A reference without an inverse takes the chart's values as the camera's.
PatchDifferences patch_differences(const ChartView& reference, const ChartView& actual);

ChartDifference in_short(const PatchDifferences& patches, std::size_t chosen);

ChartDifference chart_difference(const ChartView& reference, const ChartView& actual,
                                 std::size_t chosen);

/// The same where it may be this large, in the mean or in one patch; nothing where it surely is
/// smaller, for a fraction of the cost.
std::optional<ChartDifference> chart_difference_from(const ChartView& reference,
                                                     const ChartView& actual, std::size_t chosen,
                                                     double mean, double worst);

}  // namespace imgtune::workbench

#endif
