#include "workbench/json/capture_study.h"

#include <nlohmann/json.hpp>

#include "workbench/appearance/patches.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

}  // namespace

namespace {

template <typename Value>
Json or_null(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json points_of(const Quad& quad) {
    Json points = Json::array();
    for (const PicturePoint& point : quad) points.push_back({point.x, point.y});
    return points;
}

Json picture_json(const CapturedPicture& picture) {
    Json json = {{"file", picture.file}, {"form", picture.form}};
    if (picture.width == 0) return json;
    json["width"] = picture.width;
    json["height"] = picture.height;
    json["black"] = picture.black;
    json["white"] = or_null(picture.white);
    json["white_found"] = picture.white_found;
    json["flat"] = picture.flat;
    json["dark"] = picture.dark;
    json["corners"] = points_of(picture.corners);
    json["corners_turned"] = picture.corners_turned;
    return json;
}

Json patch_json(const LightStudy& light, std::size_t index) {
    const PatchMeasure& patch = light.patches[index];
    return {{"name", chart_patches()[index].name}, {"mean", patch.mean},
            {"noise", or_null(patch.noise)},       {"samples", or_null(patch.samples)},
            {"clipped", or_null(patch.clipped)},   {"weight", light.weights[index]},
            {"fitted", light.fitted[index]},       {"ciede2000", light.residual[index]}};
}

Json light_json(const LightStudy& light) {
    Json pictures = Json::array();
    for (const CapturedPicture& picture : light.pictures) pictures.push_back(picture_json(picture));
    Json patches = Json::array();
    for (std::size_t i = 0; i < kChartPatches; ++i) patches.push_back(patch_json(light, i));
    return {{"name", light.name},
            {"kelvin", light.kelvin},
            {"red_gain", light.red_gain},
            {"blue_gain", light.blue_gain},
            {"matrix", light.matrix},
            {"mean_ciede2000", light.mean_residual},
            {"worst_ciede2000", light.worst_residual},
            {"worst_patch", chart_patches()[light.worst_patch].name},
            {"linear_mean_ciede2000", light.linear_mean_residual},
            {"other_edition_mean_ciede2000", or_null(light.other_edition_residual)},
            {"grey_slope", light.grey_slope},
            {"glare", light.glare},
            {"grey_disagreement", light.grey_disagreement},
            {"unevenness", light.unevenness},
            {"pictures", std::move(pictures)},
            {"patches", std::move(patches)}};
}

}  // namespace

Json to_json(const CaptureStudy& study) {
    Json lights = Json::array();
    for (const LightStudy& light : study.lights) lights.push_back(light_json(light));
    return {{"reference", study.reference.name},
            {"weights", study.weights},
            {"lights", std::move(lights)}};
}

}  // namespace imgtune::workbench
