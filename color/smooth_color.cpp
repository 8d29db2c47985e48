#include <imgtune/color.h>

#include <algorithm>

#include "color/blocks.h"
#include "color/control.h"
#include "color/parameters.h"
#include "common/debug_switch.h"
#include "common/log.h"

const unsigned short g_Smooth_Color_Ver = 100;

namespace imgtune {

namespace {

using NSIspTuning::EIndex_PCA_LUT_CT;
using NSIspTuning::RAWIspCamInfo;

constexpr std::int32_t kNormalSlot = 0;
constexpr std::int32_t kSceneSlot = 1;
constexpr std::int32_t kFlashSlot = 2;
constexpr std::int32_t kOutdoorSlot = 3;

struct DriverSwitches {
    std::int32_t dump;
    std::int32_t lock;
    std::int32_t enable;
    std::int32_t luma_bypass;
    std::int32_t hue_bypass;
    std::int32_t saturation_bypass;
    std::int32_t color_map_bypass;
};

DriverSwitches read_switches() {
    DebugSwitches switches;
    // Braced initialisers are evaluated in this order.
    return {
        switches.read("debug.smooth_color.dump"),
        switches.read("debug.smooth_color.lock"),
        switches.read("debug.smooth_color.enable"),
        switches.read("debug.smooth_color.bypass.yeng"),
        switches.read("debug.smooth_color.bypass.heng"),
        switches.read("debug.smooth_color.bypass.seng"),
        switches.read("debug.smooth_color.bypass.cm"),
    };
}

void apply_bypass(const DriverSwitches& switches, ColorImage& working) {
    kLumaBypass.write(working.u4Word, as_unsigned(switches.luma_bypass));
    kSaturationBypass.write(working.u4Word, as_unsigned(switches.saturation_bypass));
    kHueBypass.write(working.u4Word, as_unsigned(switches.hue_bypass));
    kColorMapBypass.write(working.u4Word, as_unsigned(switches.color_map_bypass));
}

std::int32_t slot_of(const RAWIspCamInfo& state) {
    if (static_cast<std::int32_t>(state.u4FlashMode) != 0) return kFlashSlot;
    return static_cast<std::int32_t>(state.u4SceneFlag) == 1 ? kSceneSlot : kNormalSlot;
}

/// A CT index as an array index: the nearest of 0..4, whatever the caller says.
constexpr std::int32_t ct_index(EIndex_PCA_LUT_CT index) {
    return std::clamp(static_cast<std::int32_t>(index), 0, 4);
}

template <class... Values>
void driver_trace(std::int32_t on, const char* format, Values... values) {
    if (on != 0) log_line(format, "SmoothCOLOR", values...);
}

void trace_tuning(std::int32_t on, const ISP_NVRAM_PCA_PARAM_T& t) {
    driver_trace(
        on,
        "[%s()] In Ram: %03d, %03d, %03d, %03d, %03d, %03d, %03d, %03d, %03d, %03d, %03d, %03d, "
        "%03d, %03d, %03d, %03d, %03d\n",
        as_signed(t.u4RatioHighLV), as_signed(t.u4RatioMidLV), as_signed(t.u4RatioLowLV),
        as_signed(t.u4RatioLV_Th0), as_signed(t.u4RatioLV_Th1), as_signed(t.u4RatioLV_Th2),
        as_signed(t.u4RatioLV_Th3), as_signed(t.u4SatOffset), as_signed(t.lum_speed),
        as_signed(t.hue_speed), as_signed(t.sat_speed), as_signed(t.u4LSPMaxLV),
        as_signed(t.u4OutdoorEnable), as_signed(t.u4OutdoorLV_Start), as_signed(t.u4OutdoorLV_End),
        as_signed(t.u4PcaWord15), as_signed(t.u4OutdoorBase));
}

/// In the order in which they are taken.
constexpr Block kBlocks[] = {kGlobalBlock,     kLumaBlock,           kHueBlock,
                             kSaturationBlock, kSaturationGainBlock, kLspBlock};

void interpolate_indoor(ColorParam& param, const ColorImage& upper, const ColorImage& lower,
                        ColorImage& working) {
    const FrameBlend by_ct = ct_blend(param);
    for (const Block& block : kBlocks) {
        block.by_ct.run(block.by_ct.trace(), param, by_ct, upper, lower, working);
    }
    InterParam3DLUT(param, upper, lower, working);
}

struct ImagePair {
    const ColorImage& upper;
    const ColorImage& lower;
};

/// An image for LV blends, which write just the fields that the interpolation after them reads. The
/// words that they write in part start out zeroed.
struct ScratchImage {
    ColorImage image;

