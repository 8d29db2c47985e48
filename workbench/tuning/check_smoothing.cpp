#include <fmt/format.h>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

constexpr std::uint32_t kLargestSaturation = 1023;

void check_ratio_thresholds(Checked& checked, std::size_t slot) {
    const ISP_NVRAM_PCA_PARAM_T& p = checked.tuning().pca[slot];
    const std::uint32_t th[4] = {p.u4RatioLV_Th0 & 0xff, p.u4RatioLV_Th1 & 0xff,
                                 p.u4RatioLV_Th2 & 0xff, p.u4RatioLV_Th3 & 0xff};
    static constexpr const char* kNames[4] = {"u4RatioLV_Th0", "u4RatioLV_Th1", "u4RatioLV_Th2",
                                              "u4RatioLV_Th3"};
    const std::uint32_t plateau[3] = {p.u4RatioLowLV & 0xff, p.u4RatioMidLV & 0xff,
                                      p.u4RatioHighLV & 0xff};
    for (std::size_t i = 1; i < 4; ++i) {
        // A ramp without length is a jump, unless it joins equal ratios.
        const bool ramp = i != 2;
        const bool jumps = ramp && th[i] == th[i - 1] && plateau[i / 2] != plateau[i / 2 + 1];
        if ((th[i] >= th[i - 1] && !jumps) ||
            checked.is_suppressed(slot_path(slot, kNames[i - 1]))) {
            continue;
        }
        checked.report({.code = jumps ? "T214" : "T201",
                        .path = slot_path(slot, kNames[i]),
                        .message = fmt::format("is {} after {}; it must be {}", th[i], th[i - 1],
                                               jumps ? "above" : "no less"),
                        .value = std::to_string(th[i]),
                        .allowed = fmt::format("{} {}", ramp ? "above" : "from", th[i - 1]),
                        .effect = "the saturation jumps at this light value instead of ramping",
                        .suggestion = "Th0 < Th1 <= Th2 < Th3"});
    }
}

/// Largest saturation of the slot's images under each ratio, as the global block computes it.
void check_saturation_target(Checked& checked, std::size_t slot, std::size_t source) {
    const ISP_NVRAM_PCA_PARAM_T& p = checked.tuning().pca[slot];
    constexpr BitField kSaturation{5, 0, 10};
    for (std::size_t ct = 0; ct < 5; ++ct) {
        const std::uint32_t s = kSaturation.read(checked.tuning().color[source][ct].u4Word);
        for (const std::uint32_t word : {p.u4RatioHighLV, p.u4RatioMidLV, p.u4RatioLowLV}) {
            const std::uint32_t target = p.u4SatOffset + ((s * (word & 0xff)) >> 4U);
            if (target <= kLargestSaturation) continue;
            checked.report(
                {.code = "T213",
                 .path = image_path(source, ct) + ".Global.S",
                 .message = fmt::format("is {}, which ratio {} / 16 and offset {} of slot {} make "
                                        "{}; allowed are 0..{}",
                                        s, word & 0xff, as_signed(p.u4SatOffset), kSlotNames[slot],
                                        as_signed(target), kLargestSaturation),
                 .value = std::to_string(as_signed(target)),
                 .allowed = fmt::format("0..{}", kLargestSaturation),
                 .effect = "the saturation wraps: pale or wild colours",
                 .suggestion = "lower S, the ratio or the offset"});
            return;
        }
    }
}

void check_outdoor(Checked& checked) {
    const ISP_NVRAM_PCA_PARAM_T& p = checked.tuning().pca[kSlotNormal];
    if (p.u4OutdoorLV_Start >= p.u4OutdoorLV_End &&
        !checked.is_suppressed(slot_path(kSlotNormal, "u4OutdoorLV_End"))) {
        const bool equal = p.u4OutdoorLV_Start == p.u4OutdoorLV_End;
        checked.report({.code = equal ? "T215" : "T203",
                        .path = slot_path(kSlotNormal, "u4OutdoorLV_Start"),
                        .message = fmt::format("is {}, and u4OutdoorLV_End {}; it must be below",
                                               p.u4OutdoorLV_Start, p.u4OutdoorLV_End),
                        .value = std::to_string(p.u4OutdoorLV_Start),
                        .allowed = fmt::format("below {}", p.u4OutdoorLV_End),
                        .effect = "the picture jumps between indoor and outdoor colours",
                        .suggestion = "u4OutdoorLV_Start < u4OutdoorLV_End"});
    }
    if (p.u4OutdoorBase == 0) {
        checked.report({.code = "T204",
                        .path = slot_path(kSlotNormal, "u4OutdoorBase"),
                        .message = "is 0; it must be above while u4OutdoorEnable is set",
                        .value = "0",
                        .allowed = "1..29343",
                        .effect = "every blended field becomes 0: a black picture",
                        .suggestion = "u4OutdoorBase: 16, or u4OutdoorEnable: 0"});
    }
}

}  // namespace

void check_smoothing(Checked& checked) {
    if (!checked.tuning().has_color) return;
    for (std::size_t slot = 0; slot < kSlotOutdoor; ++slot) {
        check_ratio_thresholds(checked, slot);
        check_saturation_target(checked, slot, slot);
        if (slot == kSlotNormal && checked.uses_outdoor()) {
            check_saturation_target(checked, slot, kSlotOutdoor);
        }
    }
    if (checked.uses_outdoor()) check_outdoor(checked);
}

}  // namespace imgtune::workbench
