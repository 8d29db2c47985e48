#include "color/block.h"

namespace imgtune {

namespace {

constexpr std::size_t kEntries = 20;

/// The curve of one luma level.
struct LevelCurve {
    ByteRun<kEntries> run;
    const char* low;
    const char* high;
    const char* out;
};

constexpr LevelCurve kLevels[] = {
    {{44},
     "[%s()] SGY0_Low : " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY0_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY0_Out : " IMGTUNE_20_VALUES "\n"},
    {{49},
     "[%s()] SGY64_Low : " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY64_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY64_Out : " IMGTUNE_20_VALUES "\n"},
    {{54},
     "[%s()] SGY128_Low : " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY128_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY128_Out : " IMGTUNE_20_VALUES "\n"},
    {{59},
     "[%s()] SGY192_Low : " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY192_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY192_Out : " IMGTUNE_20_VALUES "\n"},
    {{64},
     "[%s()] SGY256_Low : " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY256_High: " IMGTUNE_20_VALUES "\n",
     "[%s()] SGY256_Out : " IMGTUNE_20_VALUES "\n"},
};
constexpr std::size_t kLevelCount = sizeof(kLevels) / sizeof(kLevels[0]);

void interpolate_block(const BlockTrace& trace, const Blend& blend, const ColorImage& high_image,
                       const ColorImage& low_image, ColorImage& out_image) {
    struct Rows {
        Lanes<kEntries> low;
        Lanes<kEntries> high;
        Lanes<kEntries> out;
    } rows[kLevelCount];
    for (std::size_t k = 0; k < kLevelCount; ++k) {
        rows[k].high = kLevels[k].run.read(high_image);
        rows[k].low = kLevels[k].run.read(low_image);
        rows[k].out = blend_lanes(blend, rows[k].high, rows[k].low);
        kLevels[k].run.write(out_image, rows[k].out);
    }
    if (!trace.details()) return;
    for (std::size_t k = 0; k < kLevelCount; ++k) {
        trace.row<kEntries>(kLevels[k].low, rows[k].low);
        trace.row<kEntries>(kLevels[k].high, rows[k].high);
        trace.row<kEntries>(kLevels[k].out, rows[k].out);
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
