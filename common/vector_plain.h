#ifndef IMGTUNE_COMMON_VECTOR_PLAIN_H
#define IMGTUNE_COMMON_VECTOR_PLAIN_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/arithmetic.h"
#include "common/narrow_scale.h"
#include "common/packed_fields.h"
#include "common/vector_values.h"

// The operations of register images on a few lanes at a time, in plain C++: what every machine can
// run, and what the others are tested against. Here and in its siblings:
//
// Sixteen   sixteen bytes, or four with anything behind them
// Quad      four values of 32 bits
// Values    sixteen or four values of 32 bits
// Pairs     sixteen or four pairs of a High and a Low value, 16 bits each
// Reals     four values in single precision

namespace imgtune::plain {

struct Sixteen {
    std::uint8_t v[16];
};
struct Quad {
    std::int32_t v[4];
};
template <std::size_t N>
using Values = ValuesIn<Quad, N>;
template <std::size_t N>
struct Pairs {
    std::uint16_t high[N];
    std::uint16_t low[N];
};
struct Reals {
    float v[4];
};

template <class Operation>
Sixteen each_byte(Sixteen a, Sixteen b, const Operation& operation) {
    Sixteen out;
    for (std::size_t j = 0; j < 16; ++j) {
        out.v[j] = static_cast<std::uint8_t>(operation(a.v[j], b.v[j]));
    }
    return out;
}

template <class Operation>
Quad each_lane(Quad a, Quad b, const Operation& operation) {
    Quad out;
    for (std::size_t j = 0; j < 4; ++j) out.v[j] = operation(a.v[j], b.v[j]);
    return out;
}

template <class Operation>
Reals each_real(Reals a, Reals b, const Operation& operation) {
    Reals out;
    for (std::size_t j = 0; j < 4; ++j) out.v[j] = operation(a.v[j], b.v[j]);
    return out;
}

template <std::size_t N, class Operation>
Pairs<N> each_half(const Pairs<N>& a, const Pairs<N>& b, const Operation& operation) {
    Pairs<N> out;
    for (std::size_t j = 0; j < N; ++j) {
        out.high[j] = static_cast<std::uint16_t>(operation(a.high[j], b.high[j]));
        out.low[j] = static_cast<std::uint16_t>(operation(a.low[j], b.low[j]));
    }
    return out;
}

/// Sixteen bytes, or four.
template <std::size_t N>
Sixteen load(const std::uint8_t* from) {
    Sixteen out{};
    std::memcpy(out.v, from, N);
    return out;
}
inline Quad load(const std::int32_t* from) {
    Quad out;
    std::memcpy(out.v, from, 16);
    return out;
}
inline Quad load(const std::uint32_t* from) {
    Quad out;
    std::memcpy(out.v, from, 16);
    return out;
}
template <std::size_t N>
void store(std::uint8_t* to, Sixteen bytes) {
    std::memcpy(to, bytes.v, N);
}
inline void store(std::int32_t* to, Quad values) {
    std::memcpy(to, values.v, 16);
}
inline void store(std::uint32_t* to, Quad words) {
    std::memcpy(to, words.v, 16);
}

/// The bytes in the low half of each 16 bits of eight words.
inline Sixteen load_spaced(const std::uint32_t* words) {
    Sixteen out;
    for (std::size_t j = 0; j < 16; ++j) {
        out.v[j] = static_cast<std::uint8_t>(words[j / 2] >> 16 * (j % 2));
    }
    return out;
}

/// Writes them and keeps the bytes between.
inline void store_spaced(std::uint32_t* words, Sixteen bytes) {
    for (std::size_t j = 0; j < 8; ++j) {
        const auto pair = bytes.v[2 * j] | static_cast<std::uint32_t>(bytes.v[2 * j + 1]) << 16;
        words[j] = (words[j] & 0xff00ff00U) | pair;
    }
}

/// Values cut to their low 8 bits.
template <std::size_t N>
Sixteen cut(const Values<N>& values) {
    Sixteen out{};
    for (std::size_t j = 0; j < N; ++j) {
        out.v[j] = static_cast<std::uint8_t>(values.quad[j / 4].v[j % 4]);
    }
    return out;
}

/// Values of 0..2^16 - 1, limited to 255.
template <std::size_t N>
Sixteen saturate(const Values<N>& values) {
    Sixteen out{};
    for (std::size_t j = 0; j < N; ++j) {
        out.v[j] = static_cast<std::uint8_t>(std::min(values.quad[j / 4].v[j % 4], 255));
    }
    return out;
}

/// How far every byte of a lies above that of b; 0 where it does not.
inline Sixteen excess(Sixteen a, Sixteen b) {
    return each_byte(a, b, [](int x, int y) { return std::max(x - y, 0); });
}
inline Sixteen operator|(Sixteen a, Sixteen b) {
    return each_byte(a, b, [](int x, int y) { return x | y; });
}
inline bool all_zero(Sixteen a) {
    bool all = true;
    for (std::size_t j = 0; j < 16; ++j) all &= a.v[j] == 0;
    return all;
}
inline bool all_below(Sixteen a, Sixteen b) {
    bool all = true;
    for (std::size_t j = 0; j < 16; ++j) all &= a.v[j] < b.v[j];
    return all;
}

/// Every byte limited to the range between two others, in either order.
inline Sixteen clip(Sixteen bytes, Sixteen a, Sixteen b) {
    const auto least = each_byte(a, b, [](int x, int y) { return std::min(x, y); });
    const auto most = each_byte(a, b, [](int x, int y) { return std::max(x, y); });
    const auto lifted = each_byte(bytes, least, [](int x, int y) { return std::max(x, y); });
    return each_byte(lifted, most, [](int x, int y) { return std::min(x, y); });
}

/// Every byte of `previous` moved toward its target by at most `reach`.
inline Sixteen step(Sixteen previous, Sixteen target, std::uint8_t reach) {
    return each_byte(previous, target,
                     [reach](int p, int t) { return std::clamp(t, p - reach, p + reach); });
}

template <std::size_t N>
Pairs<N> pairs(Sixteen high, Sixteen low) {
    Pairs<N> out;
    for (std::size_t j = 0; j < N; ++j) {
        out.high[j] = high.v[j];
        out.low[j] = low.v[j];
    }
    return out;
}

// Modulo 2^16.
template <std::size_t N>
Pairs<N> operator-(const Pairs<N>& a, const Pairs<N>& b) {
    return each_half(a, b, [](int x, int y) { return x - y; });
}
template <std::size_t N>
Pairs<N> operator*(const Pairs<N>& a, const Pairs<N>& b) {
    return each_half(a, b, [](std::uint32_t x, std::uint32_t y) { return x * y; });
}

// Modulo 2^32.
inline Quad operator+(Quad a, Quad b) {
    return each_lane(a, b, wrap_add);
}
inline Quad operator-(Quad a, Quad b) {
    return each_lane(a, b, wrap_sub);
}
inline Quad operator&(Quad a, Quad b) {
    return each_lane(a, b, [](std::int32_t x, std::int32_t y) { return x & y; });
}
inline Quad operator|(Quad a, Quad b) {
    return each_lane(a, b, [](std::int32_t x, std::int32_t y) { return x | y; });
}
/// All bits where a > b, none elsewhere.
inline Quad operator>(Quad a, Quad b) {
    return each_lane(a, b, [](std::int32_t x, std::int32_t y) { return x > y ? -1 : 0; });
}

/// The same value in every lane.
inline Quad splat(std::int32_t value) {
    return {{value, value, value, value}};
}

inline Quad quad(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return {{a, b, c, d}};
}

/// The sum of all lanes, modulo 2^32, in every lane.
inline Quad sum(Quad a) {
    return splat(wrap_add(wrap_add(a.v[0], a.v[1]), wrap_add(a.v[2], a.v[3])));
}

/// Four lanes of two Quads side by side, from lane First on.
template <int First>
Quad lanes_from(Quad a, Quad b) {
    static_assert(First > 0 && First < 4);
    Quad out;
    for (std::size_t j = 0; j < 4; ++j)
        out.v[j] = j < 4 - First ? a.v[j + First] : b.v[j + First - 4];
    return out;
}

/// The halves of two words, the low one of each first.
inline Quad load_halves(const std::uint32_t* words) {
    Quad out;
    for (std::size_t j = 0; j < 4; ++j) {
        out.v[j] = as_signed(words[j / 2] >> 16 * (j % 2) & 0xffffU);
    }
    return out;
}
/// Four words whose halves are values of 0..2^15 - 1.
inline Quad pack_halves(Quad a, Quad b) {
    const auto word = [](const std::int32_t* halves) { return halves[0] | halves[1] << 16; };
    return {{word(a.v), word(a.v + 2), word(b.v), word(b.v + 2)}};
}

/// (a * weights[0] + b * weights[1] + c * weights[2]) / divisor, sums and products modulo 2^32.
inline Quad mean(const FrameDivisor& divisor, const std::int32_t (&weights)[3], Quad a, Quad b,
                 Quad c) {
    Quad out;
    for (std::size_t j = 0; j < 4; ++j) {
        const std::int32_t later =
            wrap_add(wrap_mul(b.v[j], weights[1]), wrap_mul(c.v[j], weights[2]));
        out.v[j] = divisor.divide(wrap_add(wrap_mul(a.v[j], weights[0]), later));
    }
    return out;
}

inline Reals to_reals(Quad a) {
    Reals out;
    for (std::size_t j = 0; j < 4; ++j) out.v[j] = static_cast<float>(a.v[j]);
    return out;
}
inline Reals operator+(Reals a, Reals b) {
    return each_real(a, b, [](float x, float y) { return x + y; });
}
inline Reals operator-(Reals a, Reals b) {
    return each_real(a, b, [](float x, float y) { return x - y; });
}
inline Reals operator*(Reals a, float factor) {
    return each_real(a, a, [factor](float x, float) { return x * factor; });
}
inline Reals operator/(Reals a, float divisor) {
    return each_real(a, a, [divisor](float x, float) { return x / divisor; });
}
/// The lengths of the vectors (x, y), both taken times a scale, in double precision.
inline Reals lengths(Reals x, Reals y, double scale) {
    return each_real(x, y, [scale](float of_x, float of_y) {
        const double scaled_x = of_x * scale;
        const double scaled_y = of_y * scale;
        return static_cast<float>(std::sqrt(scaled_x * scaled_x + scaled_y * scaled_y));
    });
}
inline void store(float* to, Reals values) {
    std::memcpy(to, values.v, 16);
}
/// Truncated toward zero and saturated; NaN gives 0.
inline Quad truncate(Reals a) {
    Quad out;
    for (std::size_t j = 0; j < 4; ++j) out.v[j] = truncate_to_int32(a.v[j]);
    return out;
}

// Results that fit 32 bits.
inline Quad times_32(Quad a) {
    return each_lane(a, a, [](std::int32_t x, std::int32_t) { return x * 32; });
}
inline Quad plus_32(Quad a) {
    return each_lane(a, a, [](std::int32_t x, std::int32_t) { return x + 32; });
}
/// Of values from 0 on.
inline Quad over_32(Quad a) {
    return each_lane(a, a, [](std::int32_t x, std::int32_t) { return x / 32; });
}

/// a / b of values below 2^24 whose quotient is below 2^16; 0 for b = 0.
inline Quad quotient_or_zero(Quad a, Quad b) {
    return each_lane(a, b, [](std::int32_t x, std::int32_t y) { return y == 0 ? 0 : x / y; });
}

/// Four fields of a word.
inline Quad unpack(const PackedFields& fields, std::uint32_t word) {
    Quad out;
    for (std::size_t j = 0; j < 4; ++j) {
        out.v[j] = as_signed(word >> fields.low[j]) & fields.value_mask[j];
    }
    return out;
}

/// The word of four values, cut to their fields.
inline std::uint32_t pack(const PackedFields& fields, Quad values) {
    std::uint32_t word = 0;
    for (std::size_t j = 0; j < 4; ++j) {
        word |= as_unsigned(values.v[j] & fields.value_mask[j]) << fields.low[j];
    }
    return word;
}

/// Pairs of values below 2^16.
inline Pairs<4> pairs(Quad high, Quad low) {
    Pairs<4> out;
    for (std::size_t j = 0; j < 4; ++j) {
        out.high[j] = static_cast<std::uint16_t>(high.v[j]);
        out.low[j] = static_cast<std::uint16_t>(low.v[j]);
    }
    return out;
}

/// The weighted sums of pairs of bytes, or of other values below 2^15.
template <std::size_t N>
Values<N> weigh_bytes(const NarrowScale& scale, const Pairs<N>& pairs) {
    Values<N> out;
    for (std::size_t j = 0; j < N; ++j) {
        out.quad[j / 4].v[j % 4] =
            pairs.high[j] * scale.weight_high + pairs.low[j] * scale.weight_low;
    }
    return out;
}
/// The same of any pairs.
template <std::size_t N>
Values<N> weigh_levels(const NarrowScale& scale, const Pairs<N>& pairs) {
    return weigh_bytes(scale, pairs);
}

/// Weighted sums of bytes, divided.
inline Quad divide_bytes(const NarrowScale& scale, Quad sums) {
    return each_lane(sums, sums, [&](std::int32_t x, std::int32_t) {
        return static_cast<std::int32_t>(static_cast<float>(x) * scale.reciprocal);
    });
}
/// Weighted sums of levels, divided.
inline Quad divide_levels(const NarrowScale& scale, Quad sums) {
    return each_lane(sums, sums, [&](std::int32_t x, std::int32_t) { return scale.divide(x); });
}

/// The weighted means of bytes.
template <std::size_t N>
Sixteen mean(const NarrowScale& scale, Sixteen high, Sixteen low) {
    const Values<N> sums = weigh_bytes(scale, pairs<N>(high, low));
    return cut(each_quad(sums, sums, [&](Quad x, Quad) { return divide_bytes(scale, x); }));
}

}  // namespace imgtune::plain

#endif
