#ifndef IMGTUNE_WORKBENCH_APPEARANCE_PATCH_COLORS_H
#define IMGTUNE_WORKBENCH_APPEARANCE_PATCH_COLORS_H

#include <array>
#include <span>

#include "workbench/appearance/chart_view.h"
#include "workbench/appearance/color_difference.h"

// color_difference.h for a whole chart at once, in single precision: what is measured frame after
// frame. Within 0.01 of it, which a test holds.

namespace imgtune::workbench {

/// Colours of all patches, a plane a component.
struct PatchLabs {
    alignas(16) std::array<float, kPatchCount> lightness;
    alignas(16) std::array<float, kPatchCount> a;
    alignas(16) std::array<float, kPatchCount> b;
};

/// The chart through a matrix.
PatchLabs patch_labs(const RealMatrix& matrix);

PatchDifferences ciede2000(const PatchLabs& x, const PatchLabs& y);

/// Above ciede2000, patch by patch, by up to twice that and for a twentieth of its cost.
PatchDifferences ciede2000_bounds(const PatchLabs& x, const PatchLabs& y);

}  // namespace imgtune::workbench

#endif
