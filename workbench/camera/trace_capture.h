#ifndef IMGTUNE_WORKBENCH_CAMERA_TRACE_CAPTURE_H
#define IMGTUNE_WORKBENCH_CAMERA_TRACE_CAPTURE_H

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

/// A property with the device's limits; throws BadInput if it cannot be set.
void set_property(const std::string& name, const std::string& value);

}  // namespace imgtune::workbench

#endif
