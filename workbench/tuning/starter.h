#ifndef IMGTUNE_WORKBENCH_TUNING_STARTER_H
#define IMGTUNE_WORKBENCH_TUNING_STARTER_H

#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// A plausible tuning with every part, to start from; no sensor's own figures.
Tuning starter_tuning();

}  // namespace imgtune::workbench

#endif
