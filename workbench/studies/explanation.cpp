#include "workbench/studies/explanation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "ccm/codec.h"
#include "workbench/camera/trace_capture.h"
#include "workbench/studies/resting.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Param = ISP_SMOOTH_COLOR_PARAM_T;
using Integers = std::vector<std::int64_t>;
using BlockFunction = void(Param&, const Image&, const Image&, Image&);

constexpr std::array<std::uint32_t, 3> kNoAverage{1, 0, 0};

/// All numbers of a text.
template <class Number>
std::vector<Number> numbers_of(std::string_view text) {
    std::vector<Number> numbers;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        Number value{};
        const auto result = std::from_chars(at, end, value);
        if (result.ec == std::errc()) numbers.push_back(value);
        at = result.ec == std::errc::invalid_argument ? at + 1 : result.ptr;
    }
    return numbers;
}

/// Trace lines in order, looked up by how they begin.
class Trace {
  public:
    explicit Trace(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    /// What follows `beginning` in the first line that has it.
    std::optional<std::string_view> rest(std::string_view beginning) const {
        for (const std::string& line : lines_) {
            if (line.starts_with(beginning)) {
                return std::string_view(line).substr(beginning.size());
            }
        }
        return std::nullopt;
    }

    bool has(std::string_view beginning) const { return rest(beginning).has_value(); }

    Integers integers(std::string_view beginning) const {
        return numbers_of<std::int64_t>(rest(beginning).value_or(""));
    }

    std::vector<double> reals(std::string_view beginning) const {
        return numbers_of<double>(rest(beginning).value_or(""));
    }

    /// The number after "name = " in the first line that begins so and names it; else 0.
    std::int64_t named(std::string_view beginning, std::string_view name) const {
        for (const std::string& line : lines_) {
            const std::size_t at = line.find(fmt::format(" {} =", name));
            if (!line.starts_with(beginning) || at == std::string::npos) continue;
            const Integers found = numbers_of<std::int64_t>(line.substr(at + name.size() + 3));
            if (!found.empty()) return found.front();
        }
        return 0;
    }

    /// The lines up to and with the first that begins so, and the lines after it.
    std::pair<Trace, Trace> split_after(std::string_view beginning) const {
        auto at = std::ranges::find_if(
            lines_, [&](const std::string& line) { return line.starts_with(beginning); });
        if (at != lines_.end()) ++at;
        return {Trace({lines_.begin(), at}), Trace({at, lines_.end()})};
    }

    const std::vector<std::string>& lines() const { return lines_; }

  private:
    std::vector<std::string> lines_;
};

std::string joined(const Integers& values) {
    return fmt::format("{}", fmt::join(values, ", "));
}

/// What the next call of a camera traces; the camera itself is not moved.
Trace trace_of(Camera camera, const Frame& frame, const std::vector<std::string>& switches) {
    TraceCapture capture(switches);
    camera.run(frame);
    return Trace(std::exchange(capture.lines(), {}));
}

void tell_inputs(Story& story, const Frame& frame) {
    const auto gain = [](const AWB_GAIN_T& g) { return Integers{g.i4R, g.i4G, g.i4B}; };
    const auto& state = frame.state;
    const auto number = [&](const char* key, const char* label, std::int64_t value,
                            const char* unit = "") {
        story.fact(key, label, value, fmt::format("{}{}", value, unit));
    };
    story.section("frame", "Frame");
    number("lv", "light value", state.u4RealLV);
    number("cct", "colour temperature", state.u4CCT, " K");
    story.fact("awb_gain", "AWB gain", gain(state.rAWBGain),
               joined(gain(state.rAWBGain)) + "  (R, G, B; 512 = 1.0)");
    story.fact("full_gain", "full AWB gain", gain(state.rAWBFullGain),
               joined(gain(state.rAWBFullGain)));
    number("flash", "flash", state.u4FlashMode);
    number("scene", "scene flag", state.u4SceneFlag);
    number("capture", "capture", frame.capture);
}

// The matrix.

/// Coarse and fine weights of a blend by CT.
void tell_blend(Story& story, const Trace& pass, std::int64_t last_ct, const std::string& prefix) {
    const std::int64_t position = pass.integers("Estimated CT position = ").front();
    const std::string text = position < 0     ? "at or below the lowest tuned CT: its matrix alone"
                             : position >= 10 ? "at or above the highest tuned CT: its matrix alone"
                                              : fmt::format("{} of 0..{}", position, last_ct);
    story.fact(prefix + "ct_position", "CT position", position, text);
    if (position < 0 || position >= 10) return;
    Story::Json ranges = Story::Json::array();
    for (int i = 0; i < 4; ++i) {
        ranges.push_back(pass.reals(fmt::format("range {} = ", i)).at(0));
    }
    story.fact(prefix + "distances", "distances", ranges,
               fmt::format("locus to CT{} {:.3f}, gain to CT{} {:.3f}, locus to CT{} {:.3f}, gain "
                           "to locus {:.3f}",
                           position - 1, ranges[0].get<double>(), position, ranges[1].get<double>(),
                           position + 1, ranges[2].get<double>(), ranges[3].get<double>()));
    const double coarse = pass.reals("Coarse Blending Ratio").back();
    const double fine = pass.reals("Finer Blending Ratio").back();
    story.fact(prefix + "coarse_weight", "coarse blend", coarse,
               fmt::format("{:.6f} x CT{}, rest CT{}", coarse, position - 1, position + 1));
    story.fact(prefix + "fine_weight", "fine blend", fine,
               fmt::format("{:.6f} x CT{}, rest the coarse blend", fine, position));
}

/// One pass of projection and generation.
void tell_pass(Story& story, const Trace& pass, std::int64_t last_ct, const std::string& prefix,
               const std::string& matrix_label) {
    if (const Integers projected = pass.integers("Proj AWB Gain = "); !projected.empty()) {
        story.fact(prefix + "projected_gain", "projected on the locus", projected,
                   joined(projected));
    }
    if (pass.has("Estimated CT position = ")) tell_blend(story, pass, last_ct, prefix);
    if (pass.has("rCCMPoly22.i4R_AVG = ")) {
        const auto value = [&](const char* name) {
            const auto found = pass.reals(fmt::format("rCCMPoly22.i4{} = ", name));
            return found.empty() ? 0.0 : found.front();
        };
        story.fact(prefix + "polynomial", "polynomial about",
                   {{"R_AVG", value("R_AVG")},
                    {"R_STD", value("R_STD")},
                    {"B_AVG", value("B_AVG")},
                    {"B_STD", value("B_STD")}},
                   fmt::format("red {:.2f} (deviation {:.2f}), blue {:.2f} (deviation {:.2f})",
                               value("R_AVG"), value("R_STD"), value("B_AVG"), value("B_STD")));
    }
    story.matrix(prefix + "matrix", matrix_label,
                 pass.integers("rCCM_Output after interpolation = "));
}

void tell_gain(Story& story, const Trace& trace) {
    const Integers gain = trace.integers("Input AWB full Gain = ");
    const Integers clipped = trace.integers("Clipped AWB full Gain = ");
    const bool full = trace.integers("Fullgain = ") == Integers{1};
    story.fact("gain", "gain used", gain,
               fmt::format("{}  (the {}AWB gain)", joined(gain), full ? "full " : ""));
    const bool low = trace.has("Clipped low");
    const bool high = trace.has("Clipped high");
    story.json()["clipped_low"] = low;
    story.json()["clipped_high"] = high;
    std::string how = "  (within the tuned range)";
    if (low || high) {
        how = fmt::format("  (clipped to the {} end of the tuned range)",
                          low && high ? "low, then to the high" : (low ? "low" : "high"));
    }
    story.fact("clipped_gain", "after clipping", clipped, joined(clipped) + how);
}

void tell_wrapped(Story& story, const std::vector<std::string>& wrapped) {
    story.fact("wrapped", "wrapped on writing", wrapped,
               wrapped.empty() ? "none" : fmt::format("{}", fmt::join(wrapped, "; ")));
}

void tell_matrix(Story& story, const Trace& trace, const Trace& unaveraged,
                 const std::array<std::int32_t, 9>& written) {
    const std::int64_t method = trace.integers("Method = ").front();
    const std::int64_t last_ct = trace.integers("Number of CT = ").front() - 1;
    const std::int64_t row = trace.integers("LVpos = ").front();
    const auto [main_pass, rest] = trace.split_after("rCCM_Output after interpolation = ");
    story.section("ccm", "Matrix");
    story.fact("method", "method", method,
               method == 1 ? "1, polynomial" : (method == 2 ? "2, blend by CT" : "none: identity"));
    tell_gain(story, trace);
    story.fact("lv_row", "LV row", row, row == 6 ? "6, flash" : "0, normal light");
    tell_pass(story, main_pass, last_ct, "", "matrix");
    if (trace.has("LV_blend ratio = ")) {
        story.line("  low light too (LV row 1):");
        tell_pass(story, rest, last_ct, "low_light_", "its matrix");
        const double share = trace.reals("LV_blend ratio = ").front();
        story.fact("low_light_weight", "its weight", share, fmt::format("{:.6f}", share));
        story.matrix("after_low_light", "after low light",
                     unaveraged.integers("rCCM_Output after averaging = "));
    }
    const Integers weights = trace.integers("Coef1, Coef2, Coef3 = ");
    story.fact("weights", "average, weights", weights, joined(weights) + "  (new, ring 0, ring 1)");
    story.matrix("ring_0", "ring 0", trace.integers("Temporal CCM 0 = "));
    story.matrix("ring_1", "ring 1", trace.integers("Temporal CCM 1 = "));
    const Integers average = trace.integers("rCCM_Output after averaging = ");
    story.matrix("average", "average", average);
    const std::int64_t gamut = trace.integers("PQ type = ").front();
    const bool has_gamut = gamut == 1 || gamut == 2;
    story.fact("gamut", "output gamut", gamut,
               has_gamut ? fmt::format("matrix {}", gamut) : "none");
    story.matrix("written", "written", {written.begin(), written.end()});

    // Without a gamut matrix the average is what was written; with one only the rows tell, which
    // summed to the unity before.
    std::vector<std::string> wrapped;
    for (std::size_t k = 0; k < written.size(); ++k) {
        if (!has_gamut && average.at(k) != written[k]) {
            wrapped.push_back(fmt::format("c{} {} became {}", k, average[k], written[k]));
        }
        const std::int64_t sum =
            std::int64_t{written[k - k % 3]} + written[k - k % 3 + 1] + written[k - k % 3 + 2];
        if (has_gamut && k % 3 == 0 && sum != 512) {
            wrapped.push_back(fmt::format("row {} sums to {}, not 512", k / 3, sum));
        }
    }
    tell_wrapped(story, wrapped);
}

// The colour image.

const ColorField* find_field(std::string_view name) {
    for (const ColorField& field : color_fields()) {
        if (field.name == name) return &field;
    }
    return nullptr;
}

/// A row of values that a block traces, and the field that holds them.
struct TracedRow {
    const char* function;
    const char* label;  ///< in the trace: "PY"
    const char* field;  ///< "Luma.PY"
};
constexpr TracedRow kTracedRows[] = {
    {"InterParamPartialY", "PY", "Luma.PY"},
    {"InterParamPartialH", "PH", "Hue.PH"},
    {"InterParamPartialS", "SP1", "Saturation.SP1"},
    {"InterParamPartialS", "SP2", "Saturation.SP2"},
    {"InterParamPartialS", "SG1", "Saturation.SG1"},
    {"InterParamPartialS", "SG2", "Saturation.SG2"},
    {"InterParamPartialS", "SG3", "Saturation.SG3"},
    {"InterParamSGainByY", "SGY0", "SGainByY.SGY0"},
    {"InterParamSGainByY", "SGY64", "SGainByY.SGY64"},
    {"InterParamSGainByY", "SGY128", "SGainByY.SGY128"},
    {"InterParamSGainByY", "SGY192", "SGainByY.SGY192"},
    {"InterParamSGainByY", "SGY256", "SGainByY.SGY256"},
    {"InterParamLSP", "LSP1", "LSP.LSP1"},
    {"InterParamLSP", "LSP2", "LSP.LSP2"},
};
constexpr std::pair<const char*, const char*> kStages[] = {
    {"Low", "lower CT"}, {"High", "upper CT"}, {"Tgt", "target"}, {"Out", "written"}};

struct Wrapping {
    std::vector<std::string> wrapped;

