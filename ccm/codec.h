#ifndef IMGTUNE_CCM_CODEC_H
#define IMGTUNE_CCM_CODEC_H

#include <imgtune/ccm_types.h>

#include <array>

#include "common/arithmetic.h"

namespace imgtune {

static_assert(sizeof(NSIspTuning::ISP_NVRAM_CCM_T) == 6 * 4);

/// Where the nine coefficients stand in a CCM register image.
inline constexpr std::array<BitField, 9> kCoefficientFields = {{
    {0, 0, 13},
    {0, 16, 13},
    {1, 0, 13},  // row 0
    {2, 0, 13},
    {2, 16, 13},
    {3, 0, 13},  // row 1
    {4, 0, 13},
    {4, 16, 13},
    {5, 0, 13},  // row 2
}};

/// Two's complement of 1 + i4IntBits + i4FracBits bits inside a 13-bit field.
class CoefficientCodec {
  public:
    constexpr CoefficientCodec(std::int32_t int_bits, std::int32_t frac_bits)
        : largest_(shift_left(1, wrap_add(int_bits, frac_bits))),
          modulus_(shift_left(1, wrap_add(wrap_add(int_bits, frac_bits), 1))) {}

    /// The largest positive value, 2^(a + b), keeps its sign.
    constexpr std::int32_t decode(std::uint32_t field) const {
        return as_signed(field > largest_ ? field - modulus_ : field);
    }

    constexpr std::uint32_t encode(std::int32_t coefficient) const {
        return coefficient < 0 ? as_unsigned(coefficient) + modulus_ : as_unsigned(coefficient);
    }

    constexpr NSIspTuning::ISP_CCM_T decode(const NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        NSIspTuning::ISP_CCM_T matrix{};
        for (std::size_t k = 0; k < 9; ++k) {
            matrix.i4Coef[k] = decode(kCoefficientFields[k].read(image.u4Word));
        }
        return matrix;
    }

    constexpr void encode(const NSIspTuning::ISP_CCM_T& matrix,
                          NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        for (std::size_t k = 0; k < 9; ++k) {
            kCoefficientFields[k].write(image.u4Word, encode(matrix.i4Coef[k]));
        }
    }

  private:
    std::uint32_t largest_;
    std::uint32_t modulus_;
};

}  // namespace imgtune

#endif
