#ifndef IMGTUNE_WORKBENCH_STUDIES_CHECK_H
#define IMGTUNE_WORKBENCH_STUDIES_CHECK_H

#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// Adds what a readable tuning would do wrong on the camera: by its values, and, where these are
/// without errors, by what the library makes of them. What was not read is left out.
void check_tuning(const Tuning& tuning, Faults& faults);

}  // namespace imgtune::workbench

#endif