    void compare(const std::string& name, std::int64_t computed, const Image& image) {
        const ColorField* field = find_field(name);
        if (field == nullptr || field->read(image) == computed) return;
        wrapped.push_back(fmt::format("{} {} became {}", name, computed, field->read(image)));
    }

    /// A target that its field cannot hold is never reached.
    void fit(const std::string& name, std::int64_t target) {
        const ColorField* field = find_field(name);
        if (field == nullptr || (target >= 0 && target >> field->width == 0)) return;
        wrapped.push_back(
            fmt::format("{} target {} needs more than {} bits", name, target, field->width));
    }
};

void tell_blocks(Story& story, const Trace& trace, const Image& image) {
    Wrapping wrapping;
    for (std::size_t k = 0; k < 3; ++k) {
        const std::string name = fmt::format("Global.{}", "BCS"[k]);
        Story::Json values;
        std::string text;
        for (const auto& [stage, label] : kStages) {
            const Integers all = trace.integers(fmt::format("[InterParamGlobal()] ({})", stage));
            if (all.size() != 3) continue;
            values[stage] = all[k];
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", label, all[k]);
        }
        if (values.contains("Out")) wrapping.compare(name, values["Out"], image);
        if (values.contains("Tgt")) wrapping.fit(name, values["Tgt"]);
        story.fact(name, name, values, text);
    }
    for (const TracedRow& row : kTracedRows) {
        story.line(fmt::format("  {}", row.field));
        Story::Json values;
        for (const auto& [stage, label] : kStages) {
            const auto line =
                trace.rest(fmt::format("[{}()] {}_{}", row.function, row.label, stage));
            if (!line) continue;
            const Integers numbers = numbers_of<std::int64_t>(*line);
            const bool settled = values.contains("Tgt") && values["Tgt"] == Story::Json(numbers);
            values[stage] = numbers;
            if (!settled) story.list(row.field, fmt::format("  {}", label), numbers);
            if (std::string_view(stage) != "Out") continue;
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                wrapping.compare(fmt::format("{}[{}]", row.field, i), numbers[i], image);
            }
        }
        story.json()[row.field] = values;
    }
    tell_wrapped(story, wrapping.wrapped);
}

