#include "workbench/studies/explanation.h"

#include <utility>

#include "workbench/studies/explain_parts.h"
#include "workbench/trace/trace_capture.h"

namespace imgtune::workbench {

namespace {

/// What the next call of a camera traces; the camera itself is not moved.
TraceLines trace_of(Camera camera, const Frame& frame, const std::vector<std::string>& switches) {
    TraceCapture capture(switches);
    camera.run(frame);
    return TraceLines(std::exchange(capture.lines(), {}));
}

}  // namespace

Explanation explain_frame(Camera& camera, const Frame& frame) {
    std::vector<std::string> switches = color_switches();
    switches.insert(switches.end(), kCcmSwitches.begin(), kCcmSwitches.end());
    const TraceLines trace = trace_of(camera, frame, switches);
    Camera unaveraged = camera;
    unaveraged.set_weights({1, 0, 0});

    Explanation told;
    told.frame = frame;
    told.resting = study_resting(camera, frame);
    camera.run(frame);
    told.registers = camera.registers();
    told.caller = camera.tuning().caller;
    if (camera.jobs().ccm) {
        told.ccm = explain_matrix(trace, trace_of(unaveraged, frame, kCcmSwitches),
                                  decode(camera.ccm(), told.caller));
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
