#ifndef IMGTUNE_WORKBENCH_JUDGING_SMOOTHING_H
#define IMGTUNE_WORKBENCH_JUDGING_SMOOTHING_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "workbench/judging/judgement.h"
#include "workbench/studies/summary.h"
#include "workbench/tuning/fields.h"

// Which smoothing makes a wish come true over some logs: every choice is run through the library
// and judged by what judge measures.

namespace imgtune::workbench {

using RingWeights = std::array<std::uint32_t, 3>;

/// All weights up to this are tried; the new matrix has at least 1.
inline constexpr std::uint32_t kMostWeight = 8;
/// Distinct shares that such weights have: 526.
std::vector<RingWeights> ring_weights();

/// The three steps of the colour engine, in the order of the tuning.
enum class ColorStep : std::size_t { luma, hue, saturation };
inline constexpr std::size_t kColorSteps = 3;
const char* field_of(ColorStep step);  ///< "lum_speed"
/// Whose steps are chosen: a flash shot takes its values as tuned. Outdoor is not read, but a
/// tuning may say that it is like normal, and goes on to be.
inline constexpr std::size_t kSmoothedSlots[] = {kSlotNormal, kSlotScene, kSlotOutdoor};
/// Steps that are tried, ascending.
std::span<const std::uint32_t> color_step_sizes();

struct SmoothWish {
    double settle = 25.0;  ///< frames
    double step = 1.2;     ///< CIEDE2000, largest between two frames
    double at_rest = 1.0;  ///< CIEDE2000, what the average leaves for ever
    double flicker =
        0.0;  ///< CIEDE2000 of its swings; at most this, which the tuning shows as it is
};

/// What a choice does over all logs: the worst of each. Without a value: nothing to measure.
struct Reached {
    std::optional<double> settle;
    std::optional<double> step;
    std::optional<double> at_rest;
    std::optional<double> flicker;

    void take(const Reached& other);  ///< another log
};

/// The limits of a wish, for naming the one that binds.
enum class Binding { none, settle, step, at_rest, flicker };
const char* binding_name(Binding binding);  ///< in words: "settling", "the step"

/// How near the nearest limit is, 1: at it; and which one.
struct Strain {
    double most = 0.0;
    Binding binds = Binding::none;
};
Strain strain_under(const Reached& reached, const SmoothWish& wish);

/// What the matrices of a log do with these weights.
Reached reached_by(const Tuning& tuning, const RingWeights& weights, std::span<const Frame> log,
                   const SummaryOptions& options);

/// What one step of the colour engine does over all logs.
struct StepReached {
    std::optional<double> settle;  ///< frames until the registers stand; none: no change to measure
    bool never_rests = false;      ///< after some change of light

    void take(const StepReached& other);  ///< another log
};

/// What the colour registers of a log do when a single one of the three steps is of this size and
/// the others do not hold up.
StepReached reached_by(const Tuning& tuning, ColorStep step, std::uint32_t size,
                       std::span<const Frame> log, const SummaryOptions& options);

struct WeightsTried {
    RingWeights weights{};
    Reached reached;
    Strain strain;
};
struct StepTried {
    std::uint32_t size = 0;
    StepReached reached;
};

/// The answer: what was chosen, and what there was to choose from.
struct Smoothing {
    SmoothWish wish;
    WeightsTried before;                  ///< the tuning as it is
    std::optional<WeightsTried> weights;  ///< none: the tuning has no matrices
    bool met = false;                     ///< by the weights; else they come nearest
    std::size_t tried = 0;
    /// Weights that no others beat in settling and step alike, by rising frames; of those that keep
    /// to the limits at rest and of flicker.
    std::vector<WeightsTried> front;
    std::array<std::optional<StepTried>, kColorSteps> steps;  ///< none: no colour, or none settles
};

/// Of all that were tried, the one that keeps the wish with the smallest step, else the nearest;
/// and the front. Equal ones: the quicker, then the first.
void choose_weights(std::vector<WeightsTried> tried, Smoothing& answer);

/// The tuning with what was chosen.
Tuning with_smoothing(const Tuning& tuning, const Smoothing& chosen);

/// The same in its text, with everything else as it was; none where a value cannot be replaced.
std::optional<std::string> text_with_smoothing(const std::string& yaml, const Tuning& tuning,
                                               const Smoothing& chosen);

}  // namespace imgtune::workbench

#endif
