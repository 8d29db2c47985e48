#ifndef IMGTUNE_WORKBENCH_TUNING_CHECK_H
#define IMGTUNE_WORKBENCH_TUNING_CHECK_H

#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// Adds what the values of a readable tuning tell of what it would do wrong on the camera. What was
/// not read is left out. See check_tuning in studies/check.h for all that is known.
void check_tables(const Tuning& tuning, Faults& faults);

}  // namespace imgtune::workbench

#endif
