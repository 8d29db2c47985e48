#include "cli/live_input.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/verbs.h"
#include "workbench/files/output_guard.h"
#include "workbench/studies/demo_walk.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

using namespace workbench;

void add_live_input(const Verb& verb, LiveInputOptions& options) {
    verb.option("--camera", options.log.camera,
                "PID or PID:TID: whose calls are one camera's (default: the first thread that "
                "traces a call; PID alone takes all its threads)");
    verb.flag("--demo", options.demo,
              "without a phone: play a walk of a minute, or the frame log, in real time through "
              "the library's own traces");
    verb.option("--record", options.record,
                "keep the frames in this frame log; an earlier one of a phone is replaced");
    verb.option("--log", options.raw, "keep the lines as they came in this file");
    verb.flag("--force", options.force, "replace whatever file is there");
    verb.option("--fps", options.summary.frames_per_second,
                "frames per second, of the demonstration and of the summary")
        .shows_default()
        .range(SummaryOptions::kLeastFramesPerSecond, SummaryOptions::kMostFramesPerSecond);
}

LiveInput::LiveInput(EventLoop& loop, const Tuning& tuning, const LiveInputOptions& options,
                     const std::vector<std::string>& inputs, std::string ahead) {
    const std::string& path = options.log.path;
    if (path.empty() && !options.demo) {
        throw BadInput(
            "what adb logcat prints is missing: '-' or a file, or --demo without a phone");
    }
    std::vector<std::string> all = inputs;
    all.push_back(path);
    if (std::count(all.begin(), all.end(), "-") > 1) {
        throw BadInput("only one of tuning and log can be standard input");
    }
    for (const std::string* output : {&options.record, &options.raw}) {
        if (*output == "-") throw BadInput("--record and --log need a file, not standard output");
    }
    guard_output(options.record, all, or_anything(Replaces::frame_log, options.force));
    all.push_back(options.record);
    guard_output(options.raw, all, or_anything(Replaces::nothing, options.force));
    const auto camera = camera_of(options.log);
    if (!options.record.empty()) record_.emplace(options.record);
    if (!options.raw.empty()) raw_.emplace(options.raw);
    const auto seen = [this](std::string_view bytes) {
        if (raw_) raw_->write(bytes);
    };
    if (!options.demo) {
        auto source = std::make_unique<LiveSource>(loop, path, seen, std::move(ahead));
        name_ = source->name();
        source_ = std::move(source);
    } else {
        name_ = path.empty() ? "the demonstration" : path;
        DemoSource::Frames next;
        if (path.empty()) {
            next = [walk = std::make_shared<DemoWalk>(tuning, options.summary.frames_per_second)](
                       Frame& frame) { return walk->next(frame); };
        } else {
            demo_frames_ = std::make_unique<FrameFile>(path);
            next = [this](Frame& frame) { return demo_frames_->log().next(frame); };
        }
        source_ = std::make_unique<DemoSource>(loop, tuning, options.summary.frames_per_second,
                                               std::move(next), seen);
    }
    frames_.emplace(name_, *source_, camera);
}

bool LiveInput::next() {
    if (!frames_->next()) return false;
    if (record_) {
        if (frames_->count() == 1) record_->write(traced_frame_header());
        record_->write(traced_frame_line(frames_->count(), frames_->traced()));
    }
    return true;
}

void LiveInput::keep() {
    if (raw_) raw_->commit();
    raw_.reset();
    if (record_ && frames_->count() > 0) record_->commit();
    record_.reset();
}

}  // namespace imgtune::cli
