// What the page calls of library and workbench: one engine a worker, commands as JSON with bytes
// beside it, answers likewise. Nothing is computed here.

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ccm/codec.h"
#include "wasm/answers.h"
#include "wasm/run.h"
#include "workbench/calibration/patches.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/locus.h"
#include "workbench/camera/register_values.h"
#include "workbench/frames/frame_check.h"
#include "workbench/json/diff.h"
#include "workbench/json/explanation.h"
#include "workbench/json/findings.h"
#include "workbench/json/summary.h"
#include "workbench/studies/diff.h"
#include "workbench/studies/explanation.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/sweep.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/faults.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench::page {
namespace {

class Engine {
  public:
    Answer run(const std::string& command, const Json& arguments, std::string_view bytes) {
        for (const auto& [name, method] : kCommands) {
            if (name == command) return (this->*method)(arguments, bytes);
        }
        throw BadInput("no command " + command);
    }

  private:
    using Method = Answer (Engine::*)(const Json&, std::string_view);

    Answer load_tuning(const Json& arguments, std::string_view bytes) {
        Faults faults;
        Tuning tuning = read_tuning(arguments.at("files"), bytes, faults);
        if (faults.has_errors()) {
            faults.sort();
            throw Refused(faults);
        }
        check_tuning(tuning, faults);
        faults.sort();
        const Jobs jobs = jobs_of(tuning);
        camera_ = std::make_unique<Camera>(tuning, jobs);
        names_[0] = value_names(Job::ccm);
        names_[1] = value_names(Job::color);
        forget_runs();
        Answer answer;
        answer.json = to_json(faults);
        answer.json["name"] = tuning.name;
        answer.json["hasCcm"] = tuning.has_ccm;
        answer.json["hasColor"] = tuning.has_color;
        answer.json["ctGrid"] = tuning.caller.ct_grid;
        answer.json["codecOne"] = 1 << std::clamp(tuning.caller.frac_bits, 0, 12);
        answer.json["fullGain"] = tuning.caller.full_gain == 1;
        answer.json["colorNames"] = names_[1];
        return answer;
    }

    Answer save_tuning(const Json& arguments, std::string_view) {
        Answer answer;
        answer.json = Json::array();
        std::vector<StoredImage> files;
        if (arguments.at("form") == "yaml") {
            files.push_back({tuning().name + ".yaml",
                             write_yaml(tuning(), arguments.value("comments", false))});
        } else {
            files = to_images(tuning());
        }
        for (StoredImage& file : files) {
            answer.json.push_back(file.name);
            answer.blobs.push_back(std::move(file.bytes));
        }
        return answer;
    }

    Answer load_frames(const Json& arguments, std::string_view bytes) {
        const std::string name = arguments.at("name");
        Faults faults;
        MemorySource first(bytes);
        check_frames(name, first, faults);
        if (faults.has_errors()) throw Refused(faults);
        MemorySource source(bytes);
        FrameLog log(name, source);
        std::vector<Frame> frames;
        std::array<std::vector<double>, kFrameColumns.size()> columns;
        for (Frame frame; log.next(frame);) {
            frames.push_back(frame);
            for (std::size_t k = 0; k < columns.size(); ++k) {
                columns[k].push_back(static_cast<double>(log.values()[k]));
            }
        }
        frames_ = std::move(frames);
        forget_runs();
        Answer answer;
        answer.json = to_json(faults);
        answer.json["count"] = frames_.size();
        for (auto& column : columns) answer.add(std::exchange(column, {}));
        return answer;
    }

    /// Frames begin..begin + count; a log's first chunk begins a new run, its last makes it the
    /// one that others ask about. The run keeps the columns of these names.
    Answer replay(const Json& arguments, std::string_view) {
        const auto begin = arguments.at("begin").get<std::size_t>();
        const auto count = arguments.at("count").get<std::size_t>();
        if (begin == 0) running_ = std::make_unique<Run>(camera(), fields(arguments.at("names")));
        if (!running_ || begin != running_->frames) throw BadInput("the run was given up");
        const std::size_t end = std::min(frames_.size(), begin + count);
        while (running_->frames < end) running_->add(frames_[running_->frames]);
        if (end == frames_.size()) {
            states_ = std::move(running_->states);
            columns_ = std::move(running_->columns);
            summary_ = to_json(running_->summary.finish());
            running_.reset();
        }
        Answer answer;
        answer.json["done"] = end;
        return answer;
    }

    /// Columns that the run did not keep take another pass over the log.
    Answer columns(const Json& arguments, std::string_view) {
        if (arguments.at("kind") == "target") return targets(fields(arguments.at("names")));
        Columns missing;
        for (const Field& field : fields(arguments.at("names"))) {
            if (columns_.find(field.name) == nullptr) missing.fields.push_back(field);
        }
        if (!missing.fields.empty()) {
            Camera camera = this->camera();
            for (const Frame& frame : frames_) {
                camera.run(frame);
                missing.add(camera);
            }
            columns_.append(std::move(missing));
        }
        Answer answer;
        for (const std::string& name : arguments.at("names")) answer.add(*columns_.find(name));
        return answer;
    }

