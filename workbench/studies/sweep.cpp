#include "workbench/studies/sweep.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "workbench/studies/visible.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

constexpr std::uint32_t kKelvinStep = 100;

SweepSlopes slopes_of_job(const Sweep& sweep, Job job, const CallerSettings& caller) {
    SweepSlopes slopes{job, value_names(job), std::vector<Difference>(sweep.points.size()), 0};
    const auto meet = [&](std::size_t i, std::size_t j, const std::vector<std::int64_t>& at_i,
                          const std::vector<std::int64_t>& at_j) {
        const Difference difference = largest_difference(at_i, at_j);
        for (const std::size_t point : {i, j}) {
            if (difference.size > slopes.points[point].size) slopes.points[point] = difference;
        }
        slopes.largest = std::max(slopes.largest, difference.size);
    };
    const std::size_t width = sweep.grid.cct.size();
    std::vector<std::vector<std::int64_t>> previous_row(width);
    for (std::size_t i = 0; i < sweep.points.size(); ++i) {
        const std::size_t column = i % width;
        auto values = values_of(job, sweep.points[i].registers, caller);
        if (column > 0) meet(i, i - 1, values, previous_row[column - 1]);
        if (i >= width) meet(i, i - width, values, previous_row[column]);
        previous_row[column] = std::move(values);
    }
    return slopes;
}

}  // namespace

std::vector<std::uint32_t> read_range(const std::string& option, const std::string& text) {
    std::array<std::uint32_t, 3> parts{};
    std::size_t count = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (count < parts.size()) {
        const auto result = std::from_chars(at, end, parts[count]);
        if (result.ec != std::errc()) break;
        ++count;
        at = result.ptr;
        if (at == end || *at != ':') break;
        ++at;
    }
    if (count == 1) parts = {parts[0], parts[0], 1};
    if (at != end || count == 0 || count == 2 || parts[2] == 0 || parts[1] < parts[0]) {
        throw BadInput(
            fmt::format("{} {}: expected FROM:TO:STEP, whole numbers, FROM at most TO, "
                        "STEP at least 1, such as 2300:6500:100",
                        option, text));
    }
    const std::uint64_t points = (std::uint64_t{parts[1]} - parts[0]) / parts[2] + 1;
    if (points > kMostSweepPoints) {
        throw BadInput(fmt::format("{} {}: {} points, allowed are {}", option, text, points,
                                   kMostSweepPoints));
    }
    std::vector<std::uint32_t> values;
    for (std::uint64_t i = 0; i < points; ++i) {
        values.push_back(static_cast<std::uint32_t>(parts[0] + i * parts[2]));
    }
    return values;
}

std::vector<std::uint32_t> tuned_range(const Tuning& tuning) {
    const auto& grid = tuning.caller.ct_grid;
    const auto [lowest, highest] = std::minmax_element(grid.begin(), grid.end());
    std::vector<std::uint32_t> values;
    for (std::uint64_t kelvin = *lowest; kelvin <= *highest && values.size() < kMostSweepPoints;
         kelvin += kKelvinStep) {
        values.push_back(static_cast<std::uint32_t>(kelvin));
    }
    return values;
}

Sweep run_sweep(const Tuning& tuning, Jobs jobs, const SweepGrid& grid, const LightLocus& locus) {
    const std::size_t count = grid.cct.size() * grid.lv.size();
    if (count > kMostSweepPoints) {
        throw BadInput(
            fmt::format("{} CTs and {} light values are {} points, allowed are {}; take "
                        "larger steps",
                        grid.cct.size(), grid.lv.size(), count, kMostSweepPoints));
    }
    Camera camera(tuning, jobs);
    camera.set_weights({1, 0, 0});
    Sweep sweep{grid, jobs, {}};
    sweep.points.reserve(count);
    for (const std::uint32_t lv : grid.lv) {
        for (const std::uint32_t cct : grid.cct) {
            Frame frame;
            frame.state.u4RealLV = lv;
            frame.state.u4CCT = cct;
            frame.state.rAWBGain = frame.state.rAWBFullGain = locus.at(cct);
            frame.state.u4FlashMode = grid.flash;
            frame.state.u4SceneFlag = grid.scene;
            frame.capture = 1;
            camera.run(frame);
            sweep.points.push_back({frame, camera.registers()});
        }
    }
    return sweep;
}

std::vector<SweepSlopes> slopes_of(const Sweep& sweep, const CallerSettings& caller) {
    std::vector<SweepSlopes> slopes;
    if (sweep.jobs.ccm) slopes.push_back(slopes_of_job(sweep, Job::ccm, caller));
    if (sweep.jobs.color) slopes.push_back(slopes_of_job(sweep, Job::color, caller));
    return slopes;
}

std::vector<ChartDifference> chart_slopes_of(const Sweep& sweep, const CallerSettings& caller) {
    if (!sweep.jobs.ccm) return {};
    std::vector<ChartView> views;
    views.reserve(sweep.points.size());
    for (const SweepPoint& point : sweep.points) {
        views.emplace_back(shown_matrix(point.registers, caller));
    }
    std::vector<ChartDifference> slopes(views.size());
    const auto meet = [&](std::size_t i, std::size_t j) {
        const ChartDifference difference = chart_difference(views[j], views[i], kLightSkin);
        for (const std::size_t point : {i, j}) {
            if (difference.worst > slopes[point].worst) slopes[point] = difference;
        }
    };
    const std::size_t width = sweep.grid.cct.size();
    for (std::size_t i = 0; i < views.size(); ++i) {
        if (i % width > 0) meet(i, i - 1);
        if (i >= width) meet(i, i - width);
    }
    return slopes;
}

}  // namespace imgtune::workbench
