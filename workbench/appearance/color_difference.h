#ifndef IMGTUNE_WORKBENCH_APPEARANCE_COLOR_DIFFERENCE_H
#define IMGTUNE_WORKBENCH_APPEARANCE_COLOR_DIFFERENCE_H

#include <array>
#include <cstddef>

#include "workbench/appearance/real_matrix.h"

namespace imgtune::workbench {

/// CIE L*a*b* under D65: lightness 0..100, a* green to red, b* blue to yellow.
struct Lab {
    double lightness;
    double a;
    double b;
};

/// A matrix followed by the one from linear sRGB to CIE XYZ, each of X, Y and Z relative to
/// white's.
RealMatrix to_relative_xyz(const RealMatrix& matrix);

/// Of linear sRGB, 1.0 = white; values below 0 and above 1 are not cut off.
Lab to_lab(const std::array<double, 3>& linear_srgb);

/// The colour difference CIEDE2000 (CIE 142:2001, all weights 1): about 1 is just visible side by
/// side. Symmetric, 0 for equal colours.
double ciede2000(const Lab& x, const Lab& y);

/// What the chart's 24 patches look like through two matrices.
struct ChartError {
    struct PatchError {
        Lab reference;
        Lab actual;
        std::array<double, 3> actual_rgb;  ///< linear sRGB, 1.0 = white, not cut off
        double difference;                 ///< CIEDE2000
    };
    std::array<PatchError, 24> patches;  ///< in the order of chart_patches()
    double mean;                         ///< CIEDE2000 over the 24
    double largest;
    std::size_t largest_patch;
};

/// The matrix alone, on white-balanced linear RGB: camera values that `reference` turns into the
/// chart's own colours go through `actual`. A reference without an inverse takes the chart's values
/// as the camera's.
ChartError chart_error(const RealMatrix& reference, const RealMatrix& actual);

}  // namespace imgtune::workbench

#endif
