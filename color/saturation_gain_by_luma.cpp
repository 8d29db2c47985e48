#include "color/block.h"

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
constexpr ByteRun<kLevelCount * kEntries, 44> kCurves;

void interpolate_block(const BlockTrace& trace, const Blend& blend, const ColorImage& high_image,
                       const ColorImage& low_image, ColorImage& out_image) {
    const auto high = kCurves.read(high_image);
    const auto low = kCurves.read(low_image);
    const auto out = blend_all(blend, high, low);
    kCurves.write(out_image, cut_to_bytes(out));
    if (!trace.details()) return;
    for (std::size_t k = 0; k < kLevelCount; ++k) {
        trace.row<kEntries>(kLevels[k].low, low, k * kEntries);
        trace.row<kEntries>(kLevels[k].high, high, k * kEntries);
        trace.row<kEntries>(kLevels[k].out, out, k * kEntries);
    }
}

}  // namespace

}  // namespace imgtune

void InterParamByLVSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& outdoor,
                            NSIspTuning::ISP_NVRAM_COLOR_T const& normal,
                            NSIspTuning::ISP_NVRAM_COLOR_T& scratch) {
    using namespace imgtune;
    const BlockTrace trace("InterParamByLVSGainByY", "debug.smooth_color.lvdump.sgy");
    trace.lv_header(param);
    interpolate_block(trace, lv_blend(param), outdoor, normal, scratch);
}

void InterParamSGainByY(ISP_SMOOTH_COLOR_PARAM_T& param,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                        NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                        NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParamSGainByY", "debug.smooth_color.dump.sgy");
    trace.header("[%s()] u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
                 as_signed(param.u4RealCT), as_signed(param.u4LowerCT), as_signed(param.u4UpperCT));
    interpolate_block(trace, ct_blend(param), upper, lower, working);
}
