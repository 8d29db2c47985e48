#ifndef IMGTUNE_CAMERA_STATE_H
#define IMGTUNE_CAMERA_STATE_H

// The camera stack owns this record. A library built for a stack with a record of its own is
// configured with that header's name (IMGTUNE_CAMERA_STATE_HEADER), which must define
// NSIspTuning::RAWIspCamInfo with the seven members below, under these names, in this order and
// with these widths; other members may lie before, between and after them. Such a header takes
// AWB_GAIN_T from <imgtune/awb_gain.h>. Library and camera stack are compiled with the same header
// and the same options that move members: without fixed types for its enumerations, -fshort-enums
// is one.

#include <imgtune/awb_gain.h>

#ifdef IMGTUNE_CAMERA_STATE_HEADER
#include IMGTUNE_CAMERA_STATE_HEADER
static_assert(
    sizeof(NSIspTuning::RAWIspCamInfo::profile) == 4 &&
        sizeof(NSIspTuning::RAWIspCamInfo::rAWBFullGain) == 12 &&
        sizeof(NSIspTuning::RAWIspCamInfo::rAWBGain) == 12 &&
        sizeof(NSIspTuning::RAWIspCamInfo::u4CCT) == 4 &&
        sizeof(NSIspTuning::RAWIspCamInfo::u4RealLV) == 4 &&
        sizeof(NSIspTuning::RAWIspCamInfo::u4FlashMode) == 4 &&
        sizeof(NSIspTuning::RAWIspCamInfo::u4SceneFlag) == 4,
    "the camera stack's RAWIspCamInfo has members of other widths than the library reads; "
    "an enumeration needs a fixed underlying type of 32 bits");
#else

namespace NSIspTuning {

/// The frame as the camera stack describes it; only read by the library, never kept.
struct RAWIspCamInfo {
    std::int32_t profile;      ///< ISP profile as the camera stack numbers it; only traced
    AWB_GAIN_T rAWBFullGain;   ///< gain used by SmoothCCM when its Fullgain is 1
    AWB_GAIN_T rAWBGain;       ///< gain used by SmoothCCM otherwise
    std::uint32_t u4CCT;       ///< colour temperature of the scene, kelvin
    std::uint32_t u4RealLV;    ///< light value, compared as unsigned
    std::int32_t u4FlashMode;  ///< 0: no flash; anything else: lit by the flash
    std::int32_t u4SceneFlag;  ///< 1: scene images; anything else: none
};

}  // namespace NSIspTuning

#endif
#endif
