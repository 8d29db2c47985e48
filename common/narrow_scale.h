#ifndef IMGTUNE_COMMON_NARROW_SCALE_H
#define IMGTUNE_COMMON_NARROW_SCALE_H

#include <bit>
#include <cstdint>

#include "common/arithmetic.h"

namespace imgtune {

inline constexpr std::int32_t kNarrowDivisor = 8192;      ///< largest divisor of a narrow blend
inline constexpr std::int32_t kHighestLevel = 255 * 287;  ///< what a narrow blend is made of

/// A weighted mean of values 0..kHighestLevel whose weights are 0..divisor and add up to the
/// divisor, 1..kNarrowDivisor. Weights and divisor are doubled, so that the divisor is at least 2.
struct NarrowScale {
    constexpr NarrowScale(std::int32_t high, std::int32_t low)
        : weight_high(2 * high), weight_low(2 * low) {
        const auto divisor = static_cast<std::uint32_t>(weight_high + weight_low);
        const double exact = 1.0 / divisor;
        shift = 31 - std::countl_zero(divisor - 1);
        multiplier =
            static_cast<std::int32_t>(exact * static_cast<double>(1LL << (31 + shift))) + 1;
        reciprocal = bit_cast<float>(bit_cast<std::uint32_t>(static_cast<float>(exact)) + 1);
    }

    /// A weighted sum, divided. multiplier / 2^(31 + shift) exceeds the reciprocal of the divisor
    /// by so little that no sum is carried over the next integer; products stay below 2^62.
    constexpr std::int32_t divide(std::int32_t sum) const {
        return static_cast<std::int32_t>(std::int64_t{sum} * multiplier >> (31 + shift));
    }

    std::int32_t weight_high;
    std::int32_t weight_low;
    std::int32_t multiplier;  ///< 2^30 + 1 to 2^31 - 1
    std::int32_t shift;       ///< 0..13
    float reciprocal;         ///< rounded up: exact where a product truncates to 0..255
};

}  // namespace imgtune

#endif
