#ifndef IMGTUNE_CCM_TEMPORAL_AVERAGE_H
#define IMGTUNE_CCM_TEMPORAL_AVERAGE_H

#include "ccm/coefficient_rows.h"

namespace imgtune {

/// The weighted mean of the frame's matrix (weights[0]) and both ring entries; sums and products
/// are modulo 2^32, weights that sum to 0 give 0. Diagonals are left open.
CoefficientRows average_with_ring(const CoefficientRows& matrix, const CoefficientRows (&ring)[2],
                                  const unsigned int* weights);

}  // namespace imgtune

#endif
