#include <imgtune/color.h>

#include <algorithm>

#include "color/block.h"
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

using BlockFunction = void (*)(ColorParam&, const ColorImage&, const ColorImage&, ColorImage&);

/// A block's LV blend and CT interpolation, in the order in which the blocks are taken.
struct Block {
    BlockFunction by_lv;
    BlockFunction by_ct;
};

constexpr Block kBlocks[] = {
    {InterParamByLVGlobal, InterParamGlobal},     {InterParamByLVPartialY, InterParamPartialY},
    {InterParamByLVPartialH, InterParamPartialH}, {InterParamByLVPartialS, InterParamPartialS},
    {InterParamByLVSGainByY, InterParamSGainByY}, {InterParamByLVLSP, InterParamLSP},
};

void interpolate_indoor(ColorParam& param, const ColorImage& upper, const ColorImage& lower,
                        ColorImage& working) {
    for (const Block& block : kBlocks) block.by_ct(param, upper, lower, working);
    InterParam3DLUT(param, upper, lower, working);
}

struct ImagePair {
    const ColorImage& upper;
    const ColorImage& lower;
};

void interpolate_outdoor(ColorParam& param, bool outdoor_color_map, const ImagePair& outdoor,
                         const ImagePair& normal, ColorImage& working) {
    // Each blend writes just the fields that the interpolation after it reads.
    ColorImage upper_scratch{};
    ColorImage lower_scratch{};
    for (const Block& block : kBlocks) {
        block.by_lv(param, outdoor.upper, normal.upper, upper_scratch);
        block.by_lv(param, outdoor.lower, normal.lower, lower_scratch);
        block.by_ct(param, upper_scratch, lower_scratch, working);
    }
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
        interpolate_outdoor(param, outdoor_weight(slot_tuning, light.lv).color_map, outdoor, images,
                            working);
    } else {
        interpolate_indoor(param, images.upper, images.lower, working);
    }

    result = working;
    boot = 0;
}
