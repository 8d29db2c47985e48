#ifndef IMGTUNE_COLOR_BLEND_H
#define IMGTUNE_COLOR_BLEND_H

#include "color/block_trace.h"
#include "color/lanes.h"
#include "color/rules.h"
#include "common/arithmetic.h"

// Two kinds of blend with the same members and the same results, over which the blocks are written:
// one for the weights that a sane tuning gives, one for all others.
//
// Saturation curves are blended some at a time, as for_each_run says. The sums that `weigh` and
// `weigh_rise` give are for the divisions of the same kind alone.

namespace imgtune {

/// Any weights, modulo 2^32.
class WideBlend {
  public:
    static constexpr std::size_t kCurves = 20;
    using Values = Lanes<kCurves>;
    struct Pairs {
        Values high;
        Values low;
    };

    explicit WideBlend(const BlendRule& rule) : rule_(rule), divider_(rule.divisor) {}

    /// Every pair of fields.
    template <class Fields>
    auto operator()(const Fields& high, const Fields& low) const {
        return divide_all(each_lane<Fields::kFields>(
            [&](std::size_t j) { return rule_.weigh(high[j], low[j]); }));
    }

    /// Blended bytes, limited to the range between the two that each is made of.
    template <std::size_t N, class Fields>
    static Bytes<N> limit(const Lanes<N>& blended, const Fields& high, const Fields& low) {
        return clip_all(saturate_to_bytes(blended), high, low);
    }

    template <class Run>
    static void for_each_run(const Run& run) {
        run(Part<kCurves>{0});
    }

    static Pairs pairs(const ByteView<kCurves>& high, const ByteView<kCurves>& low) {
        return {each_lane<kCurves>([&](std::size_t j) { return high[j]; }),
                each_lane<kCurves>([&](std::size_t j) { return low[j]; })};
    }

    [[gnu::noinline]] Values weigh(const Pairs& values) const {
        return each_lane<kCurves>(
            [&](std::size_t j) { return rule_.weigh(values.high.v[j], values.low.v[j]); });
    }

    /// Of gains times widths: from 0, or from one knot to the next.
    Values weigh_rise(const Pairs& gain, const Pairs& to) const {
        return weigh({rise(gain.high, to.high), rise(gain.low, to.low)});
    }
    Values weigh_rise(const Pairs& gain, const Pairs& from, const Pairs& to) const {
        return weigh({rise(gain.high, to.high - from.high), rise(gain.low, to.low - from.low)});
    }

    Values knot(const Values& sum) const { return divide_all(sum); }
    Values level(const Values& sum) const { return divide_all(sum); }

    /// The blend of knots 32 above those that give `sum`.
    Values last_knot(const Values& sum, const Values&) const {
        const std::int32_t last_segment = wrap_mul(32, rule_.divisor);
        return divide_all(
            each_lane<kCurves>([&](std::size_t j) { return wrap_add(sum.v[j], last_segment); }));
    }

    /// Rise by run as unsigned, 0 for a run of 0.
    [[gnu::noinline]] static Values slope(const Values& rise, const Values& run) {
        return each_lane<kCurves>([&](std::size_t j) {
            return as_signed(divide_lane_or_zero(as_unsigned(rise.v[j]), as_unsigned(run.v[j])));
        });
    }
    static Values last_slope(const Values& rise, const Values& run) { return slope(rise, run); }

    /// Slopes limited to 255.
    template <std::size_t N>
    static Bytes<N> saturate(const Lanes<N>& slopes) {
        return saturate_to_bytes(slopes);
    }
    /// Knots cut to 8 bits.
    template <std::size_t N>
    static Bytes<N> cut(const Lanes<N>& knots) {
        return cut_to_bytes(knots);
    }

  private:
    [[gnu::noinline]] static Values rise(const Values& gain, const Values& width) {
        return each_lane<kCurves>([&](std::size_t j) { return wrap_mul(gain.v[j], width.v[j]); });
    }

    template <std::size_t N>
    [[gnu::noinline]] Lanes<N> divide_all(const Lanes<N>& sums) const {
        return each_lane<N>([&](std::size_t j) { return divider_.divide(sums.v[j]); });
    }

    BlendRule rule_;
    FrameDivisor divider_;
};

/// Weights from 0 to a divisor of 1 to kNarrowDivisor. A result lies between the two values that it
/// is made of. Curves have knots that do not fall.
class NarrowBlend {
  public:
    template <std::size_t N>
    using Values = vector::Values<N>;
    template <std::size_t N>
    using Pairs = vector::Pairs<N>;

    static constexpr bool fits(const BlendRule& rule) {
        return 0 < rule.divisor && rule.divisor <= kNarrowDivisor &&
               as_unsigned(rule.weight_high) <= as_unsigned(rule.divisor);
    }

