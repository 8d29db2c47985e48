#ifndef IMGTUNE_WORKBENCH_CALIBRATION_VISIBLE_FIT_H
#define IMGTUNE_WORKBENCH_CALIBRATION_VISIBLE_FIT_H

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "workbench/appearance/real_matrix.h"

namespace imgtune::workbench {

/// How a small change of a matrix shows: for the changes d of the six off-diagonals, d' metric d
/// is the mean over the chart's patches of CIEDE2000 squared. Symmetric, row after row.
using VisibleMetric = std::array<double, 36>;

/// About the matrix that shows the chart in its own colours.
VisibleMetric visible_metric(const RealMatrix& wanted);

/// By the metric of `wanted`.
double visible_square(const VisibleMetric& metric, const RealMatrix& wanted,
                      const RealMatrix& made);

/// The most matrices that a result is made of.
inline constexpr std::size_t kMostShares = 8;

/// A light, and what the library makes its matrix of: the sum of tuned matrices times shares.
struct FitLight {
    RealMatrix wanted{};
    VisibleMetric metric{};
    double importance = 1.0;
    std::array<double, kMostShares> shares{};
};

/// The matrices with which the sum over the lights of importance times visible square is least.
/// One that no light has a share of stays as it is in `start`, and all are drawn to it a little,
/// so that there is one answer.
std::vector<RealMatrix> fit_matrices(std::span<const FitLight> lights,
                                     std::span<const RealMatrix> start);

}  // namespace imgtune::workbench

#endif
