#include "color/smoothed_bytes.h"

namespace imgtune {

namespace {

constexpr ByteRun<20, 14> kHue;

// The lines show entries 0..15; the last word's four are computed like the others.
constexpr SmoothedTraceFormats kHueFormats{
    "[%s()] PH_Low : " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_High: " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_Tgt : " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_Out : " IMGTUNE_16_VALUES "\n",
};

}  // namespace

void blend_hue(const BlockTrace& trace, const ColorParam& param, const FrameBlend& blend,
               const ColorImage& outdoor, const ColorImage& normal, ColorImage& scratch) {
    blend_by_lv(trace, kHue, kHueFormats, param, blend, outdoor, normal, scratch);
}

void smooth_hue(const BlockTrace& trace, const ColorParam& param, const FrameBlend& blend,
                const ColorImage& upper, const ColorImage& lower, ColorImage& working) {
    smooth_by_ct(trace, kHue, kHueFormats, param, blend, param.hue_speed, upper, lower, working);
}

}  // namespace imgtune

void InterParamByLVPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kHueBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kHueBlock.run_by_ct(param, upper, lower, working);
}
