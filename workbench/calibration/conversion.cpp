#include "workbench/calibration/conversion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "ccm/matrix_rows.h"
#include "common/arithmetic.h"

namespace imgtune::workbench {

namespace {

constexpr double kScale = kUnity;
constexpr double kLuma[3] = {0.2126, 0.7152, 0.0722};

std::int32_t round_half_up(double value) {
    return static_cast<std::int32_t>(
        std::clamp(std::floor(value + 0.5), -2147483648.0, 2147483647.0));
}

double between(double a, double b, double share_of_b) {
    return a + (b - a) * share_of_b;
}

}  // namespace

AWB_GAIN_T to_gain(const LocusPoint& point) {
    return {round_half_up(kScale / point.red), kUnity, round_half_up(kScale / point.blue)};
}

LocusPoint locus_at(std::span<const LocusPoint> locus, double kelvin) {
    for (const LocusPoint& point : locus) {
        if (point.kelvin == kelvin) return point;
    }
    const auto [upper, share] = place_in_mired(locus, kelvin);
    const LocusPoint& a = locus[upper - 1];
    const LocusPoint& b = locus[upper];
    if (share >= 0.0 && share <= 1.0) {
        return {kelvin, between(a.red, b.red, share), between(a.blue, b.blue, share), 0};
    }
    return {kelvin, std::exp(between(std::log(a.red), std::log(b.red), share)),
            std::exp(between(std::log(a.blue), std::log(b.blue), share)), 0};
}

RealMatrix matrix_at(std::span<const CalibratedMatrix> matrices, double kelvin) {
    if (kelvin <= matrices.front().kelvin) return matrices.front().coefficients;
    if (kelvin >= matrices.back().kelvin) return matrices.back().coefficients;
    const auto [upper, share] = place_in_mired(matrices, kelvin);
    const CalibratedMatrix& b = matrices[upper];
    if (kelvin == b.kelvin) return b.coefficients;
    return mix(matrices[upper - 1].coefficients, b.coefficients, share);
}

double row_sum(const RealMatrix& matrix, std::size_t row) {
    return matrix[3 * row] + matrix[3 * row + 1] + matrix[3 * row + 2];
}

RealMatrix divide_rows(const RealMatrix& matrix) {
    RealMatrix divided{};
    for (std::size_t k = 0; k < 9; ++k) divided[k] = matrix[k] / row_sum(matrix, k / 3);
    return divided;
}

NSIspTuning::ISP_CCM_T to_fixed(const RealMatrix& matrix) {
    NSIspTuning::ISP_CCM_T fixed{};
    for (std::size_t k = 0; k < 9; ++k) fixed.i4Coef[k] = round_half_up(kScale * matrix[k]);
    close_rows(fixed, kUnity);
    return fixed;
}

RealMatrix to_real(const NSIspTuning::ISP_CCM_T& matrix) {
    RealMatrix real{};
    for (std::size_t k = 0; k < 9; ++k) real[k] = matrix.i4Coef[k] / kScale;
    return real;
}

RealMatrix desaturate(const RealMatrix& matrix, double saturation) {
    RealMatrix result{};
    for (std::size_t column = 0; column < 3; ++column) {
        double luma = 0.0;
        for (std::size_t row = 0; row < 3; ++row) luma += kLuma[row] * matrix[3 * row + column];
        for (std::size_t row = 0; row < 3; ++row) {
            result[3 * row + column] =
                saturation * matrix[3 * row + column] + (1.0 - saturation) * luma;
        }
    }
    return result;
}

RealMatrix mix(const RealMatrix& a, const RealMatrix& b, double share_of_b) {
    RealMatrix mixed{};
    for (std::size_t k = 0; k < 9; ++k) mixed[k] = between(a[k], b[k], share_of_b);
    return mixed;
}

}  // namespace imgtune::workbench
