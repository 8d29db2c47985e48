#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

constexpr std::int32_t kFarHue = 24;  ///< from both neighbours

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;

const FieldDefinition& image_field(std::string_view name) {
    const auto& all = kColorImageRecord.fields;
    return *std::find_if(all.begin(), all.end(),
                         [&](const FieldDefinition& field) { return field.name == name; });
}

bool is_empty(const Image& image) {
    const auto all = color_fields();
    return std::all_of(all.begin(), all.end(),
                       [&](const ColorField& f) { return f.read(image) == 0; });
}

void check_knots(Checked& checked, const Image& image, const std::string& path) {
    static const FieldDefinition& first = image_field("Saturation.SP1");
    static const FieldDefinition& second = image_field("Saturation.SP2");
    for (unsigned i = 0; i < first.count; ++i) {
        const std::uint32_t sp1 = first.place(i).read(image.u4Word);
        const std::uint32_t sp2 = second.place(i).read(image.u4Word);
        if (sp1 <= sp2 || checked.is_suppressed(fmt::format("{}.Saturation.SP2[{}]", path, i)))
            continue;
        checked.report({.code = "T207",
                        .path = fmt::format("{}.Saturation.SP1[{}]", path, i),
                        .message = fmt::format("is {}, above SP2[{}], {}", sp1, i, sp2),
                        .value = std::to_string(sp1),
                        .allowed = fmt::format("0..{}", sp2),
                        .effect = "the slopes between the knots wrap: colour casts",
                        .suggestion = "SP1 <= SP2"});
    }
}

void check_luma(Checked& checked, const Image& image, const std::string& path) {
    static const FieldDefinition& luma = image_field("Luma.PY");
    for (unsigned i = 1; i < luma.count; ++i) {
        const std::uint32_t before = luma.place(i - 1).read(image.u4Word);
        const std::uint32_t value = luma.place(i).read(image.u4Word);
        if (value >= before) continue;
        checked.report({.code = "T216",
                        .path = fmt::format("{}.Luma.PY[{}]", path, i),
                        .message = fmt::format("is {} after {}: the curve falls", value, before),
                        .value = std::to_string(value),
                        .allowed = fmt::format("{}..255", before),
                        .effect = "brighter parts come out darker than their surroundings",
                        .suggestion = "let the curve rise"});
        return;
    }
}

void check_hue(Checked& checked, const Image& image, const std::string& path) {
    static const FieldDefinition& hue = image_field("Hue.PH");
    const auto value = [&](unsigned i) {
        return as_signed(hue.place(i % hue.count).read(image.u4Word));
    };
    for (unsigned i = 0; i < hue.count; ++i) {
        const std::int32_t before = value(i) - value(i + hue.count - 1);
        const std::int32_t after = value(i) - value(i + 1);
        const bool above = before > kFarHue && after > kFarHue;
        const bool below = before < -kFarHue && after < -kFarHue;
        if (!above && !below) continue;
        checked.report(
            {.code = "T217",
             .path = fmt::format("{}.Hue.PH[{}]", path, i),
             .message = fmt::format("is {} between {} and {}; usual are steps up to {}", value(i),
                                    value(i + hue.count - 1), value(i + 1), kFarHue),
             .value = std::to_string(value(i)),
             .allowed = fmt::format("steps up to {}", kFarHue),
             .effect = "one hue turns against its neighbours: broken gradients",
             .suggestion = "check the entry"});
    }
}

void check_slot(Checked& checked, std::size_t slot) {
    const Image& first = checked.tuning().color[slot][0];
    for (std::size_t ct = 0; ct < 5; ++ct) {
        const Image& image = checked.tuning().color[slot][ct];
        const std::string path = image_path(slot, ct);
        if (is_empty(image)) {
            checked.report({.code = "T211",
                            .path = path,
                            .message = "is missing: all fields are 0",
                            .effect = "a black or grey picture around this CT",
                            .suggestion = "fill the image, or write it like a neighbour"});
            checked.suppress(path);
            continue;
        }
        check_knots(checked, image, path);
        check_luma(checked, image, path);
        check_hue(checked, image, path);
        if (slot == kSlotOutdoor || std::equal(first.u4Word, first.u4Word + 4, image.u4Word)) {
            continue;
        }
        checked.report({.code = "T212",
                        .path = path + ".control",
                        .message = "differs from that of CT index 0",
                        .allowed = "the same in all five images",
                        .effect = "not used: control words and LSP_enable come from CT index 0",
                        .suggestion = "make them alike"});
    }
}

void check_copies(Checked& checked) {
    const auto& images = checked.tuning().color;
    for (std::size_t a = 0; a < 4; ++a) {
        for (std::size_t b = a + 1; b < 4; ++b) {
            if ((b == kSlotOutdoor && !checked.uses_outdoor()) ||
                std::memcmp(images[a], images[b], sizeof(images[a])) != 0) {
                continue;
            }
            checked.report({.code = "T210",
                            .path = fmt::format("color.images.{}", kSlotNames[b]),
                            .message = fmt::format("is a copy of slot {}", kSlotNames[a]),
                            .effect = "switching the slot changes no colours",
                            .suggestion = "tune the slot, or leave it if that is meant"});
        }
    }
}

}  // namespace

void check_images(Checked& checked) {
    if (!checked.tuning().has_color) return;
    for (std::size_t slot = 0; slot < 4; ++slot) {
        if (slot != kSlotOutdoor || checked.uses_outdoor()) check_slot(checked, slot);
    }
    check_copies(checked);
}

}  // namespace imgtune::workbench