    explicit NarrowBlend(const BlendRule& rule) : scale_(rule.weight_high, rule.weight_low) {}

    template <std::size_t N>
    Lanes<N> operator()(const Lanes<N>& high, const Lanes<N>& low) const {
        Lanes<N> out;
        if constexpr (N % 4 == 0) {
            for (std::size_t j = 0; j < N; j += 4) {
                const auto pairs = vector::pairs(vector::load(high.v + j), vector::load(low.v + j));
                const auto sums = vector::weigh_bytes(scale_, pairs);
                vector::store(out.v + j, vector::divide_levels(scale_, sums.quad[0]));
            }
        } else {
            for (std::size_t j = 0; j < N; ++j) {
                out.v[j] =
                    scale_.divide(high.v[j] * scale_.weight_high + low.v[j] * scale_.weight_low);
            }
        }
        return out;
    }

    template <class Fields>
    auto operator()(const Fields& high, const Fields& low) const {
        return each_part<Fields::kFields>([&]<std::size_t N>(Part<N> part) {
            return vector::mean<N>(scale_, high.part(part), low.part(part));
        });
    }

    template <std::size_t N, class Fields>
    static const Bytes<N>& limit(const Bytes<N>& blended, const Fields&, const Fields&) {
        return blended;
    }

    template <class Run>
    static void for_each_run(const Run& run) {
        for_each_part<WideBlend::kCurves>(run);
    }

    template <std::size_t N>
    static Pairs<N> pairs(const ByteView<N>& high, const ByteView<N>& low) {
        return vector::pairs<N>(vector::load<N>(high.bytes), vector::load<N>(low.bytes));
    }

    template <std::size_t N>
    Values<N> weigh(const Pairs<N>& values) const {
        return vector::weigh_bytes(scale_, values);
    }
    template <std::size_t N>
    Values<N> weigh_rise(const Pairs<N>& gain, const Pairs<N>& to) const {
        return vector::weigh_levels(scale_, gain * to);
    }
    template <std::size_t N>
    Values<N> weigh_rise(const Pairs<N>& gain, const Pairs<N>& from, const Pairs<N>& to) const {
        return vector::weigh_levels(scale_, gain * (to - from));
    }

    template <class Sums>
    Sums knot(const Sums& sums) const {
        return each_quad(sums, sums,
                         [&](vector::Quad x, vector::Quad) { return divide_bytes(scale_, x); });
    }
    template <class Sums>
    Sums level(const Sums& sums) const {
        return each_quad(sums, sums,
                         [&](vector::Quad x, vector::Quad) { return divide_levels(scale_, x); });
    }
    template <class Knots>
    static Knots last_knot(const Knots&, const Knots& second_knot) {
        return plus_32(second_knot);
    }
    template <class Levels>
    static Levels slope(const Levels& rise, const Levels& run) {
        return quotient_or_zero(rise, run);
    }
    template <class Levels>
    static Levels last_slope(const Levels& rise, const Levels&) {
        return over_32(rise);
    }

    template <std::size_t N>
    static Bytes<N> saturate(const Values<N>& slopes) {
        return {{vector::saturate(slopes)}};
    }
    template <std::size_t N>
    static Bytes<N> cut(const Values<N>& knots) {
        return saturate(knots);  // there is nothing to cut
    }

  private:
    NarrowScale scale_;
};

/// The blend of a frame: its kind is chosen once.
class FrameBlend {
  public:
    explicit FrameBlend(const BlendRule& rule)
        : rule_(rule),
          is_narrow_(NarrowBlend::fits(rule)),
          narrow_(is_narrow_ ? rule : BlendRule{0, 1, 1}) {}

    /// Calls `block` with the kind of blend that fits the weights and, where it matters, the
    /// curves. A call that logs takes the wide kind: the narrow one is for calls that are all
    /// arithmetic.
    template <class Block>
    void apply(const BlockTrace& trace, const Block& block, bool curves_fit = true) const {
        if (is_narrow_ && curves_fit && !trace.on()) {
            block(narrow_, SilentTrace());
        } else {
            apply_wide(trace, block);
        }
    }

    bool takes_low() const { return is_narrow_ && rule_.weight_high == 0; }
    bool takes_high() const { return is_narrow_ && rule_.weight_low == 0; }

  private:
    template <class Block>
    [[gnu::noinline]] void apply_wide(const BlockTrace& trace, Block block) const {
        block(WideBlend(rule_), trace);
    }

    BlendRule rule_;
    bool is_narrow_;
    NarrowBlend narrow_;
};

}  // namespace imgtune

#endif
