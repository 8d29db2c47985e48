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

}  // namespace imgtune

#endif
