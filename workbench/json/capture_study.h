#ifndef IMGTUNE_WORKBENCH_JSON_CAPTURE_STUDY_H
#define IMGTUNE_WORKBENCH_JSON_CAPTURE_STUDY_H

#include <nlohmann/json_fwd.hpp>

#include "workbench/capture/capture_study.h"

namespace imgtune::workbench {

/// Everything but the small pictures. What a table of means cannot tell is null.
nlohmann::ordered_json to_json(const CaptureStudy& study);

}  // namespace imgtune::workbench

#endif
