#ifndef IMGTUNE_COLOR_LANES_H
#define IMGTUNE_COLOR_LANES_H

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "color/rules.h"
#include "common/arithmetic.h"

// A block's fields side by side, and the rules over all of them: loops of one fixed-size operation
// each, which vectorise.

namespace imgtune {

/// Fields are taken sixteen at a time; what follows the last field is worked on and dropped.
constexpr std::size_t padded(std::size_t count) {
    return (count + 15) / 16 * 16;
}

/// N fields of 8 bits.
template <std::size_t N>
struct Bytes {
    alignas(16) std::uint8_t v[padded(N)];
};

/// N fields of 8 bits where an image has them, followed by as many bytes as fill the last sixteen.
template <std::size_t N>
struct ByteView {
    const std::uint8_t* v;
};

template <std::size_t N>
ByteView<N> view(const Bytes<N>& bytes) {
    return {bytes.v};
}
template <std::size_t N>
ByteView<N> view(ByteView<N> bytes) {
    return bytes;
}

/// N values of 32 bits: fields of other widths, and results before they are cut to their field.
template <std::size_t N>
struct Lanes {
    alignas(16) std::int32_t v[padded(N)];
};

/// N unsigned values of 16 bits.
template <std::size_t N>
struct Halves {
    alignas(16) std::uint16_t v[padded(N)];
};

/// Blend::weigh of every pair.
template <std::size_t N, class Fields>
void weigh_plain(const Blend& blend, const Fields& high, const Fields& low, Lanes<N>& out) {
    for (std::size_t j = 0; j < padded(N); ++j) out.v[j] = blend.weigh(high.v[j], low.v[j]);
}

#ifdef __SSE2__
/// The same. SSE2 has no 32-bit multiplication but one that adds two signed 16-bit products, which
/// is a weighted sum of a pair by half of each weight; the halves are put together modulo 2^32.
class PairWeights {
  public:
    explicit PairWeights(const Blend& blend) {
        const std::uint32_t high = as_unsigned(blend.weight_high());
        const std::uint32_t low = as_unsigned(blend.weight_low());
        // A lower half counts as signed: one with its top bit set borrows from the upper half.
        lower_ = _mm_set1_epi32(as_signed((low << 16) | (high & 0xffffU)));
        upper_ =
            _mm_set1_epi32(as_signed(((low + 0x8000U) & 0xffff0000U) | ((high + 0x8000U) >> 16)));
    }

    /// Four weighted sums of (high, low) pairs.
    __m128i weigh(__m128i pairs) const {
        return _mm_add_epi32(_mm_madd_epi16(pairs, lower_),
                             _mm_slli_epi32(_mm_madd_epi16(pairs, upper_), 16));
    }

