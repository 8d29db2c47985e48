#ifndef IMGTUNE_WORKBENCH_JSON_VERIFY_H
#define IMGTUNE_WORKBENCH_JSON_VERIFY_H

#include <nlohmann/json.hpp>

#include "workbench/studies/verify.h"

namespace imgtune::workbench {

/// first_difference is null when phone and desk are equal; its desk is null when the desk traces no
/// such line.
nlohmann::ordered_json to_json(const Verification& verification);

/// "tuning", "caller", "state", "version".
const char* name_of(TraceCause cause);

}  // namespace imgtune::workbench

#endif
