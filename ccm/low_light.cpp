#include "ccm/low_light.h"

#include <algorithm>

#include "ccm/trace.h"

namespace imgtune {

namespace {

constexpr std::uint32_t kLowLightFull = 20;  // light value up to which low light alone rules
constexpr float kLowLightSpan = 30.0f;       // from there to where it takes no part

}  // namespace

float normal_light_share(std::uint32_t lv) {
    return static_cast<float>(std::max(lv, kLowLightFull) - kLowLightFull) / kLowLightSpan;
}

CoefficientRows blend_low_light(const CoefficientRows& normal, float share,
                                const CoefficientRows& low_light) {
    ccm_trace("LV_blend ratio = (%f)\n", double{1.0f - share});
    return mix(normal, share, low_light, 1.0f - share);
}

}  // namespace imgtune
