#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "workbench/studies/explain_parts.h"
#include "workbench/trace/trace_capture.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Param = ISP_SMOOTH_COLOR_PARAM_T;
using BlockFunction = void(Param&, const Image&, const Image&, Image&);

const ColorField* find_field(std::string_view name) {
    for (const ColorField& field : color_fields()) {
        if (field.name == name) return &field;
    }
    return nullptr;
}

constexpr std::pair<Stage, std::vector<std::int64_t> ColorRow::*> kStages[] = {
    {Stage::low, &ColorRow::lower},
    {Stage::high, &ColorRow::upper},
    {Stage::target, &ColorRow::target},
    {Stage::written, &ColorRow::written}};

/// All rows but those of the colour map, which moves as a whole; values of a name each get a row.
std::vector<ColorRow> find_rows(const Trace& trace) {
    std::vector<ColorRow> rows;
    for (const ColorLine& line : kColorLines) {
        const auto written = trace.find(line, Stage::written);
        const bool named = written && written->has_keys();
        const std::size_t first = rows.size();
        if (std::string_view(line.field).starts_with("ColorMap")) continue;
        rows.resize(first + (named ? written->values.size() : 1));
        for (std::size_t k = first; k < rows.size(); ++k) {
            rows[k].field = named ? written->field_of(k - first) : std::string(line.field);
        }
        for (const auto& [stage, values] : kStages) {
            const auto found = trace.find(line, stage);
            if (!found) continue;
            const std::vector<std::int64_t> all = found->integers();
            if (!named) rows[first].*values = all;
            for (std::size_t k = 0; named && k < std::min(all.size(), rows.size() - first); ++k) {
                rows[first + k].*values = {all[k]};
            }
        }
    }
    return rows;
}

/// Compares what a block computed with what its field holds.
void find_wrapped(ColorExplanation& told, const Image& image) {
    for (const ColorRow& row : told.rows) {
        const bool single = find_field(row.field) != nullptr;
        const auto name = [&](std::size_t i) {
            return single ? row.field : fmt::format("{}[{}]", row.field, i);
        };
        for (std::size_t i = 0; i < row.written.size(); ++i) {
            const ColorField* field = find_field(name(i));
            if (field == nullptr || field->read(image) == row.written[i]) continue;
            told.wrapped.push_back({name(i), row.written[i], field->read(image)});
        }
        if (!single || row.target.empty()) continue;
        const unsigned bits = find_field(row.field)->width;
        const std::int64_t target = row.target.front();
        if (target >= 0 && target >> bits == 0) continue;
        told.unreachable.push_back({row.field, target, bits});
    }
}

/// The images between which a frame interpolates.
struct Interpolation {
    Image upper{};
    Image lower{};
    std::int32_t real = 0;  ///< in mired, as are the next two
    std::int32_t upper_ct = 0;
    std::int32_t lower_ct = 0;
};

/// Outdoors the images are blends: made again with the exported functions.
Interpolation find_interpolation(const ColorExplanation& told, const Tuning& tuning) {
    const auto upper = static_cast<std::size_t>(told.upper_index);
    const auto lower = static_cast<std::size_t>(told.lower_index);
    const auto& images = tuning.color[told.slot];
    Interpolation found{images[upper], images[lower], static_cast<std::int32_t>(told.real_mired),
                        static_cast<std::int32_t>(told.upper_mired),
                        static_cast<std::int32_t>(told.lower_mired)};
    if (!told.outdoor) return found;
    Param param{};
    param.u4OutdoorRatio = static_cast<std::uint32_t>(told.outdoor_ratio);
    param.u4OutdoorBase = static_cast<std::uint32_t>(told.outdoor_base);
    for (BlockFunction* blend :
         {InterParamByLVPartialY, InterParamByLVPartialH, InterParamByLVPartialS}) {
        blend(param, tuning.color[kSlotOutdoor][upper], images[upper], found.upper);
        blend(param, tuning.color[kSlotOutdoor][lower], images[lower], found.lower);
    }
    return found;
}

/// Luma and hue: their targets by the exported rules.
void find_clamped_values(const Interpolation& between, std::vector<ClampedTarget>& clamped) {
    for (const ColorField& field : color_fields()) {
        if (!field.name.starts_with("Luma.") && !field.name.starts_with("Hue.")) continue;
        const std::uint32_t high = field.read(between.upper);
        const std::uint32_t low = field.read(between.lower);
        const auto target = static_cast<std::uint32_t>(
            InterParamByCT(between.real, between.upper_ct, between.lower_ct, static_cast<int>(high),
                           static_cast<int>(low)));
        const std::uint32_t kept = Clip(target, high, low);
        if (kept != target)
            clamped.push_back({field.name, static_cast<std::int32_t>(target), kept});
    }
}

