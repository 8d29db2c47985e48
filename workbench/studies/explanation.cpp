#include "workbench/studies/explanation.h"

#include <utility>

#include "workbench/studies/explain_parts.h"
#include "workbench/trace/trace_capture.h"

namespace imgtune::workbench {

namespace {

/// What the next call of a camera traces; the camera itself is not moved.
std::vector<std::string> trace_of(Camera camera, const Frame& frame,
                                  const std::vector<std::string>& switches) {
    TraceCapture capture(switches);
    camera.run(frame);
    return std::exchange(capture.lines(), {});
}

}  // namespace

Explanation explain_frame(Camera& camera, const Frame& frame) {
    const std::vector<std::string> lines = trace_of(camera, frame, trace_switches(false));
    const Trace trace(lines);
    Camera unaveraged = camera;
    unaveraged.set_weights({1, 0, 0});

    Explanation told;
    told.frame = frame;
    told.resting = study_resting(camera, frame);
    camera.run(frame);
    told.registers = camera.registers();
    told.caller = camera.tuning().caller;
    if (camera.jobs().ccm) {
        const auto without_ring = trace_of(unaveraged, frame, kCcmSwitches);
        told.ccm = explain_matrix(trace, Trace(without_ring), decode(camera.ccm(), told.caller));
    }
    if (camera.jobs().color) told.color = explain_color(trace, camera.tuning(), camera.color());
    return told;
}

Explanation explain_at_rest(Camera& camera, const Frame& frame) {
    RestingStudy resting = study_resting(camera, frame);
    camera.set_state(resting.state);
    Explanation told = explain_frame(camera, frame);
    told.resting = std::move(resting);
    told.at_rest = true;
    return told;
}

}  // namespace imgtune::workbench
