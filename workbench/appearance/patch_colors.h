#ifndef IMGTUNE_WORKBENCH_APPEARANCE_PATCH_COLORS_H
#define IMGTUNE_WORKBENCH_APPEARANCE_PATCH_COLORS_H

#include <array>
#include <span>

#include "workbench/appearance/chart_view.h"
#include "workbench/appearance/color_difference.h"

// color_difference.h for a whole chart at once, in single precision: what is measured frame after
// frame. Within 0.01 of it, which a test holds.

namespace imgtune::workbench {

/// The chart through a matrix.
PatchLabs patch_labs(const RealMatrix& matrix);

PatchDifferences ciede2000(const PatchLabs& x, const PatchLabs& y);

/// What a colour's own chroma says of its difference from any other.
struct PatchFactors {
    alignas(16) std::array<float, kPatchCount> a;      ///< of the squared difference in a
    alignas(16) std::array<float, kPatchCount> color;  ///< of that and of the one in b
};
PatchFactors patch_factors(const PatchLabs& x);

/// Above ciede2000, patch by patch, by less than half for strong colours and up to twice for greys,
/// for a twentieth of its cost. `factors` are those of x.
PatchDifferences ciede2000_bounds(const PatchLabs& x, const PatchFactors& factors,
                                  const PatchLabs& y);

}  // namespace imgtune::workbench

#endif
