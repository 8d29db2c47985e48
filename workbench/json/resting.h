#ifndef IMGTUNE_WORKBENCH_JSON_RESTING_H
#define IMGTUNE_WORKBENCH_JSON_RESTING_H

#include <nlohmann/json.hpp>

#include "workbench/studies/resting.h"

namespace imgtune::workbench {

/// Per job: still, frames, and the values that stop short of their target by name.
nlohmann::ordered_json to_json(const RestingStudy& study, Jobs jobs);

}  // namespace imgtune::workbench

#endif