/// The images between which a frame interpolates, and its CTs in mired.
struct Interpolation {
    Image upper{};
    Image lower{};
    std::int32_t real_ct = 0;
    std::int32_t upper_ct = 0;
    std::int32_t lower_ct = 0;
};

/// Outdoors the images are blends: made again with the exported functions.
Interpolation find_interpolation(const Trace& trace, const Tuning& tuning) {
    Interpolation found;
    const auto mired = [&](const char* name) {
        return static_cast<std::int32_t>(trace.named("[InterParamPartialS()]", name));
    };
    found.real_ct = mired("u4RealCT");
    found.upper_ct = mired("u4UpperCT");
    found.lower_ct = mired("u4LowerCT");
    const auto index = [&](const char* name) {
        return static_cast<std::size_t>(trace.named("[SmoothCOLOR()]", name));
    };
    const std::size_t slot = index("SceneMode");
    found.upper = tuning.color[slot][index("eUpperIdx")];
    found.lower = tuning.color[slot][index("eLowerIdx")];
    if (!trace.has("[SmoothCOLOR()] Outdoor mode")) return found;
    Param param{};
    const auto weight = [&](const char* name) {
        return static_cast<std::uint32_t>(trace.named("[InterParamByLVGlobal()]", name));
    };
    param.u4OutdoorRatio = weight("u4OutdoorRatio");
    param.u4OutdoorBase = weight("u4OutdoorBase");
    for (BlockFunction* blend :
         {InterParamByLVPartialY, InterParamByLVPartialH, InterParamByLVPartialS}) {
        blend(param, tuning.color[3][index("eUpperIdx")], Image(found.upper), found.upper);
        blend(param, tuning.color[3][index("eLowerIdx")], Image(found.lower), found.lower);
    }
    return found;
}

