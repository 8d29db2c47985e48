#ifndef IMGTUNE_CCM_MATRIX_ROWS_H
#define IMGTUNE_CCM_MATRIX_ROWS_H

#include <imgtune/ccm_types.h>

#include "common/arithmetic.h"

namespace imgtune {

inline constexpr std::int32_t kUnity = 512;

inline constexpr NSIspTuning::ISP_CCM_T kIdentity{{kUnity, 0, 0, 0, kUnity, 0, 0, 0, kUnity}};

/// Sets the diagonals so that each row sums to `unity`.
constexpr void close_rows(NSIspTuning::ISP_CCM_T& matrix, std::int32_t unity) {
    auto& c = matrix.i4Coef;
    c[0] = wrap_sub(wrap_sub(unity, c[1]), c[2]);
    c[4] = wrap_sub(wrap_sub(unity, c[3]), c[5]);
    c[8] = wrap_sub(wrap_sub(unity, c[6]), c[7]);
}

/// share * a + (1 - share) * b per coefficient, truncated, in single precision; the diagonals are
/// left to close_rows.
constexpr std::int32_t mix(std::int32_t a, float share_a, std::int32_t b, float share_b) {
    return truncate_to_int32(static_cast<float>(a) * share_a + static_cast<float>(b) * share_b);
}

}  // namespace imgtune

#endif
