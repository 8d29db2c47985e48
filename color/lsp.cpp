#include "color/blocks.h"
#include "color/control.h"

namespace imgtune {

namespace {

// LSP1[0..3], then LSP2[0..3].
constexpr PackedRun<8, 69> kLsp{{PackedFields({{69, 22, 7}, {69, 14, 8}, {69, 7, 7}, {69, 0, 7}}),
                                 PackedFields({{70, 23, 7}, {70, 16, 7}, {70, 8, 7}, {70, 0, 7}})}};

template <class Kind, class Trace>
void blend_lsp(const Trace& trace, Kind kind, const ColorImage& high_image,
               const ColorImage& low_image, ColorImage& out_image) {
    const auto high = kLsp.read(high_image);
    const auto low = kLsp.read(low_image);
    const auto out = kind(high, low);
    kLsp.write(out_image, out);
    if (!trace.details()) return;
    trace_row<4>(trace, "[%s()] LSP1_Low : " IMGTUNE_4_VALUES "\n", low, 0);
    trace_row<4>(trace, "[%s()] LSP1_High: " IMGTUNE_4_VALUES "\n", high, 0);
    trace_row<4>(trace, "[%s()] LSP1_Out : " IMGTUNE_4_VALUES "\n", out, 0);
    trace_row<4>(trace, "[%s()] LSP2_Low : " IMGTUNE_4_VALUES "\n", low, 4);
    trace_row<4>(trace, "[%s()] LSP2_High: " IMGTUNE_4_VALUES "\n", high, 4);
    trace_row<4>(trace, "[%s()] LSP2_Out : " IMGTUNE_4_VALUES "\n", out, 4);
}

}  // namespace

void blend_lsp(const BlockTrace& block_trace, const ColorParam& param, const FrameBlend& blend,
               const ColorImage& outdoor, const ColorImage& normal, ColorImage& scratch) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.lv_header(param);
        blend_lsp(trace, kind, outdoor, normal, scratch);
    });
}

void interpolate_lsp(const BlockTrace& block_trace, const ColorParam& param,
                     const FrameBlend& blend, const ColorImage& upper, const ColorImage& lower,
                     ColorImage& working) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.header("[%s()] Enable = %d, u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
                     as_signed(param.LSPEnable), as_signed(param.u4RealCT),
                     as_signed(param.u4LowerCT), as_signed(param.u4UpperCT));
        kLspEnable.write(working.u4Word, param.LSPEnable == 1 ? 1 : 0);
        blend_lsp(trace, kind, upper, lower, working);
    });
}

}  // namespace imgtune

void InterParamByLVLSP(ISP_SMOOTH_COLOR_PARAM_T& param,
                       NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                       NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                       NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kLspBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamLSP(ISP_SMOOTH_COLOR_PARAM_T& param, NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                   NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                   NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kLspBlock.run_by_ct(param, upper, lower, working);
}
