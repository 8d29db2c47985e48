#include "workbench/json/explanation.h"

#include <fmt/format.h>

#include <string>

#include "workbench/json/resting.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json frame_to_json(const Frame& frame) {
    const auto gain = [](const AWB_GAIN_T& g) { return Json{g.i4R, g.i4G, g.i4B}; };
    const auto& state = frame.state;
    return {{"lv", state.u4RealLV},
            {"cct", state.u4CCT},
            {"awb_gain", gain(state.rAWBGain)},
            {"full_gain", gain(state.rAWBFullGain)},
            {"flash", state.u4FlashMode},
            {"scene", state.u4SceneFlag},
            {"capture", frame.capture}};
}

void add_pass(Json& json, const std::string& prefix, const MatrixPass& pass) {
    if (pass.projected_gain) json[prefix + "projected_gain"] = *pass.projected_gain;
    if (pass.ct_position) json[prefix + "ct_position"] = *pass.ct_position;
    if (pass.blend) {
        json[prefix + "distances"] = pass.blend->distances;
        json[prefix + "coarse_weight"] = pass.blend->coarse_weight;
        json[prefix + "fine_weight"] = pass.blend->fine_weight;
    }
    if (pass.polynomial) {
        json[prefix + "polynomial"] = {{"R_AVG", pass.polynomial->red_mean},
                                       {"R_STD", pass.polynomial->red_deviation},
                                       {"B_AVG", pass.polynomial->blue_mean},
                                       {"B_STD", pass.polynomial->blue_deviation}};
    }
    json[prefix + "matrix"] = pass.matrix;
}

Json to_json(const std::vector<WrappedValue>& wrapped) {
    Json json = Json::array();
    for (const WrappedValue& value : wrapped) {
        json.push_back(
            {{"field", value.field}, {"computed", value.computed}, {"written", value.written}});
    }
    return json;
}

Json to_json(const MatrixExplanation& told) {
    Json json = {{"method", told.method},
                 {"full_gain", told.full_gain},
                 {"gain", told.gain},
                 {"clipped_low", told.clipped_low},
                 {"clipped_high", told.clipped_high},
                 {"clipped_gain", told.clipped_gain},
                 {"lv_row", told.lv_row}};
    add_pass(json, "", told.pass);
    if (told.low_light) {
        add_pass(json, "low_light_", told.low_light->pass);
        json["low_light_weight"] = told.low_light->weight;
        json["after_low_light"] = told.low_light->result;
    }
    json["weights"] = told.weights;
    json["ring_0"] = told.ring[0];
    json["ring_1"] = told.ring[1];
    json["average"] = told.average;
    json["gamut"] = told.gamut;
    json["written"] = told.written;
    json["wrapped"] = to_json(told.wrapped);
    return json;
}

Json steps_to_json(const ColorExplanation& told) {
    if (told.at_once) return {};
    return {{"luma", told.luma_step}, {"hue", told.hue_step}, {"saturation", told.saturation_step}};
}

Json to_json(const ColorRow& row) {
    Json json = {{"lower", row.lower}, {"upper", row.upper}};
    if (!row.target.empty()) json["target"] = row.target;
    json["written"] = row.written;
    return json;
}

void add_color_values(Json& json, const ColorExplanation& told) {
    for (const ColorRow& row : told.rows) json[row.field] = to_json(row);
    json["wrapped"] = to_json(told.wrapped);
    json["unreachable"] = Json::array();
    for (const UnreachableTarget& value : told.unreachable) {
        json["unreachable"].push_back(
            {{"field", value.field}, {"target", value.target}, {"bits", value.bits}});
    }
    json["clamped"] = Json::array();
    for (const ClampedTarget& value : told.clamped) {
        json["clamped"].push_back(
            {{"field", value.field}, {"target", value.target}, {"clamped", value.clamped}});
    }
}

Json to_json(const ColorExplanation& told) {
    Json json = {{"slot", kSlotNames[told.slot]},
                 {"bracket",
                  {{"upper_index", told.upper_index},
                   {"upper_kelvin", told.upper_kelvin},
                   {"lower_index", told.lower_index},
                   {"lower_kelvin", told.lower_kelvin}}},
                 {"locked", told.locked}};
    if (told.locked) return json;
    json["mired"] = {{"real", told.real_mired},
                     {"upper", told.upper_mired},
                     {"lower", told.lower_mired},
                     {"lower_alone", told.lower_alone},
                     {"upper_share", told.upper_share}};
    json["outdoor"] =
        told.outdoor ? Json{{"ratio", told.outdoor_ratio}, {"base", told.outdoor_base}} : Json();
    json["saturation_ratio"] = told.saturation_ratio;
    json["lsp"] = {{"light_value_allows", told.lsp_light}, {"image_enables", told.lsp_enabled}};
    json["step"] = steps_to_json(told);
    json["color_map"] = told.color_map_from_upper ? "upper" : "lower";
    add_color_values(json, told);
    return json;
}

template <class Image>
Json words_to_json(const Image& image) {
    Json words = Json::array();
    for (const std::uint32_t word : image.u4Word) words.push_back(fmt::format("0x{:08X}", word));
    return words;
}

Json registers_to_json(const Explanation& told) {
    Json json = Json::object();
    if (told.ccm) json["ccm"] = words_to_json(told.registers.ccm);
    if (!told.color) return json;
    json["color"] = words_to_json(told.registers.color);
    for (const ColorField& field : color_fields()) {
        json["color_fields"][field.name] = field.read(told.registers.color);
    }
    return json;
}

}  // namespace

Json to_json(const Explanation& told) {
    Json json = {{"frame", frame_to_json(told.frame)}, {"at_rest", told.at_rest}};
    if (told.ccm) json["ccm"] = to_json(*told.ccm);
    if (told.color) json["color"] = to_json(*told.color);
    json["resting"] = to_json(told.resting, {told.ccm.has_value(), told.color.has_value()});
    json["registers"] = registers_to_json(told);
    return json;
}

}  // namespace imgtune::workbench
