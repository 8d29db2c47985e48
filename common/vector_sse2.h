#ifndef IMGTUNE_COMMON_VECTOR_SSE2_H
#define IMGTUNE_COMMON_VECTOR_SSE2_H

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "common/arithmetic.h"
#include "common/narrow_scale.h"
#include "common/packed_fields.h"
#include "common/vector_values.h"

// The operations of vector_plain.h with SSE2, which every x86-64 has.

namespace imgtune::sse2 {

struct Sixteen {
    __m128i v;
};
struct Quad {
    __m128i v;
};
template <std::size_t N>
using Values = ValuesIn<Quad, N>;
template <std::size_t N>
struct Pairs {
    __m128i v[N / 4];  ///< a High value in the low half of each 32 bits, its Low value above
};
struct Reals {
    __m128 v;
};

inline __m128i load_vector(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void store_vector(void* to, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(to), v);
}

template <std::size_t N>
Sixteen load(const std::uint8_t* from) {
    if constexpr (N == 16) {
        return {load_vector(from)};
    } else {
        int four;
        std::memcpy(&four, from, 4);
        return {_mm_cvtsi32_si128(four)};
    }
}
inline Quad load(const std::int32_t* from) {
    return {load_vector(from)};
}
inline Quad load(const std::uint32_t* from) {
    return {load_vector(from)};
}
template <std::size_t N>
void store(std::uint8_t* to, Sixteen bytes) {
    if constexpr (N == 16) {
        store_vector(to, bytes.v);
    } else {
        const int four = _mm_cvtsi128_si32(bytes.v);
        std::memcpy(to, &four, 4);
    }
}
inline void store(std::int32_t* to, Quad values) {
    store_vector(to, values.v);
}
inline void store(std::uint32_t* to, Quad words) {
    store_vector(to, words.v);
}

inline Sixteen load_spaced(const std::uint32_t* words) {
    const __m128i low_bytes = _mm_set1_epi16(0xff);
    return {_mm_packus_epi16(_mm_and_si128(load_vector(words), low_bytes),
                             _mm_and_si128(load_vector(words + 4), low_bytes))};
}

inline void store_spaced(std::uint32_t* words, Sixteen bytes) {
    const __m128i low_bytes = _mm_set1_epi16(0xff);
    const __m128i zero = _mm_setzero_si128();
    const auto put = [&](std::uint32_t* to, __m128i halves) {
        store_vector(to, _mm_or_si128(_mm_andnot_si128(low_bytes, load_vector(to)), halves));
    };
    put(words, _mm_unpacklo_epi8(bytes.v, zero));
    put(words + 4, _mm_unpackhi_epi8(bytes.v, zero));
}

template <std::size_t N>
Sixteen saturate(const Values<N>& values) {
    const auto eight = [&](std::size_t k) {
        return _mm_packs_epi32(values.quad[k].v, values.quad[N == 4 ? k : k + 1].v);
    };
    return {_mm_packus_epi16(eight(0), eight(N == 4 ? 0 : 2))};
}

template <std::size_t N>
Sixteen cut(const Values<N>& values) {
    const Quad low_bytes{_mm_set1_epi32(0xff)};
    return saturate(each_quad(values, values,
                              [&](Quad x, Quad) { return Quad{_mm_and_si128(x.v, low_bytes.v)}; }));
}

inline Sixteen excess(Sixteen a, Sixteen b) {
    return {_mm_subs_epu8(a.v, b.v)};
}
inline Sixteen operator|(Sixteen a, Sixteen b) {
    return {_mm_or_si128(a.v, b.v)};
}
inline bool all_zero(Sixteen a) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())) == 0xffff;
}
inline bool all_below(Sixteen a, Sixteen b) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(a.v, b.v), a.v)) == 0;
}

inline Sixteen clip(Sixteen bytes, Sixteen a, Sixteen b) {
    const __m128i lifted = _mm_max_epu8(bytes.v, _mm_min_epu8(a.v, b.v));
    return {_mm_min_epu8(lifted, _mm_max_epu8(a.v, b.v))};
}

inline Sixteen step(Sixteen previous, Sixteen target, std::uint8_t reach) {
    const __m128i reaches = _mm_set1_epi8(static_cast<char>(reach));
    const __m128i lifted = _mm_max_epu8(target.v, _mm_subs_epu8(previous.v, reaches));
    return {_mm_min_epu8(lifted, _mm_adds_epu8(previous.v, reaches))};
}

template <std::size_t N>
Pairs<N> pairs(Sixteen high, Sixteen low) {
    const __m128i zero = _mm_setzero_si128();
    Pairs<N> out;
    const __m128i first = _mm_unpacklo_epi8(high.v, low.v);
    out.v[0] = _mm_unpacklo_epi8(first, zero);
    if constexpr (N == 16) {
        const __m128i last = _mm_unpackhi_epi8(high.v, low.v);
        out.v[1] = _mm_unpackhi_epi8(first, zero);
        out.v[2] = _mm_unpacklo_epi8(last, zero);
        out.v[3] = _mm_unpackhi_epi8(last, zero);
    }
    return out;
}

