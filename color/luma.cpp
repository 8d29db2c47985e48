#include "color/smoothed_bytes.h"

namespace imgtune {

namespace {

constexpr SpacedByteRun<6> kLuma;

constexpr SmoothedTraceFormats kLumaFormats{
    "[%s()] PY_Low : " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_High: " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_Tgt : " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_Out : " IMGTUNE_16_VALUES "\n",
};

}  // namespace

void blend_luma(const BlockTrace& trace, const ColorParam& param, const FrameBlend& blend,
                const ColorImage& outdoor, const ColorImage& normal, ColorImage& scratch) {
    blend_by_lv(trace, kLuma, kLumaFormats, param, blend, outdoor, normal, scratch);
}

void smooth_luma(const BlockTrace& trace, const ColorParam& param, const FrameBlend& blend,
                 const ColorImage& upper, const ColorImage& lower, ColorImage& working) {
    smooth_by_ct(trace, kLuma, kLumaFormats, param, blend, param.lum_speed, upper, lower, working);
}

}  // namespace imgtune

void InterParamByLVPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kLumaBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kLumaBlock.run_by_ct(param, upper, lower, working);
}
