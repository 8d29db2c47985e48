#include "color/blocks.h"

namespace imgtune {

namespace {

constexpr std::size_t kCurves = 20;
constexpr std::int32_t kLastSegment = 32;  // SP3 lies this far above SP2
constexpr std::size_t kAll = 3 * kCurves;

constexpr ByteRun<kAll, 19> kGains;         // SG1, SG2, SG3 of all curves
constexpr ByteRun<2 * kCurves, 34> kKnots;  // SP1, SP2

/// Twenty curves as stored. Each runs from (0, 0) through three knots; a gain is the slope of the
/// segment that ends at its knot.
struct Curves {
    ByteView<kAll> gain;
    ByteView<2 * kCurves> knot;
};

Curves read_curves(const ColorImage& image) {
    return {kGains.read(image), kKnots.read(image)};
}

ByteView<kCurves> knots_of(const Curves& curves, std::size_t knot) {
    return {curves.knot.bytes + knot * kCurves};
}

/// Whether knot 1 <= knot 2 in every curve of both images.
bool knots_keep_order(const Curves& high, const Curves& low) {
    bool order = true;
    for (std::size_t k = 0; k < kSixteens<kCurves>; ++k) {
        for (const Curves& curves : {high, low}) {
            order &= all_at_most(knots_of(curves, 0).sixteen(k), knots_of(curves, 1).sixteen(k));
        }
    }
    return order;
}

/// Blended curves before they are cut to bytes: knots, and the slopes between the blended points.
struct BlendedCurves {
    Lanes<2 * kCurves> knot;
    Lanes<kCurves> last_knot;
    Lanes<kAll> gain;
};

/// Some of the curves, from `first` on. A level is the sum of the rises of the segments up to its
/// knot: gain 1 x knot 1, gain 2 x (knot 2 - knot 1), gain 3 x 32. Weighing is linear, so the rises
/// are weighed one by one.
template <class Kind>
void blend_some(Kind kind, const Curves& high, const Curves& low, std::size_t first,
                BlendedCurves& out) {
    const auto gain = [&](std::size_t segment) {
        const std::size_t at = segment * kCurves + first;
        return kind.pairs(high.gain.bytes + at, low.gain.bytes + at);
    };
    const auto knot = [&](std::size_t k) {
        const std::size_t at = k * kCurves + first;
        return kind.pairs(high.knot.bytes + at, low.knot.bytes + at);
    };
    const auto sum_at_1 = kind.weigh_rise(gain(0), knot(0));
    const auto sum_at_2 = sum_at_1 + kind.weigh_rise(gain(1), knot(0), knot(1));
    const auto sum_at_3 = sum_at_2 + times_32(kind.weigh(gain(2)));
    const auto level_1 = kind.level(sum_at_1);
    const auto level_2 = kind.level(sum_at_2);
    const auto level_3 = kind.level(sum_at_3);

    const auto second_knot = kind.weigh(knot(1));
    const auto knot_1 = kind.knot(kind.weigh(knot(0)));
    const auto knot_2 = kind.knot(second_knot);
    const auto knot_3 = kind.last_knot(second_knot, knot_2);

    store(out.knot.v + first, knot_1);
    store(out.knot.v + kCurves + first, knot_2);
    store(out.last_knot.v + first, knot_3);
    store(out.gain.v + first, kind.slope(level_1, knot_1));
    store(out.gain.v + kCurves + first, kind.slope(level_2 - level_1, knot_2 - knot_1));
    store(out.gain.v + 2 * kCurves + first, kind.last_slope(level_3 - level_2, knot_3 - knot_2));
}

template <class Kind>
[[gnu::noinline]] BlendedCurves blend_curves(Kind kind, const Curves& high, const Curves& low) {
    BlendedCurves out;
    for (std::size_t first = 0; first < kCurves; first += Kind::kCurves) {
        blend_some(kind, high, low, first, out);
    }
    return out;
}

struct KnotFormats {
    const char* low;
    const char* high;
    const char* result;
};

struct GainFormats {
    const char* low;
    const char* high;
    const char* target;
    const char* out;
};

constexpr KnotFormats kKnotFormats[3] = {
    {"[%s()] SP1_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP1_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SP1_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SP2_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP2_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SP2_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SP3_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SP3_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SP3_Tgt : " IMGTUNE_20_VALUES "\n"},
};

constexpr GainFormats kGainFormats[3] = {
    {"[%s()] SG1_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG1_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG1_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG1_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SG2_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG2_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG2_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG2_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SG3_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SG3_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SG3_Tgt : " IMGTUNE_20_VALUES "\n", "[%s()] SG3_Out : " IMGTUNE_20_VALUES "\n"},
};

/// Both images' curves as they were before the results were written.
struct KeptCurves {
    KeptInputs<kAll> gain;
    KeptInputs<2 * kCurves> knot;

