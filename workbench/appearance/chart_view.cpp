#include "workbench/appearance/chart_view.h"

#include <algorithm>
#include <cmath>

#include "workbench/appearance/patch_colors.h"

namespace imgtune::workbench {

namespace {

/// A determinant below this share of the largest coefficient's cube is none.
constexpr double kLeastDeterminant = 1e-9;

RealMatrix times(const RealMatrix& a, const RealMatrix& b) {
    RealMatrix product{};
    for (std::size_t row = 0; row < 9; row += 3) {
        for (std::size_t column = 0; column < 3; ++column) {
            product[row + column] =
                a[row] * b[column] + a[row + 1] * b[column + 3] + a[row + 2] * b[column + 6];
        }
    }
    return product;
}

RealMatrix adjugate(const RealMatrix& m) {
    return {m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
            m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
            m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
}

/// Rounded once: the hue of a grey patch is what rounding leaves.
const PatchLabs& chart_labs() {
    static const PatchLabs kChart = [] {
        PatchLabs chart;
        for (std::size_t i = 0; i < kPatchCount; ++i) {
            const Lab lab = to_lab(linear(chart_patches()[i]));
            chart.lightness[i] = static_cast<float>(lab.lightness);
            chart.a[i] = static_cast<float>(lab.a);
            chart.b[i] = static_cast<float>(lab.b);
        }
        return chart;
    }();
    return kChart;
}

}  // namespace

ChartView::ChartView(const RealMatrix& matrix) : matrix_(matrix) {
    const RealMatrix turned = adjugate(matrix);
    const double determinant =
        matrix[0] * turned[0] + matrix[1] * turned[3] + matrix[2] * turned[6];
    double largest = 0.0;
    for (const double value : matrix) largest = std::max(largest, std::abs(value));
    has_inverse_ = std::abs(determinant) > kLeastDeterminant * largest * largest * largest;
    if (!has_inverse_) return;
    for (std::size_t k = 0; k < turned.size(); ++k) inverse_[k] = turned[k] / determinant;
}

ChartView::ChartView(const RealMatrix& matrix, const std::array<double, 3>& gain_error)
    : ChartView([&] {
          RealMatrix behind = matrix;
          for (std::size_t k = 0; k < behind.size(); ++k) behind[k] *= gain_error[k % 3];
          return behind;
      }()) {}

ChartComparison::ChartComparison(const ChartView& reference, const ChartView& actual)
    : equal_(reference.matrix() == actual.matrix()), has_inverse_(reference.has_inverse()) {
    if (equal_) return;
    if (!has_inverse_) wanted_ = patch_labs(reference.matrix());
    shown_ =
        patch_labs(has_inverse_ ? times(actual.matrix(), reference.inverse()) : actual.matrix());
}

PatchDifferences ChartComparison::differences() const {
    if (equal_) return {};  // to the last digit
    return ciede2000(has_inverse_ ? chart_labs() : wanted_, shown_);
}

PatchDifferences ChartComparison::bounds() const {
    if (equal_) return {};
    static const PatchFactors kFactors = patch_factors(chart_labs());
    if (has_inverse_) return ciede2000_bounds(chart_labs(), kFactors, shown_);
    return ciede2000_bounds(wanted_, patch_factors(wanted_), shown_);
}

PatchDifferences patch_differences(const ChartView& reference, const ChartView& actual) {
    return ChartComparison(reference, actual).differences();
}

ChartDifference in_short(const PatchDifferences& patches, std::size_t chosen) {
    ChartDifference difference;
    double sum = 0.0;
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        sum += static_cast<double>(patches[i]);
        if (static_cast<double>(patches[i]) <= difference.worst) continue;
        difference.worst = static_cast<double>(patches[i]);
        difference.worst_patch = i;
    }
    difference.mean = sum / static_cast<double>(kPatchCount);
    difference.chosen = static_cast<double>(patches[chosen]);
    return difference;
}

ChartDifference chart_difference(const ChartView& reference, const ChartView& actual,
                                 std::size_t chosen) {
    return in_short(patch_differences(reference, actual), chosen);
}

std::optional<ChartDifference> chart_difference_from(const ChartView& reference,
                                                     const ChartView& actual, std::size_t chosen,
                                                     double mean, double worst) {
    const ChartComparison comparison(reference, actual);
    const PatchDifferences bounds = comparison.bounds();
    double sum = 0.0;
    bool may = false;
    for (const float bound : bounds) {
        sum += static_cast<double>(bound);
        may = may || static_cast<double>(bound) >= worst;
    }
    if (!may && sum < mean * static_cast<double>(kPatchCount)) return std::nullopt;
    return in_short(comparison.differences(), chosen);
}

}  // namespace imgtune::workbench
