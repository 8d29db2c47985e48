#include "workbench/judging/smoothing.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <set>
#include <utility>

#include "workbench/judging/log_measures.h"
#include "workbench/tuning/edit_text.h"

namespace imgtune::workbench {

namespace {

/// A step of this size moves every field to its target in one frame.
constexpr std::uint32_t kAtOnce = 1U << 20U;

constexpr std::uint32_t kStepSizes[] = {
    1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,  12,  13,  14,  15,  16,  18,  20,   22,
    24, 28, 32, 36, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 256, 384, 512, 1024, 2048};

void take_most(std::optional<double>& into, const std::optional<double>& other) {
    if (other && (!into || *other > *into)) into = other;
}

std::optional<double> measured_value(const Measures& measures, Measured measured) {
    const auto& measure = measures[static_cast<std::size_t>(measured)];
    return measure ? std::optional(measure->value) : std::nullopt;
}

SummaryRecord run_log(const Tuning& tuning, Jobs jobs, std::span<const Frame> log,
                      const SummaryOptions& options) {
    LogMeasures measures(tuning, jobs, options);
    for (const Frame& frame : log) measures.add(frame);
    return measures.finish();
}

std::uint32_t& speed(ISP_NVRAM_PCA_PARAM_T& record, ColorStep step) {
    switch (step) {
        case ColorStep::luma:
            return record.lum_speed;
        case ColorStep::hue:
            return record.hue_speed;
        case ColorStep::saturation:
            break;
    }
    return record.sat_speed;
}

bool keeps_rest_and_flicker(const WeightsTried& tried, const SmoothWish& wish) {
    const Reached& reached = tried.reached;
    return reached.at_rest.value_or(0.0) <= wish.at_rest &&
           reached.flicker.value_or(0.0) <= wish.flicker;
}

}  // namespace

std::vector<RingWeights> ring_weights() {
    std::set<RingWeights> distinct;
    for (std::uint32_t newest = 1; newest <= kMostWeight; ++newest) {
        for (std::uint32_t first = 0; first <= kMostWeight; ++first) {
            for (std::uint32_t second = 0; second <= kMostWeight; ++second) {
                const std::uint32_t common = std::gcd(std::gcd(newest, first), second);
                distinct.insert({newest / common, first / common, second / common});
            }
        }
    }
    return {distinct.begin(), distinct.end()};
}

const char* field_of(ColorStep step) {
    constexpr const char* kFields[kColorSteps] = {"lum_speed", "hue_speed", "sat_speed"};
    return kFields[static_cast<std::size_t>(step)];
}

std::span<const std::uint32_t> color_step_sizes() {
    return kStepSizes;
}

void Reached::take(const Reached& other) {
    take_most(settle, other.settle);
    take_most(step, other.step);
    take_most(at_rest, other.at_rest);
    take_most(flicker, other.flicker);
}

const char* binding_name(Binding binding) {
    switch (binding) {
        case Binding::settle:
            return "settling";
        case Binding::step:
            return "the step";
        case Binding::at_rest:
            return "the error at rest";
        case Binding::flicker:
            return "flicker";
        case Binding::none:
            break;
    }
    return "nothing";
}

Strain strain_under(const Reached& reached, const SmoothWish& wish) {
    Strain strain;
    const auto add = [&](Binding binding, const std::optional<double>& value, double limit) {
        const double most = std::numeric_limits<double>::max();
        // A limit of 0 is kept by 0 alone; what is beyond it counts as any other excess.
        const double share = !value          ? 0.0
                             : limit > 0.0   ? *value / limit
                             : *value <= 0.0 ? 0.0
                                             : std::min(1.0 + *value, most);
        if (share > strain.most) strain = {share, binding};
    };
    add(Binding::settle, reached.settle, wish.settle);
    add(Binding::step, reached.step, wish.step);
    add(Binding::at_rest, reached.at_rest, wish.at_rest);
    add(Binding::flicker, reached.flicker, wish.flicker);
    return strain;
}

Reached reached_by(const Tuning& tuning, const RingWeights& weights, std::span<const Frame> log,
                   const SummaryOptions& options) {
    Tuning changed = tuning;
    changed.caller.weights = weights;
    const Measures measures = measures_of(run_log(changed, {true, false}, log, options));
    Reached reached;
    reached.settle = measured_value(measures, Measured::settling_frames);
    reached.step = measured_value(measures, Measured::visible_step);
    reached.at_rest = measured_value(measures, Measured::error_at_rest);
    reached.flicker = measured_value(measures, Measured::flicker_strength);
    return reached;
}

void StepReached::take(const StepReached& other) {
    take_most(settle, other.settle);
    never_rests = never_rests || other.never_rests;
}

StepReached reached_by(const Tuning& tuning, ColorStep step, std::uint32_t size,
                       std::span<const Frame> log, const SummaryOptions& options) {
    Tuning changed = tuning;
    for (const std::size_t slot : kSmoothedSlots) {
        for (const ColorStep each : {ColorStep::luma, ColorStep::hue, ColorStep::saturation})
            speed(changed.pca[slot], each) = each == step ? size : kAtOnce;
    }
    const SummaryRecord record = run_log(changed, {false, true}, log, options);
    const auto settling = register_settling(record, Job::color);
    return {settling ? std::optional(settling->value) : std::nullopt,
            record.settling[static_cast<std::size_t>(Job::color)].never_rests > 0};
}

void choose_weights(std::vector<WeightsTried> tried, Smoothing& answer) {
    answer.tried = tried.size();
    if (tried.empty()) return;
    for (WeightsTried& each : tried) each.strain = strain_under(each.reached, answer.wish);
    const auto rank = [](const WeightsTried& each) {
        return std::pair(each.reached.step.value_or(0.0), each.reached.settle.value_or(0.0));
    };
    const auto better = [&](const WeightsTried& a, const WeightsTried& b) {
        const bool a_meets = a.strain.most <= 1.0;
        const bool b_meets = b.strain.most <= 1.0;
        if (a_meets != b_meets) return a_meets;
        if (!a_meets && a.strain.most != b.strain.most) return a.strain.most < b.strain.most;
        return rank(a) < rank(b);
    };
    answer.weights = *std::min_element(tried.begin(), tried.end(), better);
    answer.met = answer.weights->strain.most <= 1.0;

    std::vector<WeightsTried> fit;
    std::copy_if(
        tried.begin(), tried.end(), std::back_inserter(fit),
        [&](const WeightsTried& each) { return keeps_rest_and_flicker(each, answer.wish); });
    std::stable_sort(fit.begin(), fit.end(), [](const WeightsTried& a, const WeightsTried& b) {
        return std::pair(a.reached.settle.value_or(0.0), a.reached.step.value_or(0.0)) <
               std::pair(b.reached.settle.value_or(0.0), b.reached.step.value_or(0.0));
    });
    answer.front.clear();
    double least = std::numeric_limits<double>::max();
    for (const WeightsTried& each : fit) {
        if (each.reached.step.value_or(0.0) >= least) continue;
        least = each.reached.step.value_or(0.0);
        answer.front.push_back(each);
    }
}

Tuning with_smoothing(const Tuning& tuning, const Smoothing& chosen) {
    Tuning changed = tuning;
    if (chosen.weights) changed.caller.weights = chosen.weights->weights;
    for (std::size_t i = 0; i < kColorSteps; ++i) {
        if (!chosen.steps[i]) continue;
        for (const std::size_t slot : kSmoothedSlots)
            speed(changed.pca[slot], static_cast<ColorStep>(i)) = chosen.steps[i]->size;
    }
    return changed;
}

std::optional<std::string> text_with_smoothing(const std::string& yaml, const Tuning& tuning,
                                               const Smoothing& chosen) {
    std::vector<TextEdit> edits;
    if (chosen.weights) {
        const RingWeights& weights = chosen.weights->weights;
        edits.push_back({{"caller", "weights"},
                         fmt::format("[{}, {}, {}]", weights[0], weights[1], weights[2])});
    }
    for (std::size_t i = 0; i < kColorSteps; ++i) {
        if (!chosen.steps[i]) continue;
        for (const std::size_t slot : kSmoothedSlots) {
            edits.push_back(
                {{"color", "tuning", kSlotNames[slot], field_of(static_cast<ColorStep>(i))},
                 std::to_string(chosen.steps[i]->size)});
        }
    }
    return edited_text(yaml, edits, with_smoothing(tuning, chosen));
}

}  // namespace imgtune::workbench
