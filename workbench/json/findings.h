#ifndef IMGTUNE_WORKBENCH_JSON_FINDINGS_H
#define IMGTUNE_WORKBENCH_JSON_FINDINGS_H

#include <nlohmann/json.hpp>

#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// {"findings": [{severity, code, file, line, path, message, value, allowed, effect,
/// suggestion}]}. A line of 0 and empty texts say that there is none.
nlohmann::ordered_json to_json(const Faults& faults);

}  // namespace imgtune::workbench

#endif