/// Fields whose target lay outside the two tuned values.
std::vector<std::string> clamped_fields(const Trace& trace, const Tuning& tuning) {
    std::vector<std::string> clamped;
    const Interpolation between = find_interpolation(trace, tuning);
    const auto [real, upper, lower] =
        std::tuple(between.real_ct, between.upper_ct, between.lower_ct);
    if (IsCCTBoundary(real, upper, lower) == 1) return clamped;
    for (const ColorField& field : color_fields()) {
        if (!field.name.starts_with("Luma.") && !field.name.starts_with("Hue.")) continue;
        const std::uint32_t high = field.read(between.upper);
        const std::uint32_t low = field.read(between.lower);
        const auto target =
            InterParamByCT(real, upper, lower, static_cast<int>(high), static_cast<int>(low));
        const std::uint32_t kept = Clip(static_cast<unsigned int>(target), high, low);
        if (kept == static_cast<std::uint32_t>(target)) continue;
        clamped.push_back(fmt::format("{} {} to {}", field.name, target, kept));
    }
    // A blend by LV with the CT's weights is the blend by CT without its clamp.
    Param param{};
    param.u4OutdoorBase = static_cast<std::uint32_t>(lower) - static_cast<std::uint32_t>(upper);
    param.u4OutdoorRatio = static_cast<std::uint32_t>(lower) - static_cast<std::uint32_t>(real);
    TraceCapture capture({"debug.smooth_color.lvdump.sat"});
    Image scratch{};
    InterParamByLVPartialS(param, between.upper, between.lower, scratch);
    const Trace unclamped(std::exchange(capture.lines(), {}));
    for (const char* gain : {"SG1", "SG2", "SG3"}) {
        const Integers before =
            unclamped.integers(fmt::format("[InterParamByLVPartialS()] {}_Tgt", gain));
        const Integers after = trace.integers(fmt::format("[InterParamPartialS()] {}_Tgt", gain));
        for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
            if (before[i] == after[i]) continue;
            clamped.push_back(
                fmt::format("Saturation.{}[{}] {} to {}", gain, i, before[i], after[i]));
        }
    }
    return clamped;
}