template <std::size_t N>
Pairs<N> operator-(const Pairs<N>& a, const Pairs<N>& b) {
    Pairs<N> out;
    for (std::size_t k = 0; k < N / 4; ++k) out.v[k] = _mm_sub_epi16(a.v[k], b.v[k]);
    return out;
}
template <std::size_t N>
Pairs<N> operator*(const Pairs<N>& a, const Pairs<N>& b) {
    Pairs<N> out;
    for (std::size_t k = 0; k < N / 4; ++k) out.v[k] = _mm_mullo_epi16(a.v[k], b.v[k]);
    return out;
}

inline Quad operator+(Quad a, Quad b) {
    return {_mm_add_epi32(a.v, b.v)};
}
inline Quad operator-(Quad a, Quad b) {
    return {_mm_sub_epi32(a.v, b.v)};
}
inline Quad operator&(Quad a, Quad b) {
    return {_mm_and_si128(a.v, b.v)};
}
inline Quad operator|(Quad a, Quad b) {
    return {_mm_or_si128(a.v, b.v)};
}
inline Quad operator>(Quad a, Quad b) {
    return {_mm_cmpgt_epi32(a.v, b.v)};
}

inline Quad splat(std::int32_t value) {
    return {_mm_set1_epi32(value)};
}

inline Quad quad(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return {_mm_setr_epi32(a, b, c, d)};
}

inline Quad sum(Quad a) {
    const __m128i halves = _mm_add_epi32(a.v, _mm_shuffle_epi32(a.v, 0x4e));
    return {_mm_add_epi32(halves, _mm_shuffle_epi32(halves, 0xb1))};
}

template <int First>
Quad lanes_from(Quad a, Quad b) {
    return {_mm_or_si128(_mm_srli_si128(a.v, 4 * First), _mm_slli_si128(b.v, 16 - 4 * First))};
}

inline Quad load_halves(const std::uint32_t* words) {
    const __m128i halves = _mm_loadu_si64(words);
    return {_mm_unpacklo_epi16(halves, _mm_setzero_si128())};
}
inline Quad pack_halves(Quad a, Quad b) {
    return {_mm_packs_epi32(a.v, b.v)};
}

/// Lanes 0 and 2 are weighed apart from lanes 1 and 3, in 64 bits of which the low ones count.
inline Quad mean(const FrameDivisor& divisor, const std::int32_t (&weights)[3], Quad a, Quad b,
                 Quad c) {
    const __m128i weight[3] = {_mm_set1_epi32(weights[0]), _mm_set1_epi32(weights[1]),
                               _mm_set1_epi32(weights[2])};
    const auto two = [&](__m128i x, __m128i y, __m128i z) {
        const __m128i later =
            _mm_add_epi64(_mm_mul_epu32(y, weight[1]), _mm_mul_epu32(z, weight[2]));
        const __m128i sums = _mm_add_epi64(_mm_mul_epu32(x, weight[0]), later);
        const __m128d values = _mm_cvtepi32_pd(_mm_shuffle_epi32(sums, 0x08));
        return _mm_cvttpd_epi32(_mm_mul_pd(values, _mm_set1_pd(divisor.reciprocal())));
    };
    const auto odd = [](Quad values) { return _mm_srli_epi64(values.v, 32); };
    const __m128i magnitude = _mm_unpacklo_epi32(two(a.v, b.v, c.v), two(odd(a), odd(b), odd(c)));
    const __m128i sign = _mm_set1_epi32(divisor.sign());
    return {_mm_sub_epi32(_mm_xor_si128(magnitude, sign), sign)};
}

inline Reals to_reals(Quad a) {
    return {_mm_cvtepi32_ps(a.v)};
}
inline Reals operator+(Reals a, Reals b) {
    return {_mm_add_ps(a.v, b.v)};
}
inline Reals operator-(Reals a, Reals b) {
    return {_mm_sub_ps(a.v, b.v)};
}
inline Reals operator*(Reals a, float factor) {
    return {_mm_mul_ps(a.v, _mm_set1_ps(factor))};
}
inline Reals operator/(Reals a, float divisor) {
    return {_mm_div_ps(a.v, _mm_set1_ps(divisor))};
}
inline Reals lengths(Reals x, Reals y, double scale) {
    const auto square = [scale](__m128 two) {
        const __m128d scaled = _mm_mul_pd(_mm_cvtps_pd(two), _mm_set1_pd(scale));
        return _mm_mul_pd(scaled, scaled);
    };
    const auto two = [&](__m128 of_x, __m128 of_y) {
        return _mm_cvtpd_ps(_mm_sqrt_pd(_mm_add_pd(square(of_x), square(of_y))));
    };
    return {_mm_movelh_ps(two(x.v, y.v), two(_mm_movehl_ps(x.v, x.v), _mm_movehl_ps(y.v, y.v)))};
}
inline void store(float* to, Reals values) {
    _mm_storeu_ps(to, values.v);
}
/// What does not fit becomes the most negative value, whose complement is the most positive.
inline Quad truncate(Reals a) {
    const __m128i ordered = _mm_castps_si128(_mm_cmpord_ps(a.v, a.v));
    const __m128i above = _mm_castps_si128(_mm_cmpge_ps(a.v, _mm_set1_ps(2147483648.0F)));
    return {_mm_and_si128(_mm_xor_si128(_mm_cvttps_epi32(a.v), above), ordered)};
}

