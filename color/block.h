#ifndef IMGTUNE_COLOR_BLOCK_H
#define IMGTUNE_COLOR_BLOCK_H

#include <imgtune/color.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

#include "color/rules.h"
#include "common/arithmetic.h"
#include "common/debug_switch.h"
#include "common/log.h"

// What the register blocks share: lanes of 32-bit values and where they are packed, the two blend
// rules and the temporal step of a parameter record, and the form of the traces.

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

/// N values of a block, widened to 32 bits.
template <std::size_t N>
struct Lanes {
    std::int32_t v[N];
};

/// N byte fields that fill their words: entry j in bits 8 (j mod 4) of word `word` + j / 4.
template <std::size_t N>
struct ByteRun {
    std::size_t word;

    Lanes<N> read(const ColorImage& image) const {
        std::uint8_t bytes[N];
        std::memcpy(bytes, image.u4Word + word, N);
        Lanes<N> lanes;
        for (std::size_t j = 0; j < N; ++j) lanes.v[j] = bytes[j];
        return lanes;
    }

    void write(ColorImage& image, const Lanes<N>& lanes) const {
        std::uint8_t bytes[N];
        for (std::size_t j = 0; j < N; ++j) bytes[j] = static_cast<std::uint8_t>(lanes.v[j]);
        std::memcpy(image.u4Word + word, bytes, N);
    }
};

/// N byte fields, one in the low half of each 16 bits: entry j in bits 16 (j mod 2) to + 7 of word
/// `word` + j / 2. The bytes between them are not part of the block.
template <std::size_t N>
struct SpacedByteRun {
    std::size_t word;

    Lanes<N> read(const ColorImage& image) const {
        std::uint16_t halves[N];
        std::memcpy(halves, image.u4Word + word, sizeof(halves));
        Lanes<N> lanes;
        for (std::size_t j = 0; j < N; ++j) lanes.v[j] = halves[j] & 0xff;
        return lanes;
    }

    void write(ColorImage& image, const Lanes<N>& lanes) const {
        std::uint16_t halves[N];
        std::memcpy(halves, image.u4Word + word, sizeof(halves));
        for (std::size_t j = 0; j < N; ++j) {
            halves[j] = static_cast<std::uint16_t>((halves[j] & 0xff00) | (lanes.v[j] & 0xff));
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

template <std::size_t N>
Lanes<N> blend_lanes(const Blend& blend, const Lanes<N>& high, const Lanes<N>& low) {
    Lanes<N> out;
    for (std::size_t j = 0; j < N; ++j) out.v[j] = blend(high.v[j], low.v[j]);
    return out;
}

template <std::size_t N>
Lanes<N> clip_lanes(const Lanes<N>& lanes, const Lanes<N>& a, const Lanes<N>& b) {
    Lanes<N> out;
    for (std::size_t j = 0; j < N; ++j) {
        out.v[j] =
            as_signed(clip(as_unsigned(lanes.v[j]), as_unsigned(a.v[j]), as_unsigned(b.v[j])));
    }
    return out;
}

template <std::size_t N>
Lanes<N> step_lanes(const Lanes<N>& previous, const Lanes<N>& target, std::uint32_t step) {
    Lanes<N> out;
    for (std::size_t j = 0; j < N; ++j) {
        out.v[j] =
            as_signed(step_toward(as_unsigned(previous.v[j]), as_unsigned(target.v[j]), step));
    }
    return out;
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

    /// A line of Shown values, the format's conversions after the function's name.
    template <std::size_t Shown, std::size_t N>
    void row(const char* format, const Lanes<N>& lanes) const {
        row_of(format, lanes, std::make_index_sequence<Shown>());
    }

  private:
    template <std::size_t N, std::size_t... J>
    void row_of(const char* format, const Lanes<N>& lanes, std::index_sequence<J...>) const {
        log_line(format, function_, lanes.v[J]...);
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
