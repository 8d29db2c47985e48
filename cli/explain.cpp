#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "workbench/camera/camera.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/studies/explanation.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

struct Options {
    std::string tuning;
    std::int64_t lv = 0;
    std::int64_t cct = 0;
    std::vector<std::int64_t> gain;
    std::vector<std::int64_t> full_gain;
    std::int64_t flash = 0;
    std::int64_t scene = 0;
    std::int64_t profile = 0;
    std::int64_t capture = 0;
    std::string log;
    std::uint64_t frame = 0;
    bool json = false;
};

Frame frame_of(const Options& options) {
    const std::vector<std::int64_t>& awb = options.gain.empty() ? options.full_gain : options.gain;
    const std::vector<std::int64_t>& full =
        options.full_gain.empty() ? options.gain : options.full_gain;
    return to_frame({options.lv, options.cct, full[0], full[1], full[2], awb[0], awb[1], awb[2],
                     options.flash, options.scene, options.profile, options.capture});
}

/// Runs the log up to the wanted frame, and returns that.
Frame run_up_to(Camera& camera, const Options& options) {
    FrameFile file(options.log);
    FrameLog& log = file.log();
    Frame frame;
    std::uint64_t number = 0;
    while (log.next(frame)) {
        if (++number == options.frame) return frame;
        camera.run(frame);
    }
    throw BadInput(
        fmt::format("--frame {}: {} has only {} frames", options.frame, options.log, number));
}

int run(const Options& options) {
    if (options.log.empty() && options.gain.empty() && options.full_gain.empty()) {
        throw BadInput(
            "the frame is missing: give --lv, --cct and --gain R,G,B, or --log and "
            "--frame");
    }
    const Tuning tuning = require_tuning(options.tuning);
    const Jobs jobs{tuning.has_ccm, tuning.has_color};
    Camera camera(tuning, jobs);
    Frame frame;
    if (options.log.empty()) {
        frame = frame_of(options);
        camera = settled_camera(tuning, jobs, frame);
    } else {
        frame = run_up_to(camera, options);
    }
    const Story story = explain_frame(camera, frame);
    write_file("-", options.json ? story.json_text() : story.text());
    return kFine;
}

}  // namespace

void add_explain(CLI::App& app, Context& context) {
    auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("explain", "Tell what happens to one frame, in order");
    verb->add_option("TUNING", options->tuning, "tuning: YAML file, '-', or folder of images")
        ->required();
    const CLI::Range int32(kInt32Least, kInt32Most);
    const CLI::Range word(kInt32Least, kUint32Most);
    CLI::Option* log = verb->add_option("--log", options->log, "take the frame from a frame log");
    CLI::Option* number = verb->add_option("--frame", options->frame, "its number, from 1")
                              ->check(CLI::PositiveNumber)
                              ->needs(log);
    log->needs(number);
    CLI::Option* lv = verb->add_option("--lv", options->lv, "light value")->check(word);
    CLI::Option* cct =
        verb->add_option("--cct", options->cct, "colour temperature in kelvin")->check(word);
    const auto gain = [&](const char* name, std::vector<std::int64_t>& values, const char* text) {
        CLI::Option* option = verb->add_option(name, values, text);
        option->delimiter(',')->expected(3)->type_name("R,G,B")->check(int32);
        return option->excludes(log)->needs(lv)->needs(cct);
    };
    gain("--gain", options->gain, "AWB gain, 512 = 1.0");
    gain("--full-gain", options->full_gain, "full AWB gain (default: the AWB gain)");
    verb->add_option("--flash", options->flash, "0: no flash")->check(int32);
    verb->add_option("--scene", options->scene, "1: scene images")->check(int32);
    verb->add_option("--profile", options->profile, "ISP profile")->check(int32);
    verb->add_option("--capture", options->capture, "1: still capture")->check(int32);
    verb->add_flag("--json", options->json, "as JSON");
    verb->footer(
        "A frame given by its light is shown settled: as if that light had held for long. A frame\n"
        "of a log is shown as the frames before it leave it.\n"
        "\n"
        "Example:\n"
        "  imgtune explain phone.yaml --lv 35 --cct 4200 --gain 780,512,1010\n"
        "  imgtune explain phone.yaml --log dusk.csv --frame 118");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
