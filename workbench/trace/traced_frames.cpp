#include "workbench/trace/traced_frames.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostOthers = 64;
constexpr std::uint64_t kAloneForAWhile = 8;  // frames

using Values = std::array<std::optional<std::int64_t>, kFrameColumns.size()>;

std::string name_of(const LogWriter& writer) {
    return writer.thread == 0 ? fmt::format("{}", writer.process)
                              : fmt::format("{}:{}", writer.process, writer.thread);
}

bool read_ccm(const TracedCall& call, Values& values) {
    const Trace trace(call.lines);
    const auto full = trace.integers(ccm_label::kFullGain);
    const auto gain = trace.integers(ccm_label::kGain);
    const auto flash_mode = trace.integers(ccm_label::kFlash);
    const auto real_lv = trace.integers(ccm_label::kLv);
    if (full.size() != 1 || gain.size() != 3 || flash_mode.size() != 1 || real_lv.size() != 1) {
        return false;
    }
    const std::size_t first = full[0] == 1 ? kFullGain : kAwbGain;
    for (std::size_t i = 0; i < gain.size(); ++i) values[first + i] = gain[i];
    values[kFlash] = flash_mode[0];
    values[kLv] = real_lv[0];
    return true;
}

bool read_color(const TracedCall& call, Values& values, ColorInputs& inputs) {
    const Trace trace(call.lines);
    const auto temperatures = trace.integers(color_label::kBracket);
    const auto light = trace.integers(color_label::kLight);
    if (temperatures.size() != 5 || light.size() != 5) return false;
    const auto slot = static_cast<std::size_t>(light[1]);
    values[kCct] = temperatures[0];
    values[kLv] = light[0];
    values[kFlash] = slot == kSlotFlash ? 1 : 0;
    if (slot != kSlotFlash) values[kScene] = slot == kSlotScene ? 1 : 0;
    values[kProfile] = light[2];
    values[kCapture] = light[3];
    inputs = {temperatures[2], temperatures[1], temperatures[3],
              temperatures[4], light[3],        light[4]};
    return true;
}

bool fit_columns(const Values& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] &&
            (*values[i] < kFrameColumns[i].least || *values[i] > kFrameColumns[i].most))
            return false;
    }
    return true;
}

/// Of one frame: the same light value, both or neither lit by the flash.
bool agree(const Values& a, const Values& b) {
    return a[kLv] == b[kLv] && (*a[kFlash] != 0) == (*b[kFlash] != 0);
}

/// Takes over what only the other call tells; the flash mode itself is the matrix's to tell.
void join(TracedFrame& frame, const Values& values, TracedCall&& call) {
    const bool is_ccm = call.job == TracedJob::ccm;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] && (is_ccm || !frame.values[i])) frame.values[i] = values[i];
    }
    (is_ccm ? frame.ccm : frame.color) = std::move(call);
}

}  // namespace

bool TracedFrames::belongs(const LogWriter& writer) {
    if (!camera_) camera_ = CameraChoice{writer.process, writer.thread};
    return writer.process == camera_->process &&
           (camera_->thread == 0 || writer.thread == camera_->thread);
}

void TracedFrames::add(TracedCall&& call) {
    Values values;
    ColorInputs inputs;
    const bool is_ccm = call.job == TracedJob::ccm;
    if (!(is_ccm ? read_ccm(call, values) : read_color(call, values, inputs)) ||
        !fit_columns(values)) {
        ++unusable_;
        return;
    }
    if (!belongs(call.writer)) {
        const auto found = others_.find(call.writer);
        if (found != others_.end() || others_.size() < kMostOthers) ++others_[call.writer];
        return;
    }
    const bool joins =
        open_ && !(is_ccm ? open_->ccm : open_->color) && agree(open_->values, values);
    if (open_ && !joins) end_frame();
    // The other job's after all: this call's frame is out already, and the next one's is its own.
    const bool late = alone_ >= kAloneForAWhile && call.job != alone_job_;
    const bool at_once = alone_ >= kAloneForAWhile;
    if (!open_) open_.emplace();
    if (!is_ccm) open_->color_inputs = inputs;
    join(*open_, values, std::move(call));
    if (at_once || (open_->ccm && open_->color)) end_frame();
    if (late) alone_ = 0;
}

void TracedFrames::end_frame() {
    const TracedJob job = open_->first().job;
    const bool alone = !open_->ccm || !open_->color;
    alone_ = !alone ? 0 : job == alone_job_ ? alone_ + 1 : 1;
    alone_job_ = job;
    ended_.push_back(*std::exchange(open_, std::nullopt));
}

bool TracedFrames::next(TracedFrame& frame) {
    TracedCall call;
    while (ended_.empty() && calls_.next(call)) add(std::move(call));
    if (ended_.empty() && open_) ended_.push_back(*std::exchange(open_, std::nullopt));
    if (ended_.empty()) return false;
    frame = std::move(ended_.front());
    ended_.pop_front();
    return true;
}

std::vector<TracedWriter> TracedFrames::others() const {
    std::vector<TracedWriter> list;
    for (const auto& [writer, calls] : others_) list.push_back({writer, calls});
    return list;
}

std::string TracedFrames::others_text() const {
    std::string text;
    for (const TracedWriter& other : others()) {
        text += fmt::format("{}{} ({} calls)", text.empty() ? "" : ", ", name_of(other.writer),
                            other.calls);
    }
    return text;
}

std::string TracedFrames::why_none(const std::string& name) const {
    if (!others_.empty()) {
        return fmt::format("{}: no frame of that camera; the log has {}", name, others_text());
    }
    if (totals().trace_lines == 0) {
        return fmt::format(
            "{}: none of its {} lines is a trace of the library; 'imgtune props' tells how to "
            "switch it on, and the forms brief, tag, time, threadtime and long can be read",
            name, totals().lines);
    }
    return fmt::format(
        "{}: {} lines of the library, but no frame from its start; 'imgtune props' tells what to "
        "switch on",
        name, totals().trace_lines);
}

std::string traced_frame_header() {
    std::string text = "frame";
    for (const FrameColumn& column : kFrameColumns) text += fmt::format(",{}", column.name);
    return text + ",x_time,x_process,x_thread,x_line\n";
}

std::string traced_frame_line(std::uint64_t number, const TracedFrame& frame) {
    std::string text = fmt::format("{}", number);
    for (const auto& value : frame.values) text += value ? fmt::format(",{}", *value) : ",";
    const TracedCall& call = frame.first();
    return text + fmt::format(",{},{},{},{}\n", call.time, call.writer.process, call.writer.thread,
                              call.line);
}

TracedFrameText::TracedFrameText(TracedFrames& frames, Seen seen)
    : frames_(frames), seen_(std::move(seen)), text_(traced_frame_header()) {}

std::size_t TracedFrameText::read(char* into, std::size_t room) {
    if (used_ == text_.size()) {
        TracedFrame frame;
        if (!frames_.next(frame)) return 0;
        seen_(frame);
        text_ = traced_frame_line(++count_, frame);
        used_ = 0;
    }
    const std::size_t count = text_.copy(into, room, used_);
    used_ += count;
    return count;
}

}  // namespace imgtune::workbench
