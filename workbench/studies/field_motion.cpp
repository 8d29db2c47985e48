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
    now_.resize(motions_.size());
    value_.resize(motions_.size());
    direction_.resize(motions_.size());
    const auto is_of_map = [](const FieldMotion& m) { return m.name.starts_with("ColorMap."); };
    const auto map = std::find_if(motions_.begin(), motions_.end(), is_of_map);
    first_map_field_ = static_cast<std::size_t>(map - motions_.begin());
}

bool FieldMotions::next(std::uint64_t number, const Registers& registers, Phase phase,
                        StepCause color_cause) {
    const auto differs = [](const auto& a, const auto& b) {
        return std::memcmp(&a, &b, sizeof(a)) != 0;
    };
    moved_ = {jobs_.ccm && (!started_ || differs(registers.ccm, last_.ccm)),
              jobs_.color && (!started_ || differs(registers.color, last_.color))};
    bool turned = false;
    if (moved_[kCcmJob]) {
        last_.ccm = registers.ccm;
        read(registers, 0, kFirstColorField, now_);
        turned = note(0, kFirstColorField, number, phase, StepCause::smoothing);
    }
    if (moved_[kColorJob]) {
        last_.color = registers.color;
        read(registers, kFirstColorField, motions_.size(), now_);
        const StepCause map_cause =
            color_cause == StepCause::slot ? StepCause::slot : StepCause::image;
        turned = note(kFirstColorField, first_map_field_, number, phase, color_cause) || turned;
        turned = note(first_map_field_, motions_.size(), number, phase, map_cause) || turned;
    }
    started_ = true;
    return turned;
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
bool FieldMotions::note(std::size_t begin, std::size_t end, std::uint64_t number, Phase phase,
                        StepCause cause) {
    bool turned = false;
    for (std::size_t k = begin; k < end; ++k) {
        const std::int64_t step = now_[k] - value_[k];
        if (step == 0) continue;
        value_[k] = now_[k];
        if (phase == Phase::cold_start) continue;
        FieldMotion& motion = motions_[k];
        if (std::abs(step) > motion.largest_step) {
            motion.largest_step = std::abs(step);
            motion.step_frame = number;
            motion.step_cause = cause;
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
