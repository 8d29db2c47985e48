#include "workbench/studies/visible.h"

#include <algorithm>
#include <cstring>

#include "workbench/studies/resting.h"
#include "workbench/studies/white_balance.h"

namespace imgtune::workbench {

namespace {

constexpr ChartDifference kNothing{};

}  // namespace

RealMatrix shown_matrix(const Registers& registers, const CallerSettings& caller) {
    const double unity = 1 << std::clamp(caller.frac_bits, 0, 12);
    const auto coefficients = decode(registers.ccm, caller);
    RealMatrix matrix{};
    for (std::size_t k = 0; k < matrix.size(); ++k) matrix[k] = coefficients[k] / unity;
    return matrix;
}

VisibleWatch::VisibleWatch(const Camera& camera, const VisibleOptions& options)
    : probe_(camera),
      options_(options),
      hold_frames_(frames_of_hold(options.frames_per_second)),
      light_(camera.tuning().caller, camera.jobs(), options.noise_percent, hold_frames_),
      view_(RealMatrix{}) {}

VisibleFrame VisibleWatch::next(const Frame& frame, const Camera& camera) {
    if (!camera.jobs().ccm) return {};
    bool judged = false;
    if (light_.next(frame) != LightWatch::Event::holds) {
        gains_taken_ = 0;
        mean_gains_ = {};
        rest_.reset();
    }
    if (!rest_ && !light_.is_in_doubt()) {
        const std::array<double, 3> gains = real_gains(frame.state.rAWBGain);
        ++gains_taken_;
        for (std::size_t k = 0; k < gains.size(); ++k) {
            mean_gains_[k] += (gains[k] - mean_gains_[k]) / static_cast<double>(gains_taken_);
        }
        judged = light_.held() >= hold_frames_;
        if (judged) judge_hold(camera.state());
    }

    const auto& image = camera.registers().ccm;
    const bool same_image = started_ && std::memcmp(&image, &image_, sizeof(image)) == 0;
    const bool same = same_image && same_gains(frame.state.rAWBGain, gains_);
    if (!same || judged || was_in_doubt_) {
        const auto difference = [&](const ChartView& before,
                                    const std::optional<std::array<double, 3>>& error) {
            const RealMatrix& now = view_.matrix();
            return error ? std::optional(
                               chart_difference(before, ChartView(now, *error), options_.patch))
                         : std::nullopt;
        };
        const ChartView before = view_;
        if (!same_image)
            view_ = ChartView(shown_matrix(camera.registers(), probe_.tuning().caller));
        const std::array<double, 3> gains = real_gains(frame.state.rAWBGain);
        if (started_ && !same) {
            last_.step = same_image ? kNothing : chart_difference(before, view_, options_.patch);
            last_.step_with_gains = difference(before, gain_error(gains, real_gains(gains_)));
        }
        last_.from_rest = last_.from_rest_with_gains = std::nullopt;
        if (rest_ && !light_.is_in_doubt()) {
            last_.from_rest = chart_difference(*rest_, view_, options_.patch);
            last_.from_rest_with_gains = difference(*rest_, gain_error(gains, settled_gains_));
        }
    }
    if (same) last_.step = last_.step_with_gains = kNothing;
    was_in_doubt_ = light_.is_in_doubt();
    started_ = true;
    image_ = image;
    gains_ = frame.state.rAWBGain;
    return last_;
}

void VisibleWatch::judge_hold(const CameraState& state) {
    Camera camera = probe_;
    camera.set_state(state);
    run_to_rest(camera, light_.held_light());
    rest_.emplace(shown_matrix(camera.registers(), camera.tuning().caller));
    settled_gains_ = mean_gains_;
}

}  // namespace imgtune::workbench