    template <class Trace>
    KeptCurves(const Trace& trace, const Curves& high, const Curves& low)
        : gain(trace, high.gain, low.gain), knot(trace, high.knot, low.knot) {}
};

Lanes<kCurves> last_knots_of(const std::array<std::uint8_t, 2 * kCurves>& stored) {
    return each_lane<kCurves>([&](std::size_t j) { return stored[kCurves + j] + kLastSegment; });
}

template <class Trace, class Gains>
void trace_details(const Trace& trace, const KeptCurves& kept, const BlendedCurves& blended,
                   const Gains& target, const Gains& out) {
    if (!trace.details()) return;
    const auto knot_lines = [&](const KnotFormats& formats, const auto& low, const auto& high,
                                const auto& result, std::size_t first) {
        trace_row<kCurves>(trace, formats.low, low, first);
        trace_row<kCurves>(trace, formats.high, high, first);
        trace_row<kCurves>(trace, formats.result, result, first);
    };
    knot_lines(kKnotFormats[0], kept.knot.low, kept.knot.high, blended.knot, 0);
    knot_lines(kKnotFormats[1], kept.knot.low, kept.knot.high, blended.knot, kCurves);
    knot_lines(kKnotFormats[2], last_knots_of(kept.knot.low), last_knots_of(kept.knot.high),
               blended.last_knot, 0);
    for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t first = k * kCurves;
        trace_row<kCurves>(trace, kGainFormats[k].low, kept.gain.low, first);
        trace_row<kCurves>(trace, kGainFormats[k].high, kept.gain.high, first);
        trace_row<kCurves>(trace, kGainFormats[k].target, target, first);
        trace_row<kCurves>(trace, kGainFormats[k].out, out, first);
    }
}

}  // namespace

bool saturation_knots_rise(const ColorImage& image) {
    const Curves curves = read_curves(image);
    constexpr std::uint8_t kZeros[16] = {};
    bool rise = true;
    for (std::size_t k = 0; k < kSixteens<kCurves>; ++k) {
        const auto first = knots_of(curves, 0).sixteen(k);
        rise = rise && all_below(vector::load(kZeros), first) &&
               all_below(first, knots_of(curves, 1).sixteen(k));
    }
    return rise;
}

void blend_saturation(const BlockTrace& block_trace, const ColorParam& param,
                      const FrameBlend& blend, const ColorImage& outdoor, const ColorImage& normal,
                      ColorImage& scratch) {
    const Curves high = read_curves(outdoor);
    const Curves low = read_curves(normal);
    blend.apply(
        block_trace,
        [&](auto kind, const auto& trace) {
            trace.lv_header(param);
            const KeptCurves kept(trace, high, low);
            const BlendedCurves out = blend_curves(kind, high, low);
            kGains.write(scratch, cut_to_bytes(out.gain));
            kKnots.write(scratch, kind.cut(out.knot));
            trace_details(trace, kept, out, out.gain, out.gain);
        },
        knots_keep_order(high, low));
}

void smooth_saturation(const BlockTrace& block_trace, const ColorParam& param,
                       const FrameBlend& blend, const ColorImage& upper, const ColorImage& lower,
                       ColorImage& working) {
    const Curves high = read_curves(upper);
    const Curves low = read_curves(lower);
    blend.apply(
        block_trace,
        [&](auto kind, const auto& trace) {
            trace.header(
                "[%s()] IsCapture = %d, u4Step = %d, u4Ratio = %d, u4RealCT = %d, u4LowerCT = %d, "
                "u4UpperCT = %d\n",
                as_signed(param.IsBoot | param.IsCapture), as_signed(param.sat_speed),
                as_signed(param.u4Ratio), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
                as_signed(param.u4UpperCT));
            const KeptCurves kept(trace, high, low);
            const BlendedCurves blended = blend_curves(kind, high, low);
            // The knots take their targets at once; only the gains are clamped and move in steps.
            const Bytes<kAll> target = clip_all(kind.saturate(blended.gain), low.gain, high.gain);
            const Bytes<kAll> out =
                step_all(kGains.read(working), target, temporal_step(param, param.sat_speed));
            kGains.write(working, out);
            kKnots.write(working, kind.cut(blended.knot));
            trace_details(trace, kept, blended, target, out);
        },
        knots_keep_order(high, low));
}

}  // namespace imgtune

void InterParamByLVPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kSaturationBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kSaturationBlock.run_by_ct(param, upper, lower, working);
}
