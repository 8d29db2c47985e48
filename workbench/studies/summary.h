#ifndef IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H
#define IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/clipping.h"
#include "workbench/studies/field_motion.h"
#include "workbench/studies/light_watch.h"
#include "workbench/studies/settling.h"

namespace imgtune::workbench {

struct SummaryOptions {
    static constexpr double kLeastFramesPerSecond = 0.001;
    static constexpr double kMostFramesPerSecond = 1e6;
    static constexpr double kMostNoisePercent = 50.0;

    double frames_per_second = 30.0;
    /// Noise that is no change of light: percent of gains and colour temperature, tenths of an EV
    /// of the light value.
    double noise_percent = 5.0;
};

/// One change of light: the frames in which it moves, and how the picture follows it.
struct LightChange {
    std::uint64_t first = 0;  ///< frame numbers, from 1
    std::uint64_t last = 0;
    std::uint64_t held = 0;               ///< frames of steady light after it
    std::array<JobSettling, 2> settling;  ///< matrix, colour
};

/// One job over all changes of light after the start.
struct SettlingTotals {
    std::uint64_t settled = 0;
    std::uint64_t moving = 0;
    std::uint64_t never_rests = 0;
    std::uint64_t not_measured = 0;              ///< held for no frame
    std::optional<std::uint64_t> median_frames;  ///< over those that settled; none: none did
    std::optional<std::uint64_t> most_frames;
    FrameSpan slowest;  ///< the change that took so long
};

/// Frames with the gain beyond one end of the tuned range.
struct ClippedSpan {
    FrameSpan frames;
    Clipping end = Clipping::none;
};

/// Frames, less than half a second apart, in which fields changed direction in steady light.
struct FlickerSpan {
    FrameSpan frames;
    std::uint64_t turns = 0;  ///< frames of it in which one did
};

/// What a log of frames did to the registers. Lists keep their first thousand entries.
struct SummaryRecord {
    std::uint64_t frames = 0;
    double frames_per_second = 30.0;
    double noise_percent = 0.0;
    std::uint64_t hold_frames = 0;  ///< shorter holds belong to the change before them
    Jobs jobs;

    std::uint64_t cold_start_frames = 0;  ///< from power-on to rest in the first frame's light
    std::optional<LightChange> cold_start;

    std::uint64_t change_count = 0;  ///< after the start
    std::vector<LightChange> changes;
    std::array<SettlingTotals, 2> settling;  ///< matrix, colour

    std::vector<FieldMotion> fields;  ///< all of them; the cold start is left out

    std::uint64_t clipped_frames = 0;
    std::uint64_t clipped_span_count = 0;
    std::vector<ClippedSpan> clipped;
    std::uint64_t flicker_span_count = 0;
    std::vector<FlickerSpan> flicker;
};

/// How often a second, over the whole log.
double per_second(const SummaryRecord& record, std::uint64_t count);

/// Fields that moved by the size of their largest step, or that changed direction by how often.
enum class Restlessness { step, flicker };
std::vector<FieldMotion> restless_fields(const SummaryRecord& record, Restlessness by);

/// Gathers the record of a log frame by frame, in memory that does not grow with it.
class Summary {
  public:
    /// `camera` as before the first frame.
    Summary(const Camera& camera, const SummaryOptions& options);
    Summary(const Summary&) = delete;
    Summary& operator=(const Summary&) = delete;

    /// The camera has run this frame.
    void add(std::uint64_t number, const Frame& frame, const Camera& camera);

    /// After the last frame.
    SummaryRecord finish();

  private:
    void note_clipping(std::uint64_t number, const Frame& frame);
    void note_turn(std::uint64_t number);
    void close_change(const LightWatch& hold);
    void count(std::size_t job, const JobSettling& verdict);

    Camera probe_;
    LightWatch watch_;
    FieldMotions motions_;
    HoldJudge judge_;
    SummaryRecord record_;
    bool in_cold_start_ = true;  ///< the change being gathered is the first
    Clipping last_clipping_ = Clipping::none;
    std::uint64_t last_turn_ = 0;
    LightChange change_;
    std::array<std::vector<std::uint64_t>, 2> settle_counts_;  ///< changes by frames to settle
};

}  // namespace imgtune::workbench

#endif
