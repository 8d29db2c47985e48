#include <array>
#include <cstdint>
#include <vector>

#include "wasm/engine.h"
#include "workbench/camera/locus.h"
#include "workbench/json/explanation.h"
#include "workbench/json/steepness.h"
#include "workbench/studies/explanation.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/steepness.h"
#include "workbench/studies/sweep.h"

namespace imgtune::workbench::page {

Answer Engine::explain(const Json& arguments, std::string_view) {
    Answer answer;
    if (arguments.contains("frame")) {
        const auto number = arguments.at("frame").get<std::size_t>();
        Camera camera = camera_before(number);
        answer.json = to_json(explain_frame(camera, frames_.at(number - first_frame_)));
    } else {
        Camera camera = this->camera();
        answer.json = to_json(explain_at_rest(camera, frame_of(arguments.at("light"))));
    }
    return answer;
}

Answer Engine::light(const Json& arguments, std::string_view) {
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

Answer Engine::grid(const Json& arguments, std::string_view) {
    require_ccm();
    SweepGrid grid;
    grid.cct = arguments.at("cct").get<std::vector<std::uint32_t>>();
    grid.lv = arguments.at("lv").get<std::vector<std::uint32_t>>();
    grid.flash = arguments.value("flash", 0);
    grid.scene = arguments.value("scene", 0);
    const Sweep sweep = run_sweep(tuning(), {tuning().has_ccm, false}, grid, tuned_locus(tuning()));
    std::array<std::vector<std::int32_t>, 9> columns;
    for (const SweepPoint& point : sweep.points) {
        const auto values = decode(point.registers.ccm, tuning().caller);
        for (std::size_t k = 0; k < 9; ++k) columns[k].push_back(values[k]);
    }
    Answer answer;
    for (const auto& column : columns) answer.add(column);
    std::vector<float> slopes;
    for (const ChartDifference& slope : chart_slopes_of(sweep, tuning().caller)) {
        slopes.push_back(static_cast<float>(slope.worst));
    }
    answer.add(slopes);
    return answer;
}

Answer Engine::steepest(const Json&, std::string_view) {
    require_ccm();
    Answer answer;
    answer.json = to_json(find_steepest(tuning()));
    return answer;
}

Answer Engine::patches(const Json& arguments, std::string_view) {
    require_ccm();
    RealMatrix reference{};
    RealMatrix shown{};
    bool held = false;
    if (arguments.contains("frame")) {
        const auto number = arguments.at("frame").get<std::size_t>();
        const Frame& frame = frames_.at(number - first_frame_);
        Camera camera = camera_before(number);
        camera.run(frame);
        shown = matrix_of(camera.registers());
        const RealMatrix* const rest = (live_ ? live_->rests : rests_).at(number);
        held = rest != nullptr;
        if (!held) run_to_rest(camera, frame);
        reference = held ? *rest : matrix_of(camera.registers());
    } else {
        const Frame frame = frame_of(arguments.at("light"));
        Camera camera = this->camera();
        reference = matrix_of(target_registers(camera, frame));
        run_to_rest(camera, frame);
        shown = matrix_of(camera.registers());
    }
    Answer answer;
    answer.json = chart_json(chart_error(reference, shown));
    answer.json["held"] = held;
    return answer;
}

}  // namespace imgtune::workbench::page
