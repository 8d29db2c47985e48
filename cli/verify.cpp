#include "workbench/studies/verify.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/phone_log.h"
#include "cli/verbs.h"
#include "workbench/json/verify.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"

namespace imgtune::cli {

namespace {

struct VerifyOptions {
    std::string tuning;
    PhoneLogOptions log;
    bool json = false;
};

std::string text_of(const LikelyCause& cause) {
    const std::string where = cause.field.empty() ? "" : " (" + cause.field + ")";
    switch (cause.cause) {
        case TraceCause::tuning:
            return "the phone has another tuning" + where;
        case TraceCause::caller:
            return "the phone's camera stack passes other settings" + where;
        case TraceCause::state:
            return "frames before it are missing in the log, or the phone's camera started anew";
        case TraceCause::version:
            return "the phone has another version of the library";
        case TraceCause::log:
            return "the line was damaged in the log: what is computed from the value agrees";
    }
    return "";
}

std::string text_of(const TraceDifference& first) {
    return fmt::format(
        "first difference: frame {}{}{}, line {} of the log\n"
        "  {}\n"
        "    phone  {}\n"
        "    desk   {}\n"
        "  likely cause: {}\n",
        first.frame, first.time.empty() ? "" : ", ", first.time, first.line, first.value,
        first.phone, first.desk.empty() ? "(no such line)" : first.desk, text_of(first.cause));
}

/// Of those that fit a screen; the JSON form has all.
std::string text_of(const std::vector<TracedField>& fields) {
    constexpr std::size_t kMost = 20;
    std::string text =
        fmt::format("{} of the tuning seen to differ:\n", counted(fields.size(), "field"));
    for (std::size_t i = 0; i < std::min(kMost, fields.size()); ++i) {
        const TracedField& one = fields[i];
        text += fmt::format("  {}: phone {}, desk {} (from frame {})\n", one.field, one.phone,
                            one.desk, one.frame);
    }
    if (fields.size() > kMost) {
        text += fmt::format("  and {} more; --json lists all\n", fields.size() - kMost);
    }
    return text;
}

std::string text_of(const Verification& result) {
    std::string text =
        fmt::format("{}, {} compared: {}\n", counted(result.frames, "frame"),
                    counted(result.lines, "trace line"), result.first ? "different" : "equal");
    if (result.first) {
        text += fmt::format("{} of the frames differ\n", result.differing_frames);
        text += text_of(*result.first);
    }
    if (!result.fields.empty()) text += text_of(result.fields);
    if (!result.unused.empty()) {
        text += fmt::format("not compared, as no frame of the log used it: {}\n",
                            fmt::join(result.unused, ", "));
    }
    if (result.without_tuning > 0) {
        text += fmt::format("{} not compared: the tuning lacks their part\n",
                            counted(result.without_tuning, "call"));
    }
    if (result.missing_lines > 0) {
        text +=
            fmt::format("{} missing in the phone's log\n", counted(result.missing_lines, "line"));
    }
    if (result.state_taken > 0) {
        text +=
            fmt::format("state taken anew from the log {}\n", counted(result.state_taken, "time"));
    }
    if (result.other_grid) {
        text += "the phone's grid of colour temperatures is not caller.ct_grid; its own was used\n";
    }
    return text;
}

int run_verify(const VerifyOptions& options) {
    if (options.tuning == "-" && options.log.path == "-") {
        throw BadInput("only one of tuning and log can be standard input");
    }
    const Tuning tuning = tuning_to_run(options.tuning);
    FileSource source(options.log.path);
    TracedFrames frames(source, camera_of(options.log));
    Verifier verifier(tuning);
    for (TracedFrame frame; frames.next(frame);) verifier.add(frame);
    const Verification result = verifier.result();
    tell_rest(source.name(), frames, result.frames);
    if (result.lines == 0) {
        throw BadInput(fmt::format("{}: nothing to compare: the tuning has no part for its calls",
                                   source.name()));
    }
    print_report(options.json ? dumped(to_json(result)) : text_of(result), "");
    return result.first ? kFindings : kFine;
}

}  // namespace

void add_verify(const Verbs& verbs) {
    const auto options = std::make_shared<VerifyOptions>();
    const Verb verb = verbs.add("verify", "Check a phone's log against this library");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    add_phone_log(verb, options->log);
    verb.flag("--json", options->json, "as JSON");
    verb.footer(
        "Runs the frames of a phone's log through the tuning and holds every number that the\n"
        "phone traced against what the library traces here. The state from before the log is\n"
        "taken from the log. Exit status 0: equal; 1: different; 2: bad input.\n"
        "\n"
        "Example:\n"
        "  imgtune props | sh; adb logcat -v threadtime > phone.log\n"
        "  imgtune verify phone.yaml phone.log");
    verb.run([options] { return run_verify(*options); });
}

}  // namespace imgtune::cli
