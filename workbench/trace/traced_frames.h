#ifndef IMGTUNE_WORKBENCH_TRACE_TRACED_FRAMES_H
#define IMGTUNE_WORKBENCH_TRACE_TRACED_FRAMES_H

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "workbench/frames/frame_log.h"
#include "workbench/trace/trace_reader.h"

namespace imgtune::workbench {

/// What SmoothCOLOR's trace tells beside the frame.
struct ColorInputs {
    std::int64_t upper_kelvin = 0;  ///< the tuned CTs around the frame's, as the camera stack chose
    std::int64_t lower_kelvin = 0;
    std::int64_t upper_index = 0;
    std::int64_t lower_index = 0;
    std::int64_t capture = 0;
    std::int64_t boot = 0;

    /// The call takes its targets at once, whatever came before.
    bool settles() const { return (capture | boot) == 1; }
};

/// A frame as a device's log tells it: one or both of its calls.
struct TracedFrame {
    /// In the order of kFrameColumns; none where the trace does not say.
    std::array<std::optional<std::int64_t>, kFrameColumns.size()> values{};
    std::optional<TracedCall> ccm;
    std::optional<TracedCall> color;
    ColorInputs color_inputs{};  ///< of `color`

    /// The call that the log shows first.
    const TracedCall& first() const {
        return !color || (ccm && ccm->line < color->line) ? *ccm : *color;
    }
};

/// The writers whose calls belong to one camera; thread 0: every thread of the process.
struct CameraChoice {
    std::int32_t process = 0;
    std::int32_t thread = 0;
};

/// A writer of the log and how many usable calls it traced.
struct TracedWriter {
    LogWriter writer;
    std::uint64_t calls = 0;
};

/// Streaming reader of one camera's frames out of a device's log. A call joins the call before it
/// into one frame when the other job wrote that one, at the same light value and flash. Where one
/// job has traced alone for a while, its call is a frame at once: of a live log none waits for the
/// next.
class TracedFrames {
  public:
    /// No choice: the first writer that traces a whole call. The source stays the caller's.
    TracedFrames(ByteSource& source, std::optional<CameraChoice> camera)
        : calls_(source), camera_(camera) {}

    /// The next frame; false at the end.
    bool next(TracedFrame& frame);

    const TraceTotals& totals() const { return calls_.totals(); }
    /// Calls left out because the lines that tell their inputs are missing.
    std::uint64_t unusable_calls() const { return unusable_; }
    /// Writers of usable calls that belong to other cameras, at most 64.
    std::vector<TracedWriter> others() const;
    /// others() as a list: "1234:1250 (37 calls)"; empty when there are none.
    std::string others_text() const;
    /// After the end without a frame: what the log of that name lacks, and what to do.
    std::string why_none(const std::string& name) const;

  private:
    bool belongs(const LogWriter& writer);
    void add(TracedCall&& call);
    void end_frame();

    TraceReader calls_;
    std::optional<CameraChoice> camera_;
    std::map<LogWriter, std::uint64_t> others_;
    std::uint64_t unusable_ = 0;
    std::optional<TracedFrame> open_;
    std::uint64_t alone_ = 0;  ///< frames of one call, and of the same job, one after the other
    TracedJob alone_job_ = TracedJob::ccm;
    std::deque<TracedFrame> ended_;
};

/// The frame log's header line and lines; values that the trace does not tell are empty.
std::string traced_frame_header();
std::string traced_frame_line(std::uint64_t number, const TracedFrame& frame);

/// A device's log as the text of a frame log, made as it is read.
class TracedFrameText : public ByteSource {
  public:
    using Seen = std::function<void(const TracedFrame&)>;

    /// `frames` stays the caller's; `seen` is shown each frame before its line is read.
    TracedFrameText(TracedFrames& frames, Seen seen);

    std::size_t read(char* into, std::size_t room) override;
    std::uint64_t count() const { return count_; }  ///< frames so far

  private:
    TracedFrames& frames_;
    Seen seen_;
    std::string text_;      ///< the line at hand
    std::size_t used_ = 0;  ///< of it
    std::uint64_t count_ = 0;
};

}  // namespace imgtune::workbench

#endif
