#include "color/block.h"

namespace imgtune {

namespace {

// Brightness, contrast, saturation.
constexpr FieldRun<3> kGlobal{{{4, 16, 11}, {4, 0, 10}, {5, 0, 10}}};

void trace_details(const BlockTrace& trace, const Lanes<3>& low, const Lanes<3>& high,
                   const Lanes<3>& target, const Lanes<3>& out) {
    if (!trace.details()) return;
    trace.row<3>("[%s()] (Low)  B:%03d,C:%d,S:%03d\n", low);
    trace.row<3>("[%s()] (High) B:%03d,C:%d,S:%03d\n", high);
    trace.row<3>("[%s()] (Tgt)  B:%03d,C:%d,S:%03d\n", target);
    trace.row<3>("[%s()] (Out)  B:%03d,C:%d,S:%03d\n", out);
}

/// u4Ratio is in sixteenths; the product is unsigned and wraps.
std::int32_t scale_saturation(std::int32_t saturation, const ColorParam& param) {
    return as_signed(param.u4SatOffset + ((as_unsigned(saturation) * param.u4Ratio) >> 4));
}

}  // namespace

}  // namespace imgtune

void InterParamByLVGlobal(ISP_SMOOTH_COLOR_PARAM_T& param,
                          NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                          NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                          NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVGlobal", "debug.smooth_color.lvdump.global");
    trace.lv_header(param);
    const auto high = kGlobal.read(outdoor);
    const auto low = kGlobal.read(normal);
    const auto out = blend_all(lv_blend(param), high, low);
    kGlobal.write(scratch, out);
    trace_details(trace, low, high, out, out);
}

void InterParamGlobal(ISP_SMOOTH_COLOR_PARAM_T& param, NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                      NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                      NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamGlobal", "debug.smooth_color.dump.global");
    trace.header(
        "[%s()] IsCapture = %d, lum_speed =%d, sat_speed = %d, u4RealCT = %d, u4LowerCT = %d, "
        "u4UpperCT = %d\n",
        as_signed(param.IsBoot | param.IsCapture), as_signed(param.lum_speed),
        as_signed(param.sat_speed), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
        as_signed(param.u4UpperCT));
    const auto high = kGlobal.read(upper);
    const auto low = kGlobal.read(lower);
    auto target = blend_all(ct_blend(param), high, low);
    target.v[2] = scale_saturation(target.v[2], param);

    const auto previous = kGlobal.read(working);
    const std::uint32_t step[3] = {temporal_step(param, param.lum_speed),
                                   temporal_step(param, param.lum_speed),
                                   temporal_step(param, param.sat_speed)};
    Lanes<3> out;
    for (std::size_t j = 0; j < 3; ++j) {
        out.v[j] =
            as_signed(step_toward(as_unsigned(previous.v[j]), as_unsigned(target.v[j]), step[j]));
    }
    kGlobal.write(working, out);
    trace_details(trace, low, high, target, out);
}
