#ifndef IMGTUNE_CCM_INTERPOLATION_H
#define IMGTUNE_CCM_INTERPOLATION_H

#include <imgtune/ccm.h>

#include "ccm/coefficient_rows.h"
#include "ccm/polynomial.h"
#include "ccm/trace.h"

namespace imgtune {

/// Generates a matrix by method, or leaves `matrix` as it is; the diagonals are left open. `blend`
/// yields the blended matrix, should the method ask for it.
template <class Blend>
void interpolate(const AWB_GAIN_T& projected, std::int32_t unity,
                 const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, std::int32_t flash,
                 CoefficientRows& matrix, std::int32_t method, std::int32_t lv_row,
                 const Blend& blend) {
    if (method == 2) {
        ccm_trace("LV postion in BlendCCM = %d\n", lv_row);
        matrix = blend();
    }
    if (method == 1) {
        const auto& polynomial = flash != 0 ? tuning.rCCMPoly22Flash : tuning.rCCMPoly22;
        matrix = evaluate_polynomial(polynomial, projected);
    }
    if (!ccm_trace_on()) return;
    ccm_trace_nine("rCCM_Output after interpolation = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                   matrix.closed(unity).record().i4Coef);
}

}  // namespace imgtune

#endif
