#include "workbench/json/import.h"

#include <nlohmann/json.hpp>

#include "workbench/appearance/patches.h"
#include "workbench/calibration/report_page.h"
#include "workbench/json/findings.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

}  // namespace

namespace {

Json all_of(const std::vector<PointError>& errors) {
    Json all = Json::array();
    for (const PointError& error : errors) {
        all.push_back({{"ct", error.kelvin},
                       {"kept", error.kept},
                       {"largest_512ths", error.largest},
                       {"mean_ciede2000", error.mean_difference},
                       {"largest_ciede2000", error.largest_difference}});
    }
    return all;
}

const char* method_word(const Candidate& candidate) {
    return candidate.method == CcmMethod::blend ? "blend" : "polynomial";
}

const char* fit_word(const Candidate& candidate) {
    if (candidate.fit == CcmFit::points) return "points";
    return candidate.method == CcmMethod::blend ? "blend" : "lights";
}

Json json_of(const Candidate& candidate, bool chosen) {
    const LightsError& error = candidate.error;
    return {{"method", method_word(candidate)},
            {"fit", fit_word(candidate)},
            {"tuned_cts", candidate.kelvins},
            {"sets_tried", candidate.sets},
            {"mean_ciede2000", error.mean},
            {"worst_ciede2000", error.worst},
            {"worst_patch", chart_patches()[error.worst_patch].name},
            {"worst_ct", error.worst_kelvin},
            {"worst_beside", error.worst_beside},
            {"chosen", chosen}};
}

Json lights_of(const CalibrationReport& report) {
    Json lights = Json::array();
    for (const ReportedLight& light : report.lights) {
        Json left_out;
        if (light.left_out) {
            left_out = {{"mean_ciede2000", light.left_out->mean},
                        {"worst_ciede2000", light.left_out->worst}};
        }
        lights.push_back({{"ct", light.kelvin},
                          {"red_gain", light.gain.i4R / 512.0},
                          {"blue_gain", light.gain.i4B / 512.0},
                          {"tuned", light.tuned},
                          {"mean_ciede2000", light.error.mean},
                          {"worst_ciede2000", light.error.worst},
                          {"worst_patch", chart_patches()[light.error.worst_patch].name},
                          {"left_out", std::move(left_out)}});
    }
    return lights;
}

Json few_lights_of(const CalibrationReport& report) {
    Json all = Json::array();
    for (const FewLights& few : report.few) {
        all.push_back({{"method", few.method == CcmMethod::blend ? "blend" : "polynomial"},
                       {"cts", few.kelvins},
                       {"mean_ciede2000", few.error.mean},
                       {"worst_ciede2000", few.error.worst},
                       {"sets_tried", few.sets}});
    }
    return all;
}

}  // namespace

Json to_json(const Import& import, const CalibrationReport& report, const Faults& faults) {
    const Candidate& chosen = import.candidates[import.chosen];
    Json candidates = Json::array();
    for (std::size_t i = 0; i < import.candidates.size(); ++i) {
        candidates.push_back(json_of(import.candidates[i], i == import.chosen));
    }
    return {{"findings", to_json(faults)["findings"]},
            {"method", method_word(chosen)},
            {"fit", fit_word(chosen)},
            {"tuned_cts", chosen.kelvins},
            {"flash_ct", import.flash_tuned_kelvin},
            {"candidates", std::move(candidates)},
            {"errors", all_of(import.errors)},
            {"lights", lights_of(report)},
            {"few_lights", few_lights_of(report)},
            {"advice", advice_of(import, report)}};
}

}  // namespace imgtune::workbench