inline Quad times_32(Quad a) {
    return {_mm_slli_epi32(a.v, 5)};
}
inline Quad plus_32(Quad a) {
    return {_mm_add_epi32(a.v, _mm_set1_epi32(32))};
}
inline Quad over_32(Quad a) {
    return {_mm_srli_epi32(a.v, 5)};
}

inline Quad quotient_or_zero(Quad a, Quad b) {
    const __m128 divisor = _mm_cvtepi32_ps(b.v);
    const __m128 quotient = _mm_div_ps(_mm_cvtepi32_ps(a.v), divisor);
    const __m128 divides = _mm_cmpneq_ps(divisor, _mm_setzero_ps());
    return {_mm_cvttps_epi32(_mm_and_ps(quotient, divides))};
}

// SSE2 has no shifts of their own for each lane; a product with a power of two of values of 8 bits
// is one, and exact.

inline Quad unpack(const PackedFields& fields, std::uint32_t word) {
    const __m128i masks = load_vector(fields.word_mask);
    const __m128i parts = _mm_and_si128(_mm_set1_epi32(as_signed(word)), masks);
    const __m128 factors = _mm_load_ps(fields.inverse_factor);
    return {_mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(parts), factors))};
}

inline std::uint32_t pack(const PackedFields& fields, Quad values) {
    const __m128i cut = _mm_and_si128(values.v, load_vector(fields.value_mask));
    const __m128 factors = _mm_load_ps(fields.factor);
    const __m128i parts = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(cut), factors));
    const __m128i halves = _mm_or_si128(parts, _mm_shuffle_epi32(parts, 0x4e));
    const __m128i whole = _mm_or_si128(halves, _mm_shuffle_epi32(halves, 0xb1));
    return as_unsigned(_mm_cvtsi128_si32(whole));
}

inline Pairs<4> pairs(Quad high, Quad low) {
    return {{_mm_or_si128(high.v, _mm_slli_epi32(low.v, 16))}};
}

/// Both weights, as a multiply-add takes them.
inline __m128i pair_weights(const NarrowScale& scale) {
    return _mm_set1_epi32(scale.weight_low << 16 | scale.weight_high);
}

template <std::size_t N>
Values<N> weigh_bytes(const NarrowScale& scale, const Pairs<N>& pairs) {
    Values<N> out;
    for (std::size_t k = 0; k < N / 4; ++k) {
        out.quad[k] = {_mm_madd_epi16(pairs.v[k], pair_weights(scale))};
    }
    return out;
}

/// A multiply-add takes its values as signed: they are taken 2^15 lower, which lowers the sum by
/// 2^15 divisors.
template <std::size_t N>
Values<N> weigh_levels(const NarrowScale& scale, const Pairs<N>& pairs) {
    const __m128i half = _mm_set1_epi16(static_cast<short>(-0x8000));
    const __m128i lowered_by = _mm_set1_epi32((scale.weight_high + scale.weight_low) << 15);
    Values<N> out;
    for (std::size_t k = 0; k < N / 4; ++k) {
        const __m128i lowered = _mm_xor_si128(pairs.v[k], half);
        out.quad[k] = {_mm_add_epi32(_mm_madd_epi16(lowered, pair_weights(scale)), lowered_by)};
    }
    return out;
}

inline Quad divide_bytes(const NarrowScale& scale, Quad sums) {
    return {_mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(sums.v), _mm_set1_ps(scale.reciprocal)))};
}

inline Quad divide_levels(const NarrowScale& scale, Quad sums) {
    const __m128i multiplier = _mm_set1_epi32(scale.multiplier);
    const __m128 even = _mm_castsi128_ps(_mm_mul_epu32(sums.v, multiplier));
    const __m128 odd = _mm_castsi128_ps(_mm_mul_epu32(_mm_srli_epi64(sums.v, 32), multiplier));
    const __m128i above_32 = _mm_castps_si128(_mm_shuffle_ps(even, odd, 0xdd));
    return {_mm_srli_epi32(_mm_shuffle_epi32(above_32, 0xd8), NarrowScale::kShift - 1)};
}

template <std::size_t N>
[[gnu::always_inline]] inline Sixteen mean(const NarrowScale& scale, Sixteen high, Sixteen low) {
    const Values<N> sums = weigh_bytes(scale, pairs<N>(high, low));
    return saturate(each_quad(sums, sums, [&](Quad x, Quad) { return divide_bytes(scale, x); }));
}

}  // namespace imgtune::sse2

#endif
