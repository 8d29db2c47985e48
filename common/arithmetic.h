#ifndef IMGTUNE_COMMON_ARITHMETIC_H
#define IMGTUNE_COMMON_ARITHMETIC_H

#include <cstdint>
#include <limits>

namespace imgtune {

/// The bits of one type as another of its size. (Some standard libraries lack std::bit_cast.)
template <class To, class From>
constexpr To bit_cast(const From& from) {
    static_assert(sizeof(To) == sizeof(From));
    return __builtin_bit_cast(To, from);
}

constexpr std::uint32_t as_unsigned(std::int32_t v) {
    return static_cast<std::uint32_t>(v);
}
constexpr std::int32_t as_signed(std::uint32_t v) {
    return static_cast<std::int32_t>(v);
}

/// a + b modulo 2^32.
constexpr std::int32_t wrap_add(std::int32_t a, std::int32_t b) {
    return as_signed(as_unsigned(a) + as_unsigned(b));
}

/// a - b modulo 2^32.
constexpr std::int32_t wrap_sub(std::int32_t a, std::int32_t b) {
    return as_signed(as_unsigned(a) - as_unsigned(b));
}

/// a * b modulo 2^32.
constexpr std::int32_t wrap_mul(std::int32_t a, std::int32_t b) {
    return as_signed(as_unsigned(a) * as_unsigned(b));
}

/// -a modulo 2^32: the most negative value stays itself.
constexpr std::int32_t wrap_negate(std::int32_t a) {
    return as_signed(0U - as_unsigned(a));
}

/// n / d truncated toward zero; 0 for d = 0; the most negative value by -1 wraps to itself.
constexpr std::int32_t divide_or_zero(std::int32_t n, std::int32_t d) {
    if (d == 0) return 0;
    if (d == -1) return wrap_negate(n);
    return n / d;
}

/// n / d; 0 for d = 0.
constexpr std::uint32_t divide_or_zero(std::uint32_t n, std::uint32_t d) {
    return d == 0 ? 0 : n / d;
}

/// v << count, the count modulo 32.
constexpr std::uint32_t shift_left(std::uint32_t v, std::int32_t count) {
    return v << (as_unsigned(count) & 31U);
}

/// v >> count with copies of the sign, the count modulo 32.
constexpr std::int32_t shift_right_arithmetic(std::int32_t v, std::int32_t count) {
    return v >> (as_unsigned(count) & 31U);
}

/// v truncated toward zero and saturated; NaN gives 0.
constexpr std::int32_t truncate_to_int32(float v) {
    constexpr float kEnd = 2147483648.0f;
    if (v >= kEnd) return std::numeric_limits<std::int32_t>::max();
    if (v < -kEnd) return std::numeric_limits<std::int32_t>::min();
    return v == v ? static_cast<std::int32_t>(v) : 0;
}

/// v truncated toward zero and saturated to 0..2^32 - 1; NaN gives 0.
constexpr std::uint32_t truncate_to_uint32(float v) {
    constexpr float kEnd = 4294967296.0f;
    if (v >= kEnd) return std::numeric_limits<std::uint32_t>::max();
    return v > 0.0f ? static_cast<std::uint32_t>(v) : 0;
}

/// An unsigned field of a register image: `width` bits (1..31) of a word, from bit `low` up.
struct BitField {
    unsigned word;
    unsigned low;
    unsigned width;

    constexpr std::uint32_t value_mask() const { return (1U << width) - 1U; }
    constexpr std::uint32_t word_mask() const { return value_mask() << low; }

    constexpr std::uint32_t read(const std::uint32_t* words) const {
        return (words[word] >> low) & value_mask();
    }

    /// Values that do not fit lose their high bits; every other bit of the word is kept.
    constexpr void write(std::uint32_t* words, std::uint32_t value) const {
        words[word] = (words[word] & ~word_mask()) | ((value & value_mask()) << low);
    }
};

/// Exact truncating division of 32-bit values by one divisor, in a form that vectorises.
///
/// Multiplying by the reciprocal of |d|, rounded away from zero, and truncating is exact: at a
/// multiple of d the product cannot fall below the quotient, and its relative excess of at most
/// 2^-51 cannot carry any other |n| <= 2^31 over the next integer, which is at least 1/2^31 away.
/// The sign of d is applied afterwards, so that the most negative value by -1 wraps like
/// divide_or_zero; a zero divisor has reciprocal 0 and gives 0.
class FrameDivisor {
  public:
    constexpr explicit FrameDivisor(std::int32_t divisor)
        : reciprocal_(reciprocal_of(divisor)), sign_(divisor < 0 ? -1 : 0) {}

    constexpr std::int32_t divide(std::int32_t n) const {
        const auto magnitude = static_cast<std::int32_t>(static_cast<double>(n) * reciprocal_);
        return wrap_sub(magnitude ^ sign_, sign_);
    }

    constexpr double reciprocal() const { return reciprocal_; }  ///< of the divisor's magnitude
    constexpr std::int32_t sign() const { return sign_; }        ///< -1 or 0

  private:
    static constexpr double reciprocal_of(std::int32_t divisor) {
        if (divisor == 0) return 0.0;
        const double magnitude = divisor < 0 ? -static_cast<double>(divisor) : divisor;
        return bit_cast<double>(bit_cast<std::uint64_t>(1.0 / magnitude) + 1);
    }

    double reciprocal_;
    std::int32_t sign_;
};

/// divide_or_zero in a form that vectorises: a quotient of two 32-bit values taken in double cannot
/// round up to the next integer, and one beyond 31 bits has the divisor 1.
constexpr std::uint32_t divide_lane_or_zero(std::uint32_t n, std::uint32_t d) {
    constexpr double kHalf = 2147483648.0;
    const double numerator = as_signed(n ^ 0x80000000U) + kHalf;
    const double divisor = as_signed(d ^ 0x80000000U) + kHalf;
    const auto quotient =
        as_unsigned(static_cast<std::int32_t>(numerator / (divisor < 2.0 ? 2.0 : divisor)));
    const std::uint32_t beyond_0 = d == 1 ? n : quotient;
    return d == 0 ? 0 : beyond_0;
}

}  // namespace imgtune

#endif
