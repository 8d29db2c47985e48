#ifndef IMGTUNE_CCM_INTERPOLATION_H
#define IMGTUNE_CCM_INTERPOLATION_H

#include <imgtune/ccm.h>

#include "ccm/matrix_rows.h"
#include "ccm/trace.h"

namespace imgtune {

/// Evaluates a stored polynomial block at the projected gain.
void evaluate_polynomial(const ISP_CCM_POLY22_T& block, const AWB_GAIN_T& projected,
                         std::int32_t unity, NSIspTuning::ISP_CCM_T& output);

/// Generates a matrix by method; `blend` yields the blended matrix, should the method ask for it.
template <class Blend>
void interpolate(const AWB_GAIN_T& projected, std::int32_t frac_bits,
                 const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, std::int32_t flash,
                 NSIspTuning::ISP_CCM_T& output, std::int32_t method, std::int32_t lv_row,
                 const Blend& blend) {
    const std::int32_t unity = as_signed(shift_left(1, frac_bits));
    if (method == 2) {
        ccm_trace("LV postion in BlendCCM = %d\n", lv_row);
        blend();
    }
    if (method == 1) {
        evaluate_polynomial(flash != 0 ? tuning.rCCMPoly22Flash : tuning.rCCMPoly22, projected,
                            unity, output);
    }
    close_rows(output, unity);
    ccm_trace_nine("rCCM_Output after interpolation = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                   output.i4Coef);
}

}  // namespace imgtune

#endif
