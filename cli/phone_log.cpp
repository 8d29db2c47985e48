#include "cli/phone_log.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>
#include <sstream>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"

namespace imgtune::cli {

void add_phone_log(const Verb& verb, PhoneLogOptions& options) {
    verb.option("LOGCAT", options.path, "what adb logcat printed: a file or '-'").required();
    verb.option("--camera", options.camera,
                "PID or PID:TID: whose calls are one camera's (default: the first thread that "
                "traces a call; PID alone takes all its threads)");
}

std::optional<CameraChoice> camera_of(const PhoneLogOptions& options) {
    if (options.camera.empty()) return std::nullopt;
    CameraChoice choice;
    std::istringstream text(options.camera);
    char colon = ':';
    text >> choice.process;
    if (text && !text.eof()) text >> colon >> choice.thread;
    if (!text || colon != ':' || text.peek() != std::istringstream::traits_type::eof()) {
        throw BadInput(fmt::format("--camera '{}': expected PID or PID:TID, such as 1234:1250",
                                   options.camera));
    }
    return choice;
}

void tell_rest(const std::string& name, const TracedFrames& frames, std::uint64_t count) {
    const std::string others = frames.others_text();
    if (count > 0 && !others.empty()) {
        say(fmt::format("{}: other cameras or threads: {}; choose with --camera\n", name, others));
    }
    const TraceTotals& totals = frames.totals();
    if (frames.unusable_calls() > 0) {
        say(fmt::format("{}: {} left out: the lines with their inputs are missing\n", name,
                        counted(frames.unusable_calls(), "call")));
    }
    if (totals.lost_lines > 0) {
        say(
            fmt::format("{}: the log reports {}; a larger buffer keeps them: adb logcat -G "
                        "16M\n",
                        name, counted(totals.lost_lines, "lost line")));
    }
    if (count == 0) throw BadInput(frames.why_none(name));
}

}  // namespace imgtune::cli
