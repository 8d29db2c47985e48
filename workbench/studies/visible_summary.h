#ifndef IMGTUNE_WORKBENCH_STUDIES_VISIBLE_SUMMARY_H
#define IMGTUNE_WORKBENCH_STUDIES_VISIBLE_SUMMARY_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "workbench/studies/field_motion.h"
#include "workbench/studies/light_watch.h"
#include "workbench/studies/swings.h"
#include "workbench/studies/visible.h"

namespace imgtune::workbench {

/// What is just noticeable, in CIEDE2000. docs/visible.md names where the figures come from.
struct VisibleLimits {
    static constexpr double kLeast = 0.01;
    static constexpr double kMost = 100.0;

    double flicker_mean = kVisibleMean;  ///< a swing of the chart's mean, or ...
    double flicker_patch =
        kVisibleWorst;  ///< ... of its worst patch, that counts as flicker when it recurs
    double settled = kVisibleWorst;  ///< worst patch that still counts as at rest
    std::size_t patch = kLightSkin;  ///< the one that is told by itself
};

/// Where the limits come from, one sentence.
inline constexpr const char* kVisibleLimitsSource =
    "half of all observers see a CIEDE2000 of 0.8 side by side (Paravina et al., J. Esthet. "
    "Restor. Dent. 27, 2015); half of 1 for the mean of the chart, which fills the picture, and "
    "0.5 to 15 Hz, beyond which the eye does not follow colour (Kelly, J. Opt. Soc. Am. 73, 1983)";

/// A difference, and the frame in which it was seen; 0: in none.
struct SeenDifference {
    ChartDifference size;
    std::uint64_t frame = 0;
};
void keep_larger(SeenDifference& largest, const SeenDifference& seen);

enum class VisibleSettling : std::uint8_t {
    not_measured,  ///< the light held for less than half a second
    unmoved,       ///< no frame lay beyond the limit
    settled,       ///< below the limit for half a second, or while the light held
    moving,        ///< beyond it in the last frame of the light
};

struct VisibleWay {
    VisibleSettling state = VisibleSettling::not_measured;
    /// From the first frame of the change to the first below the limit.
    std::optional<std::uint64_t> frames;
};

/// What a viewer sees of one change of light.
struct VisibleChange {
    VisibleWay matrix;      ///< white balance taken as perfect
    VisibleWay with_gains;  ///< not measured where the light itself moved for over five seconds
    SeenDifference step;    ///< largest from frame to frame
    std::optional<ChartDifference> size;  ///< from the last frame before to rest
    SeenDifference
        overshoot;  ///< beyond the larger of both ends, patch by patch; not of one that moves on
    SeenDifference stall;  ///< rest against what the light asks for; last frame it was read from
};

/// Swings that recur.
struct VisibleFlicker {
    FrameSpan frames;
    double per_second = 0.0;
    std::uint64_t swings = 0;
    double mean = 0.0;            ///< of the swings, mean of the chart
    double worst = 0.0;           ///< of the swings, worst patch
    std::size_t worst_patch = 0;  ///< of the largest swing
    bool light_moves = false;     ///< in some of its frames
};

/// The same of the light: gains, colour temperature and light value come and go.
struct LightSwing {
    FrameSpan frames;
    double per_second = 0.0;
};

/// What a viewer sees of a log. Without a matrix nothing is measured.
struct VisibleRecord {
    bool is_measured = false;
    VisibleLimits limits;
    SeenDifference steady_step;           ///< in light that holds, once the picture has settled
    SeenDifference changing_step;         ///< while light or picture moves
    SeenDifference gain_step;             ///< in light that holds, what the gains are off included
    std::vector<VisibleFlicker> flicker;  ///< the first thousand
    std::uint64_t flicker_count = 0;
    std::uint64_t flicker_frames = 0;
    std::optional<VisibleFlicker> strongest_flicker;  ///< of all, by its worst patch
};

/// Gathers what is visible, frame by frame, in memory that does not grow.
class VisibleStudy {
  public:
    VisibleStudy(const Camera& camera, const VisibleLimits& limits, double frames_per_second);

    /// The camera has run this frame, of which `light` says `event`. A cold start counts for its
    /// settling alone.
    void add(std::uint64_t number, const Frame& frame, const Camera& camera,
             const LightWatch& light, LightWatch::Event event, bool is_cold_start);