  private:
    __m128i lower_;
    __m128i upper_;
};

inline __m128i load16(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void store16(std::int32_t* to, __m128i lanes) {
    _mm_store_si128(reinterpret_cast<__m128i*>(to), lanes);
}

template <std::size_t N>
void weigh_sse2(const Blend& blend, const ByteView<N>& high, const ByteView<N>& low,
                Lanes<N>& out) {
    const PairWeights weights(blend);
    const __m128i zero = _mm_setzero_si128();
    for (std::size_t j = 0; j < N; j += 16) {
        const __m128i h = load16(high.v + j);
        const __m128i l = load16(low.v + j);
        const __m128i first = _mm_unpacklo_epi8(h, l);
        const __m128i second = _mm_unpackhi_epi8(h, l);
        store16(out.v + j, weights.weigh(_mm_unpacklo_epi8(first, zero)));
        store16(out.v + j + 4, weights.weigh(_mm_unpackhi_epi8(first, zero)));
        store16(out.v + j + 8, weights.weigh(_mm_unpacklo_epi8(second, zero)));
        store16(out.v + j + 12, weights.weigh(_mm_unpackhi_epi8(second, zero)));
    }
}

/// Values of 16 bits count as signed there, too: they are taken 2^15 lower, and as the weights add
/// up to the divisor, 2^15 divisors are added to the sum.
template <std::size_t N>
void weigh_sse2(const Blend& blend, const Halves<N>& high, const Halves<N>& low, Lanes<N>& out) {
    const PairWeights weights(blend);
    const __m128i lowered = _mm_set1_epi16(static_cast<short>(-0x8000));
    const __m128i raised = _mm_set1_epi32(as_signed(as_unsigned(blend.divisor()) << 15));
    for (std::size_t j = 0; j < N; j += 8) {
        const __m128i h = _mm_xor_si128(load16(high.v + j), lowered);
        const __m128i l = _mm_xor_si128(load16(low.v + j), lowered);
        store16(out.v + j, _mm_add_epi32(weights.weigh(_mm_unpacklo_epi16(h, l)), raised));
        store16(out.v + j + 4, _mm_add_epi32(weights.weigh(_mm_unpackhi_epi16(h, l)), raised));
    }
}
#endif

template <template <std::size_t> class Fields, std::size_t N>
Lanes<N> weigh(const Blend& blend, const Fields<N>& high, const Fields<N>& low) {
    Lanes<N> out;
#ifdef __SSE2__
    weigh_sse2(blend, high, low, out);
#else
    weigh_plain(blend, high, low, out);
#endif
    return out;
}

template <std::size_t N>
Lanes<N> divide(const Blend& blend, const Lanes<N>& weighed) {
    Lanes<N> out;
    for (std::size_t j = 0; j < padded(N); ++j) out.v[j] = blend.divide(weighed.v[j]);
    return out;
}

/// The blend of every pair of bytes.
template <std::size_t N>
Lanes<N> blend_all(const Blend& blend, ByteView<N> high, ByteView<N> low) {
    return divide(blend, weigh(blend, high, low));
}

/// The blend of every pair of wider values.
template <std::size_t N>
Lanes<N> blend_all(const Blend& blend, const Lanes<N>& high, const Lanes<N>& low) {
    Lanes<N> out{};
    for (std::size_t j = 0; j < N; ++j) out.v[j] = blend(high.v[j], low.v[j]);
    return out;
}

/// The low 8 bits of every lane.
template <std::size_t N>
Bytes<N> cut_to_bytes(const Lanes<N>& lanes) {
    Bytes<N> out;
    for (std::size_t j = 0; j < padded(N); ++j) out.v[j] = static_cast<std::uint8_t>(lanes.v[j]);
    return out;
}

/// clip of every lane between two bytes. What exceeds a byte exceeds both bounds alike.
template <std::size_t N>
Bytes<N> clip_all(const Lanes<N>& lanes, ByteView<N> a, ByteView<N> b) {
    Bytes<N> out;
    for (std::size_t j = 0; j < padded(N); ++j) {
        const std::uint32_t v = as_unsigned(lanes.v[j]);
        out.v[j] = static_cast<std::uint8_t>(v > 255 ? 255 : v);
    }
    for (std::size_t j = 0; j < padded(N); ++j) {
        const std::uint8_t low = a.v[j] < b.v[j] ? a.v[j] : b.v[j];
        const std::uint8_t high = a.v[j] < b.v[j] ? b.v[j] : a.v[j];
        const std::uint8_t v = out.v[j] < low ? low : out.v[j];
        out.v[j] = v > high ? high : v;
    }
    return out;
}

/// step_toward of every byte: the target limited to what a step reaches, which for bytes ends at 0
/// and 255.
template <std::size_t N>
Bytes<N> step_all(ByteView<N> previous, const Bytes<N>& target, std::uint32_t step) {
    const auto reach = static_cast<std::uint8_t>(step > 255 ? 255 : step);
    Bytes<N> out;
    for (std::size_t j = 0; j < padded(N); ++j) {
        const std::uint8_t p = previous.v[j];
        const auto above = static_cast<std::uint8_t>(~p);
        const auto lowest = static_cast<std::uint8_t>(p - (p < reach ? p : reach));
        const auto highest = static_cast<std::uint8_t>(p + (above < reach ? above : reach));
        const std::uint8_t v = target.v[j] < lowest ? lowest : target.v[j];
        out.v[j] = v > highest ? highest : v;
    }
    return out;
}

}  // namespace imgtune

#endif
