#include "workbench/studies/visible_summary.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "workbench/studies/resting.h"
#include "workbench/studies/white_balance.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostSpans = 1000;
constexpr double kAnyMean = std::numeric_limits<double>::infinity();
constexpr std::size_t kRingFrames = 4096;
constexpr std::uint64_t kHoldsToJudge = 4;     ///< half seconds of a light, where it holds so long
constexpr double kSlowestFlicker = 0.5;        ///< times a second
constexpr double kFastestFlicker = 15.0;       ///< likewise
constexpr double kSlack = 1.15;                ///< of a half period, which noise moves
constexpr double kLongestLightMove = 5.0;      ///< seconds in which white balance may still follow
constexpr double kLongestLightPeriod = 10.0;   ///< seconds
constexpr double kLightSwingTolerances = 1.4;  ///< that a light has to swing, its noise averaged
constexpr std::uint64_t kMostUneven = 3;  ///< times that one half period may be as long as the next
constexpr double kSameTurn = 0.4;  ///< of a swing: how far apart the turns on one side may lie
constexpr double kLeastLightTolerance = 1.0;  ///< percent or tenths of an EV, with noise 0

std::uint64_t frames_of(double seconds, double frames_per_second) {
    return static_cast<std::uint64_t>(std::clamp(std::ceil(seconds * frames_per_second), 1.0, 1e7));
}

/// In units of what a light must swing to count.
double light_distance(const LightWatch& light, const LightValues& a, const LightValues& b) {
    double most = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (a[k] == b[k]) continue;
        const double least =
            k == kLv ? kLeastLightTolerance : std::abs(a[k]) * kLeastLightTolerance / 100.0;
        const double scale = kLightSwingTolerances * std::max(light.tolerance(k, a[k]), least);
        most = std::max(most, scale > 0.0 ? std::abs(a[k] - b[k]) / scale : 2.0);
    }
    return most;
}

/// Another turn of the chain; false when the chain was over, and this turn begins another.
bool extend(SwingChain& chain, std::uint64_t frame, std::uint64_t patience) {
    if (chain.turns > 0 && frame - chain.last <= patience) {
        ++chain.turns;
        chain.last = frame;
        return true;
    }
    return false;
}

}  // namespace

void keep_larger(SeenDifference& largest, const SeenDifference& seen) {
    if (seen.frame == 0) return;
    if (largest.frame == 0 || seen.size.worst > largest.size.worst) largest = seen;
}

VisibleStudy::VisibleStudy(const Camera& camera, const VisibleLimits& limits,
                           double frames_per_second)
    : probe_(camera),
      frames_per_second_(frames_per_second),
      hold_frames_(frames_of_hold(frames_per_second)),
      turns_(frames_of(kSlack / kSlowestFlicker / 2.0, frames_per_second)) {
    record_.limits = limits;
    record_.is_measured = camera.jobs().ccm;
    if (record_.is_measured) ring_.resize(kRingFrames);
}

void VisibleStudy::add(std::uint64_t number, const Frame& frame, const Camera& camera,
                       const LightWatch& light, LightWatch::Event event, bool is_cold_start) {
    if (!record_.is_measured) return;
    const Shown* before = view_ ? &ring_[number_ % kRingFrames] : nullptr;
    number_ = number;
    Shown& shown = ring_[number % kRingFrames];
    const Shown last = before != nullptr ? *before : Shown{};
    shown = {number, camera.registers().ccm, frame.state.rAWBGain, light.values_of(frame)};
    const bool same_image =
        before != nullptr && std::memcmp(&shown.image, &last.image, sizeof(shown.image)) == 0;
    const std::optional<ChartView> earlier = view_;
    if (!same_image) view_ = view_of(shown);

    if (frame_ && !same_kind(frame, *frame_)) ++kinds_;
    frame_ = frame;
    if (event != LightWatch::Event::holds) {
        light_moved_ = number;
        light_stood_ = number - light.held();
        is_judged_ = false;
        held_.reset();
    }
    const bool in_doubt = light.is_in_doubt();
    if (!in_doubt && !is_judged_ && light.held() >= hold_frames_) {
        // The later, the nearer is a light that creeps up to where it will stay.
        held_ = Held{number, camera.state(), light};
        if (light.held() >= kHoldsToJudge * hold_frames_) judge();
    } else if (!in_doubt && is_judged_ && !has_settled() &&
               (!same_image || matrix_way_.last_beyond + 1 == number || gains_way_.is_measured)) {
        compare_with_rest(shown, *view_);
    }

    if (before == nullptr || is_cold_start) return;
    ChartDifference step;
    if (!same_image) {
        step = step_from(*earlier, light, event);
        if (const auto turn =
                turns_.next(number, *view_, [&](const auto& a, const auto& b, double least) {
                    const VisibleLimits& limits = record_.limits;
                    const auto d =
                        chart_difference_from(a, b, limits.patch, least * limits.flicker_mean,
                                              least * limits.flicker_patch);
                    return d ? std::max(d->mean / limits.flicker_mean,
                                        d->worst / limits.flicker_patch)
                             : 0.0;
                })) {
            note_turn(*turn);
        }
    }
    if (!same_image || !doubtful_steps_.empty()) note_step(number, step, light, event);
    if (in_doubt || is_change_on() || same_gains(shown.gains, last.gains)) return;
    const auto error = gain_error(real_gains(shown.gains), real_gains(last.gains));
    if (!error) return;
    const double least = record_.gain_step.frame == 0 ? 0.0 : record_.gain_step.size.worst;
    const auto step_with_gains = chart_difference_from(*earlier, ChartView(view_->matrix(), *error),
                                                       record_.limits.patch, kAnyMean, least);
    if (step_with_gains) keep_larger(record_.gain_step, {*step_with_gains, number});
}

