#ifndef IMGTUNE_COLOR_TYPES_H
#define IMGTUNE_COLOR_TYPES_H

#include <cstdint>

namespace NSIspTuning {

/// Register image of the colour engine for one colour temperature and one scene condition.
///
/// | words   | block                                                                  |
/// |---------|------------------------------------------------------------------------|
/// | 0..3    | control: word 0 bit 2 luma, 3 saturation, 4 hue bypass, 20 LSP enable  |
/// | 4..5    | global contrast (4: 0..9), brightness (4: 16..26), saturation (5: 0..9)|
/// | 6..13   | luma PY[16], bits 0..7 and 16..23 of each word                         |
/// | 14..18  | hue PH[20], one byte each                                              |
/// | 19..43  | saturation SG1, SG2, SG3, SP1, SP2, 20 bytes each                      |
/// | 44..68  | saturation gain by luma SGY0, SGY64, SGY128, SGY192, SGY256            |
/// | 69..70  | LSP1[4], LSP2[4]                                                       |
/// | 71..116 | colour map; word 71 is its control word                                |
struct ISP_NVRAM_COLOR_T {
    std::uint32_t u4Word[117];
};

/// Index into the caller's grid of five tuned colour temperatures.
enum EIndex_PCA_LUT_CT : std::int32_t {
    EIndex_PCA_LUT_CT_0,
    EIndex_PCA_LUT_CT_1,
    EIndex_PCA_LUT_CT_2,
    EIndex_PCA_LUT_CT_3,
    EIndex_PCA_LUT_CT_4,
};

/// Defined by the caller, if at all; named only by SmoothPCA_TBL, which does not touch it.
struct ISP_NVRAM_PCA_LUT_T;

}  // namespace NSIspTuning

/// Tuning record of one slot (0 normal, 1 scene, 2 flash, 3 outdoor; record 3 is never read).
/// Of the first seven words only bits 0..7 count. The LV curves take the light value modulo 256,
/// the test of u4LSPMaxLV takes it whole.
struct ISP_NVRAM_PCA_PARAM_T {
    std::uint32_t u4RatioHighLV;      ///< saturation ratio at high LV, 16 = x1
    std::uint32_t u4RatioMidLV;       ///< saturation ratio at middle LV
    std::uint32_t u4RatioLowLV;       ///< saturation ratio at low LV
    std::uint32_t u4RatioLV_Th0;      ///< below: u4RatioLowLV
    std::uint32_t u4RatioLV_Th1;      ///< from here: u4RatioMidLV
    std::uint32_t u4RatioLV_Th2;      ///< from here: away from u4RatioMidLV
    std::uint32_t u4RatioLV_Th3;      ///< from here: u4RatioHighLV
    std::uint32_t u4SatOffset;        ///< added to the global saturation target
    std::uint32_t lum_speed;          ///< step per frame of luma, brightness and contrast
    std::uint32_t hue_speed;          ///< step per frame of hue
    std::uint32_t sat_speed;          ///< step per frame of the saturation gains and of S
    std::uint32_t u4LSPMaxLV;         ///< highest LV at which LSP stays enabled
    std::uint32_t u4OutdoorEnable;    ///< nonzero: slot 0 blends with the outdoor images
    std::uint32_t u4OutdoorLV_Start;  ///< LV at which the outdoor weight leaves 0
    std::uint32_t u4OutdoorLV_End;    ///< LV at which it reaches u4OutdoorBase
    std::uint32_t u4PcaWord15;        ///< carried along, not used
    std::uint32_t u4OutdoorBase;      ///< full scale of the outdoor weight
};

/// Parameters of one frame, handed to every block function and only read by them.
/// Colour temperatures are in mired (1,000,000 / kelvin, truncated).
struct ISP_SMOOTH_COLOR_PARAM_T {
    std::uint32_t IsBoot;  ///< IsBoot | IsCapture equal to 1: targets are taken without a step
    std::uint32_t IsCapture;
    std::uint32_t LSPEnable;       ///< 1: LSP block enabled
    std::uint32_t u4Ratio;         ///< saturation ratio by LV, sixteenths
    std::uint32_t u4SatOffset;     ///< added to the global saturation target
    std::uint32_t u4RealCT;        ///< current CT
    std::uint32_t u4UpperCT;       ///< CT of the upper-CT (High) image
    std::uint32_t u4LowerCT;       ///< CT of the lower-CT (Low) image
    std::uint32_t lum_speed;       ///< step per frame of luma, brightness and contrast
    std::uint32_t sat_speed;       ///< step per frame of the saturation gains and of S
    std::uint32_t hue_speed;       ///< step per frame of hue
    std::uint32_t u4OutdoorBase;   ///< full scale of the outdoor weight
    std::uint32_t u4OutdoorRatio;  ///< weight of the outdoor image
    std::uint32_t u4PcaWord15;     ///< read by no block
};

#endif
