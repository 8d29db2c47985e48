#ifndef IMGTUNE_FUZZ_CCM_FIELDS_H
#define IMGTUNE_FUZZ_CCM_FIELDS_H

#include <imgtune/ccm.h>

#include <algorithm>

#include "input.h"

namespace imgtune::fuzz {

constexpr std::uint32_t kCcmFieldBits[6] = {0x1fff1fff, 0x1fff,     0x1fff1fff,
                                            0x1fff,     0x1fff1fff, 0x1fff};

inline void require_other_bits_kept(const NSIspTuning::ISP_NVRAM_CCM_T& now,
                                    const NSIspTuning::ISP_NVRAM_CCM_T& before) {
    for (int w = 0; w < 6; ++w) {
        require(((now.u4Word[w] ^ before.u4Word[w]) & ~kCcmFieldBits[w]) == 0,
                "bits outside the coefficients are kept");
    }
}

/// Rows sum to the unity, as far as the codec's modulus and 13 bits can tell.
inline void require_closed_rows(const NSIspTuning::ISP_NVRAM_CCM_T& image, int int_bits,
                                int frac_bits, std::uint32_t unity) {
    const std::uint32_t bits =
        static_cast<std::uint32_t>(int_bits) + static_cast<std::uint32_t>(frac_bits) + 1U;
    const std::uint32_t modulus = std::min(1U << (bits & 31U), 0x2000U);
    for (int row = 0; row < 3; ++row) {
        const std::uint32_t* w = &image.u4Word[2 * row];
        require(((w[0] + (w[0] >> 16) + w[1] - unity) & (modulus - 1)) == 0,
                "rows sum to the unity");
    }
}

inline void require_closed_rows(const NSIspTuning::ISP_CCM_T& m, std::uint32_t unity) {
    for (int row = 0; row < 3; ++row) {
        std::uint32_t sum = 0;
        for (int k = 0; k < 3; ++k) sum += static_cast<std::uint32_t>(m.i4Coef[3 * row + k]);
        require(sum == unity, "rows sum to the unity");
    }
}

}  // namespace imgtune::fuzz

#endif
