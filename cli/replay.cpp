#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "cli/common.h"
#include "cli/summary_text.h"
#include "cli/verbs.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/replay_files.h"
#include "workbench/json/summary.h"
#include "workbench/studies/summary.h"
#include "workbench/text/bad_input.h"
#include "workbench/trace/debug_properties.h"

namespace imgtune::cli {

namespace {

struct ReplayOptions {
    std::string tuning;
    std::vector<std::string> logs;
    std::string output;  ///< empty: not named
    std::string folder;
    std::string only;
    std::vector<std::string> properties;
    std::vector<std::string> fields;
    std::uint64_t every = 1;
    unsigned workers = 0;
    bool summary = false;
    bool json = false;
    bool force = false;
    SummaryOptions summary_options;
    std::string patch = chart_patches()[kLightSkin].name;
};

/// How far a long run has come, on standard error when that is a terminal.
class Progress {
  public:
    explicit Progress(bool wanted) : on_(wanted && isatty(STDERR_FILENO) == 1) {}
    ~Progress() {
        if (shown_) std::fputs("\r\x1b[K", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const FrameLog& log, std::uint64_t frames) {
        constexpr std::uint64_t kFramesBetweenLooks = 8192;
        if (!on_ || frames % kFramesBetweenLooks != 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (now < next_) return;
        next_ = now + std::chrono::milliseconds(200);
        shown_ = true;
        if (log.size() == 0) {
            fmt::print(stderr, "\r{} frames\x1b[K", frames);
            return;
        }
        fmt::print(stderr, "\r{:3} %  {} frames\x1b[K", log.bytes_read() * 100 / log.size(),
                   frames);
    }

  private:
    bool on_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_ =
        std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

void set_properties(const std::vector<std::string>& settings) {
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos) {
            throw BadInput(
                fmt::format("--set {}: expected name=value, such as "
                            "--set debug.smooth_color.lock=1",
                            setting));
        }
        set_debug_property(setting.substr(0, equals), setting.substr(equals + 1));
    }
}

/// What became of one log.
struct Outcome {
    std::string error;  ///< empty: none
    Faults found;
    std::optional<SummaryRecord> summary;
};

Outcome run_one(const Tuning& tuning, const ReplayRequest& request, const ReplayOptions& options) {
    Outcome outcome;
    try {
        std::optional<Summary> summary;
        if (options.summary) {
            summary.emplace(Camera(tuning, request.columns.jobs), options.summary_options);
        }
        Progress progress(options.logs.size() == 1);
        outcome.found = run_replay(tuning, request,
                                   [&](const FrameLog& log, std::uint64_t number,
                                       const Frame& frame, const Camera& camera) {
                                       if (summary) summary->add(number, frame, camera);
                                       progress.show(log, number);
                                   });
        if (summary) outcome.summary = summary->finish();
    } catch (const BadInput& error) {
        outcome.error = error.what();
    }
    return outcome;
}

std::vector<ReplayRequest> requests_of(const ReplayOptions& options, const RowColumns& columns) {
    std::vector<std::string> inputs = options.logs;
    inputs.push_back(options.tuning);
    guard_output(options.output, inputs, or_anything(Replaces::rows, options.force));
    std::vector<std::string> outputs{options.output};
    if (!options.folder.empty()) {
        outputs = results_in_folder(options.folder, options.logs, options.force);
    } else if (options.logs.size() > 1 && !options.summary) {
        throw BadInput("several logs need a folder for their results: -O FOLDER, or --summary");
    } else if (options.logs.size() > 1) {
        outputs.assign(options.logs.size(), "");
    } else if (options.output.empty() && !options.summary) {
        outputs = {"-"};
    }
    // A job that no row shows need not run, unless its trace lines are asked for.
    const bool all_jobs = options.summary || any_debug_property_on();
    const Jobs jobs = all_jobs ? columns.jobs : jobs_shown(columns);
    std::vector<ReplayRequest> requests;
    const std::size_t logs = options.logs.size();
    const bool idle_cores = at_a_time(logs, options.workers) < std::thread::hardware_concurrency();
    const RowThread thread = idle_cores ? RowThread::own : RowThread::callers;
    for (std::size_t i = 0; i < logs; ++i) {
        requests.push_back({options.logs[i], outputs[i], columns, jobs, options.every, thread});
    }
    return requests;
}

std::string report_of(const std::vector<Outcome>& outcomes, const ReplayOptions& options) {
    if (options.json) {
        if (outcomes.size() == 1) return dumped(to_json(*outcomes[0].summary));
        nlohmann::ordered_json all = nlohmann::ordered_json::object();
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            if (outcomes[i].error.empty()) all[options.logs[i]] = to_json(*outcomes[i].summary);
        }
        return dumped(all);
    }
    std::string text;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        if (!outcomes[i].error.empty()) continue;
        if (outcomes.size() > 1) text += fmt::format("== {}\n", options.logs[i]);
        text += summary_text(*outcomes[i].summary);
    }
    return text;
}

std::vector<std::string> patch_names() {
    std::vector<std::string> names;
    for (const Patch& patch : chart_patches()) names.emplace_back(patch.name);
    return names;
}

int run_replay(ReplayOptions options) {
    options.summary_options.visible.patch = *find_patch(options.patch);
    const Tuning tuning = tuning_to_run(options.tuning);
    const Jobs jobs = jobs_to_run(options.tuning, tuning, options.only);
    set_properties(options.properties);
    const auto requests = requests_of(options, {tuning.caller, jobs, options.fields});
    std::vector<Outcome> outcomes(requests.size());
    in_parallel(requests.size(), options.workers,
                [&](std::size_t i) { outcomes[i] = run_one(tuning, requests[i], options); });

    bool failed = false;
    for (const Outcome& outcome : outcomes) {
        tell(outcome.found);
        if (outcome.error.empty()) continue;
        if (outcomes.size() == 1) throw BadInput(outcome.error);
        say(fmt::format("imgtune: {}\n", outcome.error));
        failed = true;
    }
    if (options.summary) print_report(report_of(outcomes, options), options.output);
    return failed ? kBadInput : kFine;
}

constexpr const char* kReplayFooter =
    "One row a frame: frame number, inputs, matrix coefficients c0..c8 (512 = 1.0), register\n"
    "words ccm0..ccm5, then the colour fields by name.\n"
    "\n"
    "A frame log names its columns in the first line, in any order: lv, cct (kelvin), full_r,\n"
    "full_g, full_b, awb_r, awb_g, awb_b (512 = 1.0), flash, scene, profile, capture. One\n"
    "gain triple will do; flash, scene, profile and capture are 0 when missing. Columns\n"
    "whose name begins with x_ are skipped, and so are lines that begin with #.\n"
    "\n"
    "Example:\n"
    "  imgtune replay phone.yaml walk.csv -o walk-registers.csv\n"
    "  imgtune replay phone.yaml walk.csv --summary\n"
    "  imgtune replay phone.yaml day1.csv day2.csv day3.csv -O results";

}  // namespace

