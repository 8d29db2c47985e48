#ifndef IMGTUNE_COMMON_VECTOR_NEON_H
#define IMGTUNE_COMMON_VECTOR_NEON_H

#include <arm_neon.h>

#include <cstdint>
#include <cstring>

#include "common/arithmetic.h"
#include "common/narrow_scale.h"
#include "common/packed_fields.h"
#include "common/vector_values.h"

// The operations of vector_plain.h with the vectors of 64-bit Arm.

namespace imgtune::neon {

struct Sixteen {
    uint8x16_t v;
};
struct Quad {
    int32x4_t v;
};
template <std::size_t N>
using Values = ValuesIn<Quad, N>;
/// Eight pairs, or four below four that count for nothing, in each two vectors.
template <std::size_t N>
struct Pairs {
    static constexpr std::size_t kVectors = (N + 7) / 8;
    uint16x8_t high[kVectors];
    uint16x8_t low[kVectors];
};
struct Reals {
    float32x4_t v;
};

template <std::size_t N>
Sixteen load(const std::uint8_t* from) {
    if constexpr (N == 16) {
        return {vld1q_u8(from)};
    } else {
        std::uint32_t four;
        std::memcpy(&four, from, 4);
        return {vreinterpretq_u8_u64(vdupq_n_u64(four))};
    }
}
inline Quad load(const std::int32_t* from) {
    return {vld1q_s32(from)};
}
inline Quad load(const std::uint32_t* from) {
    return {vreinterpretq_s32_u32(vld1q_u32(from))};
}
template <std::size_t N>
void store(std::uint8_t* to, Sixteen bytes) {
    if constexpr (N == 16) {
        vst1q_u8(to, bytes.v);
    } else {
        const std::uint32_t four = vgetq_lane_u32(vreinterpretq_u32_u8(bytes.v), 0);
        std::memcpy(to, &four, 4);
    }
}
inline void store(std::int32_t* to, Quad values) {
    vst1q_s32(to, values.v);
}
inline void store(std::uint32_t* to, Quad words) {
    vst1q_u32(to, vreinterpretq_u32_s32(words.v));
}

inline Sixteen load_spaced(const std::uint32_t* words) {
    return {vuzp1q_u8(vreinterpretq_u8_u32(vld1q_u32(words)),
                      vreinterpretq_u8_u32(vld1q_u32(words + 4)))};
}

inline void store_spaced(std::uint32_t* words, Sixteen bytes) {
    const uint8x16_t kept = vuzp2q_u8(vreinterpretq_u8_u32(vld1q_u32(words)),
                                      vreinterpretq_u8_u32(vld1q_u32(words + 4)));
    vst1q_u32(words, vreinterpretq_u32_u8(vzip1q_u8(bytes.v, kept)));
    vst1q_u32(words + 4, vreinterpretq_u32_u8(vzip2q_u8(bytes.v, kept)));
}

/// The low halves of eight values, or of four.
inline uint16x8_t low_halves(Quad a, Quad b) {
    return vuzp1q_u16(vreinterpretq_u16_s32(a.v), vreinterpretq_u16_s32(b.v));
}

template <std::size_t N>
Sixteen cut(const Values<N>& values) {
    const auto eight = [&](std::size_t k) {
        return vreinterpretq_u8_u16(low_halves(values.quad[k], values.quad[N == 4 ? k : k + 1]));
    };
    return {vuzp1q_u8(eight(0), eight(N == 4 ? 0 : 2))};
}

template <std::size_t N>
Sixteen saturate(const Values<N>& values) {
    if constexpr (N == 4) {
        const uint8x8_t four = vqmovn_u16(low_halves(values.quad[0], values.quad[0]));
        return {vcombine_u8(four, four)};
    } else {
        const uint8x8_t eight = vqmovn_u16(low_halves(values.quad[0], values.quad[1]));
        return {vqmovn_high_u16(eight, low_halves(values.quad[2], values.quad[3]))};
    }
}

inline Sixteen excess(Sixteen a, Sixteen b) {
    return {vqsubq_u8(a.v, b.v)};
}
inline Sixteen operator|(Sixteen a, Sixteen b) {
    return {vorrq_u8(a.v, b.v)};
}
inline bool all_zero(Sixteen a) {
    return vmaxvq_u8(a.v) == 0;
}
inline bool all_below(Sixteen a, Sixteen b) {
    return vminvq_u8(vcltq_u8(a.v, b.v)) != 0;
}

inline Sixteen clip(Sixteen bytes, Sixteen a, Sixteen b) {
    const uint8x16_t lifted = vmaxq_u8(bytes.v, vminq_u8(a.v, b.v));
    return {vminq_u8(lifted, vmaxq_u8(a.v, b.v))};
}

inline Sixteen step(Sixteen previous, Sixteen target, std::uint8_t reach) {
    const uint8x16_t reaches = vdupq_n_u8(reach);
    const uint8x16_t lifted = vmaxq_u8(target.v, vqsubq_u8(previous.v, reaches));
    return {vminq_u8(lifted, vqaddq_u8(previous.v, reaches))};
}

template <std::size_t N>
Pairs<N> pairs(Sixteen high, Sixteen low) {
    Pairs<N> out;
    out.high[0] = vmovl_u8(vget_low_u8(high.v));
    out.low[0] = vmovl_u8(vget_low_u8(low.v));
    if constexpr (N == 16) {
        out.high[1] = vmovl_high_u8(high.v);
        out.low[1] = vmovl_high_u8(low.v);
    }
    return out;
}

template <std::size_t N>
Pairs<N> operator-(const Pairs<N>& a, const Pairs<N>& b) {
    Pairs<N> out;
    for (std::size_t k = 0; k < Pairs<N>::kVectors; ++k) {
        out.high[k] = vsubq_u16(a.high[k], b.high[k]);
        out.low[k] = vsubq_u16(a.low[k], b.low[k]);
    }
    return out;
}
template <std::size_t N>
Pairs<N> operator*(const Pairs<N>& a, const Pairs<N>& b) {
    Pairs<N> out;
    for (std::size_t k = 0; k < Pairs<N>::kVectors; ++k) {
        out.high[k] = vmulq_u16(a.high[k], b.high[k]);
        out.low[k] = vmulq_u16(a.low[k], b.low[k]);
    }
    return out;
}

inline Quad operator+(Quad a, Quad b) {
    return {vaddq_s32(a.v, b.v)};
}
inline Quad operator-(Quad a, Quad b) {
    return {vsubq_s32(a.v, b.v)};
}
inline Quad operator&(Quad a, Quad b) {
    return {vandq_s32(a.v, b.v)};
}
inline Quad operator|(Quad a, Quad b) {
    return {vorrq_s32(a.v, b.v)};
}
inline Quad operator>(Quad a, Quad b) {
    return {vreinterpretq_s32_u32(vcgtq_s32(a.v, b.v))};
}

inline Quad splat(std::int32_t value) {
    return {vdupq_n_s32(value)};
}

inline Quad quad(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return {vsetq_lane_s32(d, vsetq_lane_s32(c, vsetq_lane_s32(b, vdupq_n_s32(a), 1), 2), 3)};
}

inline Quad sum(Quad a) {
    const int32x4_t pairs = vpaddq_s32(a.v, a.v);
    return {vpaddq_s32(pairs, pairs)};
}

template <int First>
Quad lanes_from(Quad a, Quad b) {
    return {vextq_s32(a.v, b.v, First)};
}

inline Quad load_halves(const std::uint32_t* words) {
    return {vreinterpretq_s32_u32(vmovl_u16(vreinterpret_u16_u32(vld1_u32(words))))};
}
inline Quad pack_halves(Quad a, Quad b) {
    return {
        vreinterpretq_s32_s16(vuzp1q_s16(vreinterpretq_s16_s32(a.v), vreinterpretq_s16_s32(b.v)))};
}

inline Quad mean(const FrameDivisor& divisor, const std::int32_t (&weights)[3], Quad a, Quad b,
                 Quad c) {
    const int32x4_t later = vmlaq_n_s32(vmulq_n_s32(c.v, weights[2]), b.v, weights[1]);
    const int32x4_t sums = vmlaq_n_s32(later, a.v, weights[0]);
    const auto two = [&](int64x2_t values) {
        const float64x2_t quotients = vmulq_n_f64(vcvtq_f64_s64(values), divisor.reciprocal());
        return vreinterpretq_s32_s64(vcvtq_s64_f64(quotients));
    };
    const int32x4_t magnitude =
        vuzp1q_s32(two(vmovl_s32(vget_low_s32(sums))), two(vmovl_high_s32(sums)));
    const int32x4_t sign = vdupq_n_s32(divisor.sign());
    return {vsubq_s32(veorq_s32(magnitude, sign), sign)};
}

inline Reals to_reals(Quad a) {
    return {vcvtq_f32_s32(a.v)};
}
inline Reals operator+(Reals a, Reals b) {
    return {vaddq_f32(a.v, b.v)};
}
inline Reals operator-(Reals a, Reals b) {
    return {vsubq_f32(a.v, b.v)};
}
inline Reals operator*(Reals a, float factor) {
    return {vmulq_n_f32(a.v, factor)};
}
inline Reals operator/(Reals a, float divisor) {
    return {vdivq_f32(a.v, vdupq_n_f32(divisor))};
}
inline Reals lengths(Reals x, Reals y, double scale) {
    const auto square = [scale](float64x2_t two) {
        const float64x2_t scaled = vmulq_n_f64(two, scale);
        return vmulq_f64(scaled, scaled);
    };
    const float64x2_t low =
        vaddq_f64(square(vcvt_f64_f32(vget_low_f32(x.v))), square(vcvt_f64_f32(vget_low_f32(y.v))));
    const float64x2_t high =
        vaddq_f64(square(vcvt_high_f64_f32(x.v)), square(vcvt_high_f64_f32(y.v)));
    return {vcvt_high_f32_f64(vcvt_f32_f64(vsqrtq_f64(low)), vsqrtq_f64(high))};
}
inline void store(float* to, Reals values) {
    vst1q_f32(to, values.v);
}
inline Quad truncate(Reals a) {
    return {vcvtq_s32_f32(a.v)};
}

inline Quad times_32(Quad a) {
    return {vshlq_n_s32(a.v, 5)};
}
inline Quad plus_32(Quad a) {
    return {vaddq_s32(a.v, vdupq_n_s32(32))};
}
inline Quad over_32(Quad a) {
    return {vshrq_n_s32(a.v, 5)};
}

inline Quad quotient_or_zero(Quad a, Quad b) {
    const float32x4_t quotient = vdivq_f32(vcvtq_f32_s32(a.v), vcvtq_f32_s32(b.v));
    const uint32x4_t divides = vtstq_s32(b.v, b.v);
    return {vandq_s32(vcvtq_s32_f32(quotient), vreinterpretq_s32_u32(divides))};
}

inline Quad unpack(const PackedFields& fields, std::uint32_t word) {
    const int32x4_t down = vnegq_s32(vld1q_s32(fields.low));
    const uint32x4_t shifted = vshlq_u32(vdupq_n_u32(word), down);
    return {vandq_s32(vreinterpretq_s32_u32(shifted), vld1q_s32(fields.value_mask))};
}

inline std::uint32_t pack(const PackedFields& fields, Quad values) {
    const int32x4_t cut = vandq_s32(values.v, vld1q_s32(fields.value_mask));
    return vaddvq_u32(vreinterpretq_u32_s32(vshlq_s32(cut, vld1q_s32(fields.low))));
}

inline Pairs<4> pairs(Quad high, Quad low) {
    return {{low_halves(high, high)}, {low_halves(low, low)}};
}

template <std::size_t N>
Values<N> weigh_levels(const NarrowScale& scale, const Pairs<N>& pairs) {
    const auto weight_high = static_cast<std::uint16_t>(scale.weight_high);
    const auto weight_low = static_cast<std::uint16_t>(scale.weight_low);
    Values<N> out;
    for (std::size_t k = 0; k < Pairs<N>::kVectors; ++k) {
        const uint16x8_t high = pairs.high[k];
        const uint16x8_t low = pairs.low[k];
        out.quad[2 * k] = {vreinterpretq_s32_u32(vmlal_n_u16(
            vmull_n_u16(vget_low_u16(high), weight_high), vget_low_u16(low), weight_low))};
        if constexpr (N == 4) break;
        out.quad[2 * k + 1] = {vreinterpretq_s32_u32(
            vmlal_high_n_u16(vmull_high_n_u16(high, weight_high), low, weight_low))};
    }
    return out;
}
template <std::size_t N>
Values<N> weigh_bytes(const NarrowScale& scale, const Pairs<N>& pairs) {
    return weigh_levels(scale, pairs);
}

/// The doubling multiplication keeps what lies above 31 bits.
inline Quad divide_levels(const NarrowScale& scale, Quad sums) {
    return {vshrq_n_s32(vqdmulhq_n_s32(sums.v, scale.multiplier), NarrowScale::kShift)};
}
inline Quad divide_bytes(const NarrowScale& scale, Quad sums) {
    return divide_levels(scale, sums);
}

template <std::size_t N>
[[gnu::always_inline]] inline Sixteen mean(const NarrowScale& scale, Sixteen high, Sixteen low) {
    const Values<N> sums = weigh_bytes(scale, pairs<N>(high, low));
    const auto product = [&](std::size_t k) {
        return vqdmulhq_n_s32(sums.quad[k].v, scale.multiplier);
    };
    if constexpr (N == 4) {
        return cut(Values<4>{{{vshrq_n_s32(product(0), NarrowScale::kShift)}}});
    } else {
        const auto eight = [&](std::size_t k) {
            const int16x4_t four = vshrn_n_s32(product(k), NarrowScale::kShift);
            return vreinterpretq_u8_s16(
                vshrn_high_n_s32(four, product(k + 1), NarrowScale::kShift));
        };
        return {vuzp1q_u8(eight(0), eight(2))};
    }
}

}  // namespace imgtune::neon

#endif
