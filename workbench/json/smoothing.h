#ifndef IMGTUNE_WORKBENCH_JSON_SMOOTHING_H
#define IMGTUNE_WORKBENCH_JSON_SMOOTHING_H

#include <nlohmann/json.hpp>

#include "workbench/judging/smoothing.h"

namespace imgtune::workbench {

nlohmann::ordered_json to_json(const Smoothing& answer);

}  // namespace imgtune::workbench

#endif
