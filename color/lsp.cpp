#include "color/block.h"
#include "color/control.h"

namespace imgtune {

namespace {

// LSP1[0..3], then LSP2[0..3].
constexpr FieldRun<8> kLsp{{{69, 22, 7},
                            {69, 14, 8},
                            {69, 7, 7},
                            {69, 0, 7},
                            {70, 23, 7},
                            {70, 16, 7},
                            {70, 8, 7},
                            {70, 0, 7}}};

void interpolate_block(const BlockTrace& trace, const Blend& blend, const ColorImage& high_image,
                       const ColorImage& low_image, ColorImage& out_image) {
    const auto high = kLsp.read(high_image);
    const auto low = kLsp.read(low_image);
    const auto out = blend_all(blend, high, low);
    kLsp.write(out_image, out);
    if (!trace.details()) return;
    trace.row<4>("[%s()] LSP1_Low : " IMGTUNE_4_VALUES "\n", low, 0);
    trace.row<4>("[%s()] LSP1_High: " IMGTUNE_4_VALUES "\n", high, 0);
    trace.row<4>("[%s()] LSP1_Out : " IMGTUNE_4_VALUES "\n", out, 0);
    trace.row<4>("[%s()] LSP2_Low : " IMGTUNE_4_VALUES "\n", low, 4);
    trace.row<4>("[%s()] LSP2_High: " IMGTUNE_4_VALUES "\n", high, 4);
    trace.row<4>("[%s()] LSP2_Out : " IMGTUNE_4_VALUES "\n", out, 4);
}

}  // namespace

}  // namespace imgtune

void InterParamByLVLSP(ISP_SMOOTH_COLOR_PARAM_T& param,
                       NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                       NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                       NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVLSP", "debug.smooth_color.lvdump.lsp");
    trace.lv_header(param);
    interpolate_block(trace, lv_blend(param), outdoor, normal, scratch);
}

void InterParamLSP(ISP_SMOOTH_COLOR_PARAM_T& param, NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                   NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                   NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamLSP", "debug.smooth_color.dump.lsp");
    trace.header("[%s()] Enable = %d, u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
                 as_signed(param.LSPEnable), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
                 as_signed(param.u4UpperCT));
    kLspEnable.write(working.u4Word, param.LSPEnable == 1 ? 1 : 0);
    interpolate_block(trace, ct_blend(param), upper, lower, working);
}
