#include "workbench/appearance/color_difference.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>

#include "workbench/appearance/patches.h"

namespace imgtune::workbench {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kPower25To7 = 6103515625.0;

constexpr double kToXyz[3][3] = {{0.4124564, 0.3575761, 0.1804375},
                                 {0.2126729, 0.7151522, 0.0721750},
                                 {0.0193339, 0.1191920, 0.9503041}};

double radians(double degrees) {
    return degrees * kPi / 180.0;
}

double lab_function(double t) {
    return t > 216.0 / 24389.0 ? std::cbrt(t) : (24389.0 / 27.0 * t + 16.0) / 116.0;
}

/// Of a chroma, how much of it counts as strongly coloured: 0..1.
double chroma_share(double chroma) {
    const double power = std::pow(chroma, 7.0);
    return std::sqrt(power / (power + kPower25To7));
}

/// Degrees, 0..360; 0 for grey.
double hue_angle(double a, double b) {
    if (a == 0.0 && b == 0.0) return 0.0;
    const double degrees = std::atan2(b, a) * 180.0 / kPi;
    return degrees < 0.0 ? degrees + 360.0 : degrees;
}

/// Chroma and hue in degrees, a* stretched near grey.
struct Polar {
    double chroma;
    double hue;
};

/// Difference and mean of two hues the short way round; without chroma one hue is as good as any.
struct HuePair {
    double difference;
    double mean;
};

HuePair hue_pair(const Polar& x, const Polar& y) {
    if (x.chroma * y.chroma == 0.0) return {0.0, x.hue + y.hue};
    const double direct = y.hue - x.hue;
    const double sum = x.hue + y.hue;
    if (std::abs(direct) <= 180.0) return {direct, sum / 2.0};
    return {direct > 180.0 ? direct - 360.0 : direct + 360.0,
            sum < 360.0 ? (sum + 360.0) / 2.0 : (sum - 360.0) / 2.0};
}

/// Large differences in some hues look smaller than in others.
double hue_weight(double hue) {
    return 1.0 - 0.17 * std::cos(radians(hue - 30.0)) + 0.24 * std::cos(radians(2.0 * hue)) +
           0.32 * std::cos(radians(3.0 * hue + 6.0)) - 0.20 * std::cos(radians(4.0 * hue - 63.0));
}

Eigen::Matrix3d as_eigen(const RealMatrix& matrix) {
    return Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(matrix.data());
}

Lab lab_of(const Eigen::Vector3d& rgb) {
    return to_lab({rgb[0], rgb[1], rgb[2]});
}

}  // namespace

RealMatrix to_relative_xyz(const RealMatrix& matrix) {
    static constexpr auto kToWhite = [] {
        RealMatrix shares{};
        for (std::size_t row = 0; row < 3; ++row) {
            const double white = kToXyz[row][0] + kToXyz[row][1] + kToXyz[row][2];
            for (std::size_t k = 0; k < 3; ++k) shares[3 * row + k] = kToXyz[row][k] / white;
        }
        return shares;
    }();
    RealMatrix product{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t k = 0; k < 3; ++k) {
                product[3 * row + column] += kToWhite[3 * row + k] * matrix[3 * k + column];
            }
        }
    }
    return product;
}

Lab to_lab(const std::array<double, 3>& linear_srgb) {
    double f[3];
    for (int row = 0; row < 3; ++row) {
        double value = 0.0;
        double white = 0.0;
        for (std::size_t column = 0; column < 3; ++column) {
            value += kToXyz[row][column] * linear_srgb[column];
            white += kToXyz[row][column];
        }
        f[row] = lab_function(value / white);
    }
    return {116.0 * f[1] - 16.0, 500.0 * (f[0] - f[1]), 200.0 * (f[1] - f[2])};
}

double ciede2000(const Lab& x, const Lab& y) {
    const double mean_chroma = (std::hypot(x.a, x.b) + std::hypot(y.a, y.b)) / 2.0;
    const double stretch = 1.0 + 0.5 * (1.0 - chroma_share(mean_chroma));
    const auto polar = [stretch](const Lab& c) {
        return Polar{std::hypot(stretch * c.a, c.b), hue_angle(stretch * c.a, c.b)};
    };
    const Polar px = polar(x);
    const Polar py = polar(y);
    const HuePair hue = hue_pair(px, py);
    const double chroma = (px.chroma + py.chroma) / 2.0;
    const double from_middle = (x.lightness + y.lightness) / 2.0 - 50.0;

    const double square = from_middle * from_middle;
    const double lightness_term =
        (y.lightness - x.lightness) / (1.0 + 0.015 * square / std::sqrt(20.0 + square));
    const double chroma_term = (py.chroma - px.chroma) / (1.0 + 0.045 * chroma);
    const double hue_term = 2.0 * std::sqrt(px.chroma * py.chroma) *
                            std::sin(radians(hue.difference / 2.0)) /
                            (1.0 + 0.015 * chroma * hue_weight(hue.mean));
    const double from_blue = (hue.mean - 275.0) / 25.0;
    const double rotation =
        -2.0 * chroma_share(chroma) * std::sin(radians(60.0 * std::exp(-from_blue * from_blue)));
    return std::sqrt(std::max(0.0, lightness_term * lightness_term + chroma_term * chroma_term +
                                       hue_term * hue_term + rotation * chroma_term * hue_term));
}

ChartError chart_error(const RealMatrix& reference, const RealMatrix& actual) {
    const Eigen::FullPivLU<Eigen::Matrix3d> solver(as_eigen(reference));
    const bool invertible = solver.isInvertible();
    ChartError error{};
    for (std::size_t i = 0; i < error.patches.size(); ++i) {
        const std::array<double, 3> values = linear(chart_patches()[i]);
        const Eigen::Vector3d patch(values[0], values[1], values[2]);
        const Eigen::Vector3d camera = invertible ? Eigen::Vector3d(solver.solve(patch)) : patch;
        ChartError::PatchError& result = error.patches[i];
        result.reference = lab_of(as_eigen(reference) * camera);
        const Eigen::Vector3d seen = as_eigen(actual) * camera;
        result.actual_rgb = {seen[0], seen[1], seen[2]};
        result.actual = to_lab(result.actual_rgb);
        result.difference = ciede2000(result.reference, result.actual);
        error.mean += result.difference / 24.0;
        if (result.difference > error.largest) {
            error.largest = result.difference;
            error.largest_patch = i;
        }
    }
    return error;
}

}  // namespace imgtune::workbench