    Answer targets(std::vector<Field> names) {
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

    Answer values(const Json& arguments, std::string_view) {
        const auto number = arguments.at("frame").get<std::size_t>();
        Camera camera = camera_before(number);
        camera.run(frames_.at(number));
        return answer_values(camera.registers());
    }

    Answer summary(const Json&, std::string_view) {
        Answer answer;
        answer.json = summary_;
        return answer;
    }

    Answer explain(const Json& arguments, std::string_view) {
        Answer answer;
        if (arguments.contains("frame")) {
            const auto number = arguments.at("frame").get<std::size_t>();
            Camera camera = camera_before(number);
            answer.json = to_json(explain_frame(camera, frames_.at(number)));
        } else {
            Camera camera = this->camera();
            answer.json = to_json(explain_at_rest(camera, frame_of(arguments.at("light"))));
        }
        return answer;
    }

    /// Target and rest of a light after power-on.
    Answer light(const Json& arguments, std::string_view) {
        const Frame frame = frame_of(arguments.at("light"));
        Camera camera = this->camera();
        const Registers target = target_registers(camera, frame);
        const Rest rest = run_to_rest(camera, frame);
        Answer answer = answer_values(target);
        for (std::string& blob : answer_values(camera.registers()).blobs) {
            answer.blobs.push_back(std::move(blob));
        }
        answer.json = {{"ccm", rest.ccm.frames},
                       {"color", rest.color.frames},
                       {"ccmStill", rest.ccm.still},
                       {"colorStill", rest.color.still}};
        return answer;
    }

    Answer gain(const Json& arguments, std::string_view) {
        require_ccm();
        const AWB_GAIN_T gain = tuned_locus(tuning()).at(arguments.at("cct").get<std::uint32_t>());
        Answer answer;
        answer.json = Json::array({gain.i4R, gain.i4G, gain.i4B});
        return answer;
    }

    /// The tuned points row by row.
    Answer plane(const Json&, std::string_view) {
        Answer answer;
        const auto& ccm = tuning().ccm;
        const CoefficientCodec codec(tuning().caller.int_bits, tuning().caller.frac_bits);
        const auto count = static_cast<std::size_t>(std::clamp(ccm.i4NumCT, 1, 8));
        Json rows = Json::array();
        for (const std::size_t row : {kNormalRow, kLowLightRow, kFlashRow}) {
            Json points = Json::array();
            for (std::size_t ct = 0; ct < count; ++ct) {
                const AWB_GAIN_T& gain = ccm.rCTAWBGain[row][ct];
                if (gain.i4R == 0 && gain.i4B == 0) continue;
                points.push_back({{"index", ct},
                                  {"kelvin", tuning().kelvin[row][ct]},
                                  {"gain", {gain.i4R, gain.i4G, gain.i4B}},
                                  {"matrix", codec.decode(ccm.rCCM_Nvram[row][ct]).i4Coef}});
            }
            if (!points.empty()) rows.push_back({{"name", kRowNames[row]}, {"points", points}});
        }
        answer.json = {{"method", ccm.i4Method}, {"count", count}, {"rows", rows}};
        return answer;
    }

    Answer grid(const Json& arguments, std::string_view) {
        require_ccm();
        SweepGrid grid;
        grid.cct = arguments.at("cct").get<std::vector<std::uint32_t>>();
        grid.lv = arguments.at("lv").get<std::vector<std::uint32_t>>();
        grid.flash = arguments.value("flash", 0);
        grid.scene = arguments.value("scene", 0);
        const Sweep sweep =
            run_sweep(tuning(), {tuning().has_ccm, false}, grid, tuned_locus(tuning()));
        std::array<std::vector<std::int32_t>, 9> columns;
        for (const SweepPoint& point : sweep.points) {
            const auto values = decode(point.registers.ccm, tuning().caller);
            for (std::size_t k = 0; k < 9; ++k) columns[k].push_back(values[k]);
        }
        Answer answer;
        for (const auto& column : columns) answer.add(column);
        for (const SweepSlopes& slopes : slopes_of(sweep, tuning().caller)) {
            std::vector<std::int32_t> sizes;
            for (const Difference& point : slopes.points) {
                sizes.push_back(static_cast<std::int32_t>(point.size));
            }
            answer.add(sizes);
        }
        return answer;
    }

    /// The chart through the frame's matrix, against the matrix at rest in its light.
    Answer patches(const Json& arguments, std::string_view) {
        Registers actual;
        require_ccm();
        Camera camera = this->camera();
        Frame frame;
        if (arguments.contains("frame")) {
            const auto number = arguments.at("frame").get<std::size_t>();
            camera = camera_before(number);
            frame = frames_.at(number);
            Camera after = camera;
            after.run(frame);
            actual = after.registers();
        } else {
            frame = frame_of(arguments.at("light"));
            camera.run(frame);
            actual = camera.registers();
        }
        run_to_rest(camera, frame);
        const ChartError error = chart_error(matrix_of(camera.registers()), matrix_of(actual));
        Answer answer;
        Json list = Json::array();
        for (std::size_t i = 0; i < error.patches.size(); ++i) {
            const auto& patch = error.patches[i];
            list.push_back({{"name", chart_patches()[i].name},
                            {"resting", lab_json(patch.reference)},
                            {"frame", lab_json(patch.actual)},
                            {"difference", patch.difference}});
        }
        answer.json = {{"patches", list}, {"mean", error.mean}, {"largest", error.largest}};
        return answer;
    }

    /// Mean and largest difference of the chart over the log, at `most` frames or fewer.
    Answer patch_errors(const Json& arguments, std::string_view) {
        require_ccm();
        const auto most = std::max<std::size_t>(1, arguments.at("most").get<std::size_t>());
        const std::size_t step = std::max<std::size_t>(1, (frames_.size() + most - 1) / most);
        std::vector<double> number;
        std::vector<double> mean;
        std::vector<double> largest;
        Camera camera = this->camera();
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            camera.run(frames_[i]);
            if (i % step != 0) continue;
            Camera resting = camera;
            run_to_rest(resting, frames_[i]);
            const ChartError error =
                chart_error(matrix_of(resting.registers()), matrix_of(camera.registers()));
            number.push_back(static_cast<double>(i));
            mean.push_back(error.mean);
            largest.push_back(error.largest);
        }
        Answer answer;
        answer.add(number);
        answer.add(mean);
        answer.add(largest);
        return answer;
    }

