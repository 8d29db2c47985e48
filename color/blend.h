#ifndef IMGTUNE_COLOR_BLEND_H
#define IMGTUNE_COLOR_BLEND_H

#include "color/block_trace.h"
#include "color/lanes.h"
#include "color/rules.h"
#include "common/arithmetic.h"

// Two kinds of blend with the same members and the same results, over which the blocks are written:
// one for the weights that a sane tuning gives, one for all others.
//
// Saturation curves are blended kCurves at a time. The sums that `weigh` and `weigh_rise` give are
// for the divisions of the same kind alone.

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

    static Pairs pairs(const std::uint8_t* high, const std::uint8_t* low) {
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
    static constexpr std::size_t kCurves = 4;
    using Values = vector::Quad;
    using Pairs = vector::Pairs;

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
                const auto pairs = pair(vector::load(high.v + j), vector::load(low.v + j));
                store(out.v + j, level(vector::weigh_bytes(scale_, pairs)));
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
        return each_sixteen<Fields::kFields>([&](std::size_t k, std::size_t) {
            return vector::mean(scale_, high.sixteen(k), low.sixteen(k));
        });
    }

    template <std::size_t N, class Fields>
    static const Bytes<N>& limit(const Bytes<N>& blended, const Fields&, const Fields&) {
        return blended;
    }

    static Pairs pairs(const std::uint8_t* high, const std::uint8_t* low) {
        return vector::load_pairs(high, low);
    }

    Values weigh(Pairs values) const { return vector::weigh_bytes(scale_, values); }
    Values weigh_rise(Pairs gain, Pairs to) const {
        return vector::weigh_levels(scale_, gain * to);
    }
    Values weigh_rise(Pairs gain, Pairs from, Pairs to) const {
        return vector::weigh_levels(scale_, gain * (to - from));
    }

    Values knot(Values sum) const { return vector::divide_bytes(scale_, sum); }
    Values level(Values sum) const { return vector::divide_levels(scale_, sum); }
    static Values last_knot(Values, Values second_knot) { return plus_32(second_knot); }
    static Values slope(Values rise, Values run) { return quotient_or_zero(rise, run); }
    static Values last_slope(Values rise, Values) { return over_32(rise); }

    template <std::size_t N>
    static Bytes<N> saturate(const Lanes<N>& slopes) {
        return each_sixteen<N>(
            [&](std::size_t, std::size_t first) { return vector::saturate(slopes.v + first); });
    }
    template <std::size_t N>
    static Bytes<N> cut(const Lanes<N>& knots) {
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
