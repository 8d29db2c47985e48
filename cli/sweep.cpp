#include "workbench/studies/sweep.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/steepness_text.h"
#include "cli/verbs.h"
#include "workbench/appearance/patches.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/row_writer.h"
#include "workbench/json/steepness.h"
#include "workbench/studies/steepness.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

struct SweepOptions {
    std::string tuning;
    std::string output = "-";
    std::string cct;
    std::string lv = "0:140:10";
    std::string gains;
    std::string only;
    std::vector<std::string> fields;
    std::int32_t flash = 0;
    std::int32_t scene = 0;
    bool slope = false;
    bool steepest = false;
    bool json = false;
    bool force = false;
};

struct Slopes {
    std::vector<SweepSlopes> registers;
    std::vector<ChartDifference> chart;  ///< empty without matrices
};

std::string slope_header(const Slopes& slopes) {
    std::string header;
    for (const SweepSlopes& job : slopes.registers) {
        header += fmt::format(",{0}_slope,{0}_slope_field,{0}_largest",
                              job.job == Job::ccm ? "ccm" : "color");
    }
    if (!slopes.chart.empty()) header += ",chart_mean,chart_worst,chart_patch";
    return header;
}

std::string slope_values(const Slopes& slopes, std::size_t point) {
    std::string values;
    for (const SweepSlopes& job : slopes.registers) {
        const Difference& slope = job.points[point];
        values += fmt::format(",{},{},{}", slope.size, slope.size > 0 ? job.names[slope.value] : "",
                              slope.size > 0 && slope.size == job.largest ? 1 : 0);
    }
    if (!slopes.chart.empty()) {
        const ChartDifference& chart = slopes.chart[point];
        values += fmt::format(",{:.2f},{:.2f},{}", chart.mean, chart.worst,
                              chart.worst > 0.0 ? chart_patches()[chart.worst_patch].name : "");
    }
    return values;
}

void tell_assumption(const std::string& tuning, const std::string& assumed) {
    if (!assumed.empty()) say(fmt::format("{}: {}\n", tuning, assumed));
}

int tell_steepest(const SweepOptions& options) {
    const Tuning tuning = tuning_to_run(options.tuning);
    if (!tuning.has_ccm) {
        throw BadInput(options.tuning + ": --steepest is about part 'ccm', which it has not");
    }
    tell_assumption(options.tuning, assumed_locus(tuning));
    const Steepness steepness = find_steepest(tuning);
    const std::vector<Remedy> remedies = try_remedies(tuning);
    if (options.json) {
        nlohmann::ordered_json json = to_json(steepness);
        json["tried"] = to_json(remedies);
        write_file(options.output, dumped(json));
    } else {
        write_file(options.output, steepness_text(steepness, remedies));
    }
    return kFine;
}

int run_sweep(const SweepOptions& options) {
    guard_output(options.output, {options.tuning, options.gains},
                 or_anything(options.steepest ? Replaces::nothing : Replaces::rows, options.force));
    if (options.steepest) return tell_steepest(options);
    const Tuning tuning = tuning_to_run(options.tuning);
    const Jobs jobs = jobs_to_run(options.tuning, tuning, options.only);
    const SweepGrid grid{
        options.cct.empty() ? tuned_range(tuning) : read_range("--cct", options.cct),
        read_range("--lv", options.lv), options.flash, options.scene};
    const LightLocus locus =
        options.gains.empty() ? tuned_locus(tuning) : read_locus(FrameFile(options.gains).log());
    if (options.gains.empty()) tell_assumption(options.tuning, assumed_locus(tuning));
    const Sweep sweep = run_sweep(tuning, jobs, grid, locus);
    Slopes slopes;
    if (options.slope) {
        slopes = {slopes_of(sweep, tuning.caller), chart_slopes_of(sweep, tuning.caller)};
    }

    OutputFile output(options.output);
    RowWriter writer(output, {tuning.caller, jobs, options.fields});
    writer.write_header(slope_header(slopes));
    for (std::size_t i = 0; i < sweep.points.size(); ++i) {
        const SweepPoint& point = sweep.points[i];
        writer.write(i + 1, to_values(point.frame), point.registers, slope_values(slopes, i));
    }
    writer.finish();
    output.commit();
    return kFine;
}

}  // namespace

void add_sweep(const Verbs& verbs) {
    auto options = std::make_shared<SweepOptions>();
    const Verb verb = verbs.add("sweep", "Show the un-smoothed result over CT and LV");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("-o,--output", options->output, "CSV file; rows of an earlier run are replaced")
        .shows_default();
    const std::vector<Option> of_rows{
        verb.option("--cct", options->cct,
                    "FROM:TO:STEP in kelvin (default: the tuning's ct_grid, step 100)"),
        verb.option("--lv", options->lv, "FROM:TO:STEP").shows_default(),
        verb.option("--gains", options->gains,
                    "frame log whose cct and awb columns give the gain at each CT (default: the "
                    "tuned gains of the normal row, at the kelvin of their points)"),
        verb.option("--flash", options->flash, "0: no flash"),
        verb.option("--scene", options->scene, "1: scene images"),
        verb.option("--only", options->only, "run one job alone").one_of({"ccm", "color"}),
        verb.option("--fields", options->fields,
                    "columns to write: names with * and ?, such as 'c*,Global.*'")
            .separated_by_commas(),
        verb.flag("--slope", options->slope,
                  "add the largest change to a neighbour in CT or LV: of a register, its field, a "
                  "mark (1) at the largest of all, and of the colours, in CIEDE2000"),
    };
    const Option steepest =
        verb.flag("--steepest", options->steepest,
                  "in place of rows: where a small change of the light changes the colours most, "
                  "and what was tried to make it less");
    for (const Option& option : of_rows) steepest.excludes(option);
    verb.flag("--json", options->json, "Write what --steepest tells as JSON").needs(steepest);
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.footer(
        "Rows are those of replay, one a point, light value by light value, without average and\n"
        "temporal step. Between two known gains their reciprocals are linear in mired (1000000 / "
        "kelvin).\n"
        "\n"
        "Example:\n"
        "  imgtune sweep phone.yaml --cct 2300:6500:50 --lv 0:120:5 --slope -o sweep.csv\n"
        "  imgtune sweep phone.yaml --steepest");
    verb.run([options] { return run_sweep(*options); });
}

}  // namespace imgtune::cli
