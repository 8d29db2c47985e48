#include "color/blocks.h"

namespace imgtune {

namespace {

constexpr std::size_t kEntries = 20;

/// The lines of one luma level's curve.
struct LevelFormats {
    const char* low;
    const char* high;
    const char* out;
};

constexpr LevelFormats kLevels[] = {
    {"[%s()] SGY0_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SGY0_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY0_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SGY64_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SGY64_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY64_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SGY128_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SGY128_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY128_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SGY192_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SGY192_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY192_Out : " IMGTUNE_20_VALUES "\n"},
    {"[%s()] SGY256_Low : " IMGTUNE_20_VALUES "\n", "[%s()] SGY256_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY256_Out : " IMGTUNE_20_VALUES "\n"},
};
constexpr std::size_t kLevelCount = sizeof(kLevels) / sizeof(kLevels[0]);

// SGY0, SGY64, SGY128, SGY192, SGY256, one after the other.
constexpr ByteRun<kLevelCount * kEntries, 44> kLevelBytes;

template <class Kind, class Trace>
void blend_curves(const Trace& trace, Kind kind, const ColorImage& high_image,
                  const ColorImage& low_image, ColorImage& out_image) {
    const auto high = kLevelBytes.read(high_image);
    const auto low = kLevelBytes.read(low_image);
    const KeptInputs kept(trace, high, low);
    const auto out = kind(high, low);
    kLevelBytes.write(out_image, cut_to_bytes(out));
    if (!trace.details()) return;
    for (std::size_t k = 0; k < kLevelCount; ++k) {
        trace_row<kEntries>(trace, kLevels[k].low, kept.low, k * kEntries);
        trace_row<kEntries>(trace, kLevels[k].high, kept.high, k * kEntries);
        trace_row<kEntries>(trace, kLevels[k].out, out, k * kEntries);
    }
}

}  // namespace

void blend_saturation_gain(const BlockTrace& block_trace, const ColorParam& param,
                           const FrameBlend& blend, const ColorImage& outdoor,
                           const ColorImage& normal, ColorImage& scratch) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.lv_header(param);
        blend_curves(trace, kind, outdoor, normal, scratch);
    });
}

void interpolate_saturation_gain(const BlockTrace& block_trace, const ColorParam& param,
                                 const FrameBlend& blend, const ColorImage& upper,
                                 const ColorImage& lower, ColorImage& working) {
    blend.apply(block_trace, [&](auto kind, const auto& trace) {
        trace.header("[%s()] u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
                     as_signed(param.u4RealCT), as_signed(param.u4LowerCT),
                     as_signed(param.u4UpperCT));
        blend_curves(trace, kind, upper, lower, working);
    });
}

}  // namespace imgtune

void InterParamByLVSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    imgtune::kSaturationGainBlock.run_by_lv(param, outdoor, normal, scratch);
}

void InterParamSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    imgtune::kSaturationGainBlock.run_by_ct(param, upper, lower, working);
}
