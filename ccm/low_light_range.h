#ifndef IMGTUNE_CCM_LOW_LIGHT_RANGE_H
#define IMGTUNE_CCM_LOW_LIGHT_RANGE_H

#include <cstdint>

namespace imgtune {

inline constexpr std::uint32_t kLowLightFull = 20;  ///< light value to which low light alone rules
inline constexpr std::uint32_t kLowLightEnd = 50;   ///< and from which it takes no part

}  // namespace imgtune

#endif
