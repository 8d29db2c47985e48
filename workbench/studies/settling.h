#ifndef IMGTUNE_WORKBENCH_STUDIES_SETTLING_H
#define IMGTUNE_WORKBENCH_STUDIES_SETTLING_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "workbench/studies/field_motion.h"
#include "workbench/studies/light_watch.h"

namespace imgtune::workbench {

/// Whether a job's registers came to rest after a change of light.
enum class Settling : std::uint8_t {
    not_run,      ///< the job takes no part
    not_held,     ///< the light held for no frame: nothing to measure
    unmoved,      ///< no register changed: nothing to settle
    settled,      ///< and stayed so for half a second, or while the light held
    moving,       ///< not yet at rest in the last frame of the light
    never_rests,  ///< under this light the registers move for ever
};

/// One job after one change of light.
struct JobSettling {
    Settling state = Settling::not_run;
    /// Settled: frames from the last one of the change to the first at rest.
    std::optional<std::uint64_t> frames;
    /// The field that rests farthest from its target, empty when all reach it, and the two values.
    std::string stall_field;
    std::int64_t stall_target = 0;
    std::int64_t stall_resting = 0;
};

/// Judges one hold of light against the value at which the camera itself comes to rest under it.
///
/// A field is at rest between its resting value and its target. With noise in the light, also as
/// far beyond as that noise moves the target and the average may stall on either side of it.
class HoldJudge {
  public:
    /// Settled is what stays at rest for `frames_at_rest`; what the light does later within its
    /// noise counts no more.
    HoldJudge(const Camera& camera, const FieldMotions& motions, std::uint64_t frames_at_rest);

    /// A hold has begun `late` frames before the one that `motions` took last; `state` is the
    /// camera's after that.
    void begin(const CameraState& state, std::uint64_t late = 0);

    /// One more frame of the hold.
    void next();

    /// The light of the hold is known: works out where the camera rests.
    void judge_by(const LightWatch& watch);
    bool is_judged() const { return judged_; }

    /// Matrix and colour; needs judge_by when the hold has more than its first frame.
    std::array<JobSettling, 2> verdicts() const;

    /// Of the matrix, or of the colour fields.
    std::span<const RestingBand> bands(std::size_t job) const;

  private:
    struct JobState {
        bool still = true;
        std::optional<std::uint64_t> rests_since;  ///< frame of the hold, from 0
    };
    void compare(const std::vector<std::int64_t>& values);
    void widen_by_noise(const LightWatch& watch);
    std::vector<std::int64_t> target_of(const Frame& frame) const;

    Camera probe_;
    const FieldMotions& motions_;
    std::uint64_t frames_at_rest_;
    std::int64_t stall_;  ///< of the matrix average
    CameraState start_;
    std::vector<std::vector<std::int64_t>> waiting_;  ///< values before the hold is judged
    bool judged_ = false;
    std::uint64_t compared_ = 0;
    std::array<JobState, 2> jobs_{};
    std::vector<std::int64_t> target_, resting_;
    std::vector<RestingBand> bands_;
};

}  // namespace imgtune::workbench

#endif
