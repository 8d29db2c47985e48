#include "workbench/studies/verify.h"

#include <cutils/properties.h>
#include <fmt/format.h>

#include <algorithm>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kLockProperty = "debug.smooth_color.lock";

/// A property's value while it lives.
class HeldProperty {
  public:
    HeldProperty(const char* name, const char* value) : name_(name) {
        property_get(name, before_, "0");
        property_set(name, value);
    }
    ~HeldProperty() { property_set(name_, before_); }
    HeldProperty(const HeldProperty&) = delete;
    HeldProperty& operator=(const HeldProperty&) = delete;

  private:
    const char* name_;
    char before_[PROPERTY_VALUE_MAX] = {};
};

Frame frame_of(const TracedFrame& traced) {
    FrameValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = traced.values[i].value_or(0);
    Frame frame = to_frame(values);
    // Whichever gain the tuning says the camera stack uses, it is the one that the phone used.
    const bool full = traced.values[kFullGain].has_value();
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
void store(const TraceLine& line, NSIspTuning::ISP_NVRAM_COLOR_T& image) {
    for (std::size_t i = 0; i < line.values.size(); ++i) {
        const auto value = line.values[i].integer();
        const std::string name = line.field_of(i);
        for (const ColorField& field : color_fields()) {
            if (!value || field.name != name) continue;
            BitField{field.word, field.lsb, field.width}.write(image.u4Word,
                                                               static_cast<std::uint32_t>(*value));
        }
    }
}

/// Whether a gain lay above the highest tuned one: the distances and shares that are traced then
/// are of points that are not there, and mean nothing.
bool is_beyond_highest(const TracedCall& call, std::int32_t count) {
    return std::any_of(call.lines.begin(), call.lines.end(), [&](const std::string& text) {
        if (trace_label(text) != ccm_label::kCtPosition) return false;
        const std::vector<std::int64_t> numbers = parse_trace_line(text).integers();
        return !numbers.empty() && numbers[0] > count;
    });
}

bool is_place(std::string_view label) {
    return is_label(label, ccm_label::kDistance) || is_label(label, ccm_label::kCoarseWeight) ||
           is_label(label, ccm_label::kFineWeight);
}

bool is_averaged(std::string_view label) {
    return label == ccm_label::kRing0 || label == ccm_label::kRing1 || label == ccm_label::kAverage;
}

}  // namespace

Verifier::Verifier(const Tuning& tuning)
    : tuning_(tuning), ccm_(tuning, {true, false}), color_(tuning, {false, true}) {}

void Verifier::add(const TracedFrame& traced) {
    TraceCapture capture(trace_switches(false));
    capture_ = &capture;
    ++result_.frames;
    const Frame frame = frame_of(traced);
    // In the order of the log, so that the first difference is the log's first.
    const bool color_first = traced.color && &traced.first() == &*traced.color;
    bool equal = true;
    if (color_first) equal = verify_color(traced, frame) && equal;
    if (traced.ccm) equal = verify_ccm(traced, frame) && equal;
    if (traced.color && !color_first) equal = verify_color(traced, frame) && equal;
    if (!equal) ++result_.differing_frames;
    capture_ = nullptr;
}

bool Verifier::compare(const TracedCall& call,
                       const std::function<bool(const TraceLine&)>& left_out) {
    const LinesComparison comparison = compare_traces(call.lines, capture_->lines(), left_out);
    result_.lines += comparison.compared;
    result_.missing_lines += comparison.missing;
    if (comparison.differing.empty()) return true;
    if (!result_.first) {
        const auto& [line, desk] = comparison.differing.front();
        const LineDifference first =
            desk ? differences_of(line, call.lines[line], capture_->lines()[*desk]).front()
                 : LineDifference{line, 0, std::string(trace_label(call.lines[line])),
                                  call.lines[line], ""};
        result_.first = {result_.frames,
                         call.line,
                         call.time,
                         first.name,
                         first.phone,
                         first.desk,
                         likely_cause(call, first, comparison.differing.size() == 1)};
    }
    find_fields(call, comparison);
    return false;
}

/// Every field that a line tells itself, and the first one that is only computed from fields where
/// no field told before explains it.
void Verifier::find_fields(const TracedCall& call, const LinesComparison& comparison) {
    const auto add = [&](std::string field, const LineDifference& difference) {
        const auto same = [&](const TracedField& known) { return known.field == field; };
        if (std::any_of(result_.fields.begin(), result_.fields.end(), same)) return;
        result_.fields.push_back(
            {std::move(field), difference.phone, difference.desk, result_.frames});
    };
    const bool alone = comparison.differing.size() == 1;
    bool told = false;
    for (const auto& [line, desk] : comparison.differing) {
        if (!desk) continue;
        const std::string& at_desk = capture_->lines()[*desk];
        const auto differences = differences_of(line, call.lines[line], at_desk);
        const LikelyCause cause = likely_cause(call, differences.front(), alone);
        if (cause.cause != TraceCause::tuning) continue;
        if (!cause.tells_field) {
            if (!told && !cause.field.empty()) add(cause.field, differences.front());
            told = true;
            continue;
        }
        told = true;
        // Frame after frame tells the same.
        if (!told_.insert(cause.field + '\n' + call.lines[line] + '\n' + at_desk).second) continue;
        for (const LineDifference& one : differences) {
            add(likely_cause(call, one, alone).field, one);
        }
    }
}

