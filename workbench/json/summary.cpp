#include "workbench/json/summary.h"

#include <string>

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 2> kJobKeys = {"ccm", "color"};

Json to_json(const std::optional<std::uint64_t>& frames) {
    return frames ? Json(*frames) : Json();
}

const char* name_of(Settling state) {
    switch (state) {
        case Settling::not_run:
            return "not_run";
        case Settling::not_held:
            return "not_measured";
        case Settling::settled:
            return "settled";
        case Settling::moving:
            return "moving";
        case Settling::never_rests:
            return "never_rests";
    }
    return "";
}

Json to_json(const JobSettling& settling) {
    Json stall;
    if (!settling.stall_field.empty()) {
        stall = {{"field", settling.stall_field},
                 {"target", settling.stall_target},
                 {"resting", settling.stall_resting}};
    }
    return {{"state", name_of(settling.state)},
            {"settled_after", to_json(settling.frames)},
            {"stall", stall}};
}

bool runs(const SummaryRecord& record, std::size_t job) {
    return job == 0 ? record.jobs.ccm : record.jobs.color;
}

Json to_json(const SummaryRecord& record, const LightChange& change) {
    Json json = {{"first", change.first}, {"last", change.last}, {"held", change.held}};
    for (std::size_t job = 0; job < kJobKeys.size(); ++job) {
        if (runs(record, job)) json[kJobKeys[job]] = to_json(change.settling[job]);
    }
    return json;
}

Json to_json(const SettlingTotals& totals) {
    return {{"settled", totals.settled},
            {"moving", totals.moving},
            {"never_rests", totals.never_rests},
            {"not_measured", totals.not_measured},
            {"median_frames", to_json(totals.median_frames)},
            {"most_frames", to_json(totals.most_frames)},
            {"slowest_change", totals.most_frames ? Json(totals.slowest.first) : Json()}};
}

Json clipped_to_json(const SummaryRecord& record) {
    Json spans = Json::array();
    for (const ClippedSpan& span : record.clipped) {
        spans.push_back({{"first", span.frames.first},
                         {"last", span.frames.last},
                         {"end", span.end == Clipping::low ? "low" : "high"}});
    }
    return {{"frames", record.clipped_frames},
            {"spans", spans},
            {"spans_not_listed", record.clipped_span_count - record.clipped.size()}};
}

Json flicker_to_json(const SummaryRecord& record) {
    Json spans = Json::array();
    for (const FlickerSpan& span : record.flicker) {
        spans.push_back(
            {{"first", span.frames.first}, {"last", span.frames.last}, {"turns", span.turns}});
    }
    return {{"spans", spans},
            {"spans_not_listed", record.flicker_span_count - record.flicker.size()}};
}

Json fields_to_json(const SummaryRecord& record) {
    Json fields = Json::object();
    for (const FieldMotion& motion : restless_fields(record, Restlessness::step)) {
        fields[motion.name] = {
            {"largest_step", motion.largest_step},
            {"step_frame", motion.step_frame},
            {"overshoot", motion.overshoot},
            {"overshoot_frame", motion.overshoot > 0 ? Json(motion.overshoot_frame) : Json()},
            {"sign_changes_per_second", per_second(record, motion.sign_changes)},
            {"steady_sign_changes_per_second", per_second(record, motion.steady_sign_changes)}};
    }
    return fields;
}

}  // namespace

Json to_json(const SummaryRecord& record) {
    Json json = {{"frames", record.frames},
                 {"frames_per_second", record.frames_per_second},
                 {"noise_percent", record.noise_percent},
                 {"shortest_hold", record.hold_frames},
                 {"cold_start", Json()},
                 {"changes_of_light", record.change_count}};
    if (record.cold_start) {
        json["cold_start"] = to_json(record, *record.cold_start);
        json["cold_start"]["frames_to_rest"] = record.cold_start_frames;
    }
    for (std::size_t job = 0; job < kJobKeys.size(); ++job) {
        if (runs(record, job)) json["settling"][kJobKeys[job]] = to_json(record.settling[job]);
    }
    json["changes"] = Json::array();
    for (const LightChange& change : record.changes) {
        json["changes"].push_back(to_json(record, change));
    }
    json["changes_not_listed"] = record.change_count - record.changes.size();
    if (record.jobs.ccm) json["clipped"] = clipped_to_json(record);
    json["flicker"] = flicker_to_json(record);
    json["fields"] = fields_to_json(record);
    return json;
}

Json row_to_json(SummaryRecord record) {
    const auto most = [&record](Restlessness by) {
        const std::vector<FieldMotion> moved = restless_fields(record, by);
        return moved.empty() ? FieldMotion{} : moved.front();
    };
    const FieldMotion stepped = most(Restlessness::step);
    const FieldMotion turned = most(Restlessness::flicker);
    record.fields.clear();
    record.changes.clear();
    record.clipped.clear();
    record.flicker.clear();
    Json json = to_json(record);
    for (const char* detail :
         {"cold_start", "changes", "changes_not_listed", "flicker", "fields"}) {
        json.erase(detail);
    }
    json["cold_start_frames"] = record.cold_start_frames;
    if (record.jobs.ccm) {
        json["clipped"] = {{"frames", record.clipped_frames}, {"spans", record.clipped_span_count}};
    }
    json["flicker_spans"] = record.flicker_span_count;
    json["largest_step"] = {{"field", stepped.name}, {"size", stepped.largest_step}};
    json["most_turns"] = {{"field", turned.name},
                          {"per_second", per_second(record, turned.sign_changes)}};
    return json;
}

}  // namespace imgtune::workbench
