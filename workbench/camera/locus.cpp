#include "workbench/camera/locus.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostPoints = 100000;

double mired_of(double kelvin) {
    return 1e6 / std::max(kelvin, 1.0);  // a log may say 0
}

std::int32_t blended(std::int32_t a, std::int32_t b, double share_of_b) {
    const double from = a;
    const double to = b;
    return static_cast<std::int32_t>(std::lround(from + (to - from) * share_of_b));
}

AWB_GAIN_T blended(const AWB_GAIN_T& a, const AWB_GAIN_T& b, double share_of_b) {
    return {blended(a.i4R, b.i4R, share_of_b), blended(a.i4G, b.i4G, share_of_b),
            blended(a.i4B, b.i4B, share_of_b)};
}

}  // namespace

Locus::Locus(std::vector<Point> points) : points_(std::move(points)) {
    std::stable_sort(points_.begin(), points_.end(),
                     [](const Point& a, const Point& b) { return a.mired < b.mired; });
}

AWB_GAIN_T Locus::at(std::uint32_t kelvin) const {
    const double mired = mired_of(kelvin);
    const auto above =
        std::lower_bound(points_.begin(), points_.end(), mired,
                         [](const Point& point, double to) { return point.mired < to; });
    if (above == points_.begin()) return points_.front().gain;
    if (above == points_.end()) return points_.back().gain;
    const Point& a = *(above - 1);
    return blended(a.gain, above->gain, (mired - a.mired) / (above->mired - a.mired));
}

Locus tuned_locus(const Tuning& tuning) {
    auto grid = tuning.caller.ct_grid;
    std::sort(grid.begin(), grid.end());
    const auto count = static_cast<std::size_t>(std::clamp(tuning.ccm.i4NumCT, 1, 8));
    const double last = static_cast<double>(grid.size() - 1);
    std::vector<Locus::Point> points;
    for (std::size_t t = 0; t < count; ++t) {
        const double place =
            count == 1 ? 0.0 : last * static_cast<double>(t) / static_cast<double>(count - 1);
        const auto lower = std::min(static_cast<std::size_t>(place), grid.size() - 2);
        const double share = place - static_cast<double>(lower);
        const double mired =
            mired_of(grid[lower]) * (1.0 - share) + mired_of(grid[lower + 1]) * share;
        AWB_GAIN_T gain = tuning.ccm.rCTAWBGain[0][t];
        gain.i4G = 512;  // not tuned: the library does not read it
        points.push_back({mired, gain});
    }
    return Locus(std::move(points));
}

Locus read_locus(FrameLog& log) {
    std::vector<Locus::Point> points;
    for (Frame frame; log.next(frame);) {
        if (points.size() == kMostPoints) {
            throw BadInput(log.name() + ": more than 100000 gains; take fewer frames");
        }
        points.push_back({mired_of(frame.state.u4CCT), frame.state.rAWBGain});
    }
    if (points.empty()) throw BadInput(log.name() + ": no frame to take a gain from");
    return Locus(std::move(points));
}

}  // namespace imgtune::workbench
