#include "workbench/json/resting.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json to_json(const JobRest& rest, const std::vector<RestingValue>& values) {
    Json short_of_target = Json::object();
    for (const RestingValue& value : values) {
        if (value.short_by == 0) continue;
        short_of_target[value.name] = {
            {"target", value.target}, {"resting", value.resting}, {"short_by", value.short_by}};
    }
    return {{"still", rest.still},
            {"frames", rest.still ? Json(rest.frames) : Json()},
            {"short_of_target", short_of_target}};
}

}  // namespace

Json to_json(const RestingStudy& study, Jobs jobs) {
    Json json = Json::object();
    if (jobs.ccm) json["ccm"] = to_json(study.rest.ccm, study.ccm);
    if (jobs.color) json["color"] = to_json(study.rest.color, study.color);
    if (!study.rest.ccm.still || !study.rest.color.still) json["period"] = study.rest.period;
    return json;
}

}  // namespace imgtune::workbench
