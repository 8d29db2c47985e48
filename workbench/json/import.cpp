#include "workbench/json/import.h"

#include <nlohmann/json.hpp>

#include "workbench/json/findings.h"

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

Json to_json(const Import& import, const Faults& faults) {
    Json tuned = Json::array();
    for (const TunedPoint& point : import.kept) tuned.push_back(point.kelvin);
    return {{"findings", to_json(faults)["findings"]},
            {"tuned_cts", std::move(tuned)},
            {"sets_tried", import.selection.tried},
            {"flash_ct", import.flash_tuned_kelvin},
            {"errors", all_of(import.errors)},
            {"other_method_errors", all_of(import.other_method_errors)}};
}

}  // namespace imgtune::workbench
