#include "workbench/studies/light_watch.h"

#include <algorithm>
#include <cmath>

namespace imgtune::workbench {

namespace {

/// A hold whose mean lies at least this far on the way to the light that ends it was a drift; a
/// steady ramp's lies half way.
constexpr double kShareOfDrift = 1.0 / 3.0;

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

bool same_kind(const Frame& a, const Frame& b) {
    return a.state.u4FlashMode == b.state.u4FlashMode &&
           a.state.u4SceneFlag == b.state.u4SceneFlag && a.capture == b.capture;
}

std::uint64_t frames_of_hold(double frames_per_second) {
    return static_cast<std::uint64_t>(std::clamp(frames_per_second / 2.0, 1.0, 1000.0));
}

LightWatch::LightWatch(const CallerSettings& caller, Jobs jobs, double noise_percent,
                       std::uint64_t hold_frames)
    : full_gain_(caller.full_gain == 1),
      jobs_(jobs),
      noise_percent_(noise_percent),
      hold_frames_(std::max<std::uint64_t>(hold_frames, 1)),
      frames_to_believe_(std::max<std::uint64_t>(hold_frames / 5, 1)) {}

LightWatch::Event LightWatch::next(const Frame& frame) {
    const LightValues values = values_of(frame);
    if (!started_) {
        started_ = true;
        frame_ = frame;
        take(values);
        return Event::begins;
    }
    if (!same_kind(frame, frame_)) return leave(values, frame, false);
    const std::size_t value = farthest(values);
    if (!is_beyond(values, value, 1.0)) {
        held_ += doubtful_ + 1;
        doubtful_ = 0;
        take(values);
        return Event::holds;
    }
    const bool above = values[value] > mean_of_hold_[value];
    const bool goes_on =
        doubtful_ > 0 && is_beyond(values, doubtful_value_, 0.5) &&
        (values[doubtful_value_] > mean_of_hold_[doubtful_value_]) == doubtful_above_;
    if (!goes_on) {
        held_ += doubtful_;
        doubtful_ = 0;
        first_doubtful_ = frame;
        mean_of_doubtful_ = {};
        doubtful_value_ = value;
        doubtful_above_ = above;
    }
    ++doubtful_;
    for (std::size_t k = 0; k < values.size(); ++k) {
        mean_of_doubtful_[k] += (values[k] - mean_of_doubtful_[k]) / static_cast<double>(doubtful_);
    }
    if (doubtful_ < frames_to_believe_) return Event::holds;
    return leave(mean_of_doubtful_, first_doubtful_, true);
}

/// The light of the hold is over; another, of which these are the first frames' values, begins.
LightWatch::Event LightWatch::leave(const LightValues& values, const Frame& frame,
                                    bool is_same_kind) {
    const bool goes_on =
        !first_hold_ && (held_ < hold_frames_ || (is_same_kind && has_drifted(values)));
    first_hold_ = false;
    frame_ = frame;
    held_ = is_same_kind ? doubtful_ - 1 : 0;
    doubtful_ = 0;
    taken_ = 0;
    take(values);
    return goes_on ? Event::moves : Event::begins;
}

/// One more frame's values of the hold.
void LightWatch::take(const LightValues& values) {
    if (++taken_ == 1) {
        first_ = mean_ = lowest_ = highest_ = mean_of_hold_ = values;
        return;
    }
    const double share = 1.0 / static_cast<double>(taken_);
    for (std::size_t k = 0; k < values.size(); ++k) {
        mean_of_hold_[k] += (values[k] - mean_of_hold_[k]) * share;
        if (taken_ <= frames_to_believe_) first_[k] = mean_of_hold_[k];
        if (held_ > hold_frames_) continue;
        mean_[k] = mean_of_hold_[k];
        lowest_[k] = std::min(lowest_[k], values[k]);
        highest_[k] = std::max(highest_[k], values[k]);
    }
}

Frame LightWatch::light_with(const LightValues& values) const {
    Frame frame = frame_;
    put_values(frame, values, full_gain_, jobs_);
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

double LightWatch::tolerance(std::size_t value, double around) const {
    if (value == kLv) return noise_percent_;  // a unit of the light value: a tenth of an EV
    return std::abs(around) * noise_percent_ / 100.0;
}

/// The value that lies farthest beyond its tolerance.
std::size_t LightWatch::farthest(const LightValues& values) const {
    std::size_t farthest = 0;
    double most = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) {
        const double beyond = std::abs(values[k] - mean_of_hold_[k]) - tolerance(k);
        if (k > 0 && beyond <= most) continue;
        most = beyond;
        farthest = k;
    }
    return farthest;
}

bool LightWatch::is_beyond(const LightValues& values, std::size_t value, double tolerances) const {
    return std::abs(values[value] - mean_of_hold_[value]) > tolerances * tolerance(value);
}

bool LightWatch::has_drifted(const LightValues& values) const {
    const std::size_t value = farthest(values);
    const double way = values[value] - first_[value];
    return way != 0.0 && (mean_of_hold_[value] - first_[value]) / way >= kShareOfDrift;
}

}  // namespace imgtune::workbench
