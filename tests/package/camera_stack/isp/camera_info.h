#ifndef ISP_CAMERA_INFO_H
#define ISP_CAMERA_INFO_H

// A camera stack's own state record: the library's members with others before, between and after.

#include <imgtune/awb_gain.h>

#include <cstdint>

namespace NSIspTuning {

struct RAWIspCamInfo {
    std::uint64_t timestamp;
    std::int32_t profile;
    char sensor[11];
    AWB_GAIN_T rAWBFullGain;
    float lens_position;
    AWB_GAIN_T rAWBGain;
    std::uint32_t histogram[16];
    std::uint32_t u4CCT;
    std::uint32_t u4RealLV;
    void* debug_info;
    std::int32_t u4FlashMode;
    std::int16_t orientation;
    std::int32_t u4SceneFlag;
    std::uint32_t zoom[2];
};

}  // namespace NSIspTuning

#endif
