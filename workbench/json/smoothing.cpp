#include "workbench/json/smoothing.h"

#include <optional>

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json value_or_null(const std::optional<double>& value) {
    return value ? Json(*value) : Json();
}

Json json_of(const Reached& reached) {
    return {{"settle", value_or_null(reached.settle)},
            {"step", value_or_null(reached.step)},
            {"at_rest", value_or_null(reached.at_rest)},
            {"flicker", value_or_null(reached.flicker)}};
}

Json json_of(const WeightsTried& tried) {
    Json json = {{"weights", tried.weights}};
    json.update(json_of(tried.reached));
    return json;
}

}  // namespace

Json to_json(const Smoothing& answer) {
    Json json = {{"wish",
                  {{"settle", answer.wish.settle},
                   {"step", answer.wish.step},
                   {"at_rest", answer.wish.at_rest},
                   {"flicker", answer.wish.flicker}}},
                 {"met", answer.met},
                 {"tried", answer.tried}};
    if (answer.weights) {
        json["before"] = json_of(answer.before);
        json["chosen"] = json_of(*answer.weights);
        json["binds"] = binding_name(answer.weights->strain.binds);
        json["front"] = Json::array();
        for (const WeightsTried& each : answer.front) json["front"].push_back(json_of(each));
    }
    Json steps = Json::object();
    for (std::size_t i = 0; i < kColorSteps; ++i) {
        const auto& step = answer.steps[i];
        steps[field_of(static_cast<ColorStep>(i))] =
            step ? Json{{"size", step->size}, {"settle", value_or_null(step->reached.settle)}}
                 : Json();
    }
    json["color_steps"] = steps;
    return json;
}

}  // namespace imgtune::workbench
