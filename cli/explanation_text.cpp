#include "cli/explanation_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <span>
#include <vector>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

constexpr std::size_t kMostNamed = 3;  ///< values named in a line of the short form

std::string line(const char* label, const std::string& text) {
    return fmt::format("  {:<24}{}\n", label, text);
}

std::string joined(const GainValues& gain) {
    return fmt::format("{}", fmt::join(gain, ", "));
}

std::string matrix_lines(const char* label, const MatrixValues& values) {
    std::string out;
    for (std::size_t row = 0; row < values.size(); row += 3) {
        out += line(row == 0 ? label : "", fmt::format("{:>6} {:>6} {:>6}", values[row],
                                                       values[row + 1], values[row + 2]));
    }
    return out;
}

/// The first few of a list in one line, or all of it; "none" when there is nothing.
std::string list_line(const char* label, const std::vector<std::string>& items, Detail detail) {
    if (items.empty()) return detail == Detail::all ? line(label, "none") : "";
    const std::size_t shown =
        detail == Detail::all ? items.size() : std::min(items.size(), kMostNamed);
    std::string text = fmt::format("{}", fmt::join(std::span(items).first(shown), "; "));
    if (shown < items.size()) text += fmt::format("; and {} more", items.size() - shown);
    return line(label, text);
}

template <class Values, class Text>
std::vector<std::string> texts(const Values& values, Text text) {
    std::vector<std::string> all;
    std::transform(values.begin(), values.end(), std::back_inserter(all), text);
    return all;
}

std::string frame_text(const Explanation& told, Detail detail) {
    const auto gain = [](const AWB_GAIN_T& g) {
        return fmt::format("{}, {}, {}", g.i4R, g.i4G, g.i4B);
    };
    const auto& state = told.frame.state;
    const std::string full = gain(state.rAWBFullGain);
    std::string out = "Frame\n";
    out += line("light", fmt::format("light value {}, {} K", state.u4RealLV, state.u4CCT));
    out += line("AWB gain", gain(state.rAWBGain) + "  (R, G, B; 512 = 1.0)");
    if (detail == Detail::all || full != gain(state.rAWBGain)) out += line("full AWB gain", full);
    if (detail == Detail::all || state.u4FlashMode != 0 || state.u4SceneFlag != 0 ||
        told.frame.capture != 0) {
        out +=
            line("condition", fmt::format("flash {}, scene flag {}, capture {}", state.u4FlashMode,
                                          state.u4SceneFlag, told.frame.capture));
    }
    return out;
}

/// Where a job comes to rest under this light, and which values stop short.
std::string resting_text(const JobRest& rest, const std::vector<RestingValue>& values,
                         std::uint64_t period, Detail detail) {
    std::string how = "never: the registers move for ever";
    if (!rest.still && period > 0) how += fmt::format(", over and over in {} frames", period);
    if (rest.still) {
        how =
            fmt::format("after {} frame{} of this light", rest.frames, rest.frames == 1 ? "" : "s");
    }
    std::vector<std::string> stalls;
    for (const RestingValue& value : values) {
        if (value.short_by == 0) continue;
        stalls.push_back(fmt::format("{} {} of {}", value.name, value.resting, value.target));
    }
    return line("at rest", how) + list_line("short of its target", stalls, detail);
}

// The matrix.

std::string blend_text(const MatrixPass& pass, std::int64_t last_ct, Detail detail) {
    const std::int64_t position = *pass.ct_position;
    if (!pass.blend) {
        return line("CT position", fmt::format("{}: the {} tuned CT's matrix alone", position,
                                               position < 0 ? "lowest" : "highest"));
    }
    const CtBlend& blend = *pass.blend;
    const auto& d = blend.distances;
    std::string out = line("CT position", fmt::format("{} of 0..{}", position, last_ct));
    if (detail == Detail::all) {
        out += line("distances",
                    fmt::format("locus to CT{} {:.3f}, gain to CT{} {:.3f}, locus to "
                                "CT{} {:.3f}, gain to locus {:.3f}",
                                position - 1, d[0], position, d[1], position + 1, d[2], d[3]));
    }
    out += line("coarse blend", fmt::format("{:.6f} x CT{}, rest CT{}", blend.coarse_weight,
                                            position - 1, position + 1));
    return out + line("fine blend", fmt::format("{:.6f} x CT{}, rest the coarse blend",
                                                blend.fine_weight, position));
}