/// From the view before to this one. Nothing where that surely is no larger than what note_step()
/// would compare it with.
ChartDifference VisibleStudy::step_from(const ChartView& earlier, const LightWatch& light,
                                        LightWatch::Event event) const {
    const bool changing = event != LightWatch::Event::holds || is_change_on();
    const double steady = record_.steady_step.size.worst;
    const double in_change = change_.step.size.worst;
    const double least = light.is_in_doubt() ? std::min(steady, in_change)
                         : changing          ? in_change
                                             : steady;
    return chart_difference_from(earlier, *view_, record_.limits.patch, kAnyMean, least)
        .value_or(ChartDifference{});
}

/// Steps of frames in doubt wait until it is known whether the light changed there.
void VisibleStudy::note_step(std::uint64_t number, const ChartDifference& step,
                             const LightWatch& light, LightWatch::Event event) {
    doubtful_steps_.push_back({step, number});
    if (light.is_in_doubt()) return;
    const bool changing = event != LightWatch::Event::holds || is_change_on();
    for (const SeenDifference& seen : doubtful_steps_) {
        keep_larger(changing ? record_.changing_step : record_.steady_step, seen);
        if (changing) keep_larger(change_.step, seen);
    }
    doubtful_steps_.clear();
}

void VisibleStudy::note_turn(const Turn<ChartView>& turn) {
    const ChartDifference size = difference(turn.from, turn.at);
    const std::uint64_t patience = frames_of(kSlack / kSlowestFlicker / 2.0, frames_per_second_);
    if (!extend(chain_, turn.frame, patience)) {
        end_flicker();
        chain_ = {turn.frame, turn.frame, 1};
        chain_mean_ = chain_worst_ = chain_largest_ = 0.0;
        return;
    }
    const double share = 1.0 / static_cast<double>(chain_.turns - 1);
    chain_mean_ += (size.mean - chain_mean_) * share;
    chain_worst_ += (size.worst - chain_worst_) * share;
    if (size.worst <= chain_largest_) return;
    chain_largest_ = size.worst;
    chain_patch_ = size.worst_patch;
}

void VisibleStudy::end_flicker() {
    const double rate = chain_.per_second(frames_per_second_);
    if (rate <= 0.0 || rate > kFastestFlicker * kSlack) return;
    ++record_.flicker_count;
    record_.flicker_frames += chain_.last - chain_.first + 1;
    const VisibleFlicker flicker{{chain_.first, chain_.last},
                                 rate,
                                 chain_.turns - 1,
                                 chain_mean_,
                                 chain_worst_,
                                 chain_patch_,
                                 light_moved_ >= chain_.first};
    auto& strongest = record_.strongest_flicker;
    if (!strongest || flicker.worst > strongest->worst) strongest = flicker;
    if (record_.flicker.size() < kMostSpans) record_.flicker.push_back(flicker);
}

