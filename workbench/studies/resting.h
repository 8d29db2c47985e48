#ifndef IMGTUNE_WORKBENCH_STUDIES_RESTING_H
#define IMGTUNE_WORKBENCH_STUDIES_RESTING_H

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// How one job's registers behave under a light that never changes.
struct JobRest {
    bool still = true;         ///< false: they repeat or wander for ever
    std::uint64_t frames = 0;  ///< of that light, until they show what they keep; at least 1
};

/// How a camera comes to rest.
struct Rest {
    JobRest ccm;
    JobRest color;
    std::uint64_t frames_run = 0;
    std::uint64_t period = 0;  ///< frames from one state to the same again; 0: none was found
};

/// Shows the camera one frame again and again until its state repeats, 65,536 times at most. The
/// camera is left in the state it reached.
Rest run_to_rest(Camera& camera, const Frame& frame);

/// Programs what the frame alone asks for: no average, every colour target taken at once.
void aim(Camera& camera, const Frame& frame);
Registers target_registers(Camera camera, const Frame& frame);

/// One coefficient or colour field under a light that never changes.
struct RestingValue {
    std::string name;       ///< "c0", "Luma.PY[3]"
    std::int64_t target;    ///< what the light asks for
    std::int64_t resting;   ///< where the smoothing stops
    std::int64_t short_by;  ///< target - resting
};

/// Target and rest of a light; coefficients in units of the codec's fraction (3, 9: 1/512).
struct RestingStudy {
    Rest rest;
    std::vector<RestingValue> ccm;    ///< c0..c8; empty without the job
    std::vector<RestingValue> color;  ///< fields that stop short of their target
    CameraState state;                ///< at rest
};

RestingStudy study_resting(Camera camera, const Frame& frame);

}  // namespace imgtune::workbench

#endif
