#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/summary_text.h"
#include "cli/verbs.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/trace_capture.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/row_writer.h"
#include "workbench/files/tuning_files.h"
#include "workbench/json/summary.h"
#include "workbench/studies/summary.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

struct Options {
    std::string tuning;
    std::string frames;
    std::string output;  ///< empty: not named
    std::string only;
    std::vector<std::string> properties;
    std::uint64_t every = 1;
    bool summary = false;
    bool json = false;
    SummaryOptions summary_options;
};

/// How far a long run has come, on standard error when that is a terminal.
class Progress {
  public:
    explicit Progress(const FrameLog& log) : log_(log), on_(isatty(STDERR_FILENO) == 1) {}
    ~Progress() {
        if (shown_) std::fputs("\r\x1b[K", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uint64_t frames) {
        constexpr std::uint64_t kFramesBetweenLooks = 8192;
        if (!on_ || frames % kFramesBetweenLooks != 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (now < next_) return;
        next_ = now + std::chrono::milliseconds(200);
        shown_ = true;
        if (log_.size() == 0) {
            fmt::print(stderr, "\r{} frames\x1b[K", frames);
            return;
        }
        fmt::print(stderr, "\r{:3} %  {} frames\x1b[K", log_.bytes_read() * 100 / log_.size(),
                   frames);
    }

  private:
    const FrameLog& log_;
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
        set_property(setting.substr(0, equals), setting.substr(equals + 1));
    }
}

Jobs jobs_of(const Tuning& tuning, const Options& options) {
    const Jobs jobs{tuning.has_ccm && options.only != "color",
                    tuning.has_color && options.only != "ccm"};
    if (!jobs.ccm && !jobs.color) {
        throw BadInput(fmt::format("{}: the tuning has no part '{}'; leave out --only or add it",
                                   options.tuning, options.only.empty() ? "ccm" : options.only));
    }
    return jobs;
}

int run(const Options& options) {
    set_properties(options.properties);
    const Tuning tuning = require_tuning(options.tuning);
    const Jobs jobs = jobs_of(tuning, options);
    FrameFile file(options.frames);
    FrameLog& log = file.log();
    Camera camera(tuning, jobs);

    const bool rows = !options.summary || !options.output.empty();
    std::optional<OutputFile> output;
    std::optional<RowWriter> writer;
    std::optional<Summary> summary;
    if (rows) {
        output.emplace(options.output.empty() ? "-" : options.output);
        writer.emplace(*output, tuning.caller, jobs);
        writer->write_header();
    }
    if (options.summary) summary.emplace(camera, options.summary_options);

    Progress progress(log);
    Frame frame;
    for (std::uint64_t number = 1; log.next(frame); ++number) {
        camera.run(frame);
        if (writer && (number - 1) % options.every == 0)
            writer->write(number, frame, camera.registers());
        if (summary) summary->add(number, frame, camera);
        progress.show(number);
    }
    if (writer) {
        writer->finish();
        output->commit();
    }
    if (summary) {
        const SummaryRecord record = summary->finish();
        const std::string text =
            options.json ? to_json(record).dump(2) + "\n" : summary_text(record);
        if (options.output == "-") {
            std::fputs(text.c_str(), stderr);  // the rows have standard output
        } else {
            write_file("-", text);
        }
    }
    return kFine;
}

}  // namespace

void add_replay(CLI::App& app, Context& context) {
    auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("replay", "Run a frame log through a tuning");
    verb->add_option("TUNING", options->tuning, "tuning: YAML file, '-', or folder of images")
        ->required();
    verb->add_option("FRAMES", options->frames, "frame log: CSV file or '-'")->required();
    verb->add_option("-o,--output", options->output,
                     "where the rows go (default: standard output; with --summary: nowhere)");
    verb->add_option("--only", options->only, "run one job alone")
        ->check(CLI::IsMember({"ccm", "color"}));
    verb->add_option("--set", options->properties,
                     "NAME=VALUE: set a debug property for the run (repeatable)")
        ->allow_extra_args(false);
    verb->add_option("--every", options->every, "write every Nth frame; all of them are run")
        ->check(CLI::PositiveNumber);
    CLI::Option* summary = verb->add_flag("--summary", options->summary,
                                          "tell how the registers move: settling, steps, clipped "
                                          "gains, overshoot, flicker");
    verb->add_option("--fps", options->summary_options.frames_per_second,
                     "frames per second of the log")
        ->capture_default_str()
        ->check(CLI::PositiveNumber)
        ->needs(summary);
    verb->add_option("--noise", options->summary_options.noise_percent,
                     "noise that is no change of light: percent of gains and CT, tenths of an EV "
                     "of the light value")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 50.0))
        ->needs(summary);
    verb->add_flag("--json", options->json, "the summary as JSON")->needs(summary);
    verb->footer(
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
        "  imgtune replay phone.yaml walk.csv --summary");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
