#ifndef IMGTUNE_CCM_CODEC_H
#define IMGTUNE_CCM_CODEC_H

#include <imgtune/ccm_types.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "ccm/coefficient_rows.h"
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

/// The same fields half a word each, in the lanes of CoefficientRows; every fourth is not one.
struct RowFields {
    static constexpr std::uint32_t kFieldBits = 0x1fff;

    std::uint16_t half[CoefficientRows::kLanes];

    static RowFields of(const NSIspTuning::ISP_NVRAM_CCM_T& image) {
        RowFields fields;
        static_assert(sizeof(fields.half) == sizeof(image.u4Word));
        std::memcpy(fields.half, image.u4Word, sizeof(fields.half));
        return fields;
    }

    /// Writes the nine fields; every other bit of the image is kept.
    void write(NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        constexpr std::uint32_t kWordBits[2] = {kFieldBits << 16 | kFieldBits, kFieldBits};
        std::uint32_t words[6];
        std::memcpy(words, half, sizeof(words));
        for (std::size_t w = 0; w < 6; ++w) {
            image.u4Word[w] = (image.u4Word[w] & ~kWordBits[w % 2]) | (words[w] & kWordBits[w % 2]);
        }
    }
};
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "halves of words are read as memory");

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

    /// The same side by side, in a form that vectorises.
    CoefficientRows decode_rows(const NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        const RowFields fields = RowFields::of(image);
        const auto largest = as_signed(std::min(largest_, RowFields::kFieldBits));
        const std::int32_t modulus = as_signed(modulus_);
        CoefficientRows rows;
        for (std::size_t j = 0; j < CoefficientRows::kLanes; ++j) {
            const auto field = static_cast<std::int32_t>(fields.half[j] & RowFields::kFieldBits);
            const std::int32_t beyond = field > largest ? modulus : 0;
            rows.v[j] = wrap_sub(field, beyond);
        }
        return rows;
    }

    RowFields encode_rows(const CoefficientRows& rows) const {
        RowFields fields;
        for (std::size_t j = 0; j < CoefficientRows::kLanes; ++j) {
            fields.half[j] = static_cast<std::uint16_t>(encode(rows.v[j]));
        }
        return fields;
    }

    /// Whether every field, decoded and encoded again, is what it was. With fewer bits than a field
    /// has, one beyond the modulus is not.
    constexpr bool keeps_fields() const {
        return modulus_ > RowFields::kFieldBits || largest_ > RowFields::kFieldBits;
    }

  private:
    std::uint32_t largest_;
    std::uint32_t modulus_;
};

}  // namespace imgtune

#endif