void add_replay(const Verbs& verbs) {
    auto options = std::make_shared<ReplayOptions>();
    const Verb verb = verbs.add("replay", "Run a frame log through a tuning");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("FRAMES", options->logs, "frame logs: CSV files or '-'").required();
    const Option output = verb.option(
        "-o,--output", options->output,
        "where the rows go; rows of an earlier run are replaced (default: standard output; with "
        "--summary: nowhere)");
    const Option folder = verb.option(
        "-O,--output-folder", options->folder,
        "folder for the rows of several logs, NAME.csv each; rows of earlier runs are replaced");
    folder.excludes(output);
    verb.option("--workers", options->workers, "logs that run at the same time (0: one a core)")
        .shows_default()
        .range(0U, 64U);
    verb.option("--only", options->only, "run one job alone").one_of({"ccm", "color"});
    verb.option("--fields", options->fields,
                "columns to write: names with * and ?, such as 'c*,Global.*'")
        .separated_by_commas();
    verb.option("--set", options->properties,
                "NAME=VALUE: set a debug property for the run (repeatable)")
        .one_value_each();
    verb.option("--every", options->every, "write every Nth frame; all of them are run")
        .shows_default()
        .range(std::uint64_t{1}, std::uint64_t{1000000000});
    const Option summary = verb.flag("--summary", options->summary,
                                     "tell what a viewer sees over time: flicker, steps, "
                                     "settling, overshoot; and how the registers move");
    verb.option("--fps", options->summary_options.frames_per_second, "frames per second of the log")
        .shows_default()
        .range(SummaryOptions::kLeastFramesPerSecond, SummaryOptions::kMostFramesPerSecond)
        .needs(summary);
    verb.option("--noise", options->summary_options.noise_percent,
                "noise that is no change of light: percent of gains and CT, tenths of an EV "
                "of the light value")
        .shows_default()
        .range(0.0, SummaryOptions::kMostNoisePercent)
        .needs(summary);
    VisibleLimits& limits = options->summary_options.visible;
    const auto limit = [&](const char* name, double& value, const char* help) {
        verb.option(name, value, help)
            .shows_default()
            .range(VisibleLimits::kLeast, VisibleLimits::kMost)
            .needs(summary);
    };
    limit("--flicker-mean", limits.flicker_mean,
          "flicker: least recurring swing of the chart's mean, in CIEDE2000");
    limit("--flicker-patch", limits.flicker_patch, "the same of the worst patch");
    limit("--settled", limits.settled,
          "settled: worst patch stays below this difference from rest, in CIEDE2000");
    verb.option("--patch", options->patch, "patch of the chart that is told by itself")
        .shows_default()
        .one_of(patch_names())
        .needs(summary);
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.flag("--json", options->json, "the summary as JSON").needs(summary);
    verb.footer(kReplayFooter);
    verb.run([options] { return run_replay(*options); });
}

}  // namespace imgtune::cli
