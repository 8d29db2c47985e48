#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_CAPTURE_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_CAPTURE_H

#include <string>
#include <utility>
#include <vector>

namespace imgtune::workbench {

/// While it lives, sets debug switches to 1 and keeps the library's trace lines, without their line
/// ends. One at a time in a process.
class TraceCapture {
  public:
    explicit TraceCapture(const std::vector<std::string>& switches);
    ~TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::vector<std::string>& lines();

  private:
    std::vector<std::pair<std::string, std::string>> before_;
};

/// The switch of SmoothCCM's traces.
inline const std::vector<std::string> kCcmSwitches{"debug.smooth_ccm.enable"};

/// The switches of all of SmoothCOLOR's traces.
std::vector<std::string> color_switches();

/// The switches of every trace, or of those alone that tell a frame's inputs.
std::vector<std::string> trace_switches(bool inputs_alone);

/// A property with the device's limits; throws BadInput if it cannot be set.
void set_property(const std::string& name, const std::string& value);

}  // namespace imgtune::workbench

#endif
