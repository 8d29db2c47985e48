#include "workbench/capture/chart_grid.h"

#include <Eigen/Dense>
#include <cmath>

namespace imgtune::workbench {

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

constexpr double kShortestSide = 4.0;  // pixels; shorter than that nothing of a chart is seen

/// Turning left or right at every corner, and by how much.
bool is_convex(const Quad& quad) {
    double sign = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        const PicturePoint& a = quad[i];
        const PicturePoint& b = quad[(i + 1) % 4];
        const PicturePoint& c = quad[(i + 2) % 4];
        const double cross = (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
        const double sides = std::hypot(b.x - a.x, b.y - a.y) * std::hypot(c.x - b.x, c.y - b.y);
        if (!(sides >= kShortestSide * kShortestSide) || !(std::abs(cross) > 0.05 * sides)) {
            return false;
        }
        if (sign * cross < 0.0) return false;
        sign = cross;
    }
    return true;
}

PicturePoint project(const std::array<double, 9>& projection, double x, double y) {
    const auto& p = projection;
    const double w = p[6] * x + p[7] * y + p[8];
    return {(p[0] * x + p[1] * y + p[2]) / w, (p[3] * x + p[4] * y + p[5]) / w};
}

std::array<double, 9> rows_of(const Matrix3d& matrix) {
    std::array<double, 9> rows{};
    for (int i = 0; i < 9; ++i) rows[static_cast<std::size_t>(i)] = matrix(i / 3, i % 3);
    return rows;
}

}  // namespace

std::optional<ChartGrid> ChartGrid::through(const Quad& corners) {
    for (const PicturePoint& corner : corners) {
        if (!(std::abs(corner.x) < 1e6 && std::abs(corner.y) < 1e6)) return std::nullopt;
    }
    if (!is_convex(corners)) return std::nullopt;
    const std::array<std::array<double, 2>, 4> chart = {
        {{0.0, 0.0}, {kWidth, 0.0}, {kWidth, kHeight}, {0.0, kHeight}}};
    Eigen::Matrix<double, 8, 8> system = Eigen::Matrix<double, 8, 8>::Zero();
    Eigen::Matrix<double, 8, 1> right;
    for (int i = 0; i < 4; ++i) {
        const auto [u, v] = chart[static_cast<std::size_t>(i)];
        const PicturePoint& corner = corners[static_cast<std::size_t>(i)];
        system.row(2 * i) << u, v, 1.0, 0.0, 0.0, 0.0, -u * corner.x, -v * corner.x;
        system.row(2 * i + 1) << 0.0, 0.0, 0.0, u, v, 1.0, -u * corner.y, -v * corner.y;
        right[2 * i] = corner.x;
        right[2 * i + 1] = corner.y;
    }
    const Eigen::Matrix<double, 8, 1> found = system.fullPivLu().solve(right);
    Matrix3d to_picture;
    to_picture << found[0], found[1], found[2], found[3], found[4], found[5], found[6], found[7], 1;
    const Eigen::FullPivLU<Matrix3d> inverse(to_picture);
    if (!found.allFinite() || !inverse.isInvertible()) return std::nullopt;
    return ChartGrid(rows_of(to_picture), rows_of(inverse.inverse()));
}

PicturePoint ChartGrid::in_picture(double u, double v) const {
    return project(to_picture_, u, v);
}

PicturePoint ChartGrid::in_chart(double x, double y) const {
    return project(to_chart_, x, y);
}

Quad ChartGrid::patch(std::size_t index, double share) const {
    const double margin = (1.0 - share) / 2.0;
    const double left = static_cast<double>(index % kColumns) * kPitch + margin;
    const std::size_t row = index / kColumns;
    const double top = static_cast<double>(row) * kPitch + margin;
    return {in_picture(left, top), in_picture(left + share, top),
            in_picture(left + share, top + share), in_picture(left, top + share)};
}

Quad turned(const Quad& corners, std::size_t turn) {
    Quad out;
    for (std::size_t i = 0; i < 4; ++i) {
        out[i] = corners[turn < 4 ? (i + turn) % 4 : (3 - i + turn) % 4];
    }
    return out;
}

}  // namespace imgtune::workbench
