#include <Eigen/Dense>
#include <cmath>
#include <cstddef>

#include "workbench/calibration/conversion.h"

namespace imgtune::workbench {

namespace {

using Eigen::ArrayXd;
using Eigen::Index;

constexpr double kStoredGain = 100.0;  // of means and deviations

std::int32_t stored(double value, double scale) {
    return static_cast<std::int32_t>(std::lround(value * scale));
}

struct Spread {
    double mean;
    double deviation;
};

Spread spread_of(const ArrayXd& values) {
    const double mean = values.mean();
    return {mean, std::sqrt((values - mean).square().mean())};
}

}  // namespace

ISP_CCM_POLY22_T fit_polynomial(std::span<const AWB_GAIN_T> gains,
                                std::span<const NSIspTuning::ISP_CCM_T> matrices) {
    const auto count = static_cast<Index>(gains.size());
    ArrayXd red(count);
    ArrayXd blue(count);
    for (Index i = 0; i < count; ++i) {
        red[i] = gains[static_cast<std::size_t>(i)].i4R;
        blue[i] = gains[static_cast<std::size_t>(i)].i4B;
    }
    const double chord_red = red[count - 1] - red[0];
    const double chord_blue = blue[count - 1] - blue[0];
    const ArrayXd along = ((red - red[0]) * chord_red + (blue - blue[0]) * chord_blue) /
                          (chord_red * chord_red + chord_blue * chord_blue);
    const ArrayXd projected_red = red[0] + along * chord_red;
    const Spread r = spread_of(projected_red);
    const Spread b = spread_of(blue[0] + along * chord_blue);

    Eigen::MatrixX2d terms(count, 2);
    terms.col(0).setOnes();
    terms.col(1) = (projected_red - r.mean) / r.deviation;
    Eigen::Matrix<double, Eigen::Dynamic, 9> coefficients(count, 9);
    for (Index i = 0; i < count; ++i) {
        for (Index k = 0; k < 9; ++k) {
            coefficients(i, k) = matrices[static_cast<std::size_t>(i)].i4Coef[k];
        }
    }
    const Eigen::Matrix<double, 2, 9> fit = terms.colPivHouseholderQr().solve(coefficients);

    ISP_CCM_POLY22_T polynomial{};
    polynomial.i4R_AVG = stored(r.mean, kStoredGain);
    polynomial.i4R_STD = stored(r.deviation, kStoredGain);
    polynomial.i4B_AVG = stored(b.mean, kStoredGain);
    polynomial.i4B_STD = stored(b.deviation, kStoredGain);
    for (Index k = 0; k < 9; ++k) {
        polynomial.i4P00[k] = stored(fit(0, k), kStoredTerm);
        polynomial.i4P10[k] = stored(fit(1, k), kStoredTerm / 2);
        polynomial.i4P01[k] = -polynomial.i4P10[k];
    }
    return polynomial;
}

}  // namespace imgtune::workbench
