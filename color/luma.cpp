#include "color/smoothed_bytes.h"

namespace imgtune {

namespace {

constexpr SpacedByteRun<16> kLuma{6};

constexpr SmoothedTraceFormats kFormats{
    "[%s()] PY_Low : " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_High: " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_Tgt : " IMGTUNE_16_VALUES "\n",
    "[%s()] PY_Out : " IMGTUNE_16_VALUES "\n",
};

}  // namespace

}  // namespace imgtune

void InterParamByLVPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVPartialY", "debug.smooth_color.lvdump.lum");
    blend_by_lv(trace, kLuma, kFormats, param, outdoor, normal, scratch);
}

void InterParamPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamPartialY", "debug.smooth_color.dump.lum");
    smooth_by_ct(trace, kLuma, kFormats, param, param.lum_speed, upper, lower, working);
}
