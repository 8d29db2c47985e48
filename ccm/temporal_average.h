#ifndef IMGTUNE_CCM_TEMPORAL_AVERAGE_H
#define IMGTUNE_CCM_TEMPORAL_AVERAGE_H

#include "ccm/coefficient_rows.h"
#include "ccm/trace.h"
#include "common/arithmetic.h"

namespace imgtune {

inline void trace_average(const CoefficientRows& average, const CoefficientRows (&ring)[2]) {
    ccm_trace_nine("Temporal CCM 0 = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                   ring[0].record().i4Coef);
    ccm_trace_nine("Temporal CCM 1 = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                   ring[1].record().i4Coef);
    ccm_trace_nine("rCCM_Output after averaging = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                   average.closed(kUnity).record().i4Coef);
}

/// The weighted mean of the frame's matrix (weights[0]) and both ring entries; sums and products
/// are modulo 2^32, weights that sum to 0 give 0. Diagonals are left open.
inline CoefficientRows average_with_ring(const CoefficientRows& matrix,
                                         const CoefficientRows (&ring)[2],
                                         const unsigned int* weights) {
    const std::int32_t w[3] = {as_signed(weights[0]), as_signed(weights[1]), as_signed(weights[2])};
    ccm_trace("Coef1, Coef2, Coef3 = %d, %d, %d\n", w[0], w[1], w[2]);
    const FrameDivisor sum(wrap_add(wrap_add(w[0], w[1]), w[2]));
    CoefficientRows average{};
    for (std::size_t r = 0; r < 3; ++r) {
        average.row[r] = mean(sum, w, matrix.row[r], ring[0].row[r], ring[1].row[r]);
    }
    if (ccm_trace_on()) trace_average(average, ring);
    return average;
}

}  // namespace imgtune

#endif
