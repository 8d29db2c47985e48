#ifndef IMGTUNE_CCM_BLEND_H
#define IMGTUNE_CCM_BLEND_H

#include <imgtune/ccm_types.h>

#include "ccm/matrix_rows.h"
#include "ccm/trace.h"
#include "ccm/tuned_rows.h"

namespace imgtune {

/// Blends the tuned matrices around a CT position. `matrix_at` yields the matrix of a CT index
/// 0..7, wherever the tuned matrices are kept.
template <class MatrixAt>
NSIspTuning::ISP_CCM_T blend_by_position(const float* ratios, const MatrixAt& matrix_at,
                                         std::int32_t position, std::int32_t count) {
    NSIspTuning::ISP_CCM_T blended;
    if (position == kBelowLowestCt) {
        blended = matrix_at(0);
        ccm_trace("CCM result by lowest CT \n");
    } else if (position >= kAboveHighestCt) {
        blended = matrix_at(tuned_ct_count(count) - 1);
        ccm_trace("CCM result by highest CT \n");
    } else {
        const std::int32_t middle = std::clamp(position, -1, kCtIndices);
        const NSIspTuning::ISP_CCM_T below = matrix_at(ct_index_in_record(middle - 1));
        const NSIspTuning::ISP_CCM_T at = matrix_at(ct_index_in_record(middle));
        const NSIspTuning::ISP_CCM_T above = matrix_at(ct_index_in_record(middle + 1));
        const float coarse = ratios[0];
        const float fine = ratios[1];
        for (int k = 0; k < 9; ++k) {
            const std::int32_t around =
                mix(below.i4Coef[k], 1.0f - coarse, above.i4Coef[k], coarse);
            blended.i4Coef[k] = mix(at.i4Coef[k], 1.0f - fine, around, fine);
        }
    }
    close_rows(blended, kUnity);
    return blended;
}

}  // namespace imgtune

#endif
