#ifndef IMGTUNE_COLOR_BLOCKS_H
#define IMGTUNE_COLOR_BLOCKS_H

#include "color/block.h"

// The register blocks as both the driver and the exported functions run them.

namespace imgtune {

/// One of a block's two steps: from a High and a Low image into an image that holds the previous
/// frame's fields where the step is a temporal one.
using BlockStep = void(const BlockTrace& trace, const ColorParam& param, const FrameBlend& blend,
                       const ColorImage& high, const ColorImage& low, ColorImage& out);

BlockStep blend_global, smooth_global;
BlockStep blend_luma, smooth_luma;
BlockStep blend_hue, smooth_hue;
BlockStep blend_saturation, smooth_saturation;
BlockStep blend_saturation_gain, interpolate_saturation_gain;
BlockStep blend_lsp, interpolate_lsp;

/// Whether every curve has 0 < knot 1 < knot 2, so that slopes between its points are its gains.
bool saturation_knots_rise(const ColorImage& image);

/// A step, the name that its trace lines show and their switch.
struct TracedStep {
    BlockStep* run;
    const char* function;
    const char* switch_name;

    BlockTrace trace() const { return {function, switch_name}; }
};

struct Block {
    TracedStep by_lv;  ///< outdoor and normal image into a scratch image
    TracedStep by_ct;  ///< upper-CT and lower-CT image into the working image
    /// Null, or the condition under which a blend that gives an image all the weight gives back its
    /// block.
    bool (*comes_back)(const ColorImage& image) = nullptr;

    void run_by_lv(const ColorParam& param, const ColorImage& outdoor, const ColorImage& normal,
                   ColorImage& scratch) const {
        by_lv.run(by_lv.trace(), param, lv_blend(param), outdoor, normal, scratch);
    }

    void run_by_ct(const ColorParam& param, const ColorImage& upper, const ColorImage& lower,
                   ColorImage& working) const {
        by_ct.run(by_ct.trace(), param, ct_blend(param), upper, lower, working);
    }
};

inline constexpr Block kGlobalBlock{
    {blend_global, "InterParamByLVGlobal", "debug.smooth_color.lvdump.global"},
    {smooth_global, "InterParamGlobal", "debug.smooth_color.dump.global"}};
inline constexpr Block kLumaBlock{
    {blend_luma, "InterParamByLVPartialY", "debug.smooth_color.lvdump.lum"},
    {smooth_luma, "InterParamPartialY", "debug.smooth_color.dump.lum"}};
inline constexpr Block kHueBlock{
    {blend_hue, "InterParamByLVPartialH", "debug.smooth_color.lvdump.hue"},
    {smooth_hue, "InterParamPartialH", "debug.smooth_color.dump.hue"}};
inline constexpr Block kSaturationBlock{
    {blend_saturation, "InterParamByLVPartialS", "debug.smooth_color.lvdump.sat"},
    {smooth_saturation, "InterParamPartialS", "debug.smooth_color.dump.sat"},
    saturation_knots_rise};
inline constexpr Block kSaturationGainBlock{
    {blend_saturation_gain, "InterParamByLVSGainByY", "debug.smooth_color.lvdump.sgy"},
    {interpolate_saturation_gain, "InterParamSGainByY", "debug.smooth_color.dump.sgy"}};
inline constexpr Block kLspBlock{{blend_lsp, "InterParamByLVLSP", "debug.smooth_color.lvdump.lsp"},
                                 {interpolate_lsp, "InterParamLSP", "debug.smooth_color.dump.lsp"}};

}  // namespace imgtune

#endif
