#include "workbench/studies/trace_cause.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include "workbench/trace/traced_frames.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

void replace_part(std::string& text, std::string_view part, std::string_view by) {
    const std::size_t at = text.find(part);
    if (at != std::string::npos) text.replace(at, part.size(), by);
}

/// The row's name of its traced number; "?" for one that is none.
std::string row_name(std::string_view number) {
    std::size_t row = std::size(kRowNames);
    std::from_chars(number.data(), number.data() + number.size(), row);
    return row < std::size(kRowNames) ? kRowNames[row] : "?";
}

/// "i4P00[9]" and its fourth value, or "i4R_AVG" and its only one, as fields.
std::string polynomial_field(std::string_view rest, std::size_t value) {
    const std::size_t count = rest.find('[');
    if (count == std::string_view::npos) return std::string(rest);
    return fmt::format("{}[{}]", rest.substr(0, count), value);
}

LikelyCause ccm_cause(const TracedCall& call, const LineDifference& difference, bool alone) {
    std::array<std::string_view, 2> parts;
    const std::string_view label = trace_label(call.lines[difference.line]);
    const CcmLine* line = find_ccm_line(label, &parts);
    if (line == nullptr) return {};
    const Trace trace(call.lines);
    // What is computed from the clipped gain would differ, too.
    if (alone && label == ccm_label::kClippedGain && trace.has(ccm_label::kProjectedGain)) {
        return {TraceCause::log, "", false};
    }
    const bool flash = trace.integer(ccm_label::kFlash) != 0;
    const char* gains = flash                                   ? "ccm.rows.flash.*.gain"
                        : trace.has(ccm_label::kLowLightWeight) ? "ccm.rows.normal.*.gain or "
                                                                  "ccm.rows.low_light.*.gain"
                                                                : "ccm.rows.normal.*.gain";
    LikelyCause found{line->cause, std::string(line->field), line->tells_field};
    replace_part(found.field, kTunedGains, gains);
    replace_part(found.field, "{Flash}", flash ? "Flash" : "");
    replace_part(found.field, "{rest}", polynomial_field(parts[0], difference.value));
    replace_part(found.field, "{row}", row_name(parts[0]));
    replace_part(found.field, "{ct}", parts[1]);
    replace_part(found.field, "{value}", std::to_string(difference.value));
    return found;
}

/// The slot of a colour call's tables; empty where its line is missing or says nonsense.
std::string slot_of(const Trace& trace) {
    const auto light = trace.integers(color_label::kLight);
    if (light.size() < 2 || light[1] < 0 || light[1] > 2) return "";
    return kSlotNames[static_cast<std::size_t>(light[1])];
}

/// The image or images of the call that a block's line comes from.
std::string image_of(const TracedCall& call, const LineDifference& difference,
                     const TraceLine& line) {
    const Trace trace(call.lines);
    const std::string slot = slot_of(trace);
    const auto cts = trace.integers(color_label::kBracket);
    if (cts.size() < 5 || slot.empty()) return "color.images";
    const std::int64_t upper = cts[3];
    const std::int64_t lower = cts[4];
    const bool high = line.stage == Stage::high;
    if (line.by_lv) {
        // The upper image's blend comes first.
        const auto end = call.lines.begin() + static_cast<std::ptrdiff_t>(difference.line);
        const bool second = std::any_of(call.lines.begin(), end, [&](const std::string& earlier) {
            return trace_label(earlier) == line.label;
        });
        return fmt::format("color.images.{}.{}", high ? kSlotNames[kSlotOutdoor] : slot,
                           second ? lower : upper);
    }
    const std::string either =
        trace.has(color_label::kOutdoor) ? slot + "|" + kSlotNames[kSlotOutdoor] : slot;
    if (line.stage == Stage::none && upper != lower) {
        return fmt::format("color.images.{}.{}|{}", either, upper, lower);
    }
    return fmt::format("color.images.{}.{}", either, high ? upper : lower);
}

LikelyCause color_cause(const TracedCall& call, const LineDifference& difference) {
    const TraceLine line = parse_trace_line(call.lines[difference.line]);
    if (line.label == color_label::kSmoothing) {
        const std::string slot = slot_of(Trace(call.lines));
        if (slot.empty() || difference.value >= kColorTuningRecord.fields.size()) {
            return {TraceCause::tuning, "", false};
        }
        return {TraceCause::tuning,
                fmt::format("color.tuning.{}.{}", slot,
                            kColorTuningRecord.fields[difference.value].name),
                true};
    }
    if (line.color == nullptr || difference.value >= line.values.size()) return {};
    const bool map = line.stage == Stage::none;
    if (map || line.stage == Stage::low || line.stage == Stage::high) {
        const std::string image = image_of(call, difference, line);
        return {TraceCause::tuning, image + "." + line.field_of(difference.value),
                image.find('|') == std::string::npos};
    }
    if (line.stage == Stage::written && line.color->moves && !line.by_lv) {
        return {TraceCause::state, "", false};
    }
    return {};
}

}  // namespace

LikelyCause likely_cause(const TracedCall& call, const LineDifference& difference, bool alone) {
    if (difference.desk.empty()) return {};
    return call.job == TracedJob::ccm ? ccm_cause(call, difference, alone)
                                      : color_cause(call, difference);
}

}  // namespace imgtune::workbench
