#ifndef IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H
#define IMGTUNE_WORKBENCH_STUDIES_SUMMARY_H

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// One change of light: the frames in which it moves, and how the picture follows it.
struct LightChange {
    std::uint64_t first = 0;  ///< frame numbers, from 1; the first frame of a log is a change
    std::uint64_t last = 0;
    std::uint64_t held = 0;  ///< frames of steady light after it
    /// Frames from the last one of the change to the last in which a register moved; none: it was
    /// still moving when the light changed again or the log ended. Matrix and colour.
    std::array<std::optional<std::uint64_t>, 2> settled_after;
};

/// How one field moved over a log.
struct FieldMotion {
    std::string name;
    std::int64_t largest_step = 0;          ///< between neighbouring frames, without sign
    std::uint64_t step_frame = 0;           ///< the later of the two
    std::int64_t overshoot = 0;             ///< beyond the value on which it settled
    std::uint64_t overshoot_frame = 0;      ///< last frame of the change of light before it
    std::uint64_t sign_changes = 0;         ///< of its steps
    std::uint64_t steady_sign_changes = 0;  ///< of these, with the light unchanged
};

/// What a log of frames did to the registers, gathered frame by frame in constant memory.
class Summary {
  public:
    Summary(const Tuning& tuning, Jobs jobs, double frames_per_second);

    /// The next frame and what the library made of it.
    void add(std::uint64_t number, const Frame& frame, const Registers& registers);

    /// After the last frame.
    void finish();

    std::string text() const;
    nlohmann::json json() const;

    std::uint64_t frames() const { return frames_; }
    std::uint64_t clipped_frames() const { return clipped_; }
    const std::vector<LightChange>& changes() const { return changes_; }  ///< the first thousand
    const std::vector<FieldMotion>& motions() const { return motions_; }
    double per_second(std::uint64_t count) const;

  private:
    void note_motion(std::size_t begin, std::size_t end, bool first);
    void close_change();
    bool is_clipped(const Frame& frame);
    std::uint64_t median_settle_frames(std::size_t job) const;
    std::vector<const FieldMotion*> moved_fields(bool by_flicker) const;

    Jobs jobs_;
    double frames_per_second_;
    Camera probe_;  ///< asked about clipping; keeps no state that matters
    std::uint64_t frames_ = 0;
    std::uint64_t number_ = 0;
    std::uint64_t clipped_ = 0;
    std::uint64_t first_clipped_ = 0;
    Frame last_frame_{};
    bool last_clipped_ = false;
    NSIspTuning::ISP_NVRAM_CCM_T last_ccm_{};
    NSIspTuning::ISP_NVRAM_COLOR_T last_color_{};

    LightChange change_{};
    std::array<std::uint64_t, 2> last_motion_{};  ///< frames after the change; matrix and colour
    std::vector<LightChange> changes_;
    std::uint64_t change_count_ = 0;
    std::array<std::uint64_t, 2> unsettled_{};
    std::array<std::vector<std::uint64_t>, 2> settle_counts_;  ///< changes by frames to settle
    std::array<LightChange, 2> slowest_{};

    std::vector<FieldMotion> motions_;
    std::vector<std::int64_t> now_;  ///< per field: this frame's value
    std::vector<std::int64_t> value_, start_, low_, high_;
    std::vector<std::int8_t> direction_;
};

}  // namespace imgtune::workbench

#endif
