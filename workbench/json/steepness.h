#ifndef IMGTUNE_WORKBENCH_JSON_STEEPNESS_H
#define IMGTUNE_WORKBENCH_JSON_STEEPNESS_H

#include <nlohmann/json.hpp>
#include <vector>

#include "workbench/studies/steepness.h"

namespace imgtune::workbench {

/// Per LV row and over light values: the steepest place, null where the matrix never changes.
nlohmann::ordered_json to_json(const Steepness& steepness);

/// What was tried, the tuning as it is first.
nlohmann::ordered_json to_json(const std::vector<Remedy>& remedies);

}  // namespace imgtune::workbench

#endif
