#ifndef IMGTUNE_CCM_LOW_LIGHT_H
#define IMGTUNE_CCM_LOW_LIGHT_H

#include "ccm/coefficient_rows.h"

namespace imgtune {

/// What the matrix of normal light counts for at a light value: 1 from 50 on, 0 up to 20.
float normal_light_share(std::uint32_t lv);

/// Blends the low-light matrix into that of normal light. With a share of 0 the result is the
/// low-light matrix, whatever the other is: a finite value times 0 adds nothing.
CoefficientRows blend_low_light(const CoefficientRows& normal, float share,
                                const CoefficientRows& low_light);

}  // namespace imgtune

#endif
