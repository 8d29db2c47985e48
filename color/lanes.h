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

/// Blend::weigh of every pair.
template <std::size_t N>
void weigh_plain(const Blend& blend, ByteView<N> high, ByteView<N> low, Lanes<N>& out) {
    for (std::size_t j = 0; j < padded(N); ++j) out.v[j] = blend.weigh(high.v[j], low.v[j]);
}

#ifdef __SSE2__
/// The same. SSE2 has no 32-bit multiplication but one that adds two 16-bit products, which is a
/// weighted sum of a byte pair by half of each weight; the halves are put together modulo 2^32.
template <std::size_t N>
void weigh_sse2(const Blend& blend, ByteView<N> high, ByteView<N> low, Lanes<N>& out) {
    const std::uint32_t wh = as_unsigned(blend.weight_high());
    const std::uint32_t wl = as_unsigned(blend.weight_low());
    // The lower halves count as signed there: one whose top bit is set borrows from the upper half.
    const std::uint32_t upper_high = (wh + 0x8000U) >> 16;
    const std::uint32_t upper_low = (wl + 0x8000U) >> 16;
    const __m128i lower = _mm_set1_epi32(as_signed((wl << 16) | (wh & 0xffffU)));
    const __m128i upper = _mm_set1_epi32(as_signed((upper_low << 16) | upper_high));
    const __m128i zero = _mm_setzero_si128();

    const auto weigh_four = [&](__m128i pairs, std::size_t j) {
        const __m128i sum = _mm_add_epi32(_mm_madd_epi16(pairs, lower),
                                          _mm_slli_epi32(_mm_madd_epi16(pairs, upper), 16));
        _mm_store_si128(reinterpret_cast<__m128i*>(out.v + j), sum);
    };
    for (std::size_t j = 0; j < N; j += 16) {
        const __m128i h = _mm_loadu_si128(reinterpret_cast<const __m128i*>(high.v + j));
        const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(low.v + j));
        const __m128i first = _mm_unpacklo_epi8(h, l);
        const __m128i second = _mm_unpackhi_epi8(h, l);
        weigh_four(_mm_unpacklo_epi8(first, zero), j);
        weigh_four(_mm_unpackhi_epi8(first, zero), j + 4);
        weigh_four(_mm_unpacklo_epi8(second, zero), j + 8);
        weigh_four(_mm_unpackhi_epi8(second, zero), j + 12);
    }
}
#endif

template <std::size_t N>
Lanes<N> weigh(const Blend& blend, ByteView<N> high, ByteView<N> low) {
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
