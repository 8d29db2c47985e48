#include "workbench/json/diff.h"

#include <nlohmann/json.hpp>

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

}  // namespace

namespace {

Json value_of(const FieldDifference::Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    return std::get<std::string>(value);
}

}  // namespace

Json to_json(const std::vector<FieldDifference>& differences) {
    Json all = Json::array();
    for (const FieldDifference& difference : differences) {
        all.push_back({{"field", difference.field},
                       {"a", value_of(difference.a)},
                       {"b", value_of(difference.b)}});
    }
    return all;
}

Json to_json(const FramesComparison& comparison) {
    Json out = {{"frames", comparison.frames}, {"differing", comparison.differing}};
    for (const JobComparison& job : comparison.jobs) {
        Json worst = Json::array();
        for (const FrameDifference& frame : job.worst) {
            worst.push_back(
                {{"frame", frame.frame}, {"field", frame.field}, {"a", frame.a}, {"b", frame.b}});
        }
        Json by_field = Json::object();
        for (const FieldMaximum& field : job.fields) by_field[field.field] = field.size;
        out[job.job == Job::ccm ? "ccm" : "color"] = {
            {"differing", job.differing}, {"worst", worst}, {"largest_by_field", by_field}};
    }
    return out;
}

}  // namespace imgtune::workbench
