#ifndef IMGTUNE_CCM_CODEC_H
#define IMGTUNE_CCM_CODEC_H

#include <imgtune/ccm_types.h>

#include <algorithm>
#include <array>

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

/// The same fields of a frame, ready to be written: halves of words, the other bits 0.
struct RowFields {
    static constexpr std::int32_t kFieldBits = 0x1fff;

    vector::Quad words[2];  ///< words 0 to 3 and, again from word 2, 2 to 5

    /// Writes the nine fields; every other bit of the image is kept.
    void write(NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        alignas(16) constexpr std::uint32_t kKept[4] = {0xe000e000U, 0xffffe000U, 0xe000e000U,
                                                        0xffffe000U};
        auto* const image_words = image.u4Word;
        const vector::Quad first = (vector::load(image_words) & vector::load(kKept)) | words[0];
        const vector::Quad last = (vector::load(image_words + 2) & vector::load(kKept)) | words[1];
        vector::store(image_words, first);
        vector::store(image_words + 2, last);
    }
};

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

    /// The same a row at a time.
    CoefficientRows decode_rows(const NSIspTuning::ISP_NVRAM_CCM_T& image) const {
        const auto largest = as_signed(std::min(largest_, std::uint32_t{RowFields::kFieldBits}));
        CoefficientRows rows;
        for (std::size_t r = 0; r < 3; ++r) {
            const vector::Quad field =
                vector::load_halves(image.u4Word + 2 * r) & vector::splat(RowFields::kFieldBits);
            const vector::Quad beyond = field > vector::splat(largest);
            rows.row[r] = field - (beyond & vector::splat(as_signed(modulus_)));
        }
        return rows;
    }

    RowFields encode_rows(const CoefficientRows& rows) const {
        alignas(16) constexpr std::int32_t kFields[4] = {
            RowFields::kFieldBits, RowFields::kFieldBits, RowFields::kFieldBits, 0};
        vector::Quad field[3];
        for (std::size_t r = 0; r < 3; ++r) {
            const vector::Quad negative = vector::splat(0) > rows.row[r];
            const vector::Quad lift = negative & vector::splat(as_signed(modulus_));
            field[r] = (rows.row[r] + lift) & vector::load(kFields);
        }
        return {{pack_halves(field[0], field[1]), pack_halves(field[1], field[2])}};
    }

    /// Whether every field, decoded and encoded again, is what it was. With fewer bits than a field
    /// has, one beyond the modulus is not.
    constexpr bool keeps_fields() const {
        constexpr std::uint32_t kLargestField = RowFields::kFieldBits;
        return modulus_ > kLargestField || largest_ > kLargestField;
    }

  private:
    std::uint32_t largest_;
    std::uint32_t modulus_;
};

}  // namespace imgtune

#endif
