#ifndef IMGTUNE_COLOR_RULES_H
#define IMGTUNE_COLOR_RULES_H

#include <algorithm>

#include "common/arithmetic.h"

namespace imgtune {

constexpr bool is_degenerate_bracket(std::int32_t x, std::int32_t p, std::int32_t q) {
    return p == q || x == 0 || p == 0 || q == 0;
}

/// v limited to the range between two bounds in either order, compared as unsigned.
constexpr std::uint32_t clip(std::uint32_t v, std::uint32_t a, std::uint32_t b) {
    const std::uint32_t low = std::min(a, b);
    const std::uint32_t high = std::max(a, b);
    return v > high ? high : (v < low ? low : v);
}

/// `previous` moved toward `target` by at most `step`.
constexpr std::uint32_t step_toward(std::uint32_t previous, std::uint32_t target,
                                    std::uint32_t step) {
    const std::uint32_t difference = previous - target;
    const std::uint32_t distance = as_signed(difference) < 0 ? 0U - difference : difference;
    const std::uint32_t moved = previous > target ? previous - step : previous + step;
    return distance <= step ? target : moved;
}

/// Weighted mean of a High and a Low value, (high * weight_high + low * weight_low) / divisor:
/// the one form of both the LV blend and the CT interpolation. The weights add up to the divisor.
struct BlendRule {
    std::int32_t weight_high;
    std::int32_t weight_low;
    std::int32_t divisor;

    /// Outdoor (High) and normal (Low) value by light value; a zero base gives 0.
    static constexpr BlendRule by_lv(std::int32_t ratio, std::int32_t base) {
        return {ratio, wrap_sub(base, ratio), base};
    }

    /// Value at CT x between p (High) and q (Low), p equal to q giving 0.
    static constexpr BlendRule by_ct_unguarded(std::int32_t x, std::int32_t p, std::int32_t q) {
        return {wrap_sub(q, x), wrap_sub(x, p), wrap_sub(q, p)};
    }

    /// The same, a degenerate bracket giving the Low value.
    static constexpr BlendRule by_ct(std::int32_t x, std::int32_t p, std::int32_t q) {
        return is_degenerate_bracket(x, p, q) ? BlendRule{0, 1, 1} : by_ct_unguarded(x, p, q);
    }

    /// The sum that is divided. An amount added to both values adds that many divisors to it.
    constexpr std::int32_t weigh(std::int32_t high, std::int32_t low) const {
        return wrap_add(wrap_mul(high, weight_high), wrap_mul(low, weight_low));
    }

    constexpr std::int32_t operator()(std::int32_t high, std::int32_t low) const {
        return divide_or_zero(weigh(high, low), divisor);
    }
};

}  // namespace imgtune

#endif
