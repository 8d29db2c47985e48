#ifndef IMGTUNE_COLOR_BLOCK_H
#define IMGTUNE_COLOR_BLOCK_H

#include <imgtune/color.h>

#include <cstddef>
#include <cstring>

#include "color/blend.h"
#include "color/lanes.h"
#include "common/arithmetic.h"

// What the register blocks share: where their fields are packed, and the two blends and the
// temporal step of a parameter record.

namespace imgtune {

static_assert(sizeof(ColorImage) == 468);
static_assert(sizeof(ISP_NVRAM_PCA_PARAM_T) == 68);
static_assert(sizeof(ColorParam) == 56);
static_assert(offsetof(ColorParam, u4RealCT) == 5 * 4);
static_assert(offsetof(ColorParam, sat_speed) == 9 * 4);
static_assert(offsetof(ColorParam, u4OutdoorRatio) == 12 * 4);
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "packed fields are read as memory");

/// N byte fields that fill their words: entry j in bits 8 (j mod 4) to + 7 of word
/// FirstWord + j / 4.
template <std::size_t N, std::size_t FirstWord>
struct ByteRun {
    static_assert(4 * FirstWord + N <= sizeof(ColorImage));

    const std::uint8_t* at(const ColorImage& image, std::size_t j) const {
        return reinterpret_cast<const std::uint8_t*>(image.u4Word + FirstWord) + j;
    }
    std::uint8_t* at(ColorImage& image, std::size_t j) const {
        return reinterpret_cast<std::uint8_t*>(image.u4Word + FirstWord) + j;
    }

    ByteView<N> read(const ColorImage& image) const { return {at(image, 0)}; }
    void write(ColorImage& image, const Bytes<N>& bytes) const { bytes.store(at(image, 0)); }
};

/// Sixteen byte fields, one in the low half of each 16 bits: entry j in bits 16 (j mod 2) to + 7 of
/// word FirstWord + j / 2. The bytes between them are not part of the block.
template <std::size_t FirstWord>
struct SpacedByteRun {
    Bytes<16> read(const ColorImage& image) const {
        return {{vector::load_spaced(image.u4Word + FirstWord)}};
    }

    void write(ColorImage& image, const Bytes<16>& bytes) const {
        vector::store_spaced(image.u4Word + FirstWord, bytes.parts[0]);
    }
};

/// N fields of any place and width.
template <std::size_t N>
struct FieldRun {
    BitField field[N];

    constexpr Lanes<N> read(const ColorImage& image) const {
        Lanes<N> lanes{};
        for (std::size_t j = 0; j < N; ++j) lanes.v[j] = as_signed(field[j].read(image.u4Word));
        return lanes;
    }

    constexpr void write(ColorImage& image, const Lanes<N>& lanes) const {
        for (std::size_t j = 0; j < N; ++j) field[j].write(image.u4Word, as_unsigned(lanes.v[j]));
    }
};

/// Four fields of up to 8 bits in each of N / 4 words from FirstWord on.
template <std::size_t N, std::size_t FirstWord>
struct PackedRun {
    PackedFields words[N / 4];

    Lanes<N> read(const ColorImage& image) const {
        Lanes<N> lanes;
        for (std::size_t k = 0; k < N / 4; ++k) {
            store(lanes.v + 4 * k, vector::unpack(words[k], image.u4Word[FirstWord + k]));
        }
        return lanes;
    }

    void write(ColorImage& image, const Lanes<N>& lanes) const {
        for (std::size_t k = 0; k < N / 4; ++k) {
            std::uint32_t& word = image.u4Word[FirstWord + k];
            word = (word & ~words[k].all) | vector::pack(words[k], vector::load(lanes.v + 4 * k));
        }
    }
};

inline FrameBlend lv_blend(const ColorParam& param) {
    return FrameBlend(
        BlendRule::by_lv(as_signed(param.u4OutdoorRatio), as_signed(param.u4OutdoorBase)));
}

inline FrameBlend ct_blend(const ColorParam& param) {
    return FrameBlend(BlendRule::by_ct(as_signed(param.u4RealCT), as_signed(param.u4UpperCT),
                                       as_signed(param.u4LowerCT)));
}

/// The temporal step of a speed, or one that reaches every target on a boot or capture frame.
inline std::uint32_t temporal_step(const ColorParam& param, std::uint32_t speed) {
    return (param.IsBoot | param.IsCapture) == 1 ? ~0U : speed;
}

}  // namespace imgtune

#endif
