#include "wasm/engine.h"

#include <algorithm>
#include <string>
#include <utility>

#include "workbench/camera/register_values.h"
#include "workbench/json/findings.h"

namespace imgtune::workbench::page {

const std::pair<const char*, Engine::Method> Engine::kCommands[] = {
    {"loadTuning", &Engine::load_tuning},
    {"saveTuning", &Engine::save_tuning},
    {"loadFrames", &Engine::load_frames},
    {"replay", &Engine::replay},
    {"columns", &Engine::columns},
    {"values", &Engine::values},
    {"summary", &Engine::summary},
    {"explain", &Engine::explain},
    {"light", &Engine::light},
    {"gain", &Engine::gain},
    {"plane", &Engine::plane},
    {"grid", &Engine::grid},
    {"steepest", &Engine::steepest},
    {"patches", &Engine::patches},
    {"append", &Engine::append},
    {"visible", &Engine::visible},
    {"patchOverLog", &Engine::patch_over_log},
    {"diff", &Engine::diff},
    {"tryWeights", &Engine::try_weights},
    {"tryStep", &Engine::try_step},
    {"chooseSmoothing", &Engine::choose_smoothing},
    {"smoothedText", &Engine::smoothed_text},
};

Answer Engine::run(const std::string& command, const Json& arguments, std::string_view bytes) {
    for (const auto& [name, method] : kCommands) {
        if (name == command) return (this->*method)(arguments, bytes);
    }
    throw BadInput("no command " + command);
}

const Camera& Engine::camera() const {
    if (!camera_) throw BadInput("no tuning is loaded");
    return *camera_;
}

const Tuning& Engine::tuning() const {
    return camera().tuning();
}

void Engine::require_ccm() const {
    if (!tuning().has_ccm) throw BadInput("the tuning has no part 'ccm'");
}

void Engine::forget_runs() {
    states_.clear();
    columns_ = {};
    visible_ = {};
    rests_ = {};
    summary_ = nullptr;
    running_.reset();
    live_.reset();
    first_frame_ = 0;
}

std::vector<Field> Engine::fields(const Json& names) const {
    std::vector<Field> found;
    for (const std::string& name : names) {
        Field field{.name = name};
        for (std::size_t job = 0; job < names_.size(); ++job) {
            const auto at = std::find(names_[job].begin(), names_[job].end(), name);
            if (at == names_[job].end()) continue;
            const auto k = static_cast<std::size_t>(at - names_[job].begin());
            if (job == kCcmJob) field.coefficient = k;
            if (job == kColorJob) field.color = &color_fields()[k];
        }
        if (!field.coefficient && field.color == nullptr) throw BadInput("no field " + name);
        found.push_back(field);
    }
    return found;
}

RealMatrix Engine::matrix_of(const Registers& registers) const {
    const double unity = 1 << std::clamp(tuning().caller.frac_bits, 0, 12);
    return real_matrix(values_of(Job::ccm, registers, tuning().caller), unity);
}

Answer Engine::answer_values(const Registers& registers) const {
    Answer answer;
    for (const Job job : {Job::ccm, Job::color}) {
        answer.add(words(values_of(job, registers, tuning().caller)));
    }
    return answer;
}

Camera Engine::camera_before(std::size_t frame) const {
    Camera camera = this->camera();
    if (frame < first_frame_) throw BadInput("the frame was forgotten");
    const std::size_t at = frame - first_frame_;
    const std::size_t kept = at / kFramesBetweenStates;
    camera.set_state(states_.at(kept));
    for (std::size_t i = kept * kFramesBetweenStates; i < at; ++i) camera.run(frames_.at(i));
    return camera;
}

namespace {

Engine engine;
Answer answer;
std::string answer_text;

}  // namespace

extern "C" {

/// Runs a command: its name and JSON arguments, and bytes beside them. The JSON of the answer
/// stands until the next command: {"ok": ...}, or {"error": text, "findings": [...]}.
const char* engine_run(const char* command, const char* arguments, const char* bytes,
                       std::size_t size) {
    Json reply;
    try {
        answer = engine.run(command, Json::parse(arguments), {bytes, size});
        reply["ok"] = std::move(answer.json);
    } catch (const Refused& refused) {
        answer = {};
        reply = to_json(refused.faults);
        reply["error"] = refused.faults.text();
    } catch (const std::exception& error) {
        answer = {};
        reply["error"] = error.what();
        reply["findings"] = Json::array();
    }
    answer_text = reply.dump(-1, ' ', false, Json::error_handler_t::replace);
    return answer_text.c_str();
}

std::size_t engine_blobs() {
    return answer.blobs.size();
}
const char* engine_blob(std::size_t i) {
    return answer.blobs[i].data();
}
std::size_t engine_blob_size(std::size_t i) {
    return answer.blobs[i].size();
}
}

}  // namespace imgtune::workbench::page
