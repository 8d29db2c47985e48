#ifndef IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H
#define IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/clipping.h"
#include "workbench/studies/field_motion.h"
#include "workbench/studies/image_switches.h"
#include "workbench/studies/light_watch.h"
#include "workbench/studies/settling.h"
#include "workbench/studies/visible_summary.h"

namespace imgtune::workbench {

struct SummaryOptions {
    static constexpr double kLeastFramesPerSecond = 0.001;
    static constexpr double kMostFramesPerSecond = 1e6;
    static constexpr double kMostNoisePercent = 50.0;

    double frames_per_second = 30.0;
    /// Noise that is no change of light: percent of gains and colour temperature, tenths of an EV
    /// of the light value.
    double noise_percent = 5.0;
    VisibleLimits visible = {};
    /// How the registers move and settle, too; without it a third less work.
    bool registers = true;
};

/// One change of light: the frames in which it moves, and how the picture follows it.
struct LightChange {
    std::uint64_t first = 0;  ///< frame numbers, from 1
    std::uint64_t last = 0;
    std::uint64_t held = 0;  ///< frames of steady light after it
    VisibleChange visible;
    std::array<JobSettling, 2> settling;  ///< of the registers: matrix, colour
};

/// One job's registers, or the picture, over all changes of light after the start.
struct SettlingTotals {
    std::uint64_t settled = 0;
    std::uint64_t unmoved = 0;
    std::uint64_t moving = 0;
    std::uint64_t never_rests = 0;
    std::uint64_t not_measured = 0;              ///< did not hold
    std::optional<std::uint64_t> median_frames;  ///< over those that settled; none: none did
    std::optional<std::uint64_t> most_frames;
    FrameSpan slowest;  ///< the change that took so long
    /// The slowest once its light stood: frames from the change's last one on, which is what
    /// smoothing adds to a light that moves for long. Of one that still moved when the light
    /// changed again, the frames that this lasted, and one.
    std::optional<std::uint64_t> most_behind;
    FrameSpan farthest_behind;  ///< that change
    bool still_moved = false;   ///< in it
};

/// Frames with the gain beyond one end of the tuned range.
struct ClippedSpan {
    FrameSpan frames;
    Clipping end = Clipping::none;
};

/// Frames, less than half a second apart, in which registers changed direction in steady light;
/// whether it can be seen is another matter.
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

    /// After the start; light that comes and goes again and again is told as a swing instead.
    std::uint64_t change_count = 0;
    std::vector<LightChange> changes;
    std::vector<LightSwing> light_swings;
    std::uint64_t light_swing_count = 0;

    VisibleRecord visible;
    SettlingTotals visible_settling;             ///< white balance taken as perfect
    SettlingTotals visible_settling_with_gains;  ///< what the gains are off included
    SeenDifference overshoot;                    ///< largest after a change
    SeenDifference stall;  ///< largest that rest stays away from what the light asks for

    std::array<SettlingTotals, 2> settling;  ///< of the registers: matrix, colour
    std::vector<ImageSwitches> image_switches;

    std::vector<FieldMotion> fields;  ///< all of them; the cold start is left out

    std::uint64_t clipped_frames = 0;
    std::uint64_t clipped_span_count = 0;
    std::vector<ClippedSpan> clipped;
    std::uint64_t flicker_span_count = 0;
    std::vector<FlickerSpan> flicker;
};

/// How often a second, over the whole log.
double per_second(const SummaryRecord& record, std::uint64_t count);

/// Of the log's frames, how many lie in visible flicker; 0 to 1.
double share_of_flicker(const SummaryRecord& record);

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

    /// The change at hand. Its settling is told once the light has held long enough to be judged by
    /// (hold_frames), and until then not run.
    const LightChange& change();
    bool in_cold_start() const { return in_cold_start_; }  ///< that change is the start

    /// What finish() would tell but for the change at hand; the last few before it are listed and
    /// not yet counted, as they may turn out to be swings. The gathering goes on.
    SummaryRecord so_far() const;

  private:
    void note_clipping(std::uint64_t number, const Frame& frame);
    void note_turn(std::uint64_t number);
    void close_change(const LightWatch& hold);
    void tell_settling();
    void settle_accounts(const LightChange& change);
    /// Changes that may yet turn out to be one swing of many, until they are this many.
    void settle_accounts_but(std::size_t kept);

    /// Frames to settle, counted by changes.
    class FrameCounts {
      public:
        FrameCounts();
        void add(std::uint64_t frames) {
            ++counts_[static_cast<std::size_t>(std::min<std::uint64_t>(frames, kMost))];
        }
        std::optional<std::uint64_t> median() const;

      private:
        static constexpr std::size_t kMost = 4096;  ///< longer ones together
        std::vector<std::uint64_t> counts_;
    };
    static void count(const VisibleWay& way, const LightChange& change, SettlingTotals& totals,
                      FrameCounts& counts);
    static void count(const JobSettling& verdict, const LightChange& change, SettlingTotals& totals,
                      FrameCounts& counts);

    Camera probe_;
    LightWatch watch_, before_;
    FieldMotions motions_;
    HoldJudge judge_;
    VisibleStudy visible_;
    LightSwings swings_;
    SwitchWatch switches_;
    SummaryRecord record_;
    bool with_registers_;
    bool in_cold_start_ = true;  ///< the change being gathered is the first
    Clipping last_clipping_ = Clipping::none;
    std::uint64_t last_turn_ = 0;
    LightChange change_;
    std::array<bool, 2> moved_{};      ///< registers of matrix and colour since the change began
    std::deque<LightChange> waiting_;  ///< closed, not yet counted
    std::array<FrameCounts, 2> settle_counts_;
    std::array<FrameCounts, 2> visible_counts_;  ///< matrix alone, with gains
};

}  // namespace imgtune::workbench

#endif