/// One pass of projection and generation.
std::string pass_text(const MatrixPass& pass, std::int64_t last_ct, const char* matrix_label,
                      Detail detail) {
    std::string out;
    if (pass.projected_gain) out += line("projected on the locus", joined(*pass.projected_gain));
    if (pass.ct_position) out += blend_text(pass, last_ct, detail);
    if (pass.polynomial) {
        const PolynomialScale& p = *pass.polynomial;
        out += line("polynomial about",
                    fmt::format("red {:.2f} (deviation {:.2f}), blue {:.2f} (deviation {:.2f})",
                                p.red_mean, p.red_deviation, p.blue_mean, p.blue_deviation));
    }
    return out + matrix_lines(matrix_label, pass.matrix);
}

std::string gain_text(const MatrixExplanation& told) {
    std::string how = "  (within the tuned range)";
    if (told.clipped_low || told.clipped_high) {
        how = fmt::format("  (clipped to the {} end of the tuned range)",
                          told.clipped_low && told.clipped_high ? "low, then to the high"
                          : told.clipped_low                    ? "low"
                                                                : "high");
    }
    return line("gain used", fmt::format("{}  (the {}AWB gain)", joined(told.gain),
                                         told.full_gain ? "full " : "")) +
           line("after clipping", joined(told.clipped_gain) + how);
}

std::string wrapped_line(const std::vector<WrappedValue>& wrapped,
                         const std::vector<UnreachableTarget>& unreachable, Detail detail) {
    auto items = texts(wrapped, [](const WrappedValue& value) {
        return fmt::format("{} {} became {}", value.field, value.computed, value.written);
    });
    for (const UnreachableTarget& value : unreachable) {
        items.push_back(fmt::format("{} target {} needs more than {} bits", value.field,
                                    value.target, value.bits));
    }
    return list_line("wrapped on writing", items, detail);
}

std::string matrix_text(const Explanation& explanation, Detail detail) {
    const MatrixExplanation& told = *explanation.ccm;
    const bool all = detail == Detail::all;
    const std::int64_t last_ct = told.ct_count - 1;
    std::string out = "\nMatrix\n";
    out += line("method", told.method == 1   ? "1, polynomial"
                          : told.method == 2 ? "2, blend by CT"
                                             : "none: identity");
    out += gain_text(told);
    out += line("LV row", told.lv_row == 6 ? "6, flash" : "0, normal light");
    out += pass_text(told.pass, last_ct, "matrix", detail);
    if (told.low_light) {
        if (all) {
            out += "  low light too (LV row 1):\n";
            out += pass_text(told.low_light->pass, last_ct, "its matrix", detail);
        }
        out += line("weight of low light", fmt::format("{:.6f}", told.low_light->weight));
        out += matrix_lines("after low light", told.low_light->result);
    }
    out += line("average, weights",
                fmt::format("{}  (new, ring 0, ring 1)", fmt::join(told.weights, ", ")));
    if (all) {
        out += matrix_lines("ring 0", told.ring[0]) + matrix_lines("ring 1", told.ring[1]);
        out += matrix_lines("average", told.average);
    }
    const bool has_gamut = told.gamut == 1 || told.gamut == 2;
    if (all || has_gamut) {
        out += line("output gamut", has_gamut ? fmt::format("matrix {}", told.gamut) : "none");
    }
    out += matrix_lines("written", told.written);
    out += wrapped_line(told.wrapped, {}, detail);
    const RestingStudy& resting = explanation.resting;
    return out + resting_text(resting.rest.ccm, resting.ccm, resting.rest.period, detail);
}

// The colour image.

std::string values_text(const std::vector<std::int64_t>& values) {
    std::string out;
    for (const std::int64_t value : values) out += fmt::format("{:>5}", value);
    return out;
}

std::string row_text(const ColorRow& row, Detail detail) {
    if (row.written.size() == 1 && row.target.size() == 1) {
        return line(row.field.c_str(),
                    fmt::format("lower CT {}, upper CT {}, target {}, written {}", row.lower[0],
                                row.upper[0], row.target[0], row.written[0]));
    }
    if (detail == Detail::screen) return "";
    std::string out = fmt::format("  {}\n", row.field);
    const auto stage = [&](const char* label, const std::vector<std::int64_t>& values) {
        if (!values.empty()) out += line(label, values_text(values));
    };
    stage("  lower CT", row.lower);
    stage("  upper CT", row.upper);
    stage("  target", row.target);
    if (row.written != row.target) stage("  written", row.written);
    return out;
}

