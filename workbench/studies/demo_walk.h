#ifndef IMGTUNE_WORKBENCH_STUDIES_DEMO_WALK_H
#define IMGTUNE_WORKBENCH_STUDIES_DEMO_WALK_H

#include <cstdint>

#include "workbench/camera/locus.h"
#include "workbench/frames/frame_log.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The light of a walk of a minute, as a camera measures it: sun, shade, an office, a corridor, a
/// living room, candle light, and the flash. Gains are those of the tuning's own locus, with a
/// measurement's noise, which is the same every time.
class DemoWalk {
  public:
    DemoWalk(const Tuning& tuning, double frames_per_second);

    /// False after the last frame.
    bool next(Frame& frame);

  private:
    double noise();

    LightLocus locus_;
    double frames_per_second_;
    std::uint64_t frame_ = 0;
    std::uint32_t random_ = 1;
};

}  // namespace imgtune::workbench

#endif
