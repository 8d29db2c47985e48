#ifndef IMGTUNE_TOOLS_TUNING_CHECK_H
#define IMGTUNE_TOOLS_TUNING_CHECK_H

#include "tuning/faults.h"
#include "tuning/tuning.h"

namespace imgtune::tool {

/// Adds what a readable tuning would do wrong on the camera.
void check_tuning(const Tuning& tuning, Faults& faults);

}  // namespace imgtune::tool

#endif
