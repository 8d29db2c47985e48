#include "workbench/json/verify.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

}  // namespace

const char* name_of(TraceCause cause) {
    switch (cause) {
        case TraceCause::tuning:
            return "tuning";
        case TraceCause::caller:
            return "caller";
        case TraceCause::state:
            return "state";
        case TraceCause::version:
            return "version";
        case TraceCause::log:
            return "log";
    }
    return "";
}

Json to_json(const Verification& verification) {
    Json json = {{"equal", !verification.first},
                 {"frames", verification.frames},
                 {"differing_frames", verification.differing_frames},
                 {"ccm_calls", verification.ccm_calls},
                 {"color_calls", verification.color_calls},
                 {"calls_without_tuning", verification.without_tuning},
                 {"lines_compared", verification.lines},
                 {"lines_missing", verification.missing_lines},
                 {"state_taken", verification.state_taken},
                 {"other_ct_grid", verification.other_grid},
                 {"first_difference", nullptr},
                 {"differing_fields", Json::array()},
                 {"unused", verification.unused}};
    if (verification.first) {
        const TraceDifference& first = *verification.first;
        json["first_difference"] = {{"frame", first.frame},
                                    {"line", first.line},
                                    {"time", first.time},
                                    {"value", first.value},
                                    {"phone", first.phone},
                                    {"desk", first.desk.empty() ? Json() : Json(first.desk)},
                                    {"likely_cause", name_of(first.cause.cause)},
                                    {"field", first.cause.field}};
    }
    for (const TracedField& field : verification.fields) {
        json["differing_fields"].push_back({{"field", field.field},
                                            {"phone", field.phone},
                                            {"desk", field.desk},
                                            {"frame", field.frame}});
    }
    return json;
}

}  // namespace imgtune::workbench
