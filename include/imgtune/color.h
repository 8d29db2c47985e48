#ifndef IMGTUNE_COLOR_H
#define IMGTUNE_COLOR_H

#include <imgtune/camera_state.h>
#include <imgtune/color_types.h>
#include <imgtune/export.h>

/// Version of colour smoothing: 100.
IMGTUNE_API extern const unsigned short g_Smooth_Color_Ver;

/// Computes the colour engine's register image of one frame.
///
/// Slot 2 with flash, else slot 1 when u4SceneFlag is 1, else slot 0. Slot 0 with u4OutdoorEnable
/// first blends each CT's image with its outdoor image (slot 3) by light value.
///
/// Every target is taken without a temporal step when the bitwise OR of boot flag and IsCapture is
/// exactly 1, as for 1 and 0, 0 and 1, 1 and 1; a capture of 1 with a boot flag of 2 steps.
///
/// @param IsCapture  1: still capture
/// @param u4UpperCT  kelvin of the upper-CT image
/// @param u4LowerCT  kelvin of the lower-CT image
/// @param eUpperIdx  CT index of the upper-CT image; taken as the nearest of 0..4
/// @param eLowerIdx  CT index of the lower-CT image; taken as the nearest of 0..4
/// @param colorTable [slot][CT index], only read
/// @param tuning     one record per slot, only read
/// @param state      only read: u4CCT, u4RealLV, profile, u4FlashMode, u4SceneFlag
/// @param result     receives a copy of all 117 words of the working image
/// @param version    receives g_Smooth_Color_Ver
/// @param boot       1: first frame; set to 0
/// @param working    the previous frame's image, updated in place: words 0..3 come from the slot's
///                   CT-index-0 image, where bit 20 of word 0 (LSP enable) is then rewritten and,
///                   by a switch below, bits 2..4; bits outside the fields of all other blocks are
///                   left alone
///
/// A CT of 0 kelvin, or above 1,000,000, is a degenerate bracket to the block functions below. A
/// zero u4OutdoorBase outdoors blends every field to 0, but for the colour map, which is not
/// blended, and the offset that the global saturation gets.
///
/// System properties, read on every call, 0 when unset. These change results:
///
/// - debug.smooth_color.lock: 1 keeps all blocks of the working image as they are; words 0..3 are
///   still refreshed
/// - debug.smooth_color.enable: 1 writes the lowest bits of debug.smooth_color.bypass.yeng,
///   debug.smooth_color.bypass.heng and debug.smooth_color.bypass.seng into bits 2 (luma), 4 (hue)
///   and 3 (saturation) of word 0, and that of debug.smooth_color.bypass.cm into bit 0 of word 71,
///   where the colour map overwrites it unless the lock is on
///
/// debug.smooth_color.dump: nonzero traces the call. Each block function reads its own switch.
IMGTUNE_API void SmoothCOLOR(int IsCapture, unsigned int u4UpperCT, unsigned int u4LowerCT,
                             NSIspTuning::EIndex_PCA_LUT_CT eUpperIdx,
                             NSIspTuning::EIndex_PCA_LUT_CT eLowerIdx,
                             NSIspTuning::ISP_NVRAM_COLOR_T const (&colorTable)[4][5],
                             ISP_NVRAM_PCA_PARAM_T const (&tuning)[4],
                             NSIspTuning::RAWIspCamInfo const& state,
                             NSIspTuning::ISP_NVRAM_COLOR_T& result, unsigned short& version,
                             int& boot, NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Does nothing: reads and writes none of its arguments.
IMGTUNE_API void SmoothPCA_TBL(int IsCapture, unsigned int u4UpperCT, unsigned int u4LowerCT,
                               NSIspTuning::EIndex_PCA_LUT_CT eUpperIdx,
                               NSIspTuning::EIndex_PCA_LUT_CT eLowerIdx,
                               NSIspTuning::ISP_NVRAM_PCA_LUT_T const (&lutTable)[4][5],
                               ISP_NVRAM_PCA_PARAM_T const (&tuning)[4],
                               NSIspTuning::RAWIspCamInfo const& state,
                               NSIspTuning::ISP_NVRAM_PCA_LUT_T& result, unsigned short& version);

// Scalar rules. Integers are 32 bits wide and wrap; division truncates toward zero, a zero divisor
// gives 0.

/// Value at CT x on the line through (p, valueP) and (q, valueQ), extrapolated outside:
/// ((q - x) valueP + (x - p) valueQ) / (q - p); valueQ when IsCCTBoundary(x, p, q).
IMGTUNE_API int InterParamByCT(int x, int p, int q, int valueP, int valueQ);

/// 1 when p equals q or any of the three CTs is 0, else 0.
IMGTUNE_API int IsCCTBoundary(int x, int p, int q);

/// (outdoor ratio + (base - ratio) normal) / base.
IMGTUNE_API int InterParamByLV(int ratio, int base, int outdoor, int normal);

/// `previous` moved toward `target` by at most `step`; a step of 0 stays. The distance between them
/// is taken modulo 2^32, at most 2^31: IIR(0, 0xFFFFFFFF, 1) is 0xFFFFFFFF. A target further away
/// than `step` is approached upwards when it is the larger unsigned number.
IMGTUNE_API unsigned int IIR(unsigned int previous, unsigned int target, unsigned int step);

/// `value` limited to the range between the two bounds, in either order; compared as unsigned.
IMGTUNE_API unsigned int Clip(unsigned int value, unsigned int boundA, unsigned int boundB);

/// InterParamByCT without its boundary test: p equal to q gives 0.
IMGTUNE_API int InterParam_PCA(int x, int p, int q, int valueP, int valueQ);

// Block functions. Each reads the parameter record and its block's fields of the High (2nd
// argument) and Low (3rd) image and writes that block's fields of the last argument; all other bits
// are left alone. Values are cut to the width of their field, never saturated.
//
// The ByLV functions blend an outdoor (High) and a normal (Low) image of one CT by
// u4OutdoorRatio / u4OutdoorBase; a zero base gives 0. The others interpolate between the upper-CT
// (High) and the lower-CT (Low) image by u4RealCT. On a degenerate bracket (any of the three CTs 0,
// or both images of one CT) they take the Low image, but for the colour map, which has its own
// rule, and for saturation gains whose segment has no length or runs backwards.
//
// Each reads one system property, its switch, on every call: nonzero logs a header line, exactly 1
// also the values. No result depends on it.

/// Brightness, contrast, saturation (words 4..5).
/// Switch: debug.smooth_color.lvdump.global
IMGTUNE_API void InterParamByLVGlobal(ISP_SMOOTH_COLOR_PARAM_T& param,
                                      NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                      NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                      NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// Brightness, contrast, saturation (words 4..5): not clamped; saturation scaled by u4Ratio / 16
/// and offset by u4SatOffset; stepped by lum_speed (B, C) and sat_speed (S).
/// Switch: debug.smooth_color.dump.global
IMGTUNE_API void InterParamGlobal(ISP_SMOOTH_COLOR_PARAM_T& param,
                                  NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                  NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                  NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// LSP1, LSP2 (words 69..70).
/// Switch: debug.smooth_color.lvdump.lsp
IMGTUNE_API void InterParamByLVLSP(ISP_SMOOTH_COLOR_PARAM_T& param,
                                   NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                   NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                   NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// LSP1, LSP2 (words 69..70) and LSP enable (word 0 bit 20, from LSPEnable equal to 1): neither
/// clamped nor stepped.
/// Switch: debug.smooth_color.dump.lsp
IMGTUNE_API void InterParamLSP(ISP_SMOOTH_COLOR_PARAM_T& param,
                               NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                               NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                               NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Luma PY[16] (words 6..13).
/// Switch: debug.smooth_color.lvdump.lum
IMGTUNE_API void InterParamByLVPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                        NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// Luma PY[16] (words 6..13): clamped between the two images, stepped by lum_speed.
/// Switch: debug.smooth_color.dump.lum
IMGTUNE_API void InterParamPartialY(ISP_SMOOTH_COLOR_PARAM_T& param,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                    NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Hue PH[20] (words 14..18).
/// Switch: debug.smooth_color.lvdump.hue
IMGTUNE_API void InterParamByLVPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                        NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// Hue PH[20] (words 14..18): clamped between the two images, stepped by hue_speed.
/// Switch: debug.smooth_color.dump.hue
IMGTUNE_API void InterParamPartialH(ISP_SMOOTH_COLOR_PARAM_T& param,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                    NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Saturation SG1, SG2, SG3, SP1, SP2 [20] (words 19..43): knots and levels at the knots are
/// blended, the gains are derived again as the slopes between them.
/// Switch: debug.smooth_color.lvdump.sat
IMGTUNE_API void InterParamByLVPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                        NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// Saturation SG1, SG2, SG3, SP1, SP2 [20] (words 19..43): as above; gains clamped between the two
/// images and stepped by sat_speed, knots taken at once.
/// Switch: debug.smooth_color.dump.sat
IMGTUNE_API void InterParamPartialS(ISP_SMOOTH_COLOR_PARAM_T& param,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                    NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Saturation gain by luma SGY0, SGY64, SGY128, SGY192, SGY256 [20] (words 44..68).
/// Switch: debug.smooth_color.lvdump.sgy
IMGTUNE_API void InterParamByLVSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                                        NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                                        NSIspTuning::ISP_NVRAM_COLOR_T& scratch);

/// Saturation gain by luma (words 44..68): neither clamped nor stepped.
/// Switch: debug.smooth_color.dump.sgy
IMGTUNE_API void InterParamSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                    NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                    NSIspTuning::ISP_NVRAM_COLOR_T& working);

/// Colour map (words 71..116): every field taken from the upper-CT image when u4RealCT is at or
/// above (u4LowerCT + u4UpperCT) / 2 in mired, else from the lower-CT image.
/// Switch: debug.smooth_color.dump.cm
IMGTUNE_API void InterParam3DLUT(ISP_SMOOTH_COLOR_PARAM_T& param,
                                 NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                                 NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                                 NSIspTuning::ISP_NVRAM_COLOR_T& working);

#endif
