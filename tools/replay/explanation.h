#ifndef IMGTUNE_TOOLS_REPLAY_EXPLANATION_H
#define IMGTUNE_TOOLS_REPLAY_EXPLANATION_H

#include "frames/frame_log.h"
#include "replay/camera.h"
#include "replay/story.h"

namespace imgtune::tool {

/// A camera that has seen this frame for a long time: ring and working image have settled.
Camera settled_camera(const Tuning& tuning, Jobs jobs, const Frame& frame);

/// Runs one more frame on the camera and tells in order what the library did with it. Every number
/// comes from the library's traces, its exported functions or its results.
Story explain_frame(Camera& camera, const Frame& frame);

}  // namespace imgtune::tool

#endif
