#include "workbench/studies/light_watch.h"

#include <algorithm>
#include <cmath>

namespace imgtune::workbench {

namespace {

/// A hold whose mean lies at least this far on the way to the light that ends it was a drift; a
/// steady ramp's lies half way.
constexpr double kShareOfDrift = 1.0 / 3.0;

bool same_kind(const Frame& a, const Frame& b) {
    return a.state.u4FlashMode == b.state.u4FlashMode &&
           a.state.u4SceneFlag == b.state.u4SceneFlag && a.capture == b.capture;
}

void put_values(Frame& frame, const LightValues& values, bool full_gain, Jobs jobs) {
    const auto word = [](double value) {
        return static_cast<std::uint32_t>(std::llround(std::clamp(value, 0.0, 4294967295.0)));
    };
    const auto integer = [](double value) {
        return static_cast<std::int32_t>(
            std::llround(std::clamp(value, -2147483648.0, 2147483647.0)));
    };
    frame.state.u4RealLV = word(values[kLv]);
    if (jobs.color) frame.state.u4CCT = word(values[1]);
    if (!jobs.ccm) return;
    AWB_GAIN_T& gain = full_gain ? frame.state.rAWBFullGain : frame.state.rAWBGain;
    gain = {integer(values[2]), integer(values[3]), integer(values[4])};
}

}  // namespace

std::uint64_t frames_of_hold(double frames_per_second) {
    return static_cast<std::uint64_t>(std::clamp(frames_per_second / 2.0, 1.0, 1000.0));
}

LightWatch::LightWatch(const CallerSettings& caller, Jobs jobs, double noise_percent,
                       std::uint64_t hold_frames)
    : full_gain_(caller.full_gain == 1),
      jobs_(jobs),
      noise_percent_(noise_percent),
      hold_frames_(std::max<std::uint64_t>(hold_frames, 1)) {}

LightWatch::Event LightWatch::next(const Frame& frame) {
    const LightValues values = values_of(frame);
    if (!started_) {
        started_ = true;
        hold_anew(values, frame);
        return Event::begins;
    }
    if (!holds(values, frame)) {
        const bool goes_on = !first_hold_ && (held_ < hold_frames_ || has_drifted(values, frame));
        first_hold_ = false;
        hold_anew(values, frame);
        return goes_on ? Event::moves : Event::begins;
    }
    ++held_;
    const double share = 1.0 / static_cast<double>(held_ + 1);
    for (std::size_t k = 0; k < values.size(); ++k) {
        mean_of_hold_[k] += (values[k] - mean_of_hold_[k]) * share;
        if (held_ > hold_frames_) continue;
        mean_[k] = mean_of_hold_[k];
        lowest_[k] = std::min(lowest_[k], values[k]);
        highest_[k] = std::max(highest_[k], values[k]);
    }
    return Event::holds;
}

Frame LightWatch::held_light() const {
    Frame frame = frame_;
    put_values(frame, mean_, full_gain_, jobs_);
    return frame;
}

std::optional<Frame> LightWatch::noisy_light(std::size_t value, bool upper) const {
    const double seen = upper ? highest_[value] - mean_[value] : mean_[value] - lowest_[value];
    const double moved = std::min(2.0 * seen, tolerance(value));
    if (moved == 0.0) return std::nullopt;
    LightValues values = mean_;
    values[value] += upper ? moved : -moved;
    Frame frame = frame_;
    put_values(frame, values, full_gain_, jobs_);
    return frame;
}

LightValues LightWatch::values_of(const Frame& frame) const {
    const auto& state = frame.state;
    const AWB_GAIN_T& gain = full_gain_ ? state.rAWBFullGain : state.rAWBGain;
    LightValues values{static_cast<double>(state.u4RealLV)};
    if (jobs_.color) values[1] = state.u4CCT;
    if (jobs_.ccm) {
        values[2] = gain.i4R;
        values[3] = gain.i4G;
        values[4] = gain.i4B;
    }
    return values;
}

/// How far a value may lie from the light held.
double LightWatch::tolerance(std::size_t value) const {
    if (value == kLv) return noise_percent_;  // a unit of the light value: a tenth of an EV
    return std::abs(mean_[value]) * noise_percent_ / 100.0;
}

bool LightWatch::holds(const LightValues& values, const Frame& frame) const {
    if (!same_kind(frame, frame_)) return false;
    for (std::size_t k = 0; k < values.size(); ++k) {
        if (std::abs(values[k] - mean_[k]) > tolerance(k)) return false;
    }
    return true;
}

bool LightWatch::has_drifted(const LightValues& values, const Frame& frame) const {
    if (!same_kind(frame, frame_)) return false;
    std::size_t farthest = 0;
    double most = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) {
        const double beyond = std::abs(values[k] - mean_[k]) - tolerance(k);
        if (beyond <= most) continue;
        most = beyond;
        farthest = k;
    }
    const double way = values[farthest] - first_[farthest];
    return way != 0.0 && (mean_of_hold_[farthest] - first_[farthest]) / way >= kShareOfDrift;
}

void LightWatch::hold_anew(const LightValues& values, const Frame& frame) {
    frame_ = frame;
    held_ = 0;
    first_ = mean_ = lowest_ = highest_ = mean_of_hold_ = values;
}

}  // namespace imgtune::workbench
