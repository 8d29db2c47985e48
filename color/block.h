#ifndef IMGTUNE_COLOR_BLOCK_H
#define IMGTUNE_COLOR_BLOCK_H

#include <imgtune/color.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

#include "color/lanes.h"
#include "color/rules.h"
#include "common/arithmetic.h"
#include "common/debug_switch.h"
#include "common/log.h"

// What the register blocks share: where their fields are packed, the two blend rules and the
// temporal step of a parameter record, and the form of the traces.

namespace imgtune {

using ColorImage = NSIspTuning::ISP_NVRAM_COLOR_T;
using ColorParam = ISP_SMOOTH_COLOR_PARAM_T;

static_assert(sizeof(ColorImage) == 468);
static_assert(sizeof(ISP_NVRAM_PCA_PARAM_T) == 68);
static_assert(sizeof(ColorParam) == 56);
static_assert(offsetof(ColorParam, u4RealCT) == 5 * 4);
static_assert(offsetof(ColorParam, sat_speed) == 9 * 4);
static_assert(offsetof(ColorParam, u4OutdoorRatio) == 12 * 4);
static_assert(std::endian::native == std::endian::little, "packed lanes are read as memory");

/// N byte fields that fill their words: entry j in bits 8 (j mod 4) to + 7 of word
/// FirstWord + j / 4.
template <std::size_t N, std::size_t FirstWord>
struct ByteRun {
    static_assert(4 * FirstWord + padded(N) <= sizeof(ColorImage),
                  "what follows is still the image");

    ByteView<N> read(const ColorImage& image) const {
        return {reinterpret_cast<const std::uint8_t*>(image.u4Word + FirstWord)};
    }

    void write(ColorImage& image, const Bytes<N>& bytes) const {
        std::memcpy(image.u4Word + FirstWord, bytes.v, N);
    }
};

/// N byte fields, one in the low half of each 16 bits: entry j in bits 16 (j mod 2) to + 7 of word
/// `word` + j / 2. The bytes between them are not part of the block.
template <std::size_t N>
struct SpacedByteRun {
    std::size_t word;

    Bytes<N> read(const ColorImage& image) const {
        std::uint16_t halves[N];
        std::memcpy(halves, image.u4Word + word, sizeof(halves));
        Bytes<N> bytes{};
        for (std::size_t j = 0; j < N; ++j) bytes.v[j] = static_cast<std::uint8_t>(halves[j]);
        return bytes;
    }

    void write(ColorImage& image, const Bytes<N>& bytes) const {
        std::uint16_t halves[N];
        std::memcpy(halves, image.u4Word + word, sizeof(halves));
        for (std::size_t j = 0; j < N; ++j) {
            halves[j] = static_cast<std::uint16_t>((halves[j] & 0xff00) | bytes.v[j]);
        }
        std::memcpy(image.u4Word + word, halves, sizeof(halves));
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

inline Blend lv_blend(const ColorParam& param) {
    return Blend::by_lv(as_signed(param.u4OutdoorRatio), as_signed(param.u4OutdoorBase));
}

inline Blend ct_blend(const ColorParam& param) {
    return Blend::by_ct(as_signed(param.u4RealCT), as_signed(param.u4UpperCT),
                        as_signed(param.u4LowerCT));
}

/// The temporal step of a speed, or one that reaches every target on a boot or capture frame.
inline std::uint32_t temporal_step(const ColorParam& param, std::uint32_t speed) {
    return (param.IsBoot | param.IsCapture) == 1 ? ~0U : speed;
}

/// The trace of one call of a block function. The switch is read on construction, once.
class BlockTrace {
  public:
    BlockTrace(const char* function, const char* switch_name)
        : function_(function), level_(read_debug_switch(switch_name)) {}

    /// Header line: logged before the computation for any nonzero switch.
    template <class... Values>
    void header(const char* format, Values... values) const {
        if (level_ != 0) log_line(format, function_, values...);
    }

    void lv_header(const ColorParam& param) const {
        header("[%s()] u4OutdoorRatio = %d, u4OutdoorBase = %d\n", as_signed(param.u4OutdoorRatio),
               as_signed(param.u4OutdoorBase));
    }

    /// Detail lines are logged for the switch value 1 only.
    bool details() const { return level_ == 1; }

    template <class... Values>
    void line(const char* format, Values... values) const {
        log_line(format, function_, values...);
    }

    /// A line of Shown values of a block's fields, from `first` on.
    template <std::size_t Shown, class Fields>
    void row(const char* format, const Fields& fields, std::size_t first = 0) const {
        row_of(format, fields.v + first, std::make_index_sequence<Shown>());
    }

  private:
    template <class Value, std::size_t... J>
    void row_of(const char* format, const Value* values, std::index_sequence<J...>) const {
        log_line(format, function_, std::int32_t{values[J]}...);
    }

    const char* function_;
    std::int32_t level_;
};

// Value lists of the detail lines.
#define IMGTUNE_4_VALUES "%03d,%03d,%03d,%03d"
#define IMGTUNE_16_VALUES \
    IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES
#define IMGTUNE_20_VALUES IMGTUNE_16_VALUES "," IMGTUNE_4_VALUES

}  // namespace imgtune

#endif