    Answer diff(const Json& arguments, std::string_view bytes) {
        Faults faults;
        const Tuning other = read_tuning(arguments.at("files"), bytes, faults);
        if (faults.has_errors()) throw Refused(faults);
        Answer answer;
        answer.json = to_json(diff_tunings(tuning(), other));
        return answer;
    }

    // ----

    /// As after power-on.
    const Camera& camera() const {
        if (!camera_) throw BadInput("no tuning is loaded");
        return *camera_;
    }

    const Tuning& tuning() const { return camera().tuning(); }

    void require_ccm() const {
        if (!tuning().has_ccm) throw BadInput("the tuning has no part 'ccm'");
    }

    void forget_runs() {
        states_.clear();
        columns_ = {};
        summary_ = nullptr;
        running_.reset();
    }

    std::vector<Field> fields(const Json& names) const {
        std::vector<Field> found;
        for (const std::string& name : names) {
            Field field{.name = name};
            for (std::size_t job = 0; job < names_.size(); ++job) {
                const auto at = std::find(names_[job].begin(), names_[job].end(), name);
                if (at == names_[job].end()) continue;
                const auto k = static_cast<std::size_t>(at - names_[job].begin());
                if (job == 0) field.coefficient = k;
                if (job == 1) field.color = &color_fields()[k];
            }
            if (!field.coefficient && field.color == nullptr) throw BadInput("no field " + name);
            found.push_back(field);
        }
        return found;
    }

    RealMatrix matrix_of(const Registers& registers) const {
        const double unity = 1 << std::clamp(tuning().caller.frac_bits, 0, 12);
        return real_matrix(values_of(Job::ccm, registers, tuning().caller), unity);
    }

    Answer answer_values(const Registers& registers) const {
        Answer answer;
        for (const Job job : {Job::ccm, Job::color}) {
            answer.add(words(values_of(job, registers, tuning().caller)));
        }
        return answer;
    }

    /// As the frames before this one leave it.
    Camera camera_before(std::size_t frame) const {
        Camera camera = this->camera();
        const std::size_t kept = frame / kFramesBetweenStates;
        camera.set_state(states_.at(kept));
        for (std::size_t i = kept * kFramesBetweenStates; i < frame; ++i) camera.run(frames_[i]);
        return camera;
    }

    static constexpr std::pair<const char*, Method> kCommands[] = {
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
        {"patches", &Engine::patches},
        {"patchErrors", &Engine::patch_errors},
        {"diff", &Engine::diff},
    };

    std::unique_ptr<Camera> camera_;  ///< as after power-on
    std::array<std::vector<std::string>, 2> names_;
    std::vector<Frame> frames_;
    // Of the last whole run.
    std::vector<CameraState> states_;  ///< before every kFramesBetweenStates-th frame
    Columns columns_;
    Json summary_;
    std::unique_ptr<Run> running_;
};

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