    /// The light has changed again, or the log has ended.
    VisibleChange close_change();

    /// The next change began in this frame.
    void begin_change(std::uint64_t first);

    VisibleRecord finish();

  private:
    struct Shown {
        std::uint64_t number = 0;
        NSIspTuning::ISP_NVRAM_CCM_T image{};
        AWB_GAIN_T gains{};
        LightValues light{};
    };
    /// How one way to rest goes on.
    struct Way {
        bool is_measured = false;
        bool was_beyond = false;
        std::uint64_t last_beyond = 0;  ///< frame; that of the last one compared while it moves
    };

    ChartDifference difference(const ChartView& before, const ChartView& now) const;
    ChartView view_of(const Shown& shown) const;
    ChartDifference step_from(const ChartView& earlier, const LightWatch& light,
                              LightWatch::Event event) const;
    void note_step(std::uint64_t number, const ChartDifference& step, const LightWatch& light,
                   LightWatch::Event event);
    void note_turn(const Turn<ChartView>& turn);
    void end_flicker();
    void judge();
    void compare_with_rest(const Shown& shown, const ChartView& view);
    void note_overshoot(std::uint64_t number, const PatchDifferences& from,
                        const PatchDifferences& way);
    std::array<double, 3> recent_gains(std::uint64_t number) const;
    bool has_settled() const;
    bool is_change_on() const;
    VisibleWay verdict(const Way& way) const;

    Camera probe_;
    double frames_per_second_;
    std::uint64_t hold_frames_;
    VisibleRecord record_;

    std::vector<Shown> ring_;  ///< the last frames, a frame at its number modulo their count
    std::uint64_t number_ = 0;
    std::optional<ChartView> view_;

    // The change at hand.
    std::uint64_t first_ = 1;
    std::uint64_t light_stood_ = 1;  ///< frame in which the light had come to its hold
    std::uint64_t kinds_ = 0;        ///< how often flash, scene or capture have changed
    std::optional<Frame> frame_;     ///< the one before
    bool is_judged_ = false;
    /// Of the last frame that surely belongs to the hold, once this is long enough to judge.
    struct Held {
        std::uint64_t number = 0;
        CameraState state;
        LightWatch light;
    };
    std::optional<Held> held_;
    VisibleChange change_;
    std::optional<ChartView> before_, rest_;
    std::optional<std::array<double, 3>> settled_gains_;
    Way matrix_way_, gains_way_;
    std::uint64_t last_compared_ = 0;    ///< frame
    PatchDifferences there_{}, back_{};  ///< from before to rest, from rest to before
    PatchDifferences overshoot_{};
    float farthest_ = 0.0F;             ///< of these
    std::uint64_t farthest_frame_ = 0;  ///< in which it was seen

    std::vector<SeenDifference> doubtful_steps_;
    Turns<ChartView> turns_;
    SwingChain chain_;
    double chain_mean_ = 0.0, chain_worst_ = 0.0, chain_largest_ = 0.0;
    std::size_t chain_patch_ = 0;
    std::uint64_t light_moved_ = 0;  ///< last frame in which it did
};

/// Finds light that comes and goes: breathing exposure, hunting white balance, a flickering lamp.
class LightSwings {
  public:
    explicit LightSwings(double frames_per_second);

    /// `light` has been shown this frame.
    void add(std::uint64_t number, const Frame& frame, const LightWatch& light);
    void finish() { end(); }

    /// These frames lie in swings found so far.
    bool cover(const FrameSpan& frames) const;
    const std::vector<LightSwing>& spans() const { return spans_; }
    std::uint64_t count() const { return count_; }

  private:
    void end();

    bool goes_on(const Turn<LightValues>& turn, const LightWatch& light) const;
    LightSwing at_hand() const;

    double frames_per_second_;
    std::uint64_t patience_;
    Turns<LightValues> turns_;
    SwingChain chain_;
    LightValues before_last_{};  ///< where the light stood at the turn before the last one
    LightValues last_{};
    std::uint64_t last_frame_ = 0;
    std::uint64_t interval_ = 0;  ///< frames between these two
    std::array<LightValues, 3> recent_{};
    std::uint64_t seen_ = 0;
    std::vector<LightSwing> spans_;
    std::uint64_t count_ = 0;
};

}  // namespace imgtune::workbench

#endif
