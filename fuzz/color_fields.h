#ifndef IMGTUNE_FUZZ_COLOR_FIELDS_H
#define IMGTUNE_FUZZ_COLOR_FIELDS_H

#include <imgtune/color.h>

#include "input.h"

namespace imgtune::fuzz {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;

/// Bits of a word that belong to a block; none of the control words 0..3.
constexpr std::uint32_t field_bits(unsigned word) {
    constexpr std::uint32_t kLine[5] = {0x3fffffff, 0x3fffffff, 0x0ff3ffff, 0xffffffff, 0x03ff03ff};
    if (word < 4) return 0;
    if (word == 4) return 0x07ff03ff;
    if (word == 5) return 0x03ff;
    if (word < 14) return 0x00ff00ff;
    if (word < 69) return 0xffffffff;
    if (word == 69) return 0x1fffffff;
    if (word == 70) return 0x3fff7f7f;
    return word == 71 ? 0x37ff : kLine[(word - 72) % 5];
}

/// No byte of words first..last moved by more than a step.
inline void require_small_moves(const Image& now, const Image& before, unsigned first,
                                unsigned last, std::uint32_t step) {
    for (unsigned byte = 4 * first; byte < 4 * last + 4; ++byte) {
        const auto at = [byte](const Image& image) {
            return static_cast<int>(image.u4Word[byte / 4] >> 8 * (byte % 4) & 0xff);
        };
        const auto moved = static_cast<std::uint32_t>(std::abs(at(now) - at(before)));
        require(moved <= step, "values move by at most the step");
    }
}

}  // namespace imgtune::fuzz

#endif
