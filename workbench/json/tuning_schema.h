#ifndef IMGTUNE_WORKBENCH_JSON_TUNING_SCHEMA_H
#define IMGTUNE_WORKBENCH_JSON_TUNING_SCHEMA_H

#include <nlohmann/json.hpp>

namespace imgtune::workbench {

/// The tuning format as JSON Schema (2020-12), for editors that complete and check YAML. Whatever
/// it refuses, check calls an error; what depends on other values it leaves to check.
nlohmann::ordered_json tuning_schema();

}  // namespace imgtune::workbench

#endif
