#ifndef IMGTUNE_TOOLS_TUNING_STARTER_H
#define IMGTUNE_TOOLS_TUNING_STARTER_H

#include "tuning/tuning.h"

namespace imgtune::tool {

/// A plausible tuning with every part, to start from; no sensor's own figures.
Tuning starter_tuning();

}  // namespace imgtune::tool

#endif
