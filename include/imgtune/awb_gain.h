#ifndef IMGTUNE_AWB_GAIN_H
#define IMGTUNE_AWB_GAIN_H

#include <cstdint>

/// Auto-white-balance gain, fixed point with 512 = unity.
struct AWB_GAIN_T {
    std::int32_t i4R;
    std::int32_t i4G;
    std::int32_t i4B;
};

#endif
