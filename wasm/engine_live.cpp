#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "wasm/engine.h"
#include "workbench/json/explanation.h"
#include "workbench/studies/explanation.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/steepness.h"

namespace imgtune::workbench::page {

namespace {

/// Values in the order of kFrameColumns, frame after frame.
std::vector<Frame> frames_in(std::string_view bytes) {
    constexpr std::size_t kRow = kFrameColumns.size() * sizeof(double);
    if (bytes.size() % kRow != 0) throw BadInput("a frame is not whole");
    std::vector<Frame> frames;
    for (; !bytes.empty(); bytes.remove_prefix(kRow)) {
        std::array<double, kFrameColumns.size()> row;
        std::memcpy(row.data(), bytes.data(), kRow);
        FrameValues values{};
        for (std::size_t k = 0; k < values.size(); ++k) {
            const FrameColumn& column = kFrameColumns[k];
            if (!(row[k] >= static_cast<double>(column.least) &&
                  row[k] <= static_cast<double>(column.most))) {
                throw BadInput("a value is out of its range: " + std::string(column.name));
            }
            values[k] = static_cast<std::int64_t>(row[k]);
        }
        frames.push_back(to_frame(values));
    }
    return frames;
}

}  // namespace

Camera Engine::first_camera() const {
    return first_frame_ > 0 ? camera_before(first_frame_) : camera();
}

/// Whole blocks between two kept states.
void Engine::forget_frames_before(std::size_t frame) {
    if (frame < first_frame_) return;
    const std::size_t blocks = (frame - first_frame_) / kFramesBetweenStates;
    const std::size_t count = std::min(blocks * kFramesBetweenStates, frames_.size());
    const auto at = [](std::size_t i) { return static_cast<std::ptrdiff_t>(i); };
    frames_.erase(frames_.begin(), frames_.begin() + at(count));
    states_.erase(states_.begin(), states_.begin() + at(count / kFramesBetweenStates));
    first_frame_ += count;
}

/// "start" begins anew, with "begin" as the number of the first frame, from 0; "names" are the
/// fields whose columns are wanted, "keep" the first frame that may be asked for later. The answer:
/// registers of the newest frame, of the one before it, and what its light asks for; the columns as
/// programmed, and as asked for; what a viewer sees of each frame, as `visible` tells it.
Answer Engine::append(const Json& arguments, std::string_view bytes) {
    const auto begin = arguments.at("begin").get<std::size_t>();
    const std::vector<Frame> added = frames_in(bytes);
    if (added.empty()) throw BadInput("no frame to append");
    if (arguments.at("start").get<bool>()) {
        frames_.clear();
        forget_runs();
        first_frame_ = begin;
        live_ = std::make_unique<Run>(camera(), std::vector<Field>{});
        live_->before = begin;
    }
    if (!live_ || begin != live_->before + live_->frames)
        throw BadInput("the frames do not follow those before");
    Columns actual{fields(arguments.at("names"))};
    Columns target{actual.fields};
    Camera before = live_->camera;
    for (const Frame& frame : added) {
        before = live_->camera;
        live_->add(frame);
        frames_.push_back(frame);
        actual.add(live_->camera);
        Camera aimed = live_->camera;
        aim(aimed, frame);
        target.add(aimed);
    }
    for (CameraState& state : live_->states) states_.push_back(state);
    live_->states.clear();
    live_->columns.values.clear();
    forget_frames_before(arguments.at("keep").get<std::size_t>());

    const Frame& newest = frames_.back();
    Answer answer;
    for (const Registers& registers :
         {live_->camera.registers(), before.registers(), target_registers(before, newest)}) {
        for (std::string& blob : answer_values(registers).blobs) {
            answer.blobs.push_back(std::move(blob));
        }
    }
    for (const Columns* columns : {&actual, &target}) {
        for (const auto& column : columns->values) answer.add(column);
    }
    live_->visible.add_to(answer);
    live_->visible = {};
    answer.json["seenFrom"] = {{"mean", kVisibleMean}, {"worst", kVisibleWorst}};
    answer.json["patches"] = nullptr;
    if (tuning().has_ccm) {
        const RealMatrix* const held = live_->rests.at(first_frame_ + frames_.size() - 1);
        Camera resting = live_->camera;
        if (held == nullptr) run_to_rest(resting, newest);
        answer.json["patches"] =
            chart_json(chart_error(held != nullptr ? *held : matrix_of(resting.registers()),
                                   matrix_of(live_->camera.registers())));
        answer.json["patches"]["held"] = held != nullptr;
    }
    answer.json["explanation"] = to_json(explain_frame(before, newest));
    answer.json["explanation"].erase("registers");  // the most of it, and told as columns
    answer.json["done"] = begin + added.size();
    return answer;
}

}  // namespace imgtune::workbench::page
