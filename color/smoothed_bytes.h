#ifndef IMGTUNE_COLOR_SMOOTHED_BYTES_H
#define IMGTUNE_COLOR_SMOOTHED_BYTES_H

#include "color/block.h"

// Luma and hue follow one rule and differ in where their values stand and what a line shows.

namespace imgtune {

struct SmoothedTraceFormats {
    const char* low;
    const char* high;
    const char* target;
    const char* out;
};

template <std::size_t N>
void trace_smoothed(const BlockTrace& trace, const SmoothedTraceFormats& formats,
                    const Lanes<N>& low, const Lanes<N>& high, const Lanes<N>& target,
                    const Lanes<N>& out) {
    if (!trace.details()) return;
    trace.row<16>(formats.low, low);
    trace.row<16>(formats.high, high);
    trace.row<16>(formats.target, target);
    trace.row<16>(formats.out, out);
}

template <class Run>
void blend_by_lv(const BlockTrace& trace, const Run& run, const SmoothedTraceFormats& formats,
                 const ColorParam& param, const ColorImage& outdoor, const ColorImage& normal,
                 ColorImage& scratch) {
    trace.lv_header(param);
    const auto high = run.read(outdoor);
    const auto low = run.read(normal);
    const auto out = blend_lanes(lv_blend(param), high, low);
    run.write(scratch, out);
    trace_smoothed(trace, formats, low, high, out, out);
}

template <class Run>
void smooth_by_ct(const BlockTrace& trace, const Run& run, const SmoothedTraceFormats& formats,
                  const ColorParam& param, std::uint32_t speed, const ColorImage& upper,
                  const ColorImage& lower, ColorImage& working) {
    trace.header(
        "[%s()] IsCapture = %d, u4Step = %d, u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
        as_signed(param.IsBoot | param.IsCapture), as_signed(speed), as_signed(param.u4RealCT),
        as_signed(param.u4LowerCT), as_signed(param.u4UpperCT));
    const auto high = run.read(upper);
    const auto low = run.read(lower);
    const auto target = clip_lanes(blend_lanes(ct_blend(param), high, low), high, low);
    const auto out = step_lanes(run.read(working), target, temporal_step(param, speed));
    run.write(working, out);
    trace_smoothed(trace, formats, low, high, target, out);
}

}  // namespace imgtune

#endif
