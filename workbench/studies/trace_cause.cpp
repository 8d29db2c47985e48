#include "workbench/studies/trace_cause.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "workbench/trace/traced_frames.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::string_view kDriver = "SmoothCOLOR ";

/// What a line's first numbers are; empty when the call has no such line.
std::vector<std::int64_t> numbers_after(const TracedCall& call, std::string_view beginning) {
    for (const std::string& line : call.lines) {
        if (std::string_view(line).starts_with(beginning)) return trace_numbers(line);
    }
    return {};
}

bool flash_row(const TracedCall& call) {
    const auto flash = numbers_after(call, "Flash mode = ");
    return !flash.empty() && flash[0] != 0;
}

/// What a line that begins so says when it differs.
struct CauseRule {
    std::string_view beginning;
    TraceCause cause;
    std::string_view field;
};
constexpr CauseRule kCcmCauses[] = {
    {"Fullgain", TraceCause::caller, "caller.full_gain"},
    {"Coef1, ", TraceCause::caller, "caller.weights"},
    {"Method", TraceCause::tuning, "ccm.i4Method"},
    {"Number of CT", TraceCause::tuning, "ccm.i4NumCT"},
    {"Number of LV", TraceCause::tuning, "ccm.i4NumLV"},
    {"Number of Flash", TraceCause::tuning, "ccm.i4NumFlash"},
    {"PQ type", TraceCause::tuning, "ccm.i4PQType"},
    {"Temporal CCM", TraceCause::state, ""},
    {"LVpos", TraceCause::version, ""},
    {"LV postion", TraceCause::version, ""},
    {"LV_blend", TraceCause::version, ""},
    {"rCCM_Output", TraceCause::version, ""},
};

LikelyCause ccm_cause(const TracedCall& call, const LineDifference& difference) {
    const std::string& name = difference.name;
    for (const CauseRule& rule : kCcmCauses) {
        if (name.starts_with(rule.beginning)) return {rule.cause, std::string(rule.field)};
    }
    if (name.starts_with("rCCMPoly22.")) {  // "rCCMPoly22.i4P00[9][3]": the count, then the index
        std::string field = "ccm." + name;
        if (const std::size_t count = field.find("[9]"); count != std::string::npos) {
            field.erase(count, 3);
        }
        if (flash_row(call)) field.replace(0, 14, "ccm.rCCMPoly22Flash");
        return {TraceCause::tuning, field};
    }
    if (name.starts_with("LV_0") && name.size() > 8) {  // "LV_06_CT3_rCCM_Nvram[8]"
        const auto row = static_cast<std::size_t>(name[4] - '0') % 8;
        return {TraceCause::tuning, fmt::format("ccm.rows.{}.{}.matrix[{}]", kRowNames[row],
                                                name[8], difference.value)};
    }
    // Clipping and projection: the tuned gains are not traced themselves.
    const auto row = std::find_if(call.lines.begin(), call.lines.end(), [](std::string_view line) {
        return line.starts_with("LV_blend ratio");
    });
    if (flash_row(call)) return {TraceCause::tuning, "ccm.rows.flash.*.gain"};
    return {TraceCause::tuning, row == call.lines.end()
                                    ? "ccm.rows.normal.*.gain"
                                    : "ccm.rows.normal.*.gain or ccm.rows.low_light.*.gain"};
}

/// "PY_Low[3]" of the luma block is "Luma.PY[3]" of an image.
std::string field_of_image(std::string_view function, std::string name) {
    for (const char* kind : {"_Low", "_High", "(Low) ", "(High) "}) {
        const std::size_t at = name.find(kind);
        if (at != std::string::npos) name.erase(at, std::string_view(kind).size());
    }
    if (function == "InterParam3DLUT") {
        std::replace(name.begin(), name.end(), '_', '.');
        std::replace(name.begin(), name.end(), ' ', '.');
        if (const auto blanks = name.find(".."); blanks != std::string::npos) name.erase(blanks, 1);
        if (name.starts_with("CTRL.")) name.erase(0, 5);
        // The names of these three have an underline of their own.
        for (const std::string word : {"WGR.EN", "INK.EN", "INK.DELTA", "INK.CH"}) {
            const std::size_t at = name.find(word);
            if (at != std::string::npos) name[at + 3] = '_';
        }
        return "ColorMap." + name;
    }
    const auto in = [&](std::string_view part) { return function.ends_with(part); };
    if (in("Global")) return "Global." + name;
    if (in("PartialY")) return "Luma." + name;
    if (in("PartialH")) return "Hue." + name;
    if (in("LSP")) return "LSP." + name;
    return (in("SGainByY") ? "SGainByY." : "Saturation.") + name;
}

