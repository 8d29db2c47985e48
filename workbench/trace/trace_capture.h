#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_CAPTURE_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_CAPTURE_H

#include <string>
#include <vector>

namespace imgtune::workbench {

/// While it lives, sets debug switches to 1 and keeps the lines that the library traces in this
/// thread, without their line ends. Several threads may each have one: a switch stays set until the
/// last that needs it ends, and what a thread without one traces meanwhile is dropped. Of several
/// in one thread the youngest keeps the lines; they end in reverse order.
class TraceCapture {
  public:
    explicit TraceCapture(const std::vector<std::string>& switches);
    ~TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    std::vector<std::string>& lines() { return lines_; }

  private:
    std::vector<std::string> switches_;
    std::vector<std::string> lines_;
    std::vector<std::string>* outer_;  ///< of this thread
};

/// The switch of SmoothCCM's traces.
inline const std::vector<std::string> kCcmSwitches{"debug.smooth_ccm.enable"};

/// The switches of every trace, or of those alone that tell a frame's inputs.
std::vector<std::string> trace_switches(bool inputs_alone);

}  // namespace imgtune::workbench

#endif
