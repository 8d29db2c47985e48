#include <fmt/format.h>

#include <charconv>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <vector>

#include "cli/common.h"
#include "cli/explanation_text.h"
#include "cli/verbs.h"
#include "workbench/files/file_source.h"
#include "workbench/json/explanation.h"
#include "workbench/studies/explanation.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"

namespace imgtune::cli {

namespace {

struct ExplainOptions {
    std::string tuning;
    std::int64_t lv = 0;
    std::int64_t cct = 0;
    std::vector<std::int64_t> gain;
    std::vector<std::int64_t> full_gain;
    std::int64_t flash = 0;
    std::int64_t scene = 0;
    std::int64_t profile = 0;
    std::int64_t capture = 0;
    std::string from = "cold";
    std::string log;
    std::uint64_t frame = 0;
    std::string only;
    bool verbose = false;
    bool json = false;
};

/// --from LV,CCT,R,G,B, as a frame.
Frame light_before(const std::string& text) {
    FrameValues values{};
    const char* at = text.data();
    const char* const end = at + text.size();
    bool sound = true;
    for (std::size_t i = 0; sound && i < 5; ++i) {
        // The gain stands in both triples.
        const std::size_t column = i < 2 ? i : i + 3;
        const auto number = std::from_chars(at, end, values[column]);
        sound = number.ec == std::errc() && values[column] >= kFrameColumns[column].least &&
                values[column] <= kFrameColumns[column].most &&
                (i == 4 ? number.ptr == end : number.ptr != end && *number.ptr == ',');
        at = number.ptr + 1;
        if (i >= 2) values[i] = values[column];
    }
    if (!sound) {
        throw BadInput("--from " + text +
                       ": expected cold, or five whole numbers LV,CCT,R,G,B such as "
                       "--from 100,2800,640,512,1650");
    }
    return to_frame(values);
}

Frame frame_of(const ExplainOptions& options) {
    const std::vector<std::int64_t>& awb = options.gain.empty() ? options.full_gain : options.gain;
    const std::vector<std::int64_t>& full =
        options.full_gain.empty() ? options.gain : options.full_gain;
    return to_frame({options.lv, options.cct, full[0], full[1], full[2], awb[0], awb[1], awb[2],
                     options.flash, options.scene, options.profile, options.capture});
}

Explanation explain_light(Camera& camera, const ExplainOptions& options) {
    if (options.from != "cold") run_to_rest(camera, light_before(options.from));
    return explain_at_rest(camera, frame_of(options));
}

/// Runs the log up to the wanted frame, and explains that.
Explanation explain_logged(Camera& camera, const ExplainOptions& options) {
    FrameFile file(options.log);
    FrameLog& log = file.log();
    Frame frame;
    std::uint64_t number = 0;
    while (log.next(frame)) {
        if (++number == options.frame) return explain_frame(camera, frame);
        camera.run(frame);
    }
    throw BadInput(fmt::format("--frame {}: {} has only {}", options.frame, options.log,
                               counted(number, "frame")));
}

int run_explain(const ExplainOptions& options) {
    if (options.log.empty() && options.gain.empty() && options.full_gain.empty()) {
        throw BadInput(
            "--gain is missing: give --lv, --cct and --gain R,G,B, or --log and --frame");
    }
    const Tuning tuning = tuning_to_run(options.tuning);
    Camera camera(tuning, jobs_to_run(options.tuning, tuning, options.only));
    const Explanation told =
        options.log.empty() ? explain_light(camera, options) : explain_logged(camera, options);
    print_report(options.json
                     ? dumped(to_json(told))
                     : explanation_text(told, options.verbose ? Detail::all : Detail::screen),
                 "");
    return kFine;
}

}  // namespace

void add_explain(const Verbs& verbs) {
    auto options = std::make_shared<ExplainOptions>();
    const Verb verb = verbs.add("explain", "Tell what happens to one frame, in order");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    const Option log = verb.option("--log", options->log, "take the frame from a frame log");
    const Option number = verb.option("--frame", options->frame, "its number, from 1")
                              .range(std::uint64_t{1}, std::uint64_t{1000000000000})
                              .needs(log);
    log.needs(number);
    const Option lv =
        verb.option("--lv", options->lv, "light value").range(kInt32Least, kUint32Most);
    const Option cct = verb.option("--cct", options->cct, "colour temperature in kelvin")
                           .range(kInt32Least, kUint32Most);
    const auto gain = [&](const char* name, std::vector<std::int64_t>& values, const char* text) {
        const Option option = verb.option(name, values, text);
        option.separated_by_commas().exactly(3).type_name("R,G,B").range(kInt32Least, kInt32Most);
        return option.excludes(log).needs(lv).needs(cct);
    };
    gain("--gain", options->gain, "AWB gain, 512 = 1.0");
    gain("--full-gain", options->full_gain, "full AWB gain (default: the AWB gain)");
    verb.option("--flash", options->flash, "0: no flash").range(kInt32Least, kInt32Most);
    verb.option("--scene", options->scene, "1: scene images").range(kInt32Least, kInt32Most);
    verb.option("--profile", options->profile, "ISP profile").range(kInt32Least, kInt32Most);
    verb.option("--capture", options->capture, "1: still capture").range(kInt32Least, kInt32Most);
    verb.option("--from", options->from,
                "what the camera saw before: cold, just switched on, or LV,CCT,R,G,B, a light "
                "that it had come to rest in")
        .shows_default()
        .excludes(log);
    verb.option("--only", options->only, "tell one job alone").one_of({"ccm", "color"});
    verb.flag("--verbose", options->verbose, "every value and register, not a screenful");
    verb.flag("--json", options->json, "as JSON");
    verb.footer(
        "A frame given by its light is run until nothing moves, and told then: with the frames it\n"
        "took, and what stays short of its target. A frame of a log is told as the frames before\n"
        "it leave it.\n"
        "\n"
        "Example:\n"
        "  imgtune explain phone.yaml --lv 35 --cct 4200 --gain 780,512,1010\n"
        "  imgtune explain phone.yaml --lv 35 --cct 4200 --gain 780,512,1010 --from "
        "100,2800,640,512,1650\n"
        "  imgtune explain phone.yaml --log dusk.csv --frame 118");
    verb.run([options] { return run_explain(*options); });
}

}  // namespace imgtune::cli
