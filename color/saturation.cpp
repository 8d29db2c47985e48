#include <type_traits>

#include "color/blocks.h"

namespace imgtune {

namespace {

constexpr std::size_t kCurves = 20;
constexpr std::int32_t kLastSegment = 32;  // SP3 lies this far above SP2

// SG1, SG2, SG3, SP1, SP2 of all curves, one after the other.
constexpr ByteRun<5 * kCurves, 19> kCurveBytes;

/// One of these five rows.
struct CurveRow {
    std::size_t first;  ///< of the bytes

    template <std::size_t N>
    ByteView<N> read(const ColorImage& image, Part<N> run) const {
        return {kCurveBytes.at(image, first + run.first)};
    }
    template <std::size_t N>
    void write(ColorImage& image, Part<N> run, const Bytes<N>& bytes) const {
        bytes.store(kCurveBytes.at(image, first + run.first));
    }
};

// Each curve runs from (0, 0) through three knots; a gain is the slope of the segment that ends at
// its knot.
constexpr CurveRow kGain[3] = {{0}, {kCurves}, {2 * kCurves}};
constexpr CurveRow kKnot[2] = {{3 * kCurves}, {4 * kCurves}};

/// Whether knot 1 <= knot 2 in every curve of both images.
bool knots_keep_order(const ColorImage& high, const ColorImage& low) {
    bool order = true;
    for_each_part<kCurves>([&]<std::size_t N>(Part<N> run) {
        const auto excess = [&](const ColorImage& image) {
            return vector::excess(vector::load<N>(kKnot[0].read(image, run).bytes),
                                  vector::load<N>(kKnot[1].read(image, run).bytes));
        };
        order &= all_zero(excess(high) | excess(low));
    });
    return order;
}

/// Some of the curves, blended, before they are cut to bytes: knots, and the slopes between the
/// blended points.
template <class Values>
struct BlendedCurves {
    Values knot[3];
    Values gain[3];
};

/// A level is the sum of the rises of the segments up to its knot: gain 1 x knot 1, gain 2 x (knot
/// 2
/// - knot 1), gain 3 x 32. Weighing is linear, so the rises are weighed one by one.
template <class Kind, std::size_t N>
[[gnu::always_inline]] inline auto blend_curves(const Kind& kind, const ColorImage& high,
                                                const ColorImage& low, Part<N> run) {
    const auto pairs = [&](const CurveRow& row) {
        return kind.pairs(row.read(high, run), row.read(low, run));
    };
    const auto first = pairs(kKnot[0]), second = pairs(kKnot[1]);
    const auto sum_at_1 = kind.weigh_rise(pairs(kGain[0]), first);
    const auto sum_at_2 = sum_at_1 + kind.weigh_rise(pairs(kGain[1]), first, second);
    const auto sum_at_3 = sum_at_2 + times_32(kind.weigh(pairs(kGain[2])));
    const auto level_1 = kind.level(sum_at_1);
    const auto level_2 = kind.level(sum_at_2);
    const auto level_3 = kind.level(sum_at_3);

    const auto second_knot = kind.weigh(second);
    const auto knot_1 = kind.knot(kind.weigh(first));
    const auto knot_2 = kind.knot(second_knot);
    const auto knot_3 = kind.last_knot(second_knot, knot_2);
    using Values = std::remove_const_t<decltype(knot_1)>;
    return BlendedCurves<Values>{
        {knot_1, knot_2, knot_3},
        {kind.slope(level_1, knot_1), kind.slope(level_2 - level_1, knot_2 - knot_1),
         kind.last_slope(level_3 - level_2, knot_3 - knot_2)}};
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

Lanes<kCurves> last_knots_of(const std::array<std::uint8_t, 5 * kCurves>& stored) {
    return each_lane<kCurves>(
        [&](std::size_t j) { return stored[kKnot[1].first + j] + kLastSegment; });
}

template <class Trace, class Blended, class Gains>
void trace_details(const Trace& trace, const KeptInputs<5 * kCurves>& kept, const Blended& blended,
                   const Gains (&target)[3], const Gains (&out)[3]) {
    if (!trace.details()) return;
    for (std::size_t k = 0; k < 2; ++k) {
        trace_row<kCurves>(trace, kKnotFormats[k].low, kept.low, kKnot[k].first);
        trace_row<kCurves>(trace, kKnotFormats[k].high, kept.high, kKnot[k].first);
        trace_row<kCurves>(trace, kKnotFormats[k].result, blended.knot[k]);
    }
    trace_row<kCurves>(trace, kKnotFormats[2].low, last_knots_of(kept.low));
    trace_row<kCurves>(trace, kKnotFormats[2].high, last_knots_of(kept.high));
    trace_row<kCurves>(trace, kKnotFormats[2].result, blended.knot[2]);
    for (std::size_t k = 0; k < 3; ++k) {
        trace_row<kCurves>(trace, kGainFormats[k].low, kept.low, kGain[k].first);
        trace_row<kCurves>(trace, kGainFormats[k].high, kept.high, kGain[k].first);
        trace_row<kCurves>(trace, kGainFormats[k].target, target[k]);
        trace_row<kCurves>(trace, kGainFormats[k].out, out[k]);
    }
}

/// Some of the curves of a result; all of a run are made before the first is written.
template <class Kind, class Values, std::size_t N>
void write_curves(const Kind& kind, ColorImage& image, Part<N> run, const Bytes<N> (&gain)[3],
                  const BlendedCurves<Values>& blended) {
    for (std::size_t k = 0; k < 3; ++k) kGain[k].write(image, run, gain[k]);
    for (std::size_t k = 0; k < 2; ++k) kKnot[k].write(image, run, kind.cut(blended.knot[k]));
}

}  // namespace

bool saturation_knots_rise(const ColorImage& image) {
    constexpr std::uint8_t kZeros[16] = {};
    const auto knots = [&](std::size_t k, std::size_t from) {
        return vector::load<16>(kCurveBytes.at(image, kKnot[k].first + from));
    };
    for (const std::size_t from : {std::size_t{0}, kCurves - 16}) {
        if (!all_below(vector::load<16>(kZeros), knots(0, from)) ||
            !all_below(knots(0, from), knots(1, from))) {
            return false;
        }
    }
    return true;
}

void blend_saturation(const BlockTrace& block_trace, const ColorParam& param,
                      const FrameBlend& blend, const ColorImage& outdoor, const ColorImage& normal,
                      ColorImage& scratch) {
    blend.apply(
        block_trace,
        [&](auto kind, const auto& trace) {
            trace.lv_header(param);
            const KeptInputs kept(trace, kCurveBytes.read(outdoor), kCurveBytes.read(normal));
            kind.for_each_run([&]<std::size_t N>(Part<N> run) {
                const auto blended = blend_curves(kind, outdoor, normal, run);
                Bytes<N> gain[3];
                for (std::size_t k = 0; k < 3; ++k) gain[k] = cut_to_bytes(blended.gain[k]);
                write_curves(kind, scratch, run, gain, blended);
                trace_details(trace, kept, blended, blended.gain, blended.gain);
            });
        },
        knots_keep_order(outdoor, normal));
}

void smooth_saturation(const BlockTrace& block_trace, const ColorParam& param,
                       const FrameBlend& blend, const ColorImage& upper, const ColorImage& lower,
                       ColorImage& working) {
    blend.apply(
        block_trace,
        [&](auto kind, const auto& trace) {
            trace.header(
                "[%s()] IsCapture = %d, u4Step = %d, u4Ratio = %d, u4RealCT = %d, u4LowerCT = %d, "
                "u4UpperCT = %d\n",
                as_signed(param.IsBoot | param.IsCapture), as_signed(param.sat_speed),
                as_signed(param.u4Ratio), as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
                as_signed(param.u4UpperCT));
            const KeptInputs kept(trace, kCurveBytes.read(upper), kCurveBytes.read(lower));
            const std::uint32_t step = temporal_step(param, param.sat_speed);
            kind.for_each_run([&]<std::size_t N>(Part<N> run) {
                const auto blended = blend_curves(kind, upper, lower, run);
                // The knots take their targets at once; only the gains are clamped and move in
                // steps.
                Bytes<N> target[3], out[3];
                for (std::size_t k = 0; k < 3; ++k) {
                    target[k] = clip_all(kind.saturate(blended.gain[k]), kGain[k].read(lower, run),
                                         kGain[k].read(upper, run));
                    out[k] = step_all(kGain[k].read(working, run), target[k], step);
                }
                write_curves(kind, working, run, out, blended);
                trace_details(trace, kept, blended, target, out);
            });
        },
        knots_keep_order(upper, lower));
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
