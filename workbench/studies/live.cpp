#include "workbench/studies/live.h"

#include <utility>

#include "workbench/studies/resting.h"

namespace imgtune::workbench {

LiveStudy::LiveStudy(const Tuning& tuning, const SummaryOptions& options)
    : camera_(tuning, {tuning.has_ccm, tuning.has_color}),
      summary_(camera_, options),
      verifier_(tuning),
      visible_(camera_, {kLightSkin, options.frames_per_second, options.noise_percent}) {}

void LiveStudy::add(const TracedFrame& traced, const FrameValues& values, const Frame& frame) {
    verifier_.add(traced);
    const TracedCall& call = traced.first();
    newest_.line = call.line;
    newest_.time = call.time;
    newest_.writer = call.writer;
    newest_.values = values;
    newest_.frame = frame;
    ++newest_.number;
    camera_.run(frame);
    const bool any = newest_.number > 1;
    const LightChange before = any ? change() : LightChange{};
    summary_.add(newest_.number, frame, camera_);
    if (any && change().first != before.first) change_before_ = before;
    if (!camera_.jobs().ccm) return;
    const CallerSettings& caller = camera_.tuning().caller;
    newest_.matrix = decode(camera_.ccm(), caller);
    newest_.target = decode(target_registers(camera_, frame).ccm, caller);
    newest_.visible = visible_.next(frame, camera_);
    newest_.clipping = find_clipping(camera_.tuning(), frame);
}

LiveFrames::LiveFrames(std::string name, ByteSource& source, std::optional<CameraChoice> camera)
    : traced_(source, camera),
      text_(traced_, [this](const TracedFrame& frame) { traced_frame_ = frame; }),
      log_(std::move(name), text_) {}

}  // namespace imgtune::workbench
