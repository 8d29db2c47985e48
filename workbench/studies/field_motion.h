#ifndef IMGTUNE_WORKBENCH_STUDIES_FIELD_MOTION_H
#define IMGTUNE_WORKBENCH_STUDIES_FIELD_MOTION_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"

namespace imgtune::workbench {

/// What makes a field step.
enum class StepCause : std::uint8_t {
    smoothing,  ///< from one frame to the next, toward what the light asks for
    image,      ///< the colour map is taken whole from another image
    slot,       ///< scene or flash take another slot's images
    capture,    ///< a still capture takes its targets at once
};

/// How one field moved over a log, the cold start left out. In units of the register: nothing is
/// said about what can be seen.
struct FieldMotion {
    std::string name;               ///< "c0", "Luma.PY[3]"
    std::int64_t largest_step = 0;  ///< between neighbouring frames, without sign
    std::uint64_t step_frame = 0;   ///< the later of the two
    StepCause step_cause = StepCause::smoothing;
    std::uint64_t sign_changes = 0;         ///< of its steps
    std::uint64_t steady_sign_changes = 0;  ///< of these, while the light held
};

/// Frames that lie together.
struct FrameSpan {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};

/// Where a value counts as at rest, both ends included.
struct RestingBand {
    std::int64_t low = 0;
    std::int64_t high = 0;
};

/// Follows coefficients and colour fields, in that order, from frame to frame.
class FieldMotions {
  public:
    FieldMotions(const CallerSettings& caller, Jobs jobs);

    enum class Phase { cold_start, light_moves, light_holds };

    /// Takes the registers of a frame; whether a field changed direction in it.
    bool next(std::uint64_t number, const Registers& registers, Phase phase,
              StepCause color_cause = StepCause::smoothing);

    /// Whether matrix or colour registers differ from those of the frame before.
    const std::array<bool, 2>& moved() const { return moved_; }

    /// The fields' values in the frame taken last.
    const std::vector<std::int64_t>& values() const { return value_; }

    /// The fields' values in `registers`.
    std::vector<std::int64_t> values_of(const Registers& registers) const;

    const std::vector<FieldMotion>& motions() const { return motions_; }

    /// Fields from here on are the colour image's.
    static constexpr std::size_t kFirstColorField = 9;

  private:
    void read(const Registers& registers, std::size_t begin, std::size_t end,
              std::vector<std::int64_t>& values) const;
    bool note(std::size_t begin, std::size_t end, std::uint64_t number, Phase phase,
              StepCause cause);

    CallerSettings caller_;
    Jobs jobs_;
    bool started_ = false;
    Registers last_;
    std::vector<FieldMotion> motions_;
    std::vector<std::int64_t> now_, value_;
    std::array<bool, 2> moved_{};
    std::size_t first_map_field_ = 0;  ///< fields from here on are the colour map's
    std::vector<std::int8_t> direction_;
};

}  // namespace imgtune::workbench

#endif
