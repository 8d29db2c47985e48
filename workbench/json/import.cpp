#include "workbench/json/import.h"

#include <nlohmann/json.hpp>

namespace imgtune::workbench {

using Json = nlohmann::ordered_json;

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

}  // namespace

Json to_json(const Import& import, const Remarks& remarks) {
    Json said = Json::array();
    for (const Remark& remark : remarks.list()) {
        said.push_back({{"severity", remark.is_error ? "error" : "warning"},
                        {"line", remark.line},
                        {"what", remark.what},
                        {"advice", remark.advice}});
    }
    Json tuned = Json::array();
    for (const TunedPoint& point : import.kept) tuned.push_back(point.kelvin);
    return {{"file", remarks.file()},
            {"remarks", std::move(said)},
            {"tuned_cts", std::move(tuned)},
            {"sets_tried", import.selection.tried},
            {"flash_ct", import.flash_tuned_kelvin},
            {"errors", all_of(import.errors)},
            {"other_method_errors", all_of(import.other_method_errors)}};
}

}  // namespace imgtune::workbench
