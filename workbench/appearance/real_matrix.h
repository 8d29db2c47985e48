#ifndef IMGTUNE_WORKBENCH_APPEARANCE_REAL_MATRIX_H
#define IMGTUNE_WORKBENCH_APPEARANCE_REAL_MATRIX_H

#include <array>

namespace imgtune::workbench {

/// A 3x3 matrix on white-balanced linear RGB, row after row, 1.0 = unity.
using RealMatrix = std::array<double, 9>;

}  // namespace imgtune::workbench

#endif
