#ifndef IMGTUNE_WORKBENCH_STUDIES_LIVE_H
#define IMGTUNE_WORKBENCH_STUDIES_LIVE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/clipping.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/verify.h"
#include "workbench/studies/visible.h"
#include "workbench/trace/traced_frames.h"

namespace imgtune::workbench {

/// A frame that a phone has just shown, and what the tuning makes of it. The desk's camera starts
/// with the log, as a replay of its frames does.
struct LiveFrame {
    std::uint64_t number = 0;  ///< from 1
    std::uint64_t line = 0;    ///< of the log, from 1
    std::string time;          ///< as the log writes it; empty where it does not
    LogWriter writer;
    FrameValues values{};  ///< in the order of kFrameColumns
    Frame frame;
    /// Coefficients in units of the codec's fraction; none without the job.
    std::optional<std::array<std::int32_t, 9>> matrix;
    std::optional<std::array<std::int32_t, 9>> target;  ///< what this light alone asks for
    Clipping clipping = Clipping::none;
    VisibleFrame visible;
};

/// Follows a phone's log frame by frame: replays it, gathers its summary, and holds the phone's
/// traces against the desk's. Memory does not grow with the log.
class LiveStudy {
  public:
    LiveStudy(const Tuning& tuning, const SummaryOptions& options);

    void add(const TracedFrame& traced, const FrameValues& values, const Frame& frame);

    const LiveFrame& newest() const { return newest_; }
    /// The change of light at hand.
    const LightChange& change() { return summary_.change(); }
    bool in_start() const { return summary_.in_cold_start(); }
    /// The change before the one at hand; none before the first.
    const std::optional<LightChange>& change_before() const { return change_before_; }
    /// So far; verdict() tells, too, what no frame used.
    const Verification& verification() const { return verifier_.so_far(); }
    Verification verdict() const { return verifier_.result(); }
    const Camera& camera() const { return camera_; }

    /// After the last frame.
    SummaryRecord finish() { return summary_.finish(); }

  private:
    Camera camera_;
    Summary summary_;
    Verifier verifier_;
    VisibleWatch visible_;
    LiveFrame newest_;
    std::optional<LightChange> change_before_;
};

/// The frames of a phone's log as they come, with what the trace does not tell filled in as a frame
/// log is read: followed or recorded and read again, they are the same.
class LiveFrames {
  public:
    /// The source stays the caller's.
    LiveFrames(std::string name, ByteSource& source, std::optional<CameraChoice> camera);
    LiveFrames(const LiveFrames&) = delete;
    LiveFrames& operator=(const LiveFrames&) = delete;

    /// The next frame; false at the end. Waits for no line that is not needed to know it.
    bool next() { return log_.next(frame_); }

    const TracedFrame& traced() const { return traced_frame_; }
    const Frame& frame() const { return frame_; }
    const FrameValues& values() const { return log_.values(); }
    const TracedFrames& source() const { return traced_; }
    std::uint64_t count() const { return text_.count(); }

  private:
    TracedFrames traced_;
    TracedFrame traced_frame_;
    TracedFrameText text_;
    FrameLog log_;
    Frame frame_;
};

}  // namespace imgtune::workbench

#endif
