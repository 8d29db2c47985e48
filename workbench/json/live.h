#ifndef IMGTUNE_WORKBENCH_JSON_LIVE_H
#define IMGTUNE_WORKBENCH_JSON_LIVE_H

#include <nlohmann/json.hpp>

#include "workbench/studies/live.h"

namespace imgtune::workbench {

/// The newest frame, the change of light at hand and how phone and desk agree so far. What is not
/// known is null.
nlohmann::ordered_json to_json(LiveStudy& study);

}  // namespace imgtune::workbench

#endif