/// Works out where the camera rests in the light of the hold's last half second, and looks back.
void VisibleStudy::judge() {
    is_judged_ = true;
    const std::uint64_t end = held_->number;
    const std::uint64_t from = std::max(light_stood_, end - hold_frames_);
    std::array<double, 3> mean{};
    LightValues light{};
    for (std::uint64_t n = from; n <= end; ++n) {
        const double share = 1.0 / static_cast<double>(n - from + 1);
        const Shown& shown = ring_[n % kRingFrames];
        const auto gains = real_gains(shown.gains);
        for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += (gains[k] - mean[k]) * share;
        for (std::size_t k = 0; k < light.size(); ++k) {
            light[k] += (shown.light[k] - light[k]) * share;
        }
    }
    const Frame frame = held_->light.light_with(light);
    Camera resting = probe_;
    resting.set_state(held_->state);
    run_to_rest(resting, frame);
    const CallerSettings& caller = probe_.tuning().caller;
    rest_ = ChartView(shown_matrix(resting.registers(), caller));
    const ChartView target(shown_matrix(target_registers(probe_, frame), caller));
    change_.stall = {difference(target, *rest_), end};
    settled_gains_ = mean;
    matrix_way_ = {true, false, 0};
    const bool was_quick =
        light_stood_ - first_ <= frames_of(kLongestLightMove, frames_per_second_);
    gains_way_ = {was_quick && gain_error(mean, mean).has_value(), false, 0};
    const std::uint64_t oldest = number_ >= kRingFrames ? number_ - kRingFrames + 1 : 1;
    if (first_ < oldest) matrix_way_ = {true, true, oldest - 1};
    if (before_) {
        there_ = patch_differences(*before_, *rest_);
        back_ = patch_differences(*rest_, *before_);
    }
    overshoot_ = {};
    farthest_ = 0.0F;
    farthest_frame_ = first_;
    // Backwards: the last frame beyond is what counts.
    for (std::uint64_t n = end; n >= std::max(first_, oldest); --n) {
        const Shown& shown = ring_[n % kRingFrames];
        compare_with_rest(shown, view_of(shown));
    }
    last_compared_ = end;
}

/// After all frames that have been compared so far, or before them.
void VisibleStudy::compare_with_rest(const Shown& shown, const ChartView& view) {
    const double settled = record_.limits.settled;
    const auto note = [&](Way& way) {
        way.was_beyond = true;
        way.last_beyond = std::max(way.last_beyond, shown.number);
    };
    last_compared_ = shown.number;
    const ChartComparison with_rest(*rest_, view);
    PatchDifferences from_rest = with_rest.bounds();
    const auto may_overshoot = [&](const PatchDifferences& from, const PatchDifferences& way) {
        bool may = false;
        for (std::size_t i = 0; i < kPatchCount; ++i) may |= from[i] - way[i] > overshoot_[i];
        return may;
    };
    const bool may_go_back = before_ && may_overshoot(from_rest, back_);
    const bool may_be_last = shown.number > matrix_way_.last_beyond &&
                             in_short(from_rest, record_.limits.patch).worst >= settled;
    if (may_go_back || may_be_last) {
        from_rest = with_rest.differences();
        if (in_short(from_rest, record_.limits.patch).worst >= settled) note(matrix_way_);
    }
    if (may_go_back) note_overshoot(shown.number, from_rest, back_);
    if (before_) {
        const ChartComparison with_before(*before_, view);
        if (may_overshoot(with_before.bounds(), there_))
            note_overshoot(shown.number, with_before.differences(), there_);
    }

    if (!gains_way_.is_measured || shown.number < gains_way_.last_beyond) return;
    const auto error = gain_error(recent_gains(shown.number), *settled_gains_);
    if (!error) {
        gains_way_.is_measured = false;
        return;
    }
    const auto off = chart_difference_from(*rest_, ChartView(view.matrix(), *error),
                                           record_.limits.patch, kAnyMean, settled);
    if (off && off->worst >= settled) note(gains_way_);
}

/// The picture is so far from one end of the change, and the ends are a way apart.
void VisibleStudy::note_overshoot(std::uint64_t number, const PatchDifferences& from,
                                  const PatchDifferences& way) {
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        const float beyond = from[i] - way[i];
        overshoot_[i] = std::max(overshoot_[i], beyond);
        const bool is_earlier = number < farthest_frame_;
        if (beyond < farthest_ || (beyond == farthest_ && !is_earlier)) continue;
        farthest_ = beyond;
        farthest_frame_ = number;
    }
}

/// The mean gains of a tenth of a second up to this frame, as the eye takes in what jitters; from
/// the change's first frame on.
std::array<double, 3> VisibleStudy::recent_gains(std::uint64_t number) const {
    const std::uint64_t wanted = std::max<std::uint64_t>(hold_frames_ / 5, 1);
    const std::uint64_t from = std::max(first_, number >= wanted ? number + 1 - wanted : 1);
    std::array<double, 3> mean{};
    for (std::uint64_t n = from; n <= number; ++n) {
        const auto gains = real_gains(ring_[n % kRingFrames].gains);
        for (std::size_t k = 0; k < mean.size(); ++k) {
            mean[k] += gains[k] / static_cast<double>(number - from + 1);
        }
    }
    return mean;
}

/// What comes half a second later is the light's noise.
bool VisibleStudy::has_settled() const {
    const std::uint64_t last =
        std::max({matrix_way_.last_beyond, gains_way_.last_beyond, light_stood_});
    return is_judged_ && number_ - last > hold_frames_;
}