void Verifier::note_use(const TracedCall& call, const ColorInputs& inputs) {
    const Trace trace(call.lines);
    if (call.job == TracedJob::ccm) {
        const bool flash = trace.integer(ccm_label::kFlash) != 0;
        used_.rows[flash ? kRowFlash : kRowNormal] = true;
        used_.rows[kRowLowLight] |= trace.has(ccm_label::kLowLightWeight);
        used_.polynomial[flash ? 1 : 0] |= trace.has(ccm_label::kPolynomial);
        return;
    }
    const auto light = trace.integers(color_label::kLight);
    if (light.size() < 2 || light[1] < 0 || light[1] > 2) return;
    const auto slot = static_cast<std::size_t>(light[1]);
    used_.slots[slot] = true;
    if (trace.has(color_label::kLocked)) return;
    for (const std::int64_t index : {inputs.upper_index, inputs.lower_index}) {
        const auto ct = static_cast<std::size_t>(std::clamp<std::int64_t>(index, 0, 4));
        used_.images[slot][ct] = true;
        used_.images[kSlotOutdoor][ct] |= trace.has(color_label::kOutdoor);
    }
}

Verification Verifier::result() const {
    Verification all = result_;
    if (all.ccm_calls > 0) {
        for (const std::size_t row : {kRowNormal, kRowLowLight, kRowFlash}) {
            if (!used_.rows[row]) all.unused.push_back(fmt::format("ccm.rows.{}", kRowNames[row]));
        }
        for (const std::size_t i : {0U, 1U}) {
            if (tuning_.ccm.i4Method != 1 || used_.polynomial[i]) continue;
            all.unused.emplace_back(i == 0 ? "ccm.rCCMPoly22" : "ccm.rCCMPoly22Flash");
        }
    }
    for (std::size_t slot = 0; all.color_calls > 0 && slot < used_.images.size(); ++slot) {
        if (slot != kSlotOutdoor && !used_.slots[slot]) {
            all.unused.push_back(fmt::format("color.tuning.{}", kSlotNames[slot]));
        }
        const auto& images = used_.images[slot];
        const auto count = std::count(images.begin(), images.end(), true);
        std::string cts;
        for (std::size_t ct = 0; count > 0 && ct < images.size(); ++ct) {
            if (!images[ct]) cts += fmt::format("{}{}", cts.empty() ? "." : "|", ct);
        }
        if (count > 0 && cts.empty()) continue;
        all.unused.push_back(fmt::format("color.images.{}{}", kSlotNames[slot], cts));
    }
    return all;
}

bool Verifier::fits(const CameraState& state, const Ring& ring) const {
    return decode(state.ring[0], tuning_.caller) == ring.matrices[0] &&
           decode(state.ring[1], tuning_.caller) == ring.matrices[1];
}

/// Brings the camera's ring to what the phone's was before the call; false when that is not known.
bool Verifier::enter_ring(const TracedCall& call) {
    Ring ring;
    for (std::size_t i = 0; i < ring.matrices.size(); ++i) {
        const auto values =
            Trace(call.lines).integers(i == 0 ? ccm_label::kRing0 : ccm_label::kRing1);
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
    capture_->lines().clear();
    ccm_.run(frame);
    const bool open = is_beyond_highest(*traced.ccm, tuning_.ccm.i4NumCT);
    const bool equal = compare(*traced.ccm, [&](const TraceLine& line) {
        return (open && is_place(line.label)) || (!known && is_averaged(line.label));
    });
    note_use(*traced.ccm, {});
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
    for (std::size_t i = 0; i < std::size(kColorLines); ++i) {
        if (!kColorLines[i].moves || (output_known_[i] && !all)) continue;
        const auto line = Trace(call.lines).find(kColorLines[i], Stage::written);
        output_known_[i] = line.has_value();
        if (line) store(*line, state.working);
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
    const bool locked = Trace(call.lines).has(color_label::kLocked);
    const HeldProperty lock(kLockProperty, locked ? "1" : "0");
    if (settles && !locked) output_known_.fill(true);

    CameraState state = color_.state();
    state.boot = static_cast<std::int32_t>(traced.color_inputs.boot);
    color_.set_state(state);
    capture_->lines().clear();
    color_.run(frame, bracket);
    const bool equal = compare(call, [&](const TraceLine& line) {
        return line.color != nullptr && line.color->moves && line.stage == Stage::written &&
               !line.by_lv && !output_known_[static_cast<std::size_t>(line.color - kColorLines)];
    });
    note_use(call, traced.color_inputs);
    take_outputs(call, !equal);
    return equal;
}

}  // namespace imgtune::workbench
