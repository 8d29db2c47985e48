#ifndef IMGTUNE_CLI_CALIBRATION_TEXT_H
#define IMGTUNE_CLI_CALIBRATION_TEXT_H

#include <string>

#include "workbench/calibration/report.h"

namespace imgtune::cli {

/// What import chose and what that costs, for a reader; `form` says what the calibration is;
/// empty: that is said already.
std::string import_text(const std::string& form, const workbench::Import& import,
                        const workbench::CalibrationReport& report,
                        const workbench::ImportChoices& choices);

}  // namespace imgtune::cli

#endif