bool VisibleStudy::is_change_on() const {
    const std::uint64_t last = std::max(matrix_way_.last_beyond, light_stood_);
    const bool settled = is_judged_ && number_ - last > hold_frames_;
    return !settled && number_ - light_stood_ <= kHoldsToJudge * hold_frames_;
}

VisibleWay VisibleStudy::verdict(const Way& way) const {
    if (!is_judged_ || !way.is_measured) return {};
    if (!way.was_beyond) return {VisibleSettling::unmoved, std::nullopt};
    if (!has_settled() && way.last_beyond == last_compared_) {
        return {VisibleSettling::moving, std::nullopt};
    }
    return {VisibleSettling::settled, way.last_beyond + 1 - first_};
}

VisibleChange VisibleStudy::close_change() {
    if (!is_judged_ && held_) judge();
    change_.matrix = verdict(matrix_way_);
    change_.with_gains = verdict(gains_way_);
    if (is_judged_ && before_) {
        change_.size = in_short(there_, record_.limits.patch);
        // A flash within the change is a light of its own, which the picture may go out to; a
        // picture that has not come to rest goes beyond no rest.
        if (kinds_ < 2 && change_.matrix.state != VisibleSettling::moving)
            change_.overshoot = {in_short(overshoot_, record_.limits.patch), farthest_frame_};
    }
    return std::exchange(change_, {});
}

void VisibleStudy::begin_change(std::uint64_t first) {
    first_ = first;
    change_ = {};
    is_judged_ = false;
    held_.reset();
    matrix_way_ = gains_way_ = {};
    kinds_ = 0;
    before_.reset();
    if (!record_.is_measured || first < 2) return;
    const Shown& shown = ring_[(first - 1) % kRingFrames];
    if (shown.number == first - 1) before_ = view_of(shown);
}

VisibleRecord VisibleStudy::finish() {
    end_flicker();
    // Whether the light changed in the last frames is not known; that the picture stepped is.
    for (const SeenDifference& seen : doubtful_steps_) keep_larger(record_.changing_step, seen);
    doubtful_steps_.clear();
    return std::move(record_);
}

ChartDifference VisibleStudy::difference(const ChartView& before, const ChartView& now) const {
    return chart_difference(before, now, record_.limits.patch);
}

ChartView VisibleStudy::view_of(const Shown& shown) const {
    Registers registers;
    registers.ccm = shown.image;
    return ChartView(shown_matrix(registers, probe_.tuning().caller));
}

LightSwings::LightSwings(double frames_per_second)
    : frames_per_second_(frames_per_second),
      patience_(frames_of(kLongestLightPeriod / 2.0, frames_per_second)),
      turns_(patience_) {}

void LightSwings::add(std::uint64_t number, const Frame& frame, const LightWatch& light) {
    recent_[seen_ % recent_.size()] = light.values_of(frame);
    if (++seen_ < recent_.size()) return;
    LightValues mean{};
    for (const LightValues& values : recent_) {
        for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += values[k] / 3.0;
    }
    const auto turn =
        turns_.next(number, mean, [&](const LightValues& a, const LightValues& b, double) {
            return light_distance(light, a, b);
        });
    if (!turn) return;
    const bool extended = goes_on(*turn, light) && extend(chain_, turn->frame, patience_);
    if (!extended) {
        end();
        chain_ = {turn->frame, turn->frame, 1};
    }
    interval_ = turn->frame - last_frame_;
    before_last_ = std::exchange(last_, turn->at);
    last_frame_ = turn->frame;
}

/// The light comes back to where it was at the turn before the last one, and as fast as it went.
bool LightSwings::goes_on(const Turn<LightValues>& turn, const LightWatch& light) const {
    if (chain_.turns < 2) return true;
    const std::uint64_t interval = turn.frame - last_frame_;
    if (interval > kMostUneven * interval_ || interval_ > kMostUneven * interval) return false;
    return light_distance(light, before_last_, turn.at) <=
           kSameTurn * light_distance(light, last_, turn.at);
}

LightSwing LightSwings::at_hand() const {
    return {{chain_.first, chain_.last}, chain_.per_second(frames_per_second_)};
}

void LightSwings::end() {
    if (!chain_.recurs()) return;
    ++count_;
    if (spans_.size() < kMostSpans) spans_.push_back(at_hand());
    chain_ = {};
}

/// From a period before the first turn that surely was one to half a period after the last one.
bool LightSwings::cover(const FrameSpan& frames) const {
    const auto covers = [&](const LightSwing& swing) {
        if (swing.per_second <= 0.0) return false;
        const std::uint64_t margin = frames_of(0.5 / swing.per_second, frames_per_second_) + 3;
        return frames.first + 2 * margin >= swing.frames.first &&
               frames.last <= swing.frames.last + margin;
    };
    return covers(at_hand()) || std::any_of(spans_.begin(), spans_.end(), covers);
}

}  // namespace imgtune::workbench