std::string light_text(const ColorExplanation& told) {
    std::string out;
    out += line(
        "in mired",
        fmt::format("{} between {} and {}: {}", told.real_mired, told.upper_mired, told.lower_mired,
                    told.lower_alone
                        ? "the lower-CT image alone"
                        : fmt::format("{:.1f} % upper, {:.1f} % lower", 100.0 * told.upper_share,
                                      100.0 - 100.0 * told.upper_share)));
    out += line("path", told.outdoor ? fmt::format("outdoor path; outdoor images weigh {} of {}",
                                                   told.outdoor_ratio, told.outdoor_base)
                                     : "indoor");
    out += line("saturation by LV", fmt::format("x {}/16", told.saturation_ratio));
    out +=
        line("local saturation", fmt::format("{}light value {} u4LSPMaxLV, {} in the image",
                                             told.lsp_light && told.lsp_enabled ? "on: " : "off: ",
                                             told.lsp_light ? "within" : "above",
                                             told.lsp_enabled ? "enabled" : "disabled"));
    out += line("step a frame", told.at_once
                                    ? "none: targets are taken at once"
                                    : fmt::format("luma {}, hue {}, saturation {}", told.luma_step,
                                                  told.hue_step, told.saturation_step));
    return out + line("colour map", fmt::format("of the {}-CT image",
                                                told.color_map_from_upper ? "upper" : "lower"));
}

std::string color_text(const Explanation& explanation, Detail detail) {
    const ColorExplanation& told = *explanation.color;
    std::string out = "\nColour\n";
    out += line("slot", fmt::format("{}, {}", told.slot, kSlotNames[told.slot]));
    out += line("CT bracket", fmt::format("upper CT{} ({} K), lower CT{} ({} K)", told.upper_index,
                                          told.upper_kelvin, told.lower_index, told.lower_kelvin));
    if (told.locked) {
        return out + line("locked", "debug.smooth_color.lock is 1: no block is computed");
    }
    out += light_text(told);
    for (const ColorRow& row : told.rows) out += row_text(row, detail);
    out += wrapped_line(told.wrapped, told.unreachable, detail);
    out += list_line("clamped targets",
                     texts(told.clamped,
                           [](const ClampedTarget& value) {
                               return fmt::format("{} {} to {}", value.field, value.target,
                                                  value.clamped);
                           }),
                     detail);
    const RestingStudy& resting = explanation.resting;
    return out + resting_text(resting.rest.color, resting.color, resting.rest.period, detail);
}

// The registers.

std::string registers_text(const Explanation& told) {
    std::string out = "\nRegisters\n";
    const auto word_line = [&](const char* name, std::size_t word, std::uint32_t value,
                               const std::string& fields) {
        out += fmt::format("  {:<12}0x{:08X}{}\n", fmt::format("{} {}", name, word), value, fields);
    };
    if (told.ccm) {
        const auto values = decode(told.registers.ccm, told.caller);
        std::vector<std::string> fields(std::size(told.registers.ccm.u4Word));
        for (std::size_t k = 0; k < values.size(); ++k) {
            fields[kCoefficientFields[k].word] += fmt::format("  c{} {}", k, values[k]);
        }
        for (std::size_t word = 0; word < fields.size(); ++word) {
            word_line("ccm", word, told.registers.ccm.u4Word[word], fields[word]);
        }
    }
    if (!told.color) return out;
    std::vector<std::string> fields(std::size(told.registers.color.u4Word));
    for (const ColorField& field : color_fields()) {
        fields[field.word] += fmt::format("  {} {}", field.name, field.read(told.registers.color));
    }
    for (std::size_t word = 0; word < fields.size(); ++word) {
        word_line("colour", word, told.registers.color.u4Word[word], fields[word]);
    }
    return out;
}

}  // namespace

std::string explanation_text(const Explanation& told, Detail detail) {
    std::string out = frame_text(told, detail);
    if (told.ccm) out += matrix_text(told, detail);
    if (told.color) out += color_text(told, detail);
    if (detail == Detail::all) out += registers_text(told);
    return out;
}

}  // namespace imgtune::cli
