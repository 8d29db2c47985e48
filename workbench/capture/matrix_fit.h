#ifndef IMGTUNE_WORKBENCH_CAPTURE_MATRIX_FIT_H
#define IMGTUNE_WORKBENCH_CAPTURE_MATRIX_FIT_H

#include <array>
#include <cstddef>

#include "workbench/capture/capture_study.h"

namespace imgtune::workbench {

using PatchColors = std::array<Rgb, kChartPatches>;
using PatchWeights = std::array<double, kChartPatches>;

/// The greys of the chart: patches 19 to 24. The last is nearly black, and says little of a colour.
inline constexpr std::size_t kFirstGrey = 18;
inline constexpr std::size_t kBlackPatch = 23;

/// What turns a neutral patch's red and blue into its green.
struct WhiteBalance {
    double red = 1.0;
    double blue = 1.0;
};

/// Ratio of the sums over the greys of a weight above 0, black left out; a reference that is not
/// neutral is taken into account. Needs one such grey, and camera values above 0.
WhiteBalance white_balance(const PatchColors& camera, const PatchColors& reference,
                           const PatchWeights& weights);

struct MatrixFit {
    RealMatrix matrix{};    ///< on balanced camera values; every row sums to 1
    double exposure = 1.0;  ///< factor of the camera values before it
    PatchColors fitted{};
    PatchWeights residual{};  ///< CIEDE2000
    double mean = 0.0;        ///< of the residual, unweighted, over the patches of a weight above 0
};

/// Linear least squares of the colours, with the exposure that the greys give.
MatrixFit fit_linear(const PatchColors& balanced, const PatchColors& reference,
                     const PatchWeights& weights);

/// From there the least weighted sum of squared CIEDE2000, exposure included: what the eye sees of
/// the error. Never worse by that sum than where it starts.
MatrixFit fit_visible(const MatrixFit& start, const PatchColors& balanced,
                      const PatchColors& reference, const PatchWeights& weights);

/// The diagonal is what the rows are made of: with red and blue swapped a chart fits as well.
bool has_dominant_diagonal(const RealMatrix& matrix);

}  // namespace imgtune::workbench

#endif
