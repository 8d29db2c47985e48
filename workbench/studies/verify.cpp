#include "workbench/studies/verify.h"

#include <cutils/properties.h>

#include <algorithm>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kLockProperty = "debug.smooth_color.lock";

/// A trace line of values that the next frame steps from, and the image's fields that hold them.
struct SmoothedOutput {
    std::string_view label;
    std::string_view fields;  ///< what their names begin with
};

constexpr std::array<SmoothedOutput, 6> kSmoothedOutputs = {{
    {"[InterParamGlobal()] (Out)  B", "Global."},
    {"[InterParamPartialY()] PY_Out", "Luma.PY["},
    {"[InterParamPartialH()] PH_Out", "Hue.PH["},
    {"[InterParamPartialS()] SG1_Out", "Saturation.SG1["},
    {"[InterParamPartialS()] SG2_Out", "Saturation.SG2["},
    {"[InterParamPartialS()] SG3_Out", "Saturation.SG3["},
}};

const std::string* traced_line(const TracedCall& call, std::string_view label) {
    const auto found = std::find_if(call.lines.begin(), call.lines.end(),
                                    [&](std::string_view l) { return trace_label(l) == label; });
    return found == call.lines.end() ? nullptr : &*found;
}

Frame frame_of(const TracedFrame& traced) {
    FrameValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = traced.values[i].value_or(0);
    Frame frame = to_frame(values);
    // Whichever gain the tuning says the camera stack uses, it is the one that the phone used.
    const bool full = traced.values[2].has_value();
    (full ? frame.state.rAWBGain : frame.state.rAWBFullGain) =
        full ? frame.state.rAWBFullGain : frame.state.rAWBGain;
    return frame;
}

CtBracket bracket_of(const ColorInputs& inputs) {
    const auto index = [](std::int64_t value) {
        return static_cast<NSIspTuning::EIndex_PCA_LUT_CT>(static_cast<std::int32_t>(value));
    };
    return {static_cast<std::uint32_t>(inputs.upper_kelvin),
            static_cast<std::uint32_t>(inputs.lower_kelvin), index(inputs.upper_index),
            index(inputs.lower_index)};
}

/// Writes a line's values into the fields of an image that it tells.
void store(const std::string& line, std::string_view fields,
           NSIspTuning::ISP_NVRAM_COLOR_T& image) {
    const std::vector<std::int64_t> values = trace_numbers(line);
    std::size_t next = 0;
    for (const ColorField& field : color_fields()) {
        if (!field.name.starts_with(fields)) continue;
        if (next == values.size()) return;
        BitField{field.word, field.lsb, field.width}.write(
            image.u4Word, static_cast<std::uint32_t>(values[next++]));
    }
}

/// Whether a gain lay above the highest tuned one: the distances and shares that are traced then
/// are of points that are not there, and mean nothing.
bool is_beyond_highest(const TracedCall& call, std::int32_t count) {
    return std::any_of(call.lines.begin(), call.lines.end(), [&](const std::string& line) {
        if (!line.starts_with("Estimated CT position")) return false;
        const std::vector<std::int64_t> numbers = trace_numbers(line);
        return !numbers.empty() && numbers[0] > count;
    });
}

}  // namespace

Verifier::Verifier(const Tuning& tuning)
    : tuning_(tuning),
      ccm_(tuning, {true, false}),
      color_(tuning, {false, true}),
      capture_(trace_switches(false)) {
    char value[PROPERTY_VALUE_MAX] = {};
    property_get(kLockProperty, value, "0");
    lock_before_ = value;
    property_set(kLockProperty, "0");
}

Verifier::~Verifier() {
    property_set(kLockProperty, lock_before_.c_str());
}

void Verifier::set_lock(bool on) {
    if (on == locked_) return;
    locked_ = on;
    property_set(kLockProperty, on ? "1" : "0");
}

void Verifier::add(const TracedFrame& traced) {
    ++result_.frames;
    const Frame frame = frame_of(traced);
    // In the order of the log, so that the first difference is the log's first.
    const bool color_first = traced.color && &traced.first() == &*traced.color;
    bool equal = true;
    if (color_first) equal = verify_color(traced, frame) && equal;
    if (traced.ccm) equal = verify_ccm(traced, frame) && equal;
    if (traced.color && !color_first) equal = verify_color(traced, frame) && equal;
    if (!equal) ++result_.differing_frames;
}

bool Verifier::compare(const TracedCall& call,
                       const std::function<bool(std::string_view)>& left_out) {
    const LinesComparison comparison = compare_traces(call.lines, capture_.lines(), left_out);
    result_.lines += comparison.compared;
    result_.missing_lines += comparison.missing;
    if (comparison.first && !result_.first) {
        const LineDifference& first = *comparison.first;
        result_.first = {
            result_.frames,           call.line, call.time, first.name, first.phone, first.desk,
            likely_cause(call, first)};
    }
    return !comparison.first;
}

