#ifndef IMGTUNE_COLOR_CONTROL_H
#define IMGTUNE_COLOR_CONTROL_H

#include "common/arithmetic.h"

namespace imgtune {

inline constexpr int kControlWords = 4;

inline constexpr BitField kLumaBypass{0, 2, 1};
inline constexpr BitField kSaturationBypass{0, 3, 1};
inline constexpr BitField kHueBypass{0, 4, 1};
inline constexpr BitField kLspEnable{0, 20, 1};
inline constexpr BitField kColorMapBypass{71, 0, 1};

}  // namespace imgtune

#endif
