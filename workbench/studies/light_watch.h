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

/// Half a second: the shortest time for which a light holds. At least 1.
std::uint64_t frames_of_hold(double frames_per_second);

/// Parts a log of measured light, which never holds still, into changes and holds.
///
/// A frame holds the light while gains and colour temperature stay within `noise_percent` of the
/// light held, the light value within as many tenths of an EV, and flash, scene and capture are
/// the same. The light held is the mean of the hold's frames so far, up to `hold_frames` of them.
/// A hold shorter than `hold_frames` belongs to the change before it, and so does one over which
/// the light drifted steadily: a slow ramp is one change.
class LightWatch {
  public:
    LightWatch(const CallerSettings& caller, Jobs jobs, double noise_percent,
               std::uint64_t hold_frames);

    enum class Event {
        begins,  ///< first frame of a log, or of a change
        moves,   ///< the change goes on
        holds,   ///< the light of the frame before
    };
    Event next(const Frame& frame);

    /// Frames of the hold after its first one.
    std::uint64_t held() const { return held_; }

    /// The light held, as a frame.
    Frame held_light() const;

    /// The same with one value moved to the lower or upper end of its noise: twice what the first
    /// `hold_frames` frames of the hold show, within the tolerance. None when there is no noise.
    std::optional<Frame> noisy_light(std::size_t value, bool upper) const;

  private:
    LightValues values_of(const Frame& frame) const;
    double tolerance(std::size_t value) const;
    bool holds(const LightValues& values, const Frame& frame) const;
    bool has_drifted(const LightValues& values, const Frame& frame) const;
    void hold_anew(const LightValues& values, const Frame& frame);

    bool full_gain_;
    Jobs jobs_;
    double noise_percent_;
    std::uint64_t hold_frames_;

    bool started_ = false;
    bool first_hold_ = true;  ///< of the log, which no later light joins
    Frame frame_{};           ///< first of the hold
    std::uint64_t held_ = 0;
    LightValues first_{};
    LightValues mean_{};          ///< of the first hold_frames_
    LightValues lowest_{};        ///< of the first hold_frames_
    LightValues highest_{};       ///< of the first hold_frames_
    LightValues mean_of_hold_{};  ///< of all its frames
};

}  // namespace imgtune::workbench

#endif
