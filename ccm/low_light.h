#ifndef IMGTUNE_CCM_LOW_LIGHT_H
#define IMGTUNE_CCM_LOW_LIGHT_H

#include <algorithm>

#include "ccm/coefficient_rows.h"
#include "ccm/low_light_range.h"
#include "ccm/trace.h"

namespace imgtune {

/// What the matrix of normal light counts for at a light value up to kLowLightEnd: 0 to 1.
constexpr float normal_light_share(std::uint32_t lv) {
    return static_cast<float>(std::max(lv, kLowLightFull) - kLowLightFull) / 30.0f;
}

/// Blends the low-light matrix into that of normal light. With a share of 0 it is the result as it
/// is: a finite value times 0 adds nothing, and a truncated float survives single precision, as
/// does the largest value, to which 2^31 saturates.
inline CoefficientRows blend_low_light(const CoefficientRows& normal, float share,
                                       const CoefficientRows& low_light) {
    ccm_trace("LV_blend ratio = (%f)\n", double{1.0f - share});
    return share > 0.0f ? mix(normal, share, low_light, 1.0f - share) : low_light;
}

}  // namespace imgtune

#endif
