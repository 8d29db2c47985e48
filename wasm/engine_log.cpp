#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "wasm/engine.h"
#include "workbench/appearance/patches.h"
#include "workbench/frames/frame_check.h"
#include "workbench/json/findings.h"
#include "workbench/json/summary.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/steepness.h"

namespace imgtune::workbench::page {

Answer Engine::load_frames(const Json& arguments, std::string_view bytes) {
    const std::string name = arguments.at("name");
    Faults faults;
    MemorySource first(bytes);
    check_frames(name, first, faults);
    if (faults.has_errors()) throw Refused(faults);
    MemorySource source(bytes);
    FrameLog log(name, source);
    const bool wanted = arguments.value("columns", true);
    const auto most = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n')) + 1;
    std::vector<Frame> frames;
    frames.reserve(most);
    std::array<std::vector<double>, kFrameColumns.size()> columns;
    for (auto& column : columns) column.reserve(wanted ? most : 0);
    for (Frame frame; log.next(frame);) {
        frames.push_back(frame);
        if (!wanted) continue;
        for (std::size_t k = 0; k < columns.size(); ++k) {
            columns[k].push_back(static_cast<double>(log.values()[k]));
        }
    }
    if (frames.empty()) throw BadInput(name + ": the log has no frames");
    frames_ = std::move(frames);
    forget_runs();
    Answer answer;
    answer.json = to_json(faults);
    answer.json["count"] = frames_.size();
    if (wanted) {
        for (auto& column : columns) answer.add(std::exchange(column, {}));
    }
    return answer;
}

Answer Engine::replay(const Json& arguments, std::string_view) {
    const auto begin = arguments.at("begin").get<std::size_t>();
    const auto count = arguments.at("count").get<std::size_t>();
    if (begin == 0) running_ = std::make_unique<Run>(camera(), fields(arguments.at("names")));
    if (!running_ || begin != running_->frames) throw BadInput("the run was given up");
    const std::size_t end = std::min(frames_.size(), begin + count);
    while (running_->frames < end) running_->add(frames_[running_->frames]);
    if (end == frames_.size()) {
        states_ = std::move(running_->states);
        columns_ = std::move(running_->columns);
        visible_ = std::move(running_->visible);
        rests_ = std::move(running_->rests);
        summary_ = to_json(running_->summary.finish());
        running_.reset();
    }
    Answer answer;
    answer.json["done"] = end;
    return answer;
}

Answer Engine::columns(const Json& arguments, std::string_view) {
    if (arguments.at("kind") == "target") return targets(fields(arguments.at("names")));
    Columns missing;
    for (const Field& field : fields(arguments.at("names"))) {
        if (columns_.find(field.name) == nullptr) missing.fields.push_back(field);
    }
    if (!missing.fields.empty()) {
        Camera camera = first_camera();
        for (const Frame& frame : frames_) {
            camera.run(frame);
            missing.add(camera);
        }
        columns_.append(std::move(missing));
    }
    Answer answer;
    for (const std::string& name : arguments.at("names")) answer.add(*columns_.find(name));
    if (live_) columns_ = {};  // more frames come
    return answer;
}

Answer Engine::targets(std::vector<Field> names) {
    Columns columns{std::move(names)};
    Camera camera = this->camera();
    for (const Frame& frame : frames_) {
        aim(camera, frame);
        columns.add(camera);
    }
    Answer answer;
    for (const auto& column : columns.values) answer.add(column);
    return answer;
}

Answer Engine::values(const Json& arguments, std::string_view) {
    const auto number = arguments.at("frame").get<std::size_t>();
    Camera camera = camera_before(number);
    camera.run(frames_.at(number - first_frame_));
    return answer_values(camera.registers());
}

Answer Engine::summary(const Json&, std::string_view) {
    Answer answer;
    answer.json = live_ ? to_json(live_->summary.so_far()) : summary_;
    return answer;
}

Answer Engine::visible(const Json&, std::string_view) {
    require_ccm();
    Answer answer;
    visible_.add_to(answer);
    answer.json = {{"mean", kVisibleMean}, {"worst", kVisibleWorst}};
    return answer;
}

Answer Engine::patch_over_log(const Json& arguments, std::string_view) {
    require_ccm();
    const auto patch = arguments.at("patch").get<std::size_t>();
    if (patch >= kPatchCount) throw BadInput("no such patch");
    Camera camera = first_camera();
    VisibleWatch watch(camera, {.patch = patch});
    std::vector<float> step;
    std::vector<float> rest;
    step.reserve(frames_.size());
    rest.reserve(frames_.size());
    const auto chosen = [](const std::optional<ChartDifference>& difference) {
        return difference ? static_cast<float>(difference->chosen) : VisibleColumns::kNotMeasured;
    };
    for (const Frame& frame : frames_) {
        camera.run(frame);
        const VisibleFrame visible = watch.next(frame, camera);
        step.push_back(chosen(visible.step));
        rest.push_back(chosen(visible.from_rest));
    }
    Answer answer;
    answer.add(step);
    answer.add(rest);
    return answer;
}

}  // namespace imgtune::workbench::page
