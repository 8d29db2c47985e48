#include "workbench/json/summary.h"

#include <numeric>
#include <string>

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 2> kJobKeys = {"ccm", "color"};

Json to_json(const std::optional<std::uint64_t>& frames) {
    return frames ? Json(*frames) : Json();
}

const char* name_of(VisibleSettling state) {
    switch (state) {
        case VisibleSettling::not_measured:
            return "not_measured";
        case VisibleSettling::unmoved:
            return "unmoved";
        case VisibleSettling::settled:
            return "settled";
        case VisibleSettling::moving:
            return "moving";
    }
    return "";
}

const char* name_of(SwitchCause cause) {
    switch (cause) {
        case SwitchCause::slot:
            return "slot";
        case SwitchCause::grid_ct:
            return "grid_ct";
        case SwitchCause::midpoint:
            return "midpoint";
        case SwitchCause::outdoor:
            return "outdoor";
    }
    return "";
}

const char* name_of(StepCause cause) {
    switch (cause) {
        case StepCause::smoothing:
            return "smoothing";
        case StepCause::image:
            return "image";
        case StepCause::slot:
            return "slot";
        case StepCause::capture:
            return "capture";
    }
    return "";
}

const char* name_of(Settling state) {
    switch (state) {
        case Settling::not_run:
            return "not_run";
        case Settling::not_held:
            return "not_measured";
        case Settling::unmoved:
            return "unmoved";
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

Json to_json(const ChartDifference& size) {
    return {
        {"mean", size.mean},
        {"worst", size.worst},
        {"worst_patch", size.worst > 0.0 ? Json(chart_patches()[size.worst_patch].name) : Json()},
        {"patch", size.chosen}};
}

Json to_json(const std::optional<ChartDifference>& size) {
    return size ? to_json(*size) : Json();
}

Json to_json(const SeenDifference& seen) {
    if (seen.frame == 0) return {};
    Json json = to_json(seen.size);
    json["frame"] = seen.frame;
    return json;
}

Json to_json(const VisibleWay& way) {
    return {{"state", name_of(way.state)}, {"settled_after", to_json(way.frames)}};
}

Json to_json(const VisibleChange& change) {
    Json json = to_json(change.matrix);
    json["with_gains"] = to_json(change.with_gains);
    json["step"] = to_json(change.step);
    json["size"] = to_json(change.size);
    json["overshoot"] = to_json(change.overshoot);
    json["stall"] = to_json(change.stall);
    return json;
}

Json to_json(const SummaryRecord& record, const LightChange& change) {
    Json json = {{"first", change.first}, {"last", change.last}, {"held", change.held}};
    if (record.jobs.ccm) json["visible"] = to_json(change.visible);
    for (std::size_t job = 0; job < kJobKeys.size(); ++job) {
        if (runs(record.jobs, job)) json[kJobKeys[job]] = to_json(change.settling[job]);
    }
    return json;
}

Json to_json(const SettlingTotals& totals) {
    return {{"settled", totals.settled},
            {"unmoved", totals.unmoved},
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
                         {"end", clipping_name(span.end)}});
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

Json to_json(const VisibleLimits& limits) {
    return {{"flicker_mean", limits.flicker_mean},
            {"flicker_patch", limits.flicker_patch},
            {"settled", limits.settled},
            {"patch", chart_patches()[limits.patch].name},
            {"source", kVisibleLimitsSource}};
}

Json visible_flicker_to_json(const SummaryRecord& record) {
    const VisibleRecord& visible = record.visible;
    Json spans = Json::array();
    for (const VisibleFlicker& flicker : visible.flicker) {
        spans.push_back({{"first", flicker.frames.first},
                         {"last", flicker.frames.last},
                         {"per_second", flicker.per_second},
                         {"swings", flicker.swings},
                         {"mean", flicker.mean},
                         {"worst", flicker.worst},
                         {"worst_patch", chart_patches()[flicker.worst_patch].name},
                         {"light_moves", flicker.light_moves}});
    }
    return {{"share_of_frames", share_of_flicker(record)},
            {"spans", spans},
            {"spans_not_listed", visible.flicker_count - visible.flicker.size()}};
}

/// What a viewer sees, without the lists.
Json visible_numbers(const SummaryRecord& record) {
    const VisibleRecord& visible = record.visible;
    return {{"limits", to_json(visible.limits)},
            {"steady_step", to_json(visible.steady_step)},
            {"changing_step", to_json(visible.changing_step)},
            {"gain_step", to_json(visible.gain_step)},
            {"settling", to_json(record.visible_settling)},
            {"settling_with_gains", to_json(record.visible_settling_with_gains)},
            {"overshoot", to_json(record.overshoot)},
            {"stall", to_json(record.stall)}};
}

Json light_swings_to_json(const SummaryRecord& record) {
    Json spans = Json::array();
    for (const LightSwing& swing : record.light_swings) {
        spans.push_back({{"first", swing.frames.first},
                         {"last", swing.frames.last},
                         {"per_second", swing.per_second}});
    }
    return {{"spans", spans},
            {"spans_not_listed", record.light_swing_count - record.light_swings.size()}};
}

Json switches_to_json(const SummaryRecord& record) {
    Json list = Json::array();
    for (const ImageSwitches& switches : record.image_switches) {
        list.push_back(
            {{"cause", name_of(switches.cause)},
             {"kelvin", switches.kelvin > 0 ? Json(switches.kelvin) : Json()},
             {"count", switches.count},
             {"first", switches.frames.first},
             {"last", switches.frames.last},
             {"back_and_forth", switches.back_and_forth},
             {"back_and_forth_per_second", per_second(switches, record.frames_per_second)}});
    }
    return list;
}

Json fields_to_json(const SummaryRecord& record) {
    Json fields = Json::object();
    for (const FieldMotion& motion : restless_fields(record, Restlessness::step)) {
        fields[motion.name] = {
            {"largest_step", motion.largest_step},
            {"step_frame", motion.step_frame},
            {"step_cause", name_of(motion.step_cause)},
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
                 {"changes_of_light", record.change_count},
                 {"light_swings", light_swings_to_json(record)}};
    if (record.jobs.ccm) {
        json["visible"] = visible_numbers(record);
        json["visible"]["flicker"] = visible_flicker_to_json(record);
    }
    if (record.cold_start) {
        json["cold_start"] = to_json(record, *record.cold_start);
        json["cold_start"]["frames_to_rest"] = record.cold_start_frames;
    }
    for (std::size_t job = 0; job < kJobKeys.size(); ++job) {
        if (runs(record.jobs, job)) json["settling"][kJobKeys[job]] = to_json(record.settling[job]);
    }
    json["changes"] = Json::array();
    for (const LightChange& change : record.changes) {
        json["changes"].push_back(to_json(record, change));
    }
    json["changes_not_listed"] = record.change_count - record.changes.size();
    if (record.jobs.ccm) json["clipped"] = clipped_to_json(record);
    if (record.jobs.color) json["image_switches"] = switches_to_json(record);
    json["flicker"] = flicker_to_json(record);
    json["fields"] = fields_to_json(record);
    return json;
}

Json to_json(const LightChange& change, Jobs jobs) {
    SummaryRecord record;
    record.jobs = jobs;
    return to_json(record, change);
}

Json row_to_json(SummaryRecord record) {
    const auto most = [&record](Restlessness by) {
        const std::vector<FieldMotion> moved = restless_fields(record, by);
        return moved.empty() ? FieldMotion{} : moved.front();
    };
    const FieldMotion stepped = most(Restlessness::step);
    const FieldMotion turned = most(Restlessness::flicker);
    const std::optional<VisibleFlicker> flicker = record.visible.strongest_flicker;
    const std::uint64_t switched = std::accumulate(
        record.image_switches.begin(), record.image_switches.end(), std::uint64_t{0},
        [](std::uint64_t sum, const ImageSwitches& switches) { return sum + switches.count; });
    record.fields.clear();
    record.changes.clear();
    record.clipped.clear();
    record.flicker.clear();
    Json json = to_json(record);
    for (const char* detail :
         {"cold_start", "changes", "changes_not_listed", "flicker", "fields", "image_switches"}) {
        json.erase(detail);
    }
    json["light_swings"] = record.light_swing_count;
    if (record.jobs.ccm) {
        json["visible"].erase("limits");
        for (const char* seen :
             {"steady_step", "changing_step", "gain_step", "overshoot", "stall"}) {
            Json& cell = json["visible"][seen];
            if (!cell.is_null()) continue;  // the same columns in every row
            for (const char* key : {"mean", "worst", "worst_patch", "patch", "frame"}) {
                cell[key] = nullptr;
            }
        }
        json["visible"]["flicker"] = {{"spans", record.visible.flicker_count},
                                      {"share_of_frames", share_of_flicker(record)},
                                      {"per_second", flicker ? Json(flicker->per_second) : Json()},
                                      {"mean", flicker ? Json(flicker->mean) : Json()},
                                      {"worst", flicker ? Json(flicker->worst) : Json()}};
    }
    if (record.jobs.color) json["image_switches"] = switched;
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
