#ifndef IMGTUNE_COMMON_NARROW_SCALE_H
#define IMGTUNE_COMMON_NARROW_SCALE_H

#include <bit>
#include <cstdint>

#include "common/arithmetic.h"

namespace imgtune {

inline constexpr std::int32_t kNarrowDivisor = 8192;      ///< largest divisor of a narrow blend
inline constexpr std::int32_t kHighestLevel = 255 * 287;  ///< what a narrow blend is made of

/// A weighted mean of values 0..kHighestLevel whose weights are 0..divisor and add up to the
/// divisor, 1..kNarrowDivisor. Weights and divisor are taken times a power of two that brings the
/// divisor above 2^13, to 2^14 at most, so that every sum is shifted by the same amount.
struct NarrowScale {
    static constexpr int kShift = 13;

    constexpr NarrowScale(std::int32_t high, std::int32_t low) {
        const auto divisor = static_cast<std::uint32_t>(high + low);
        const int up = std::countl_zero(divisor - 1) - 18;
        weight_high = high << up;
        weight_low = low << up;
        const double exact = 1.0 / (divisor << up);
        multiplier = static_cast<std::int32_t>(exact * static_cast<double>(1LL << 44)) + 1;
        reciprocal = bit_cast<float>(bit_cast<std::uint32_t>(static_cast<float>(exact)) + 1);
    }

    /// A weighted sum, divided. multiplier / 2^44 exceeds the reciprocal of the divisor by so
    /// little that no sum is carried over the next integer; products stay below 2^62.
    constexpr std::int32_t divide(std::int32_t sum) const {
        return static_cast<std::int32_t>(std::int64_t{sum} * multiplier >> (31 + kShift));
    }

    std::int32_t weight_high;
    std::int32_t weight_low;
    std::int32_t multiplier;  ///< 2^30 + 1 to 2^31 - 1
    float reciprocal;         ///< rounded up: exact where a product truncates to 0..255
};

}  // namespace imgtune

#endif
