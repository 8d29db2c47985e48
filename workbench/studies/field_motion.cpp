#include "workbench/studies/field_motion.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "workbench/camera/register_values.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

FieldMotions::FieldMotions(const CallerSettings& caller, Jobs jobs) : caller_(caller), jobs_(jobs) {
    for (const Job job : {Job::ccm, Job::color}) {
        for (const std::string& name : value_names(job)) {
            motions_.emplace_back();
            motions_.back().name = name;
        }
    }
    for (auto* values : {&now_, &value_, &start_, &low_, &high_}) values->resize(motions_.size());
    direction_.resize(motions_.size());
}

bool FieldMotions::next(std::uint64_t number, const Registers& registers, Phase phase) {
    const bool ccm_moved =
        jobs_.ccm && (!started_ || std::memcmp(&registers.ccm, &last_.ccm, sizeof(last_.ccm)) != 0);
    const bool color_moved =
        jobs_.color &&
        (!started_ || std::memcmp(&registers.color, &last_.color, sizeof(last_.color)) != 0);
    bool turned = false;
    if (ccm_moved) {
        last_.ccm = registers.ccm;
        read(registers, 0, kFirstColorField, now_);
        turned = note(0, kFirstColorField, number, phase);
    }
    if (color_moved) {
        last_.color = registers.color;
        read(registers, kFirstColorField, motions_.size(), now_);
        turned = note(kFirstColorField, motions_.size(), number, phase) || turned;
    }
    if (!started_) begin_hold();
    started_ = true;
    return turned;
}

void FieldMotions::begin_hold() {
    start_ = low_ = high_ = value_;
}

// Moved up: beyond the band above; moved down: below it.
void FieldMotions::end_hold(std::size_t first, std::span<const RestingBand> rest,
                            std::uint64_t change_frame) {
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const std::size_t k = first + i;
        const std::int64_t above = rest[i].high >= start_[k] ? high_[k] - rest[i].high : 0;
        const std::int64_t below = rest[i].low <= start_[k] ? rest[i].low - low_[k] : 0;
        const std::int64_t overshoot = std::max(above, below);
        if (overshoot <= motions_[k].overshoot) continue;
        motions_[k].overshoot = overshoot;
        motions_[k].overshoot_frame = change_frame;
    }
}

std::vector<std::int64_t> FieldMotions::values_of(const Registers& registers) const {
    std::vector<std::int64_t> values(motions_.size());
    if (jobs_.ccm) read(registers, 0, kFirstColorField, values);
    if (jobs_.color) read(registers, kFirstColorField, values.size(), values);
    return values;
}

void FieldMotions::read(const Registers& registers, std::size_t begin, std::size_t end,
                        std::vector<std::int64_t>& values) const {
    if (begin < kFirstColorField) {
        const auto coefficients = decode(registers.ccm, caller_);
        std::copy(coefficients.begin(), coefficients.end(), values.begin());
        return;
    }
    const auto fields = color_fields();
    for (std::size_t k = begin; k < end; ++k) {
        values[k] = fields[k - kFirstColorField].read(registers.color);
    }
}

/// Takes over the values of now_ from `begin` to `end`.
bool FieldMotions::note(std::size_t begin, std::size_t end, std::uint64_t number, Phase phase) {
    bool turned = false;
    for (std::size_t k = begin; k < end; ++k) {
        const std::int64_t step = now_[k] - value_[k];
        if (step == 0) continue;
        value_[k] = now_[k];
        low_[k] = std::min(low_[k], now_[k]);
        high_[k] = std::max(high_[k], now_[k]);
        if (phase == Phase::cold_start) continue;
        FieldMotion& motion = motions_[k];
        if (std::abs(step) > motion.largest_step) {
            motion.largest_step = std::abs(step);
            motion.step_frame = number;
        }
        const std::int8_t direction = step > 0 ? 1 : -1;
        if (direction_[k] == -direction) {
            turned = true;
            ++motion.sign_changes;
            if (phase == Phase::light_holds) ++motion.steady_sign_changes;
        }
        direction_[k] = direction;
    }
    return turned;
}

}  // namespace imgtune::workbench
