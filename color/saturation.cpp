#include "color/block.h"

namespace imgtune {

namespace {

constexpr std::size_t kCurves = 20;
constexpr std::int32_t kLastSegment = 32;  // SP3 lies this far above SP2

constexpr std::size_t kAll = 3 * kCurves;

constexpr ByteRun<3 * kCurves, 19> kGains;  // SG1, SG2, SG3 of all curves
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

/// Blended curves: knots and slopes before they are cut to bytes.
struct BlendedCurves {
    Lanes<kAll> knot;
    Lanes<kAll> gain;
};

/// Gain of one segment times one knot, all curves.
Halves<kCurves> gain_times_knot(const Curves& curves, std::size_t segment, std::size_t knot) {
    Halves<kCurves> out;
    const std::uint8_t* gains = curves.gain.v + segment * kCurves;
    const std::uint8_t* knots = curves.knot.v + knot * kCurves;
    for (std::size_t j = 0; j < padded(kCurves); ++j) {
        out.v[j] = static_cast<std::uint16_t>(gains[j] * knots[j]);
    }
    return out;
}

/// The blended knots, times the divisor.
Lanes<kAll> weigh_knots(const Blend& blend, const Curves& high, const Curves& low) {
    const Lanes<2 * kCurves> stored = weigh(blend, high.knot, low.knot);
    const std::int32_t last_segment = wrap_mul(kLastSegment, blend.divisor());
    Lanes<kAll> out{};
    for (std::size_t j = 0; j < 2 * kCurves; ++j) out.v[j] = stored.v[j];
    for (std::size_t j = 0; j < kCurves; ++j) {
        out.v[2 * kCurves + j] = wrap_add(stored.v[kCurves + j], last_segment);
    }
    return out;
}

/// The blended levels at the knots, times the divisor. A level is the sum of the rises of the
/// segments up to its knot: gain 1 x knot 1, gain 2 x (knot 2 - knot 1), gain 3 x 32. Weighing is
/// linear modulo 2^32, so the rises are weighed part by part, where they fit 16 bits.
Lanes<kAll> weigh_levels(const Blend& blend, const Curves& high, const Curves& low) {
    const auto part = [&](std::size_t segment, std::size_t knot) {
        return weigh(blend, gain_times_knot(high, segment, knot),
                     gain_times_knot(low, segment, knot));
    };
    const Lanes<kCurves> first = part(0, 0);
    const Lanes<kCurves> second_to = part(1, 1);
    const Lanes<kCurves> second_from = part(1, 0);
    const Lanes<kCurves> third = weigh(blend, ByteView<kCurves>{high.gain.v + 2 * kCurves},
                                       ByteView<kCurves>{low.gain.v + 2 * kCurves});
    Lanes<kAll> out{};
    for (std::size_t j = 0; j < kCurves; ++j) {
        const std::int32_t at_second =
            wrap_add(first.v[j], wrap_sub(second_to.v[j], second_from.v[j]));
        out.v[j] = first.v[j];
        out.v[kCurves + j] = at_second;
        out.v[2 * kCurves + j] = wrap_add(at_second, wrap_mul(kLastSegment, third.v[j]));
    }
    return out;
}

/// What each segment adds to the point it starts from.
Lanes<kAll> segments(const Lanes<kAll>& points) {
    Lanes<kAll> out{};
    for (std::size_t j = 0; j < kCurves; ++j) out.v[j] = points.v[j];
    for (std::size_t j = kCurves; j < kAll; ++j) {
        out.v[j] = wrap_sub(points.v[j], points.v[j - kCurves]);
    }
    return out;
}

/// Blends knots and levels; the gains are the slopes between the blended points.
BlendedCurves blend_curves(const Blend& blend, const Curves& high, const Curves& low) {
    BlendedCurves c;
    c.knot = divide(blend, weigh_knots(blend, high, low));
    const Lanes<kAll> rise = segments(divide(blend, weigh_levels(blend, high, low)));
    const Lanes<kAll> run = segments(c.knot);
    for (std::size_t j = 0; j < padded(kAll); ++j) {
        c.gain.v[j] = as_signed(divide_lane_or_zero(as_unsigned(rise.v[j]), as_unsigned(run.v[j])));
    }
    return c;
}

Bytes<2 * kCurves> stored_knots(const BlendedCurves& curves) {
    Bytes<2 * kCurves> knots;
    for (std::size_t j = 0; j < padded(2 * kCurves); ++j) {
        knots.v[j] = static_cast<std::uint8_t>(curves.knot.v[j]);
    }
    return knots;
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

Lanes<kAll> knots_of(const Curves& curves) {
    Lanes<kAll> knots;
    for (std::size_t j = 0; j < kAll; ++j) {
        knots.v[j] = j < 2 * kCurves ? curves.knot.v[j] : curves.knot.v[j - kCurves] + kLastSegment;
    }
    return knots;
}

template <class Gains>
void trace_details(const BlockTrace& trace, const Curves& low, const Curves& high,
                   const Lanes<kAll>& knots, const Gains& target, const Gains& out) {
    if (!trace.details()) return;
    const auto rows = [&trace](const RowFormats(&formats)[3], const auto& low_values,
                               const auto& high_values, const auto& targets, const auto& outs) {
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t first = k * kCurves;
            trace.row<kCurves>(formats[k].low, low_values, first);
            trace.row<kCurves>(formats[k].high, high_values, first);
            if (formats[k].target != nullptr) trace.row<kCurves>(formats[k].target, targets, first);
            if (formats[k].out != nullptr) trace.row<kCurves>(formats[k].out, outs, first);
        }
    };
    rows(kKnotFormats, knots_of(low), knots_of(high), knots, knots);
    rows(kGainFormats, low.gain, high.gain, target, out);
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
    const BlendedCurves out = blend_curves(lv_blend(param), high, low);
    kGains.write(scratch, cut_to_bytes(out.gain));
    kKnots.write(scratch, stored_knots(out));
    trace_details(trace, low, high, out.knot, out.gain, out.gain);
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
    const BlendedCurves blended = blend_curves(ct_blend(param), high, low);
    // The knots take their targets at once; only the gains are clamped and move in steps.
    const Bytes<kAll> target = clip_all(blended.gain, low.gain, high.gain);
    const Bytes<kAll> out =
        step_all(kGains.read(working), target, temporal_step(param, param.sat_speed));
    kGains.write(working, out);
    kKnots.write(working, stored_knots(blended));
    trace_details(trace, low, high, blended.knot, target, out);
}