/// Saturation gains: a blend by LV with the CT's weights is the blend by CT without its clamp.
void find_clamped_gains(const Interpolation& between, const ColorExplanation& told,
                        std::vector<ClampedTarget>& clamped) {
    const auto lower = static_cast<std::uint32_t>(between.lower_ct);
    Param param{};
    param.u4OutdoorBase = lower - static_cast<std::uint32_t>(between.upper_ct);
    param.u4OutdoorRatio = lower - static_cast<std::uint32_t>(between.real);
    TraceCapture capture({"debug.smooth_color.lvdump.sat"});
    Image scratch{};
    InterParamByLVPartialS(param, between.upper, between.lower, scratch);
    const Trace unclamped(capture.lines());
    for (const ColorRow& row : told.rows) {
        constexpr std::string_view kGains = "Saturation.SG";
        if (!std::string_view(row.field).starts_with(kGains)) continue;
        const auto before = unclamped.integers(
            fmt::format("[InterParamByLVPartialS()] SG{}_Tgt", row.field.substr(kGains.size())));
        for (std::size_t i = 0; i < std::min(before.size(), row.target.size()); ++i) {
            if (before[i] == row.target[i]) continue;
            clamped.push_back({fmt::format("{}[{}]", row.field, i), before[i], row.target[i]});
        }
    }
}

/// Which image the colour map is taken from, found by trying.
bool map_is_from_upper(const Interpolation& between) {
    Param param{};
    param.u4RealCT = static_cast<std::uint32_t>(between.real);
    param.u4UpperCT = static_cast<std::uint32_t>(between.upper_ct);
    param.u4LowerCT = static_cast<std::uint32_t>(between.lower_ct);
    Image upper{};
    upper.u4Word[71] = 1;
    Image image{};
    InterParam3DLUT(param, upper, Image{}, image);
    return image.u4Word[71] == 1;
}

void read_bracket(const Trace& trace, ColorExplanation& told) {
    const auto driver = [&](const char* name) { return trace.named("SmoothCOLOR", name); };
    told.slot = driver("SceneMode");
    told.upper_index = driver("eUpperIdx");
    told.upper_kelvin = driver("u4UpperCT");
    told.lower_index = driver("eLowerIdx");
    told.lower_kelvin = driver("u4LowerCT");
    told.locked = trace.has(color_label::kLocked);
}

void read_weights(const Trace& trace, ColorExplanation& told) {
    told.real_mired = trace.named("InterParamPartialS", "u4RealCT");
    told.upper_mired = trace.named("InterParamPartialS", "u4UpperCT");
    told.lower_mired = trace.named("InterParamPartialS", "u4LowerCT");
    const auto real = static_cast<std::int32_t>(told.real_mired);
    const auto upper = static_cast<std::int32_t>(told.upper_mired);
    const auto lower = static_cast<std::int32_t>(told.lower_mired);
    told.lower_alone = IsCCTBoundary(real, upper, lower) == 1;
    told.upper_share = InterParamByCT(real, upper, lower, 1000, 0) / 1000.0;
    told.outdoor = trace.has(color_label::kOutdoor);
    if (told.outdoor) {
        told.outdoor_ratio = trace.named("InterParamByLVGlobal", "u4OutdoorRatio");
        told.outdoor_base = trace.named("InterParamByLVGlobal", "u4OutdoorBase");
    }
    told.saturation_ratio = trace.named("InterParamPartialS", "u4Ratio");
    const auto lsp = trace.integers(color_label::kLsp);
    told.lsp_light = !lsp.empty() && lsp.front() == 1;
    told.lsp_enabled = !lsp.empty() && lsp.back() == 1;
    told.at_once = trace.named("InterParamGlobal", "IsCapture") == 1;
    told.luma_step = trace.named("InterParamGlobal", "lum_speed");
    told.hue_step = trace.named("InterParamPartialH", "u4Step");
    told.saturation_step = trace.named("InterParamGlobal", "sat_speed");
}

}  // namespace

ColorExplanation explain_color(const Trace& trace, const Tuning& tuning, const Image& image) {
    ColorExplanation told;
    read_bracket(trace, told);
    if (told.locked) return told;
    read_weights(trace, told);
    const Interpolation between = find_interpolation(told, tuning);
    told.color_map_from_upper = map_is_from_upper(between);
    told.rows = find_rows(trace);
    find_wrapped(told, image);
    if (told.lower_alone) return told;
    find_clamped_values(between, told.clamped);
    find_clamped_gains(between, told, told.clamped);
    return told;
}

}  // namespace imgtune::workbench
