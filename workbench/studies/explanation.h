#ifndef IMGTUNE_WORKBENCH_STUDIES_EXPLANATION_H
#define IMGTUNE_WORKBENCH_STUDIES_EXPLANATION_H

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/story.h"

namespace imgtune::workbench {

/// A camera that has seen this frame for a long time: ring and working image have settled.
Camera settled_camera(const Tuning& tuning, Jobs jobs, const Frame& frame);

/// Runs one more frame on the camera and tells in order what the library did with it. Every number
/// comes from the library's traces, its exported functions or its results.
Story explain_frame(Camera& camera, const Frame& frame);

}  // namespace imgtune::workbench

#endif
