#include "workbench/studies/verify.h"

#include <fmt/format.h>

#include <memory>
#include <string>

#include "cli/common.h"
#include "cli/phone_log.h"
#include "cli/verbs.h"
#include "cli/verification_text.h"
#include "workbench/json/verify.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

struct VerifyOptions {
    std::string tuning;
    PhoneLogOptions log;
    bool json = false;
};

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
    print_report(options.json ? dumped(to_json(result)) : verification_text(result), "");
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
