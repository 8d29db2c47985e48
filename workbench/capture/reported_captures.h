#ifndef IMGTUNE_WORKBENCH_CAPTURE_REPORTED_CAPTURES_H
#define IMGTUNE_WORKBENCH_CAPTURE_REPORTED_CAPTURES_H

#include <vector>

#include "workbench/calibration/report.h"
#include "workbench/capture/capture_study.h"

namespace imgtune::workbench {

/// Every photograph of a study, as the report of a calibration shows it.
std::vector<ReportedCapture> reported_captures(const CaptureStudy& study);

}  // namespace imgtune::workbench

#endif