/// Which image the colour map is taken from, found by trying.
bool map_is_from_upper(const Interpolation& between) {
    Param param{};
    param.u4RealCT = static_cast<std::uint32_t>(between.real_ct);
    param.u4UpperCT = static_cast<std::uint32_t>(between.upper_ct);
    param.u4LowerCT = static_cast<std::uint32_t>(between.lower_ct);
    Image upper{};
    upper.u4Word[71] = 1;
    Image image{};
    InterParam3DLUT(param, upper, Image{}, image);
    return image.u4Word[71] == 1;
}

void tell_color(Story& story, const Trace& trace, const Tuning& tuning, const Image& image) {
    const auto driver = [&](const char* name) { return trace.named("[SmoothCOLOR()]", name); };
    const auto block = [&](const char* function, const char* name) {
        return trace.named(fmt::format("[{}()]", function), name);
    };
    story.section("color", "Colour");
    const std::int64_t slot = driver("SceneMode");
    story.fact("slot", "slot", slot,
               fmt::format("{}, {}", slot, kSlotNames[static_cast<std::size_t>(slot)]));
    const std::int64_t upper_index = driver("eUpperIdx");
    const std::int64_t lower_index = driver("eLowerIdx");
    story.fact("bracket", "CT bracket",
               {{"upper_index", upper_index},
                {"upper_kelvin", driver("u4UpperCT")},
                {"lower_index", lower_index},
                {"lower_kelvin", driver("u4LowerCT")}},
               fmt::format("upper CT{} ({} K), lower CT{} ({} K)", upper_index, driver("u4UpperCT"),
                           lower_index, driver("u4LowerCT")));
    if (trace.has("[SmoothCOLOR()] Force Lock")) {
        story.fact("locked", "locked", true, "debug.smooth_color.lock is 1: no block is computed");
        return;
    }
    const Interpolation between = find_interpolation(trace, tuning);
    const auto [real, upper, lower] =
        std::tuple(between.real_ct, between.upper_ct, between.lower_ct);
    const bool degenerate = IsCCTBoundary(real, upper, lower) == 1;
    const int upper_share = InterParamByCT(real, upper, lower, 1000, 0);
    story.fact(
        "mired", "in mired",
        {{"real", real}, {"upper", upper}, {"lower", lower}, {"upper_share", upper_share / 1000.0}},
        fmt::format("{} between {} and {}: {}", real, upper, lower,
                    degenerate ? "the lower-CT image alone"
                               : fmt::format("{:.1f} % upper, {:.1f} % lower", upper_share / 10.0,
                                             100.0 - upper_share / 10.0)));
    const bool outdoor = trace.has("[SmoothCOLOR()] Outdoor mode");
    const std::int64_t ratio = block("InterParamByLVGlobal", "u4OutdoorRatio");
    const std::int64_t base = block("InterParamByLVGlobal", "u4OutdoorBase");
    if (outdoor) {
        story.fact("outdoor", "path", {{"ratio", ratio}, {"base", base}},
                   fmt::format("outdoor path; outdoor images weigh {} of {}", ratio, base));
    } else {
        story.fact("outdoor", "path", nullptr, "indoor");
    }
    const std::int64_t saturation = block("InterParamPartialS", "u4Ratio");
    story.fact("saturation_ratio", "saturation by LV", saturation,
               fmt::format("x {}/16", saturation));
    const Integers lsp = trace.integers("[SmoothCOLOR()] LSP = ");
    story.fact(
        "lsp", "local saturation", lsp,
        fmt::format("{}light value {} u4LSPMaxLV, {} in the image",
                    lsp == Integers{1, 1} ? "on: " : "off: ", lsp.at(0) == 1 ? "within" : "above",
                    lsp.at(1) == 1 ? "enabled" : "disabled"));
    const bool at_once = block("InterParamGlobal", "IsCapture") == 1;
    const Integers steps = {block("InterParamGlobal", "lum_speed"),
                            block("InterParamPartialH", "u4Step"),
                            block("InterParamGlobal", "sat_speed")};
    story.fact("step", "step a frame", at_once ? Story::Json() : Story::Json(steps),
               at_once
                   ? "none: targets are taken at once"
                   : fmt::format("luma {}, hue {}, saturation {}", steps[0], steps[1], steps[2]));
    const bool from_upper = map_is_from_upper(between);
    story.fact("color_map", "colour map", from_upper ? "upper" : "lower",
               fmt::format("of the {}-CT image", from_upper ? "upper" : "lower"));
    tell_blocks(story, trace, image);
    const std::vector<std::string> clamped = clamped_fields(trace, tuning);
    story.fact("clamped", "clamped targets", clamped,
               clamped.empty() ? "none" : fmt::format("{}", fmt::join(clamped, "; ")));
}

