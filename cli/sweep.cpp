#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/verbs.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/locus.h"
#include "workbench/camera/register_values.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/row_writer.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

constexpr std::uint64_t kMostPoints = 100000;

struct Options {
    std::string tuning;
    std::string output = "-";
    std::string cct;
    std::string lv = "0:140:10";
    std::string gains;
    std::int32_t flash = 0;
    std::int32_t scene = 0;
    bool slope = false;
};

/// FROM:TO:STEP, or one value.
std::vector<std::uint32_t> values_of_range(const char* option, const std::string& text) {
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
    if (points > kMostPoints) {
        throw BadInput(
            fmt::format("{} {}: {} points, allowed are {}", option, text, points, kMostPoints));
    }
    std::vector<std::uint32_t> values;
    for (std::uint64_t i = 0; i < points; ++i) {
        values.push_back(static_cast<std::uint32_t>(parts[0] + i * parts[2]));
    }
    return values;
}

struct Point {
    Frame frame;
    Registers registers;
};

/// The grid, row after row of equal light value.
struct Grid {
    std::size_t width = 0;
    std::vector<Point> points;
};

Grid run_grid(const Tuning& tuning, const Options& options, Jobs jobs) {
    const auto& ct_grid = tuning.caller.ct_grid;
    const auto [lowest, highest] = std::ranges::minmax(ct_grid);
    const auto ccts = values_of_range(
        "--cct", options.cct.empty() ? fmt::format("{}:{}:100", lowest, highest) : options.cct);
    const auto lvs = values_of_range("--lv", options.lv);
    if (ccts.size() * lvs.size() > kMostPoints) {
        throw BadInput(
            fmt::format("{} CTs and {} light values are {} points, allowed are {}; take "
                        "larger steps",
                        ccts.size(), lvs.size(), ccts.size() * lvs.size(), kMostPoints));
    }
    const Locus locus =
        options.gains.empty() ? tuned_locus(tuning) : read_locus(FrameFile(options.gains).log());
    Camera camera(tuning, jobs);
    camera.set_weights({1, 0, 0});
    Grid grid{ccts.size(), {}};
    for (const std::uint32_t lv : lvs) {
        for (const std::uint32_t cct : ccts) {
            Frame frame;
            frame.state.u4RealLV = lv;
            frame.state.u4CCT = cct;
            frame.state.rAWBGain = frame.state.rAWBFullGain = locus.at(cct);
            frame.state.u4FlashMode = options.flash;
            frame.state.u4SceneFlag = options.scene;
            frame.capture = 1;
            camera.run(frame);
            grid.points.push_back({frame, camera.registers()});
        }
    }
    return grid;
}

/// The largest change of one job between a point and its neighbours in CT and in light value.
std::vector<Difference> slopes_of(const Grid& grid, Job job, const CallerSettings& caller) {
    std::vector<Difference> slopes(grid.points.size());
    const auto meet = [&](std::size_t i, std::size_t j, const std::vector<std::int64_t>& at_i,
                          const std::vector<std::int64_t>& at_j) {
        const Difference difference = largest_difference(at_i, at_j);
        for (const std::size_t point : {i, j}) {
            if (difference.size > slopes[point].size) slopes[point] = difference;
        }
    };
    std::vector<std::vector<std::int64_t>> previous_row(grid.width);
    for (std::size_t i = 0; i < grid.points.size(); ++i) {
        const std::size_t column = i % grid.width;
        auto values = values_of(job, grid.points[i].registers, caller);
        if (column > 0) meet(i, i - 1, values, previous_row[column - 1]);
        if (i >= grid.width) meet(i, i - grid.width, values, previous_row[column]);
        previous_row[column] = std::move(values);
    }
    return slopes;
}

int run(const Options& options) {
    const Tuning tuning = require_tuning(options.tuning);
    const Jobs jobs{tuning.has_ccm, tuning.has_color};
    if (!jobs.ccm && !jobs.color) {
        throw BadInput(options.tuning + ": the tuning has neither part 'ccm' nor part 'color'");
    }
    const Grid grid = run_grid(tuning, options, jobs);

    std::vector<Job> told;
    if (options.slope && jobs.ccm) told.push_back(Job::ccm);
    if (options.slope && jobs.color) told.push_back(Job::color);
    std::string more;
    std::vector<std::vector<Difference>> slopes;
    std::vector<std::int64_t> largest;
    std::vector<std::vector<std::string>> names;
    for (const Job job : told) {
        const char* name = job == Job::ccm ? "ccm" : "color";
        more += fmt::format(",{0}_slope,{0}_slope_field,{0}_largest", name);
        slopes.push_back(slopes_of(grid, job, tuning.caller));
        largest.push_back(std::ranges::max(slopes.back(), {}, &Difference::size).size);
        names.push_back(value_names(job));
    }

    OutputFile output(options.output);
    RowWriter writer(output, tuning.caller, jobs);
    writer.write_header(more);
    for (std::size_t i = 0; i < grid.points.size(); ++i) {
        more.clear();
        for (std::size_t k = 0; k < told.size(); ++k) {
            const Difference& slope = slopes[k][i];
            more +=
                fmt::format(",{},{},{}", slope.size, slope.size > 0 ? names[k][slope.value] : "",
                            slope.size > 0 && slope.size == largest[k] ? 1 : 0);
        }
        writer.write(i + 1, grid.points[i].frame, grid.points[i].registers, more);
    }
    writer.finish();
    output.commit();
    return kFine;
}

}  // namespace

void add_sweep(CLI::App& app, Context& context) {
    auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("sweep", "Show the un-smoothed result over CT and LV");
    verb->add_option("TUNING", options->tuning, "tuning: YAML file, '-', or folder of images")
        ->required();
    verb->add_option("-o,--output", options->output, "CSV file")->capture_default_str();
    verb->add_option("--cct", options->cct,
                     "FROM:TO:STEP in kelvin (default: the tuning's ct_grid, step 100)");
    verb->add_option("--lv", options->lv, "FROM:TO:STEP")->capture_default_str();
    verb->add_option("--gains", options->gains,
                     "frame log whose cct and awb columns give the gain at each CT (default: the "
                     "tuned gains of LV row 0, spread over the ct_grid)");
    verb->add_option("--flash", options->flash, "0: no flash");
    verb->add_option("--scene", options->scene, "1: scene images");
    verb->add_flag("--slope", options->slope,
                   "add the largest change to a neighbour in CT or LV, its field, and a mark (1) "
                   "at the largest of all");
    verb->footer(
        "Rows are those of replay, one a point, light value by light value, without average and\n"
        "temporal step. Gains between two known ones are linear in mired (1000000 / kelvin).\n"
        "\n"
        "Example:\n"
        "  imgtune sweep phone.yaml --cct 2300:6500:50 --lv 0:120:5 --slope -o sweep.csv");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
