#ifndef IMGTUNE_WORKBENCH_CALIBRATION_REPORT_PAGE_H
#define IMGTUNE_WORKBENCH_CALIBRATION_REPORT_PAGE_H

#include <string>

#include "workbench/calibration/report.h"

namespace imgtune::workbench {

/// "blend, fitted", "polynomial, as calibrated".
std::string candidate_name(const Candidate& candidate);

/// "5920 K", or "5920 K, gains 1.8 % high" for a light beside the locus.
std::string light_name(double kelvin, double beside);

/// What the report advises, a sentence each.
std::vector<std::string> advice_of(const Import& import, const CalibrationReport& report);

/// The report as a page of one file: plots, patches side by side, captures with the found grid,
/// tables. It needs no network and no script.
std::string report_page(const std::string& title, const Import& import,
                        const CalibrationReport& report);

}  // namespace imgtune::workbench

#endif