// The registers.

void tell_registers(Story& story, const Camera& camera) {
    story.section("registers", "Registers");
    if (camera.jobs().ccm) {
        const auto values = decode(camera.ccm(), camera.tuning().caller);
        Story::Json words = Story::Json::array();
        for (std::uint32_t word = 0; word < 6; ++word) {
            std::string text;
            for (std::size_t k = 0; k < kCoefficientFields.size(); ++k) {
                if (kCoefficientFields[k].word != word) continue;
                text += fmt::format("  c{} {}", k, values[k]);
            }
            const std::string hex = fmt::format("0x{:08X}", camera.ccm().u4Word[word]);
            story.line(fmt::format("  {:<12}{}{}", fmt::format("ccm {}", word), hex, text));
            words.push_back(hex);
        }
        story.json()["ccm"] = words;
    }
    if (!camera.jobs().color) return;
    Story::Json words = Story::Json::array();
    Story::Json values = Story::Json::object();
    std::array<std::string, std::size(Image{}.u4Word)> texts;
    for (const ColorField& field : color_fields()) {
        const std::uint32_t value = field.read(camera.color());
        texts[field.word] += fmt::format("  {} {}", field.name, value);
        values[field.name] = value;
    }
    for (std::size_t word = 0; word < texts.size(); ++word) {
        const std::string hex = fmt::format("0x{:08X}", camera.color().u4Word[word]);
        story.line(fmt::format("  {:<12}{}{}", fmt::format("colour {}", word), hex, texts[word]));
        words.push_back(hex);
    }
    story.json()["color"] = words;
    story.json()["color_fields"] = values;
}

}  // namespace

Camera settled_camera(const Tuning& tuning, Jobs jobs, const Frame& frame) {
    Camera camera(tuning, jobs);
    run_to_rest(camera, frame);
    return camera;
}

Story explain_frame(Camera& camera, const Frame& frame) {
    std::vector<std::string> switches = color_switches();
    switches.insert(switches.end(), kCcmSwitches.begin(), kCcmSwitches.end());
    Camera unaveraged = camera;
    unaveraged.set_weights(kNoAverage);
    const Trace before_average = trace_of(unaveraged, frame, kCcmSwitches);
    const Trace trace = trace_of(camera, frame, switches);
    camera.run(frame);

    Story story;
    tell_inputs(story, frame);
    if (camera.jobs().ccm) {
        tell_matrix(story, trace, before_average, decode(camera.ccm(), camera.tuning().caller));
    }
    if (camera.jobs().color) tell_color(story, trace, camera.tuning(), camera.color());
    tell_registers(story, camera);
    return story;
}

}  // namespace imgtune::workbench
