#ifndef IMGTUNE_CCM_H
#define IMGTUNE_CCM_H

#include <imgtune/camera_state.h>
#include <imgtune/ccm_types.h>
#include <imgtune/export.h>

// Trace lines of SmoothCCM, GainProjection, Interpolation and BlendCCM pass one gate of the
// process. It is open when the library is loaded: called directly, these functions trace until the
// first call of SmoothCCM. Each call of SmoothCCM sets it from the system property
// debug.smooth_ccm.enable: 0 or unset closes it, any other number opens it. No result depends on
// it.

/// Version of CCM smoothing: 200.
IMGTUNE_API extern const unsigned short g_Smooth_CCM_Ver;

/// Computes the colour-correction matrix of one frame.
///
/// Takes the AWB gain, clips it to the tuned range of its LV row, generates a matrix by i4Method,
/// blends in the low-light matrix below LV 50 (no flash, i4NumLV >= 2), averages it with the ring,
/// stores the average into the ring, applies the gamut matrix and encodes the result.
///
/// @param Fullgain     1: use rAWBFullGain; any other value: rAWBGain
/// @param i4IntBits    integer bits a of the coefficient fields (see ISP_NVRAM_CCM_T)
/// @param i4FracBits   fraction bits b; a = 3, b = 9 match the unity 512 used here
/// @param tuning       only read
/// @param output       its nine coefficient fields are written; other bits are left alone
/// @param version      receives g_Smooth_CCM_Ver
/// @param state        only read: one gain, u4RealLV, u4FlashMode
/// @param rTemporalCCM ring of two images; both are re-encoded, other bits are left alone
/// @param u4TemporalIdx ring entry that receives the average (0 or 1, then flipped); a larger
///                     index leaves the ring's values and the index as they are
/// @param u4Coef       three weights: new matrix, ring entry 0, ring entry 1; a zero sum gives the
///                     identity ahead of the gamut matrix; (1, 0, 0) switches the average off
///
/// i4NumCT is taken as 1 below 1 and as 8 above 8. The blend needs at least 3. With 2, a gain
/// between the two that counts as nearer to the second gives the second matrix, and one nearer to
/// the first (CT position 1) mixes in the row's entry 2, tuned or not.
IMGTUNE_API void SmoothCCM(int Fullgain, int i4IntBits, int i4FracBits,
                           ISP_NVRAM_MULTI_CCM_STRUCT& tuning, NSIspTuning::ISP_NVRAM_CCM_T& output,
                           unsigned short& version, NSIspTuning::RAWIspCamInfo const& state,
                           NSIspTuning::ISP_NVRAM_CCM_T* rTemporalCCM, unsigned int& u4TemporalIdx,
                           unsigned int* u4Coef);

/// Places a gain on the locus of the tuned gains of one LV row.
///
/// Method 1 writes only `projected`: the foot of the perpendicular on the line from the lowest to
/// the highest tuned gain, green 512. Method 2 writes only the two ratios, each in [0, 1] (coarse:
/// share of CT position + 1 against position - 1; fine: share of that mix against the position),
/// and the CT position: -1 at or below the lowest tuned red gain, N + 10 at or above the highest,
/// else 1..N - 2 (with N = 2: 0 or 1). Both ratios are 1 at the positions -1 and 0. Any other
/// method writes and traces nothing.
///
/// @param numCT N, taken as 1 below 1 and as 8 above 8; positions between the ends need N >= 3
/// @param lvRow LV row, taken as the nearest of 0..7
///
/// A line of no length projects onto the lowest tuned gain. At position N + 10 the ratios come from
/// the distances to the highest tuned gain; BlendCCM does not use them there.
IMGTUNE_API void GainProjection(AWB_GAIN_T const& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                                AWB_GAIN_T& projected, int method, float* fBlendRatio, int numCT,
                                int lvRow, int* i4CTPos);

/// Generates a matrix by `method`: 1 evaluates the polynomial at the projected gain, 2 blends the
/// decoded matrices, any other leaves the off-diagonals of `output` as they are. Every method ends
/// with diagonals of 2^i4FracBits minus the row's off-diagonals. i4IntBits is not read.
IMGTUNE_API void Interpolation(AWB_GAIN_T& projected, int i4IntBits, int i4FracBits,
                               ISP_NVRAM_MULTI_CCM_STRUCT& tuning, NSIspTuning::ISP_CCM_T_2D& table,
                               int flash, NSIspTuning::ISP_CCM_T& output, float* fBlendRatio,
                               int method, int lvRow, int ctPos, int numCT);

/// Evaluates a second-degree polynomial per coefficient at the normalised gains
/// nr = (512 R / G - redAvg) / redStd, nb = (512 B / G - blueAvg) / blueStd:
/// P00 + P10 nr + P01 nb + P20 nr^2 + P11 nr nb + P02 nb^2, truncated. Each array has nine entries;
/// entry 8 is not read. The diagonals are `unity` minus the row's off-diagonals. A zero green gain
/// or deviation divides by zero: NaN gives 0, infinity the end of the 32-bit range.
IMGTUNE_API void GenCCM(AWB_GAIN_T const& gain, int unused1, int unused2, int unity, float redAvg,
                        float blueAvg, float redStd, float blueStd, float* P00, float* P10,
                        float* P01, float* P20, float* P11, float* P02,
                        NSIspTuning::ISP_CCM_T& output);

/// Blends the decoded matrices of LV row `lvRow`: position -1 takes CT 0, a position of 10 or more
/// takes CT N - 1, any other position p mixes p - 1 and p + 1 by fBlendRatio[0] and that with p by
/// fBlendRatio[1]. Diagonals are 512 minus the row's off-diagonals. N is taken as 1 below 1 and as
/// 8 above 8; CT indices and the LV row are taken as the nearest of 0..7.
IMGTUNE_API void BlendCCM(float* fBlendRatio, NSIspTuning::ISP_CCM_T_2D& table,
                          NSIspTuning::ISP_CCM_T& output, int ctPos, int lvRow, int numCT);

/// Rescales one register image in place: off-diagonal fields, read as unsigned, times `ratio`
/// (truncated, negative and NaN give 0), diagonals 2^b minus the row's off-diagonals, all cut to 13
/// bits; then every field of 2^(a + b) or more becomes 2^(a + b) - 1. Other bits are left alone.
IMGTUNE_API void seperate_RWB_CCM_by_ratio(NSIspTuning::ISP_NVRAM_CCM_T* image, float ratio,
                                           int i4IntBits, int i4FracBits);

#endif
