#include "workbench/studies/settling.h"

#include <algorithm>
#include <cstdlib>

#include "workbench/studies/resting.h"
#include "workbench/tuning/stall.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFirstColorField = FieldMotions::kFirstColorField;

void widen(RestingBand& band, std::int64_t by) {
    band.low -= by;
    band.high += by;
}

}  // namespace

HoldJudge::HoldJudge(const Camera& camera, const FieldMotions& motions,
                     std::uint64_t frames_at_rest)
    : probe_(camera),
      motions_(motions),
      frames_at_rest_(frames_at_rest),
      stall_(worst_stall(camera.tuning().caller.weights)),
      bands_(motions.motions().size()) {}

void HoldJudge::begin(const CameraState& state, std::uint64_t late) {
    start_ = state;
    waiting_.assign(1, motions_.values());
    judged_ = false;
    compared_ = late;
    jobs_ = {};
}

void HoldJudge::next() {
    if (judged_) {
        compare(motions_.values());
    } else {
        waiting_.push_back(motions_.values());
    }
}

void HoldJudge::judge_by(const LightWatch& watch) {
    const Frame light = watch.held_light();
    target_ = target_of(light);
    Camera camera = probe_;
    camera.set_state(start_);
    const Rest rest = run_to_rest(camera, light);
    jobs_[kCcmJob].still = rest.ccm.still;
    jobs_[kColorJob].still = rest.color.still;
    resting_ = motions_.values_of(camera.registers());
    for (std::size_t k = 0; k < bands_.size(); ++k) {
        bands_[k] = {std::min(target_[k], resting_[k]), std::max(target_[k], resting_[k])};
    }
    widen_by_noise(watch);
    judged_ = true;
    for (const auto& values : waiting_) compare(values);
    waiting_.clear();
}

/// By the sum, over the values of the light, of what each one's noise does to a field's target, and
/// by the stall of the average, which a diagonal coefficient has twice.
void HoldJudge::widen_by_noise(const LightWatch& watch) {
    bool noise = false;
    for (std::size_t value = 0; value < LightValues{}.size(); ++value) {
        std::vector<std::int64_t> farthest(bands_.size());
        for (const bool upper : {false, true}) {
            const std::optional<Frame> noisy = watch.noisy_light(value, upper);
            if (!noisy) continue;
            noise = true;
            const auto moved = target_of(*noisy);
            for (std::size_t k = 0; k < moved.size(); ++k) {
                farthest[k] = std::max<std::int64_t>(farthest[k], std::abs(moved[k] - target_[k]));
            }
        }
        for (std::size_t k = 0; k < bands_.size(); ++k) widen(bands_[k], farthest[k]);
    }
    for (std::size_t k = 0; noise && k < kFirstColorField; ++k) {
        widen(bands_[k], k % 4 == 0 ? 2 * stall_ : stall_);
    }
}

std::vector<std::int64_t> HoldJudge::target_of(const Frame& frame) const {
    return motions_.values_of(target_registers(probe_, frame));
}

void HoldJudge::compare(const std::vector<std::int64_t>& values) {
    const auto is_outside = [&](std::size_t k) {
        return values[k] < bands_[k].low || values[k] > bands_[k].high;
    };
    for (std::size_t job = 0; job < jobs_.size(); ++job) {
        std::optional<std::uint64_t>& since = jobs_[job].rests_since;
        if (since && compared_ - *since >= frames_at_rest_) continue;
        bool outside = false;
        const std::size_t end = job == kCcmJob ? kFirstColorField : values.size();
        for (std::size_t k = job == kCcmJob ? 0 : kFirstColorField; k < end && !outside; ++k) {
            outside = is_outside(k);
        }
        if (outside) {
            since.reset();
        } else if (!since) {
            since = compared_;
        }
    }
    ++compared_;
}

std::span<const RestingBand> HoldJudge::bands(std::size_t job) const {
    const std::span<const RestingBand> all(bands_);
    return job == kCcmJob ? all.first(kFirstColorField) : all.subspan(kFirstColorField);
}

std::array<JobSettling, 2> HoldJudge::verdicts() const {
    std::array<JobSettling, 2> verdicts;
    for (std::size_t job = 0; job < verdicts.size(); ++job) {
        if (!runs(probe_.jobs(), job)) continue;
        JobSettling& verdict = verdicts[job];
        if (!judged_) {
            verdict.state = Settling::not_held;
            continue;
        }
        if (!jobs_[job].still) {
            verdict.state = Settling::never_rests;
        } else {
            verdict.state = jobs_[job].rests_since ? Settling::settled : Settling::moving;
            verdict.frames = jobs_[job].rests_since;
        }
        const std::size_t begin = job == kCcmJob ? 0 : kFirstColorField;
        const std::size_t end = job == kCcmJob ? kFirstColorField : bands_.size();
        std::int64_t farthest = 0;
        for (std::size_t k = begin; k < end; ++k) {
            const std::int64_t stall = std::abs(target_[k] - resting_[k]);
            if (stall <= farthest) continue;
            farthest = stall;
            verdict.stall_field = motions_.motions()[k].name;
            verdict.stall_target = target_[k];
            verdict.stall_resting = resting_[k];
        }
    }
    return verdicts;
}

}  // namespace imgtune::workbench
