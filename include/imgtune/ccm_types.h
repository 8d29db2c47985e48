#ifndef IMGTUNE_CCM_TYPES_H
#define IMGTUNE_CCM_TYPES_H

#include <imgtune/awb_gain.h>

#include <cstdint>

namespace NSIspTuning {

/// Working 3x3 colour-correction matrix, row-major, 512 = unity unless a function says otherwise.
struct ISP_CCM_T {
    std::int32_t i4Coef[9];
};

/// Decoded tuning table: plane k holds coefficient k of the matrix of [LV row][CT index].
struct ISP_CCM_T_2D {
    std::int32_t i4Plane[9][8][8];
};

/// CCM register image: nine 13-bit coefficient fields in six words.
///
/// | word | bits 0..12    | bits 16..28   |
/// |------|---------------|---------------|
/// | 0    | coefficient 0 | coefficient 1 |
/// | 1    | coefficient 2 |               |
/// | 2    | coefficient 3 | coefficient 4 |
/// | 3    | coefficient 5 |               |
/// | 4    | coefficient 6 | coefficient 7 |
/// | 5    | coefficient 8 |               |
///
/// All other bits belong to the caller and keep their values.
///
/// With a integer and b fraction bits (shift counts modulo 32), M = 2^(a + b + 1): a field value
/// above 2^(a + b) reads as value - M; a coefficient is written as its low 13 bits, M added first
/// when it is negative, so that one out of range wraps. a = 3, b = 9 gives -4095..4096, 512 = 1.0.
struct ISP_NVRAM_CCM_T {
    std::uint32_t u4Word[6];
};

}  // namespace NSIspTuning

/// First-degree polynomial of the normalised gains (512 red / green, 512 blue / green).
struct ISP_CCM_POLY22_T {
    std::int32_t i4R_AVG;  ///< mean of the normalised red gain, times 100
    std::int32_t i4R_STD;  ///< its standard deviation, times 100
    std::int32_t i4B_AVG;  ///< mean of the normalised blue gain, times 100
    std::int32_t i4B_STD;  ///< its standard deviation, times 100
    std::int32_t i4Reserved[6];
    std::int32_t i4P00[9];  ///< constant term per coefficient, times 10000; entry 8 is only traced
    std::int32_t i4P10[9];  ///< red term per coefficient, times 10000; entry 8 is only traced
    std::int32_t i4P01[9];  ///< blue term per coefficient, times 10000; entry 8 is only traced
};

/// Multi-CCM tuning image as stored in non-volatile memory: 1102 words of 32 bits.
///
/// LV row 0 is normal light, 1 low light, 6 flash. CT indices run from the lowest tuned CT (0) to
/// the highest (i4NumCT - 1); along a row the red gain rises and the blue gain falls.
struct ISP_NVRAM_MULTI_CCM_STRUCT {
    std::int32_t i4Method;  ///< 1: polynomial; 2: blend by CT; else: identity
    std::int32_t i4Reserved1[36];
    std::int32_t i4PQType;    ///< output gamut matrix 1 or 2; else: none
    std::int32_t i4NumLV;     ///< tuned LV rows; the low-light blend needs at least 2
    std::int32_t i4NumFlash;  ///< flash tables; only traced
    std::int32_t i4NumCT;     ///< tuned CTs, 1..8 (at least 3 for the blend)
    NSIspTuning::ISP_NVRAM_CCM_T rCCM_Nvram[8][8];  ///< [LV row][CT index]
    AWB_GAIN_T rCTAWBGain[8][8];                    ///< [LV row][CT index]; i4G is not read
    std::int32_t i4Reserved2[64];
    ISP_CCM_POLY22_T rCCMPoly22;  ///< used without flash
    std::int32_t i4Reserved3[347];
    ISP_CCM_POLY22_T rCCMPoly22Flash;  ///< used with flash
};

#endif
