#ifndef IMGTUNE_TESTS_LIBRARY_COLOR_IMAGES_H
#define IMGTUNE_TESTS_LIBRARY_COLOR_IMAGES_H

// What the tests of the colour engine's blocks share: images and the weights they are mixed by.

#include <imgtune/imgtune.h>

#include <cstdint>

namespace imgtune::callers {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Param = ISP_SMOOTH_COLOR_PARAM_T;
using BlockFunction = void (*)(Param&, const Image&, const Image&, Image&);

/// High and Low image count half each between 150 and 350 mired, and by 16 of 64 outdoors.
inline Param half_way() {
    Param p{};
    p.u4Ratio = 16;
    p.u4RealCT = 250;
    p.u4UpperCT = 150;
    p.u4LowerCT = 350;
    p.lum_speed = p.sat_speed = p.hue_speed = 6;
    p.u4OutdoorBase = 64;
    p.u4OutdoorRatio = 16;
    return p;
}

inline Image filled(std::uint32_t word) {
    Image image;
    for (auto& w : image.u4Word) w = word;
    return image;
}

}  // namespace imgtune::callers

#endif
