#ifndef IMGTUNE_WORKBENCH_JUDGING_LOG_MEASURES_H
#define IMGTUNE_WORKBENCH_JUDGING_LOG_MEASURES_H

#include <cstdint>
#include <optional>

#include "workbench/camera/camera.h"
#include "workbench/camera/register_values.h"
#include "workbench/frames/frame_log.h"
#include "workbench/judging/judgement.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/visible.h"

namespace imgtune::workbench {

/// Runs a log from power-on and measures what limits are about, in memory that does not grow.
class LogMeasures {
  public:
    LogMeasures(const Tuning& tuning, Jobs jobs, const SummaryOptions& options);

    void add(const Frame& frame);
    std::uint64_t frames() const { return frames_; }

    /// After the last frame.
    Measures finish();

  private:
    void note_step(const VisibleFrame& seen);
    void note_rest(const Frame& frame);

    Camera camera_;
    Summary summary_;
    VisibleWatch visible_;
    std::uint64_t frames_ = 0;
    std::uint64_t start_frames_ = 0;  ///< from power-on to rest in the first frame's light
    bool held_ = false;               ///< the light, for half a second
    bool settled_ = false;            ///< the picture, in this hold
    std::optional<Measure> step_;
    std::optional<Measure> steady_step_;
    std::optional<Measure> at_rest_;
};

/// Frames from a change of light to rest of one job's registers, the slowest change. One that still
/// moved when the light changed again took longer than the light held: it counts one frame more.
std::optional<Measure> register_settling(const SummaryRecord& record, Job job);

}  // namespace imgtune::workbench

#endif
