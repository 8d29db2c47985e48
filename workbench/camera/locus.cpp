#include "workbench/camera/locus.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "workbench/camera/mired.h"
#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostPoints = 100000;

/// The gain whose reciprocal lies between; of gains that balance nothing, 0 or less, the gain.
std::int32_t between_gains(std::int32_t a, std::int32_t b, double share_of_b) {
    const double from = a;
    const double to = b;
    if (a <= 0 || b <= 0)
        return static_cast<std::int32_t>(std::lround(from + (to - from) * share_of_b));
    return static_cast<std::int32_t>(
        std::lround(1.0 / ((1.0 - share_of_b) / from + share_of_b / to)));
}

/// Whether the points' own kelvin can be taken: each has one, and they rise.
bool has_kelvin(const Tuning& tuning) {
    std::uint32_t before = 0;
    for (std::size_t t = 0; t < tuned_count(tuning); ++t) {
        if (tuning.kelvin[kRowNormal][t] <= before) return false;
        before = tuning.kelvin[kRowNormal][t];
    }
    return true;
}

/// In kelvin, where point t of `count` lies when they are spread over a rising grid.
double spread_over(std::span<const std::uint32_t> grid, std::size_t t, std::size_t count) {
    if (count == 1) return grid.front();
    const double place =
        static_cast<double>((grid.size() - 1) * t) / static_cast<double>(count - 1);
    const auto lower = std::min(static_cast<std::size_t>(place), grid.size() - 2);
    const double share = place - static_cast<double>(lower);
    return to_mired(to_mired(grid[lower]) * (1.0 - share) + to_mired(grid[lower + 1]) * share);
}

}  // namespace

std::size_t tuned_count(const Tuning& tuning) {
    return static_cast<std::size_t>(std::clamp(tuning.ccm.i4NumCT, 1, 8));
}

LightLocus::LightLocus(std::vector<Point> points) : points_(std::move(points)) {
    std::stable_sort(points_.begin(), points_.end(),
                     [](const Point& a, const Point& b) { return a.kelvin < b.kelvin; });
}

AWB_GAIN_T LightLocus::at(double kelvin) const {
    if (kelvin <= points_.front().kelvin) return points_.front().gain;
    if (kelvin >= points_.back().kelvin) return points_.back().gain;
    const auto [upper, share] = place_in_mired(std::span<const Point>(points_), kelvin);
    const AWB_GAIN_T& a = points_[upper - 1].gain;
    const AWB_GAIN_T& b = points_[upper].gain;
    return {between_gains(a.i4R, b.i4R, share), between_gains(a.i4G, b.i4G, share),
            between_gains(a.i4B, b.i4B, share)};
}

LightLocus tuned_locus(const Tuning& tuning, std::size_t row) {
    auto grid = tuning.caller.ct_grid;
    std::sort(grid.begin(), grid.end());
    for (std::uint32_t& kelvin : grid) kelvin = std::max(kelvin, 1U);
    const bool own = has_kelvin(tuning);
    std::vector<LightLocus::Point> points;
    for (std::size_t t = 0; t < tuned_count(tuning); ++t) {
        AWB_GAIN_T gain = tuning.ccm.rCTAWBGain[row][t];
        gain.i4G = 512;  // not tuned: the library does not read it
        const double kelvin =
            own ? tuning.kelvin[kRowNormal][t] : spread_over(grid, t, tuned_count(tuning));
        points.push_back({kelvin, gain});
    }
    return LightLocus(std::move(points));
}

std::string assumed_locus(const Tuning& tuning) {
    if (has_kelvin(tuning)) return {};
    const auto [lowest, highest] =
        std::minmax_element(tuning.caller.ct_grid.begin(), tuning.caller.ct_grid.end());
    return fmt::format(
        "the tuned points have no rising kelvin: their gains are taken as spread evenly over the "
        "ct_grid, {} to {} K; write ct: into each point of the normal row, or give a log of gains",
        *lowest, *highest);
}

LightLocus read_locus(FrameLog& log) {
    std::vector<LightLocus::Point> points;
    for (Frame frame; log.next(frame);) {
        if (points.size() == kMostPoints) {
            throw BadInput(log.name() + ": more than 100000 gains; take fewer frames",
                           {log.name()});
        }
        points.push_back({std::max<double>(frame.state.u4CCT, 1.0), frame.state.rAWBGain});
    }
    if (points.empty()) {
        throw BadInput(log.name() + ": no frame to take a gain from", {log.name()});
    }
    return LightLocus(std::move(points));
}

}  // namespace imgtune::workbench