bool Verifier::fits(const CameraState& state, const Ring& ring) const {
    return decode(state.ring[0], tuning_.caller) == ring.matrices[0] &&
           decode(state.ring[1], tuning_.caller) == ring.matrices[1];
}

/// Brings the camera's ring to what the phone's was before the call; false when that is not known.
bool Verifier::enter_ring(const TracedCall& call) {
    Ring ring;
    for (std::size_t i = 0; i < ring.matrices.size(); ++i) {
        const std::string* line = traced_line(call, i == 0 ? "Temporal CCM 0" : "Temporal CCM 1");
        const auto values = line == nullptr ? std::vector<std::int64_t>() : trace_numbers(*line);
        if (values.size() != 9) return ring_known_ && !call.lost_lines && !other_ring_;
        std::transform(values.begin(), values.end(), ring.matrices[i].begin(),
                       [](std::int64_t value) { return static_cast<std::int32_t>(value); });
    }
    const bool known = ring_known_;
    if (known && !call.lost_lines) {
        const bool same = fits(ccm_.state(), ring);
        if (other_ring_ && fits(*other_ring_, ring) != same) {
            if (!same) ccm_.set_state(*other_ring_);
            other_ring_.reset();
            return true;
        }
        const bool restarted = ring.matrices == Ring{}.matrices;
        if (same || !restarted) return true;
    }
    if (known || call.lost_lines) ++result_.state_taken;
    CameraState state;
    const CoefficientCodec codec(tuning_.caller.int_bits, tuning_.caller.frac_bits);
    for (std::size_t i = 0; i < ring.matrices.size(); ++i) {
        NSIspTuning::ISP_CCM_T matrix{};
        std::copy(ring.matrices[i].begin(), ring.matrices[i].end(), matrix.i4Coef);
        codec.encode(matrix, state.ring[i]);
    }
    ccm_.set_state(state);
    other_ring_.emplace(state);  // which entry comes next the trace does not say
    return true;
}

bool Verifier::verify_ccm(const TracedFrame& traced, const Frame& frame) {
    if (!tuning_.has_ccm) {
        ++result_.without_tuning;
        return true;
    }
    ++result_.ccm_calls;
    const bool known = enter_ring(*traced.ccm);
    const CameraState before = ccm_.state();
    capture_.lines().clear();
    ccm_.run(frame);
    const bool open = is_beyond_highest(*traced.ccm, tuning_.ccm.i4NumCT);
    const bool equal = compare(*traced.ccm, [&](std::string_view label) {
        if (open && (label.starts_with("range ") || label.starts_with("Coarse Blending Ratio") ||
                     label.starts_with("Finer Blending Ratio"))) {
            return true;
        }
        return !known &&
               (label.starts_with("Temporal CCM") || label == "rCCM_Output after averaging");
    });
    ring_known_ = known && equal;
    if (other_ring_) {
        // The same average in the other entry.
        *other_ring_ = before;
        other_ring_->ring[1 - before.ring_index] = ccm_.state().ring[before.ring_index];
        other_ring_->ring_index = before.ring_index;
    }
    return equal;
}

/// Goes on from the phone's outputs: all that it tells, or those that were not known.
void Verifier::take_outputs(const TracedCall& call, bool all) {
    CameraState state = color_.state();
    for (std::size_t i = 0; i < kSmoothedOutputs.size(); ++i) {
        if (output_known_[i] && !all) continue;
        const std::string* line = traced_line(call, kSmoothedOutputs[i].label);
        output_known_[i] = line != nullptr;
        if (line != nullptr) store(*line, kSmoothedOutputs[i].fields, state.working);
    }
    color_.set_state(state);
}

bool Verifier::verify_color(const TracedFrame& traced, const Frame& frame) {
    if (!tuning_.has_color) {
        ++result_.without_tuning;
        return true;
    }
    const TracedCall& call = *traced.color;
    const CtBracket bracket = bracket_of(traced.color_inputs);
    const bool settles = traced.color_inputs.settles();
    const CtBracket own = color_.grid().bracket(frame.state.u4CCT);
    result_.other_grid |=
        own.upper_kelvin != bracket.upper_kelvin || own.lower_kelvin != bracket.lower_kelvin;
    if (call.lost_lines && result_.color_calls > 0 && !settles) {
        output_known_.fill(false);
        ++result_.state_taken;
    }
    ++result_.color_calls;
    set_lock(traced_line(call, "[SmoothCOLOR()] Force Lock!!") != nullptr);
    if (settles && !locked_) output_known_.fill(true);

    CameraState state = color_.state();
    state.boot = static_cast<std::int32_t>(traced.color_inputs.boot);
    color_.set_state(state);
    capture_.lines().clear();
    color_.run(frame, bracket);
    const bool equal = compare(call, [&](std::string_view label) {
        for (std::size_t i = 0; i < kSmoothedOutputs.size(); ++i) {
            if (label == kSmoothedOutputs[i].label) return !output_known_[i];
        }
        return false;
    });
    take_outputs(call, !equal);
    return equal;
}

}  // namespace imgtune::workbench
