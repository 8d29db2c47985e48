#ifndef IMGTUNE_WORKBENCH_JSON_JUDGING_H
#define IMGTUNE_WORKBENCH_JSON_JUDGING_H

#include <nlohmann/json.hpp>

#include "workbench/judging/judgement.h"

namespace imgtune::workbench {

nlohmann::ordered_json to_json(const Verdict& verdict);
nlohmann::ordered_json to_json(const Judgement& judgement);

/// The limits' file as JSON Schema (2020-12).
nlohmann::ordered_json limits_schema();

}  // namespace imgtune::workbench

#endif
