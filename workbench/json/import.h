#ifndef IMGTUNE_WORKBENCH_JSON_IMPORT_H
#define IMGTUNE_WORKBENCH_JSON_IMPORT_H

#include <nlohmann/json_fwd.hpp>

#include "workbench/calibration/import.h"

namespace imgtune::workbench {

/// {findings: as of `check`, tuned_cts, sets_tried, flash_ct,
/// errors: [{ct, kept, largest_512ths, mean_ciede2000, largest_ciede2000}], other_method_errors}
nlohmann::ordered_json to_json(const Import& import, const Faults& faults);

}  // namespace imgtune::workbench

#endif
