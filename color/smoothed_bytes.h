#ifndef IMGTUNE_COLOR_SMOOTHED_BYTES_H
#define IMGTUNE_COLOR_SMOOTHED_BYTES_H

#include "color/blocks.h"

// Luma and hue follow one rule and differ in where their values stand and what a line shows.

namespace imgtune {

struct SmoothedTraceFormats {
    const char* low;
    const char* high;
    const char* target;
    const char* out;
};

template <class Trace, class Sources, class Results>
void trace_smoothed(const Trace& trace, const SmoothedTraceFormats& formats, const Sources& low,
                    const Sources& high, const Results& target, const Results& out) {
    if (!trace.details()) return;
    trace_row<16>(trace, formats.low, low);
    trace_row<16>(trace, formats.high, high);
    trace_row<16>(trace, formats.target, target);
    trace_row<16>(trace, formats.out, out);
}

template <class Run>
void blend_by_lv(const BlockTrace& block_trace, const Run& run, const SmoothedTraceFormats& formats,
                 const ColorParam& param, const FrameBlend& blend, const ColorImage& outdoor,
                 const ColorImage& normal, ColorImage& scratch) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.lv_header(param);
        const auto high = run.read(outdoor);
        const auto low = run.read(normal);
        const KeptInputs kept(trace, high, low);
        const auto out = kind(high, low);
        run.write(scratch, cut_to_bytes(out));
        trace_smoothed(trace, formats, kept.low, kept.high, out, out);
    });
}

template <class Run>
void smooth_by_ct(const BlockTrace& block_trace, const Run& run,
                  const SmoothedTraceFormats& formats, const ColorParam& param,
                  const FrameBlend& blend, std::uint32_t speed, const ColorImage& upper,
                  const ColorImage& lower, ColorImage& working) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.header(
            "[%s()] IsCapture = %d, u4Step = %d, u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
            as_signed(param.IsBoot | param.IsCapture), as_signed(speed), as_signed(param.u4RealCT),
            as_signed(param.u4LowerCT), as_signed(param.u4UpperCT));
        const auto high = run.read(upper);
        const auto low = run.read(lower);
        const KeptInputs kept(trace, high, low);
        const auto target = kind.limit(kind(high, low), high, low);
        const auto previous = run.read(working);
        const auto out = step_all(previous, target, temporal_step(param, speed));
        run.write(working, out);
        trace_smoothed(trace, formats, kept.low, kept.high, target, out);
    });
}

}  // namespace imgtune

#endif
