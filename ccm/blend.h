#ifndef IMGTUNE_CCM_BLEND_H
#define IMGTUNE_CCM_BLEND_H

#include <imgtune/ccm_types.h>

#include "ccm/coefficient_rows.h"
#include "ccm/gain_projection.h"
#include "ccm/trace.h"
#include "ccm/tuned_rows.h"

namespace imgtune {

/// The matrix of a CT index in one LV row of a decoded table.
inline CoefficientRows matrix_in_table(const NSIspTuning::ISP_CCM_T_2D& table, std::int32_t lv_row,
                                       std::int32_t ct) {
    NSIspTuning::ISP_CCM_T matrix{};
    for (std::size_t k = 0; k < 9; ++k) matrix.i4Coef[k] = table.i4Plane[k][lv_row][ct];
    return CoefficientRows::of(matrix);
}

/// Blends the tuned matrices around a place on the locus; the diagonals are left open. `matrix_at`
/// yields the matrix of a CT index 0..7, wherever the tuned matrices are kept.
template <class MatrixAt>
CoefficientRows blend_by_place(const CtPlace& place, const MatrixAt& matrix_at,
                               std::int32_t count) {
    const std::int32_t position = place.position;
    if (position == kBelowLowestCt) {
        ccm_trace("CCM result by lowest CT \n");
        return matrix_at(0);
    }
    if (position >= kAboveHighestCt) {
        ccm_trace("CCM result by highest CT \n");
        return matrix_at(tuned_ct_count(count) - 1);
    }
    const std::int32_t middle = std::clamp(position, -1, kCtIndices);
    const CoefficientRows below = matrix_at(ct_index_in_record(middle - 1));
    const CoefficientRows at = matrix_at(ct_index_in_record(middle));
    const CoefficientRows above = matrix_at(ct_index_in_record(middle + 1));
    const CoefficientRows around = mix(below, 1.0f - place.coarse, above, place.coarse);
    return mix(at, 1.0f - place.fine, around, place.fine);
}

}  // namespace imgtune

#endif