/// The images of the call that a block's Low or High line comes from.
std::string image_of(const TracedCall& call, const LineDifference& difference,
                     std::string_view function, bool high) {
    const auto cts = numbers_after(call, "[SmoothCOLOR()] u4RealCT = ");
    const auto light = numbers_after(call, "[SmoothCOLOR()] u4RealLV = ");
    if (cts.size() < 5 || light.size() < 2 || light[1] < 0 || light[1] > 2) return "color.images";
    const std::string slot = kSlotNames[static_cast<std::size_t>(light[1])];
    const bool outdoor = std::any_of(
        call.lines.begin(), call.lines.end(),
        [](const std::string& line) { return line == "[SmoothCOLOR()] Outdoor mode !!"; });
    const std::int64_t upper = cts[3];
    const std::int64_t lower = cts[4];
    if (function.starts_with("InterParamByLV")) {
        // The upper image's blend comes first.
        const auto end = call.lines.begin() + static_cast<std::ptrdiff_t>(difference.line);
        const std::string_view label = trace_label(*end);
        const bool second = std::any_of(call.lines.begin(), end, [&](const std::string& line) {
            return trace_label(line) == label;
        });
        return fmt::format("color.images.{}.{}", high ? kSlotNames[kOutdoorSlot] : slot,
                           second ? lower : upper);
    }
    const std::string either = outdoor ? slot + "|" + kSlotNames[kOutdoorSlot] : slot;
    if (function == "InterParam3DLUT" && upper != lower) {
        return fmt::format("color.images.{}.{}|{}", either, upper, lower);
    }
    return fmt::format("color.images.{}.{}", either, high ? upper : lower);
}

LikelyCause color_cause(const TracedCall& call, const LineDifference& difference) {
    const std::string& name = difference.name;
    if (name.starts_with(kDriver)) {
        if (!name.starts_with("SmoothCOLOR In Ram[")) return {};
        const auto light = numbers_after(call, "[SmoothCOLOR()] u4RealLV = ");
        if (light.size() < 2 || light[1] < 0 || light[1] > 2) return {TraceCause::tuning, ""};
        return {TraceCause::tuning,
                fmt::format("color.tuning.{}.{}", kSlotNames[static_cast<std::size_t>(light[1])],
                            kSmoothingRecord.fields[difference.value].name)};
    }
    const std::string_view function = std::string_view(name).substr(0, name.find(' '));
    const std::string value = name.substr(std::min(function.size() + 1, name.size()));
    const bool high = value.find("High") != std::string::npos;
    const bool map = function == "InterParam3DLUT" && !value.starts_with("u4");
    if (high || map || value.find("Low)") != std::string::npos ||
        value.find("_Low") != std::string::npos) {
        return {TraceCause::tuning, fmt::format("{}.{}", image_of(call, difference, function, high),
                                                field_of_image(function, value))};
    }
    const bool smoothed = value.starts_with("(Out)") || value.starts_with("P") ||
                          value.starts_with("SG1") || value.starts_with("SG2") ||
                          value.starts_with("SG3");
    if (smoothed && value.find("Out") != std::string::npos &&
        !function.starts_with("InterParamByLV")) {
        return {TraceCause::state, ""};
    }
    return {};
}

}  // namespace

LikelyCause likely_cause(const TracedCall& call, const LineDifference& difference) {
    if (difference.desk.empty()) return {};
    return call.job == TracedJob::ccm ? ccm_cause(call, difference) : color_cause(call, difference);
}

}  // namespace imgtune::workbench
