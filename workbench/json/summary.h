#ifndef IMGTUNE_WORKBENCH_JSON_SUMMARY_H
#define IMGTUNE_WORKBENCH_JSON_SUMMARY_H

#include <nlohmann/json.hpp>

#include "workbench/studies/summary.h"

namespace imgtune::workbench {

/// Frame numbers count from 1; what could not be measured is null.
nlohmann::ordered_json to_json(const SummaryRecord& record);

/// One change of light, with how each job settled after it.
nlohmann::ordered_json to_json(const LightChange& change, Jobs jobs);

/// For tables with a row a log: the numbers, without lists of changes, spans and fields; of the
/// fields the one with the largest step and the one that turns most often.
nlohmann::ordered_json row_to_json(SummaryRecord record);

}  // namespace imgtune::workbench

#endif
