#include "color/smoothed_bytes.h"

namespace imgtune {

namespace {

constexpr ByteRun<20, 14> kHue;

// The lines show entries 0..15; the last word's four are computed like the others.
constexpr SmoothedTraceFormats kFormats{
    "[%s()] PH_Low : " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_High: " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_Tgt : " IMGTUNE_16_VALUES "\n",
    "[%s()] PH_Out : " IMGTUNE_16_VALUES "\n",
};

}  // namespace

}  // namespace imgtune

void InterParamByLVPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVPartialH", "debug.smooth_color.lvdump.hue");
    blend_by_lv(trace, kHue, kFormats, param, outdoor, normal, scratch);
}

void InterParamPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamPartialH", "debug.smooth_color.dump.hue");
    smooth_by_ct(trace, kHue, kFormats, param, param.hue_speed, upper, lower, working);
}