    ScratchImage() {
        std::fill_n(image.u4Word + 4, 10, 0U);
        std::fill_n(image.u4Word + 69, 2, 0U);
    }
};

/// Every block by LV, then by CT.
void interpolate_inside_ramp(const ColorParam& param, const FrameBlend& by_lv,
                             const FrameBlend& by_ct, const ImagePair& outdoor,
                             const ImagePair& normal, ColorImage& working) {
    ScratchImage upper_scratch;
    ScratchImage lower_scratch;
    ColorImage& upper = upper_scratch.image;
    ColorImage& lower = lower_scratch.image;
    for (const Block& block : kBlocks) {
        block.by_lv.run(block.by_lv.trace(), param, by_lv, outdoor.upper, normal.upper, upper);
        block.by_lv.run(block.by_lv.trace(), param, by_lv, outdoor.lower, normal.lower, lower);
        block.by_ct.run(block.by_ct.trace(), param, by_ct, upper, lower, working);
    }
}

/// The same where the outdoor or the normal images have all the weight: these stand for the blends
/// that would give their fields back, unless lines are asked for.
void interpolate_at_ramp_end(const ColorParam& param, const FrameBlend& by_lv,
                             const FrameBlend& by_ct, const ImagePair& outdoor,
                             const ImagePair& normal, ColorImage& working) {
    const auto upper_of = [](const ImagePair& pair) -> const ColorImage& { return pair.upper; };
    const auto lower_of = [](const ImagePair& pair) -> const ColorImage& { return pair.lower; };
    const ImagePair& whole = by_lv.takes_low() ? normal : outdoor;
    for (const Block& block : kBlocks) {
        ColorImage scratch[2];
        const auto blended = [&](const auto& one_of, ColorImage& out) -> const ColorImage& {
            const BlockTrace trace = block.by_lv.trace();
            const ColorImage& all = one_of(whole);
            if (!trace.on() && (block.comes_back == nullptr || block.comes_back(all))) return all;
            out = {};
            block.by_lv.run(BlockTrace(trace), param, by_lv, one_of(outdoor), one_of(normal), out);
            return out;
        };
        const ColorImage& upper = blended(upper_of, scratch[0]);
        const ColorImage& lower = blended(lower_of, scratch[1]);
        block.by_ct.run(block.by_ct.trace(), param, by_ct, upper, lower, working);
    }
}

void interpolate_outdoor(ColorParam& param, bool outdoor_color_map, const ImagePair& outdoor,
                         const ImagePair& normal, ColorImage& working) {
    const FrameBlend by_lv = lv_blend(param);
    const bool at_end = by_lv.takes_low() || by_lv.takes_high();
    const auto interpolate = at_end ? interpolate_at_ramp_end : interpolate_inside_ramp;
    interpolate(param, by_lv, ct_blend(param), outdoor, normal, working);
    const ImagePair& map = outdoor_color_map ? outdoor : normal;
    InterParam3DLUT(param, map.upper, map.lower, working);
}

}  // namespace

}  // namespace imgtune

void SmoothCOLOR(int IsCapture, unsigned int u4UpperCT, unsigned int u4LowerCT,
                 NSIspTuning::EIndex_PCA_LUT_CT eUpperIdx, NSIspTuning::EIndex_PCA_LUT_CT eLowerIdx,
                 NSIspTuning::ISP_NVRAM_COLOR_T const (&colorTable)[4][5],
                 ISP_NVRAM_PCA_PARAM_T const (&tuning)[4], NSIspTuning::RAWIspCamInfo const& state,
                 NSIspTuning::ISP_NVRAM_COLOR_T& result, unsigned short& version, int& boot,
                 NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const DriverSwitches switches = read_switches();
    const FrameLight light{as_unsigned(boot),
                           as_unsigned(IsCapture),
                           static_cast<std::uint32_t>(state.u4CCT),
                           u4UpperCT,
                           u4LowerCT,
                           static_cast<std::uint32_t>(state.u4RealLV)};
    version = g_Smooth_Color_Ver;
    driver_trace(switches.dump,
                 "[%s()] u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d, eUpperIdx = %d, "
                 "eLowerIdx = %d\n",
                 as_signed(light.real_kelvin), as_signed(u4LowerCT), as_signed(u4UpperCT),
                 static_cast<std::int32_t>(eUpperIdx), static_cast<std::int32_t>(eLowerIdx));

    const std::int32_t slot = slot_of(state);
    const std::int32_t upper_index = ct_index(eUpperIdx);
    const std::int32_t lower_index = ct_index(eLowerIdx);
    const ImagePair images{colorTable[slot][upper_index], colorTable[slot][lower_index]};
    const ISP_NVRAM_PCA_PARAM_T& slot_tuning = tuning[slot];
    std::copy_n(colorTable[slot][0].u4Word, kControlWords, working.u4Word);
    driver_trace(switches.dump,
                 "[%s()] u4RealLV = %d, SceneMode = %d, profile = %d, IsCapture = %d, "
                 "IsBoot = %d\n",
                 as_signed(light.lv), slot, static_cast<std::int32_t>(state.profile), IsCapture,
                 boot);
    trace_tuning(switches.dump, slot_tuning);
    if (switches.enable == 1) apply_bypass(switches, working);

    const std::uint32_t lsp_tuned = kLspEnable.read(working.u4Word);
    ColorParam param = derive_parameters(slot_tuning, light, lsp_tuned != 0);
    driver_trace(switches.dump, "[%s()] LSP = (%d, %d)\n",
                 lsp_allowed(slot_tuning, light.lv) ? 1 : 0, as_signed(lsp_tuned));
    if (IsCapture == 1) driver_trace(switches.dump, "[%s()] Capture mode!!\n");

    if (switches.lock == 1) {
        log_line("[%s()] Force Lock!!\n", "SmoothCOLOR");
    } else if (slot == kNormalSlot && slot_tuning.u4OutdoorEnable != 0) {
        driver_trace(switches.dump, "[%s()] Outdoor mode !!\n");
        const ImagePair outdoor{colorTable[kOutdoorSlot][upper_index],
                                colorTable[kOutdoorSlot][lower_index]};
        interpolate_outdoor(param, takes_outdoor_map(slot_tuning, light.lv), outdoor, images,
                            working);
    } else {
        interpolate_indoor(param, images.upper, images.lower, working);
    }

    result = working;
    boot = 0;
}
