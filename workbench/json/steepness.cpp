#include "workbench/json/steepness.h"

#include <optional>

#include "workbench/appearance/patches.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json light_json(const SteepPlace::Light& light) {
    return {{"cct", light.kelvin},
            {"gain", {light.gain.i4R, light.gain.i4G, light.gain.i4B}},
            {"lv", light.lv}};
}

Json place_json(const std::optional<SteepPlace>& place) {
    if (!place) return nullptr;
    return {{"mean", place->step.mean},
            {"worst", place->step.worst},
            {"worst_patch", chart_patches()[place->step.worst_patch].name},
            {"seen", place->strength() >= 1.0},
            {"jump", place->is_jump},
            {"beside", place->beside},
            {"from", light_json(place->lights[0])},
            {"to", light_json(place->lights[1])}};
}

}  // namespace

Json to_json(const Steepness& steepness) {
    Json rows = Json::object();
    for (const Steepness::Row& row : steepness.rows) {
        rows[kRowNames[row.row]] = {{"on_locus", place_json(row.on_locus)},
                                    {"beside", place_json(row.beside)}};
    }
    return {{"seen_from", {{"mean", kVisibleMean}, {"worst", kVisibleWorst}}},
            {"rows", rows},
            {"over_lv", place_json(steepness.over_lv)}};
}

Json to_json(const std::vector<Remedy>& remedies) {
    Json list = Json::array();
    for (const Remedy& remedy : remedies) {
        list.push_back({{"change", remedy.change},
                        {"steepest", place_json(remedy.steepest)},
                        {"off_points", remedy.off_points ? Json(*remedy.off_points) : Json()}});
    }
    return list;
}

}  // namespace imgtune::workbench
