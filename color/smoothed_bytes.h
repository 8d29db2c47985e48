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

template <class Sources, class Results>
void trace_smoothed(const BlockTrace& trace, const SmoothedTraceFormats& formats,
                    const Sources& low, const Sources& high, const Results& target,
                    const Results& out) {
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
    const auto out = blend_all(lv_blend(param), view(high), view(low));
    run.write(scratch, cut_to_bytes(out));
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
    const auto previous = run.read(working);
    const auto target =
        clip_all(blend_all(ct_blend(param), view(high), view(low)), view(high), view(low));
    const auto out = step_all(view(previous), target, temporal_step(param, speed));
    run.write(working, out);
    trace_smoothed(trace, formats, low, high, target, out);
}

}  // namespace imgtune

#endif
