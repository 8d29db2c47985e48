#include "workbench/json/judging.h"

#include <fmt/format.h>

#include <optional>
#include <string>

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json or_null(const std::optional<double>& value) {
    return value ? Json(*value) : Json();
}

Json json_of(const LimitVerdict& limit) {
    const bool measured = limit.value.has_value();
    const bool has_frame = measured && limit.value->frame != 0;
    return {{"limit", kind_of(limit.measured).name},
            {"value", measured ? Json(limit.value->value) : Json()},
            {"unmeasured", measured ? Json() : Json(kind_of(limit.measured).unmeasured)},
            {"unit", kind_of(limit.measured).unit},
            {"allowed", limit.is_known ? Json(limit.limit) : Json()},
            {"before", or_null(limit.old)},
            {"broken", limit.is_broken()},
            {"frame", has_frame ? Json(limit.value->frame) : Json()},
            {"where", measured ? Json(limit.value->where) : Json()}};
}

/// What a limit may be in the file.
Json limit_schema(const LimitKind& kind) {
    const Json number = {{"type", "number"}, {"minimum", 0}, {"maximum", kind.most}};
    const Json map = {{"type", "object"},
                      {"properties", {{"at_most", number}, {"no_worse_by", number}}},
                      {"additionalProperties", false},
                      {"minProperties", 1}};
    return {{"description", fmt::format("{} [{}]", kind.meaning, kind.unit)},
            {"anyOf", Json::array({number, map, {{"const", "none"}}})}};
}

Json limit_map_schema(bool of_logs_alone) {
    Json properties = Json::object();
    for (const LimitKind& kind : limit_kinds()) {
        if (!of_logs_alone || kind.scope == LimitScope::log)
            properties[kind.name] = limit_schema(kind);
    }
    return {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
}

}  // namespace

Json to_json(const Verdict& verdict) {
    Json limits = Json::array();
    for (const LimitVerdict& limit : verdict.limits) limits.push_back(json_of(limit));
    Json json = {{"accepted", verdict.is_accepted()}};
    if (!verdict.log.empty()) {
        json["log"] = verdict.log;
        json["frames"] = verdict.frames;
        json["error"] = verdict.error.empty() ? Json() : Json(verdict.error);
    }
    json["limits"] = limits;
    return json;
}

Json to_json(const Judgement& judgement) {
    Json logs = Json::array();
    for (const Verdict& verdict : judgement.logs) logs.push_back(to_json(verdict));
    Json broken = Json::object();
    for (const LimitKind& kind : limit_kinds()) {
        if (const std::size_t count = judgement.broken(kind.measured); count > 0)
            broken[kind.name] = count;
    }
    return {{"accepted", judgement.is_accepted()},
            {"totals",
             {{"logs", judgement.logs.size()},
              {"refused", judgement.refused_logs()},
              {"frames", judgement.frames()},
              {"broken", broken}}},
            {"tuning", to_json(judgement.tuning)},
            {"logs", logs}};
}

Json limits_schema() {
    const auto range = [](double least, double most, const char* text) {
        return Json{
            {"type", "number"}, {"minimum", least}, {"maximum", most}, {"description", text}};
    };
    const Json override_schema = {
        {"type", "object"},
        {"properties",
         {{"logs",
           {{"type", "string"},
            {"description", "A pattern for a log's path or file name: * and ?."}}},
          {"limits", limit_map_schema(true)}}},
        {"required", Json::array({"logs"})},
        {"additionalProperties", false}};
    const Json properties = {
        {"format", {{"const", "imgtune-limits/1"}}},
        {"fps", range(SummaryOptions::kLeastFramesPerSecond, SummaryOptions::kMostFramesPerSecond,
                      "frames per second of the logs")},
        {"noise", range(0.0, SummaryOptions::kMostNoisePercent,
                        "percent of gains and CT, tenths of an EV, that are no change of light")},
        {"settled", range(VisibleLimits::kLeast, VisibleLimits::kMost,
                          "CIEDE2000 of a patch from where it rests that still counts as at rest")},
        {"flicker_patch", range(VisibleLimits::kLeast, VisibleLimits::kMost,
                                "CIEDE2000 of a swing in one patch that is seen when it recurs")},
        {"flicker_mean",
         range(VisibleLimits::kLeast, VisibleLimits::kMost, "the same, of the chart's mean")},
        {"calibration",
         {{"type", "string"},
          {"description",
           "Path of a calibration, beside this file, that calibration_mean and "
           "calibration_worst are against."}}},
        {"limits", limit_map_schema(false)},
        {"overrides",
         {{"type", "array"},
          {"description", "For logs by the pattern of their names; later ones win."},
          {"items", override_schema}}}};
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
            {"$id", "urn:imgtune:limits:1"},
            {"title", "imgtune limits"},
            {"description", "What 'imgtune judge' holds a tuning against."},
            {"type", "object"},
            {"properties", properties},
            {"required", Json::array({"format"})},
            {"additionalProperties", false}};
}

}  // namespace imgtune::workbench
