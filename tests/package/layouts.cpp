// What a caller's compiler must make of the public records: bytes from the start, and whole sizes.

#include <imgtune/imgtune.h>

#include <cstddef>
#include <type_traits>

#define SIZE(type, bytes) \
    static_assert(sizeof(type) == (bytes) && std::is_trivially_copyable<type>::value, #type)
#define AT(type, member, bytes) static_assert(offsetof(type, member) == (bytes), #type "::" #member)

SIZE(AWB_GAIN_T, 12);
AT(AWB_GAIN_T, i4R, 0);
AT(AWB_GAIN_T, i4G, 4);
AT(AWB_GAIN_T, i4B, 8);

SIZE(NSIspTuning::ISP_CCM_T, 36);
SIZE(NSIspTuning::ISP_CCM_T_2D, 2304);
SIZE(NSIspTuning::ISP_NVRAM_CCM_T, 24);
SIZE(NSIspTuning::ISP_NVRAM_COLOR_T, 468);

SIZE(ISP_CCM_POLY22_T, 148);
AT(ISP_CCM_POLY22_T, i4R_AVG, 0);
AT(ISP_CCM_POLY22_T, i4R_STD, 4);
AT(ISP_CCM_POLY22_T, i4B_AVG, 8);
AT(ISP_CCM_POLY22_T, i4B_STD, 12);
AT(ISP_CCM_POLY22_T, i4P00, 40);
AT(ISP_CCM_POLY22_T, i4P10, 76);
AT(ISP_CCM_POLY22_T, i4P01, 112);

SIZE(ISP_NVRAM_MULTI_CCM_STRUCT, 4408);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, i4Method, 0);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, i4PQType, 148);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, i4NumLV, 152);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, i4NumFlash, 156);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, i4NumCT, 160);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, rCCM_Nvram, 164);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, rCTAWBGain, 1700);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22, 2724);
AT(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22Flash, 4260);

SIZE(ISP_NVRAM_PCA_PARAM_T, 68);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioHighLV, 0);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioMidLV, 4);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioLowLV, 8);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioLV_Th0, 12);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioLV_Th1, 16);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioLV_Th2, 20);
AT(ISP_NVRAM_PCA_PARAM_T, u4RatioLV_Th3, 24);
AT(ISP_NVRAM_PCA_PARAM_T, u4SatOffset, 28);
AT(ISP_NVRAM_PCA_PARAM_T, lum_speed, 32);
AT(ISP_NVRAM_PCA_PARAM_T, hue_speed, 36);
AT(ISP_NVRAM_PCA_PARAM_T, sat_speed, 40);
AT(ISP_NVRAM_PCA_PARAM_T, u4LSPMaxLV, 44);
AT(ISP_NVRAM_PCA_PARAM_T, u4OutdoorEnable, 48);
AT(ISP_NVRAM_PCA_PARAM_T, u4OutdoorLV_Start, 52);
AT(ISP_NVRAM_PCA_PARAM_T, u4OutdoorLV_End, 56);
AT(ISP_NVRAM_PCA_PARAM_T, u4PcaWord15, 60);
AT(ISP_NVRAM_PCA_PARAM_T, u4OutdoorBase, 64);

SIZE(ISP_SMOOTH_COLOR_PARAM_T, 56);
AT(ISP_SMOOTH_COLOR_PARAM_T, IsBoot, 0);
AT(ISP_SMOOTH_COLOR_PARAM_T, IsCapture, 4);
AT(ISP_SMOOTH_COLOR_PARAM_T, LSPEnable, 8);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4Ratio, 12);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4SatOffset, 16);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4RealCT, 20);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4UpperCT, 24);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4LowerCT, 28);
AT(ISP_SMOOTH_COLOR_PARAM_T, lum_speed, 32);
AT(ISP_SMOOTH_COLOR_PARAM_T, sat_speed, 36);
AT(ISP_SMOOTH_COLOR_PARAM_T, hue_speed, 40);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4OutdoorBase, 44);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4OutdoorRatio, 48);
AT(ISP_SMOOTH_COLOR_PARAM_T, u4PcaWord15, 52);

static_assert(
    std::is_same<std::underlying_type<NSIspTuning::EIndex_PCA_LUT_CT>::type, std::int32_t>::value &&
        NSIspTuning::EIndex_PCA_LUT_CT_4 == 4,
    "CT index");

#ifndef IMGTUNE_CAMERA_STATE_HEADER
SIZE(NSIspTuning::RAWIspCamInfo, 44);
AT(NSIspTuning::RAWIspCamInfo, profile, 0);
AT(NSIspTuning::RAWIspCamInfo, rAWBFullGain, 4);
AT(NSIspTuning::RAWIspCamInfo, rAWBGain, 16);
AT(NSIspTuning::RAWIspCamInfo, u4CCT, 28);
AT(NSIspTuning::RAWIspCamInfo, u4RealLV, 32);
AT(NSIspTuning::RAWIspCamInfo, u4FlashMode, 36);
AT(NSIspTuning::RAWIspCamInfo, u4SceneFlag, 40);
#endif
