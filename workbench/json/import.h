#ifndef IMGTUNE_WORKBENCH_JSON_IMPORT_H
#define IMGTUNE_WORKBENCH_JSON_IMPORT_H

#include <nlohmann/json_fwd.hpp>

#include "workbench/calibration/report.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// {findings: as of `check`, method, fit, tuned_cts, flash_ct, candidates: [{method, fit,
/// tuned_cts, sets_tried, mean_ciede2000, worst_ciede2000, worst_patch, worst_ct, worst_beside,
/// chosen}], errors: [{ct, kept, largest_512ths, mean_ciede2000, largest_ciede2000}]}
/// and of the report: lights: [{ct, red_gain, blue_gain, tuned, mean_ciede2000, worst_ciede2000,
/// worst_patch, left_out: null or {mean_ciede2000, worst_ciede2000}}], few_lights: [{method, cts,
/// mean_ciede2000, worst_ciede2000, sets_tried}], advice: sentences
nlohmann::ordered_json to_json(const Import& import, const CalibrationReport& report,
                               const Faults& faults);

}  // namespace imgtune::workbench

#endif
