#include "workbench/calibration/visible_fit.h"

#include <Eigen/Dense>

#include "workbench/appearance/chart_view.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/appearance/patches.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using Eigen::Index;
using OffDiagonals = Eigen::Matrix<double, 6, 1>;
using Metric = Eigen::Matrix<double, 6, 6, Eigen::RowMajor>;

constexpr double kLabStep = 0.01;
constexpr double kRgbStep = 1e-5;
constexpr double kDrawnToStart = 1e-3;  // against a light whose share is 1

Eigen::Vector3d vector_of(const Lab& lab) {
    return {lab.lightness, lab.a, lab.b};
}

Lab lab_of_vector(const Eigen::Vector3d& v) {
    return {v[0], v[1], v[2]};
}

/// CIEDE2000 squared of small steps away from a colour, as a quadratic form of L*, a* and b*.
Eigen::Matrix3d metric_of_lab(const Lab& lab) {
    const Eigen::Vector3d at = vector_of(lab);
    const auto square = [&](const Eigen::Vector3d& step) {
        const double difference = ciede2000(lab_of_vector(at - step), lab_of_vector(at + step));
        return difference * difference / (4.0 * kLabStep * kLabStep);
    };
    Eigen::Matrix3d metric;
    for (Index i = 0; i < 3; ++i) {
        metric(i, i) = square(kLabStep * Eigen::Vector3d::Unit(i));
    }
    for (Index i = 0; i < 3; ++i) {
        for (Index j = 0; j < i; ++j) {
            const double both =
                square(kLabStep * (Eigen::Vector3d::Unit(i) + Eigen::Vector3d::Unit(j)));
            metric(i, j) = metric(j, i) = (both - metric(i, i) - metric(j, j)) / 2.0;
        }
    }
    return metric;
}

/// The same for small steps of linear sRGB.
Eigen::Matrix3d metric_of_rgb(const std::array<double, 3>& rgb) {
    Eigen::Matrix3d slope;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        std::array<double, 3> up = rgb;
        std::array<double, 3> down = rgb;
        up[channel] += kRgbStep;
        down[channel] -= kRgbStep;
        slope.col(static_cast<Index>(channel)) =
            (vector_of(to_lab(up)) - vector_of(to_lab(down))) / (2.0 * kRgbStep);
    }
    return slope.transpose() * metric_of_lab(to_lab(rgb)) * slope;
}

const std::array<Eigen::Matrix3d, kPatchCount>& chart_metrics() {
    static const auto kMetrics = [] {
        std::array<Eigen::Matrix3d, kPatchCount> metrics;
        for (std::size_t i = 0; i < kPatchCount; ++i) {
            metrics[i] = metric_of_rgb(linear(chart_patches()[i]));
        }
        return metrics;
    }();
    return kMetrics;
}

OffDiagonals off_diagonals(const RealMatrix& matrix) {
    OffDiagonals values;
    for (std::size_t k = 0; k < kOffDiagonals.size(); ++k) {
        values[static_cast<Index>(k)] = matrix[kOffDiagonals[k]];
    }
    return values;
}

Eigen::Map<const Metric> as_metric(const VisibleMetric& metric) {
    return Eigen::Map<const Metric>(metric.data());
}

}  // namespace

VisibleMetric visible_metric(const RealMatrix& wanted) {
    const ChartView view(wanted);
    Metric sum = Metric::Zero();
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        const std::array<double, 3> shown = linear(chart_patches()[i]);
        std::array<double, 3> camera = shown;
        if (view.has_inverse()) {
            for (std::size_t row = 0; row < 3; ++row) {
                camera[row] = 0.0;
                for (std::size_t k = 0; k < 3; ++k) {
                    camera[row] += view.inverse()[3 * row + k] * shown[k];
                }
            }
        }
        // An off-diagonal that grows takes as much from the diagonal of its row.
        Eigen::Matrix<double, 3, 6> slope = Eigen::Matrix<double, 3, 6>::Zero();
        for (std::size_t k = 0; k < kOffDiagonals.size(); ++k) {
            const std::size_t row = kOffDiagonals[k] / 3;
            const std::size_t column = kOffDiagonals[k] % 3;
            slope(static_cast<Index>(row), static_cast<Index>(k)) = camera[column] - camera[row];
        }
        sum += slope.transpose() * chart_metrics()[i] * slope;
    }
    VisibleMetric metric{};
    Eigen::Map<Metric>(metric.data()) = sum / static_cast<double>(kPatchCount);
    return metric;
}

double visible_square(const VisibleMetric& metric, const RealMatrix& wanted,
                      const RealMatrix& made) {
    const OffDiagonals change = off_diagonals(made) - off_diagonals(wanted);
    return change.dot(as_metric(metric) * change);
}

std::vector<RealMatrix> fit_matrices(std::span<const FitLight> lights,
                                     std::span<const RealMatrix> start) {
    const std::size_t count = start.size();
    const auto size = static_cast<Index>(6 * count);
    Eigen::MatrixXd left = Eigen::MatrixXd::Zero(size, size);
    Eigen::VectorXd right = Eigen::VectorXd::Zero(size);
    const auto place = [](std::size_t matrix) { return static_cast<Index>(6 * matrix); };
    for (const FitLight& light : lights) {
        const Metric weighted = light.importance * as_metric(light.metric);
        const OffDiagonals pull = weighted * off_diagonals(light.wanted);
        for (std::size_t i = 0; i < count; ++i) {
            if (light.shares[i] == 0.0) continue;
            right.segment<6>(place(i)) += light.shares[i] * pull;
            for (std::size_t j = 0; j < count; ++j) {
                if (light.shares[j] == 0.0) continue;
                left.block<6, 6>(place(i), place(j)) +=
                    light.shares[i] * light.shares[j] * weighted;
            }
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Metric drawn =
            kDrawnToStart * as_metric(lights.front().metric) + 1e-9 * Metric(Metric::Identity());
        left.block<6, 6>(place(i), place(i)) += drawn;
        right.segment<6>(place(i)) += drawn * off_diagonals(start[i]);
    }
    const Eigen::VectorXd solution = left.ldlt().solve(right);

    std::vector<RealMatrix> matrices(count);
    for (std::size_t i = 0; i < count; ++i) {
        RealMatrix& matrix = matrices[i];
        matrix = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
        for (std::size_t k = 0; k < kOffDiagonals.size(); ++k) {
            const double value = solution[place(i) + static_cast<Index>(k)];
            matrix[kOffDiagonals[k]] = value;
            matrix[4 * (kOffDiagonals[k] / 3)] -= value;
        }
    }
    return matrices;
}

}  // namespace imgtune::workbench
