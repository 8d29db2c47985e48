#include "workbench/json/live.h"

#include "workbench/appearance/patches.h"
#include "workbench/json/summary.h"
#include "workbench/json/verify.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

Json told(const std::optional<std::array<std::int32_t, 9>>& matrix) {
    return matrix ? Json(*matrix) : Json();
}

Json clipping_json(const LiveStudy& study) {
    if (!study.camera().jobs().ccm) return {};
    return clipping_name(study.newest().clipping);
}

/// CIEDE2000 of the chart's patches.
Json told(const std::optional<ChartDifference>& difference) {
    if (!difference) return {};
    return {{"mean", difference->mean},
            {"largest", difference->worst},
            {"patch", chart_patches()[difference->worst_patch].name}};
}

Json verdict_json(const Verification& verification) {
    Json json = {{"equal", verification.lines > 0 ? Json(!verification.first) : Json()},
                 {"frames", verification.frames},
                 {"differing_frames", verification.differing_frames},
                 {"lines_compared", verification.lines},
                 {"first_difference", nullptr}};
    if (verification.first) {
        json["first_difference"] = to_json(verification)["first_difference"];
    }
    return json;
}

}  // namespace

Json to_json(LiveStudy& study) {
    const LiveFrame& newest = study.newest();
    Json light = Json::object();
    for (std::size_t i = 0; i < kFrameColumns.size(); ++i) {
        light[std::string(kFrameColumns[i].name)] = newest.values[i];
    }
    Json change = to_json(study.change(), study.camera().jobs());
    change["start"] = study.in_start();
    return {{"frame", newest.number},
            {"time", newest.time},
            {"line", newest.line},
            {"light", light},
            {"matrix", told(newest.matrix)},
            {"target", told(newest.target)},
            {"clipped", clipping_json(study)},
            {"visible",
             {{"step", told(newest.visible.step)},
              {"from_rest", told(newest.visible.from_rest)},
              {"step_with_gains", told(newest.visible.step_with_gains)},
              {"from_rest_with_gains", told(newest.visible.from_rest_with_gains)}}},
            {"change", change},
            {"verify", verdict_json(study.verification())}};
}

}  // namespace imgtune::workbench
