#include <cstdio>
#include <memory>
#include <string>

#include "cli/phone_log.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"

namespace imgtune::cli {

namespace {

struct FramesOptions {
    PhoneLogOptions log;
    std::string output = "-";
    bool force = false;
};

int run_frames(const FramesOptions& options) {
    guard_output(options.output, {options.log.path},
                 or_anything(Replaces::frame_log, options.force));
    FileSource source(options.log.path);
    TracedFrames frames(source, camera_of(options.log));
    OutputFile output(options.output);
    std::uint64_t count = 0;
    for (TracedFrame frame; frames.next(frame);) {
        if (count == 0) output.write(traced_frame_header());
        output.write(traced_frame_line(++count, frame));
        if (options.output == "-") std::fflush(output.stream());  // a live log is seen at once
    }
    tell_rest(source.name(), frames, count);
    output.commit();
    return kFine;
}

}  // namespace

void add_frames(const Verbs& verbs) {
    const auto options = std::make_shared<FramesOptions>();
    const Verb verb = verbs.add("frames", "Make a frame log of a phone's log");
    add_phone_log(verb, options->log);
    verb.option("-o,--output", options->output, "frame log; an earlier one of a phone is replaced")
        .shows_default();
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.footer(
        "Reads the library's own trace among all other lines: 'imgtune props' tells how to switch\n"
        "it on. What the trace does not say stays empty, and replay takes it.\n"
        "\n"
        "Example:\n"
        "  adb logcat -v threadtime | imgtune frames - | imgtune replay phone.yaml -");
    verb.run([options] { return run_frames(*options); });
}

}  // namespace imgtune::cli
