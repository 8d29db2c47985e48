#ifndef IMGTUNE_WORKBENCH_STUDIES_LIGHT_WATCH_H
#define IMGTUNE_WORKBENCH_STUDIES_LIGHT_WATCH_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// The measured values of a light, in this order: light value, colour temperature in kelvin, red,
/// green and blue gain of the one that the tuning uses. What the jobs do not read is 0.
using LightValues = std::array<double, 5>;

/// Flash, scene and capture are alike.
bool same_kind(const Frame& a, const Frame& b);

/// Half a second: the shortest time for which a light holds. At least 1.
std::uint64_t frames_of_hold(double frames_per_second);

/// Parts a log of measured light, which never holds still, into changes and holds.
///
/// A frame holds the light while gains and colour temperature stay within `noise_percent` of the
/// hold's mean so far, the light value within as many tenths of an EV, and flash, scene and capture
/// are the same. A frame beyond it is noise unless a tenth of a second lies beyond on the same
/// side; then a light has begun with the first of these frames. The light held is the mean of the
/// hold's first `hold_frames` frames. A hold shorter than `hold_frames` belongs to the change
/// before it, and so does one over which the light drifted steadily: a slow ramp is one change.
class LightWatch {
  public:
    LightWatch(const CallerSettings& caller, Jobs jobs, double noise_percent,
               std::uint64_t hold_frames);

    enum class Event {
        begins,  ///< first frame of a log, or a change, which began held() frames before
        moves,   ///< the change goes on; a hold may have begun held() frames before
        holds,   ///< the light of the frame before, as far as is known
    };
    Event next(const Frame& frame);

    /// Frames of the hold after its first one.
    std::uint64_t held() const { return held_; }

    /// The last frames lie beyond the light held, and may be noise or a change.
    bool is_in_doubt() const { return doubtful_ > 0; }

    /// The values of a frame that the jobs read.
    LightValues values_of(const Frame& frame) const;

    /// How far a value may lie from this one and be the same light.
    double tolerance(std::size_t value, double around) const;

    /// The light held, as a frame.
    Frame held_light() const { return light_with(mean_); }

    /// A frame of the hold with these values.
    Frame light_with(const LightValues& values) const;

    /// The same with one value moved to the lower or upper end of its noise: twice what the first
    /// `hold_frames` frames of the hold show, within the tolerance. None when there is no noise.
    std::optional<Frame> noisy_light(std::size_t value, bool upper) const;

  private:
    double tolerance(std::size_t value) const { return tolerance(value, mean_of_hold_[value]); }
    std::size_t farthest(const LightValues& values) const;
    bool is_beyond(const LightValues& values, std::size_t value, double tolerances) const;
    bool has_drifted(const LightValues& values) const;
    void take(const LightValues& values);
    Event leave(const LightValues& values, const Frame& frame, bool is_same_kind);

    bool full_gain_;
    Jobs jobs_;
    double noise_percent_;
    std::uint64_t hold_frames_;
    std::uint64_t frames_to_believe_;  ///< beyond the tolerance, before it is a change

    bool started_ = false;
    bool first_hold_ = true;  ///< of the log, which no later light joins
    Frame frame_{};           ///< first of the hold
    std::uint64_t held_ = 0;
    std::uint64_t taken_ = 0;     ///< frames of it within the tolerance
    LightValues first_{};         ///< mean of the first frames_to_believe_
    LightValues mean_{};          ///< of the first hold_frames_
    LightValues lowest_{};        ///< of the first hold_frames_
    LightValues highest_{};       ///< of the first hold_frames_
    LightValues mean_of_hold_{};  ///< of all its frames

    std::uint64_t doubtful_ = 0;  ///< frames beyond the tolerance, up to the last one
    Frame first_doubtful_{};
    LightValues mean_of_doubtful_{};
    std::size_t doubtful_value_ = 0;  ///< the one that lies beyond
    bool doubtful_above_ = false;
};

}  // namespace imgtune::workbench

#endif
