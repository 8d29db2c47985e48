#ifndef IMGTUNE_WORKBENCH_JUDGING_LOG_MEASURES_H
#define IMGTUNE_WORKBENCH_JUDGING_LOG_MEASURES_H

#include <cstdint>
#include <optional>

#include "workbench/camera/camera.h"
#include "workbench/camera/register_values.h"
#include "workbench/frames/frame_log.h"
#include "workbench/judging/judgement.h"
#include "workbench/studies/summary.h"

namespace imgtune::workbench {

/// What limits are about, of a log's summary: the numbers that `replay --summary` tells.
Measures measures_of(const SummaryRecord& record);

/// Frames from a change of light until one job's registers stand, the slowest change. One that
/// still moved when the light changed again counts one frame more than the light lasted.
std::optional<Measure> register_settling(const SummaryRecord& record, Job job);

/// Runs a log from power-on and measures it, in memory that does not grow.
class LogMeasures {
  public:
    LogMeasures(const Tuning& tuning, Jobs jobs, SummaryOptions options)
        : camera_(tuning, jobs), summary_(camera_, [&] {
              options.registers = jobs.color;  // no limit is about those of the matrix
              return options;
          }()) {}

    void add(const Frame& frame) {
        camera_.run(frame);
        summary_.add(++frames_, frame, camera_);
    }
    std::uint64_t frames() const { return frames_; }

    /// After the last frame.
    SummaryRecord finish() { return summary_.finish(); }

  private:
    Camera camera_;
    Summary summary_;
    std::uint64_t frames_ = 0;
};

}  // namespace imgtune::workbench

#endif
