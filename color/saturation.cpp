#include "color/block.h"

namespace imgtune {

namespace {

constexpr std::size_t kCurves = 20;
constexpr std::int32_t kLastSegment = 32;  // SP3 lies this far above SP2

constexpr ByteRun<kCurves> kGain[3] = {{19}, {24}, {29}};  // SG1, SG2, SG3
constexpr ByteRun<kCurves> kKnot[2] = {{34}, {39}};        // SP1, SP2

/// Twenty curves through (0, 0) and three knots each: `gain` is the slope of the segment that ends
/// at `knot`, `level` the curve's value there.
struct Curves {
    Lanes<kCurves> gain[3];
    Lanes<kCurves> knot[3];
    Lanes<kCurves> level[3];
};

Curves read_curves(const ColorImage& image) {
    Curves c;
    for (std::size_t k = 0; k < 3; ++k) c.gain[k] = kGain[k].read(image);
    for (std::size_t k = 0; k < 2; ++k) c.knot[k] = kKnot[k].read(image);
    for (std::size_t j = 0; j < kCurves; ++j) {
        c.knot[2].v[j] = c.knot[1].v[j] + kLastSegment;
        c.level[0].v[j] = c.gain[0].v[j] * c.knot[0].v[j];
        c.level[1].v[j] = c.level[0].v[j] + c.gain[1].v[j] * (c.knot[1].v[j] - c.knot[0].v[j]);
        c.level[2].v[j] = c.level[1].v[j] + c.gain[2].v[j] * kLastSegment;
    }
    return c;
}

/// Blends knots and levels; the gains are the slopes between the blended points.
Curves blend_curves(const Blend& blend, const Curves& high, const Curves& low) {
    Curves c;
    for (std::size_t k = 0; k < 3; ++k) {
        c.knot[k] = blend_lanes(blend, high.knot[k], low.knot[k]);
        c.level[k] = blend_lanes(blend, high.level[k], low.level[k]);
    }
    for (std::size_t j = 0; j < kCurves; ++j) {
        std::uint32_t knot = 0;
        std::uint32_t level = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const std::uint32_t next_knot = as_unsigned(c.knot[k].v[j]);
            const std::uint32_t next_level = as_unsigned(c.level[k].v[j]);
            c.gain[k].v[j] = as_signed(divide_lane_or_zero(next_level - level, next_knot - knot));
            knot = next_knot;
            level = next_level;
        }
    }
    return c;
}

void write_curves(ColorImage& image, const Curves& curves) {
    for (std::size_t k = 0; k < 3; ++k) kGain[k].write(image, curves.gain[k]);
    for (std::size_t k = 0; k < 2; ++k) kKnot[k].write(image, curves.knot[k]);
}

/// Lines of a knot or gain, unused ones null.
struct RowFormats {
    const char* low;
    const char* high;
    const char* target;
    const char* out;
};

constexpr RowFormats kKnotFormats[3] = {
    {"[%s()] SP1_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP1_High: " IMGTUNE_20_VALUES "\n",
     nullptr, "[%s()] SP1_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SP2_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP2_High: " IMGTUNE_20_VALUES "\n",
     nullptr, "[%s()] SP2_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SP3_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP3_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SP3_Tgt : " IMGTUNE_20_VALUES "\n", nullptr},
};

constexpr RowFormats kGainFormats[3] = {
    {"[%s()] SG1_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG1_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG1_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG1_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SG2_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG2_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG2_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG2_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SG3_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG3_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG3_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG3_Out : " IMGTUNE_20_VALUES "\n"},
};

void trace_details(const BlockTrace& trace, const Curves& low, const Curves& high,
                   const Curves& target, const Curves& out) {
    if (!trace.details()) return;
    const auto rows = [&](const RowFormats& formats, std::size_t k, auto values_of) {
        trace.row<kCurves>(formats.low, values_of(low)[k]);
        trace.row<kCurves>(formats.high, values_of(high)[k]);
        if (formats.target != nullptr) trace.row<kCurves>(formats.target, values_of(target)[k]);
        if (formats.out != nullptr) trace.row<kCurves>(formats.out, values_of(out)[k]);
    };
    for (std::size_t k = 0; k < 3; ++k) {
        rows(kKnotFormats[k], k, [](const Curves& c) { return &c.knot[0]; });
    }
    for (std::size_t k = 0; k < 3; ++k) {
        rows(kGainFormats[k], k, [](const Curves& c) { return &c.gain[0]; });
    }
}

}  // namespace

}  // namespace imgtune

void InterParamByLVPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVPartialS", "debug.smooth_color.lvdump.sat");
    trace.lv_header(param);
    const Curves high = read_curves(outdoor);
    const Curves low = read_curves(normal);
    const Curves out = blend_curves(lv_blend(param), high, low);
    write_curves(scratch, out);
    trace_details(trace, low, high, out, out);
}

void InterParamPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamPartialS", "debug.smooth_color.dump.sat");
    trace.header(
        "[%s()] IsCapture = %d, u4Step = %d, u4Ratio = %d, u4RealCT = %d, u4LowerCT = %d, "
        "u4UpperCT = %d\n",
        as_signed(param.IsBoot | param.IsCapture), as_signed(param.sat_speed),
        as_signed(param.u4Ratio), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
        as_signed(param.u4UpperCT));
    const Curves high = read_curves(upper);
    const Curves low = read_curves(lower);
    Curves target = blend_curves(ct_blend(param), high, low);
    for (std::size_t k = 0; k < 3; ++k) {
        target.gain[k] = clip_lanes(target.gain[k], low.gain[k], high.gain[k]);
    }
    // The knots take their targets at once; only the gains move in steps.
    Curves out = target;
    const std::uint32_t step = temporal_step(param, param.sat_speed);
    for (std::size_t k = 0; k < 3; ++k) {
        out.gain[k] = step_lanes(kGain[k].read(working), target.gain[k], step);
    }
    write_curves(working, out);
    trace_details(trace, low, high, target, out);
}
