#include <fmt/format.h>

#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/trace/trace_capture.h"

namespace imgtune::cli {

void add_props(const Verbs& verbs) {
    struct Options {
        bool frames = false;
        bool off = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb = verbs.add("props", "Tell how to switch a phone's traces on and off");
    verb.flag("--frames", options->frames, "only what 'frames' needs: a fourth of the lines");
    verb.flag("--off", options->off, "switch them off again");
    verb.footer(
        "The library reads the properties on every call, so that they act from the next frame on\n"
        "and until the phone restarts. Names in debug. are the shell's to set; a build that\n"
        "denies the camera process reading them shows no trace.\n"
        "\n"
        "Example:\n"
        "  imgtune props | sh; adb logcat -v threadtime > phone.log; imgtune props --off | sh");
    verb.run([options]() -> int {
        std::string text;
        for (const std::string& name : trace_switches(options->frames)) {
            text += fmt::format("adb shell setprop {} {}\n", name, options->off ? 0 : 1);
        }
        write_file("-", text);
        return kFine;
    });
}

}  // namespace imgtune::cli
