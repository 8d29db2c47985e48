#ifndef ISP_ENUM_CAMERA_INFO_H
#define ISP_ENUM_CAMERA_INFO_H

// A state record that holds an enumeration of no fixed type: four bytes, or one by -fshort-enums.

#include <imgtune/awb_gain.h>

namespace NSIspTuning {

enum FlashMode { FlashMode_Off, FlashMode_On };

struct RAWIspCamInfo {
    std::int32_t profile;
    AWB_GAIN_T rAWBFullGain;
    AWB_GAIN_T rAWBGain;
    std::uint32_t u4CCT;
    std::uint32_t u4RealLV;
    FlashMode u4FlashMode;
    std::int32_t u4SceneFlag;
};

}  // namespace NSIspTuning

#endif
