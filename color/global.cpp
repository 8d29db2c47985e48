#include "color/blocks.h"

namespace imgtune {

namespace {

// Brightness, contrast, saturation.
constexpr FieldRun<3> kGlobal{{{4, 16, 11}, {4, 0, 10}, {5, 0, 10}}};

template <class Trace>
void trace_details(const Trace& trace, const Lanes<3>& low, const Lanes<3>& high,
                   const Lanes<3>& target, const Lanes<3>& out) {
    if (!trace.details()) return;
    trace_row<3>(trace, "[%s()] (Low)  B:%03d,C:%d,S:%03d\n", low);
    trace_row<3>(trace, "[%s()] (High) B:%03d,C:%d,S:%03d\n", high);
    trace_row<3>(trace, "[%s()] (Tgt)  B:%03d,C:%d,S:%03d\n", target);
    trace_row<3>(trace, "[%s()] (Out)  B:%03d,C:%d,S:%03d\n", out);
}

/// u4Ratio is in sixteenths; the product is unsigned and wraps.
std::int32_t scale_saturation(std::int32_t saturation, const ColorParam& param) {
    return as_signed(param.u4SatOffset + ((as_unsigned(saturation) * param.u4Ratio) >> 4));
}

}  // namespace

void blend_global(const BlockTrace& block_trace, const ColorParam& param, const FrameBlend& blend,
                  const ColorImage& outdoor, const ColorImage& normal, ColorImage& scratch) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.lv_header(param);
        const auto high = kGlobal.read(outdoor);
        const auto low = kGlobal.read(normal);
        const auto out = kind(high, low);
        kGlobal.write(scratch, out);
        trace_details(trace, low, high, out, out);
    });
}

void smooth_global(const BlockTrace& block_trace, const ColorParam& param, const FrameBlend& blend,
                   const ColorImage& upper, const ColorImage& lower, ColorImage& working) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.header(
            "[%s()] IsCapture = %d, lum_speed =%d, sat_speed = %d, u4RealCT = %d, u4LowerCT = %d, "
            "u4UpperCT = %d\n",
            as_signed(param.IsBoot | param.IsCapture), as_signed(param.lum_speed),
            as_signed(param.sat_speed), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
            as_signed(param.u4UpperCT));
        const auto high = kGlobal.read(upper);
        const auto low = kGlobal.read(lower);
        auto target = kind(high, low);
        target.v[2] = scale_saturation(target.v[2], param);

        const auto previous = kGlobal.read(working);
        const std::uint32_t step[3] = {temporal_step(param, param.lum_speed),
                                       temporal_step(param, param.lum_speed),
                                       temporal_step(param, param.sat_speed)};
        const auto out = each_lane<3>([&](std::size_t j) {
            return as_signed(
                step_toward(as_unsigned(previous.v[j]), as_unsigned(target.v[j]), step[j]));
        });
        kGlobal.write(working, out);
        trace_details(trace, low, high, target, out);
    });
}

}  // namespace imgtune

void InterParamByLVGlobal(ISP_SMOOTH_COLOR_PARAM_T& param,
                          NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                          NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                          NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kGlobalBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamGlobal(ISP_SMOOTH_COLOR_PARAM_T& param, NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                      NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                      NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kGlobalBlock.run_by_ct(param, upper, lower, working);
}
