#ifndef IMGTUNE_WORKBENCH_STUDIES_CLIPPING_H
#define IMGTUNE_WORKBENCH_STUDIES_CLIPPING_H

#include <cstdint>

#include "workbench/frames/frame_log.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The end of the tuned range that the gain of a frame lies beyond: low, less red and more blue
/// than the first tuned gain; high, more red and less blue than the last.
enum class Clipping : std::uint8_t { none, low, high };
const char* clipping_name(Clipping clipping);  ///< "none", "low", "high"

/// Told by the tuned gains of the LV row that the frame uses.
Clipping find_clipping(const Tuning& tuning, const Frame& frame);

}  // namespace imgtune::workbench

#endif
