#include "color/parameters.h"

#include <gtest/gtest.h>

namespace imgtune {
namespace {

constexpr ISP_NVRAM_PCA_PARAM_T kTuning{.u4RatioHighLV = 24,
                                        .u4RatioMidLV = 16,
                                        .u4RatioLowLV = 9,
                                        .u4RatioLV_Th0 = 20,
                                        .u4RatioLV_Th1 = 40,
                                        .u4RatioLV_Th2 = 100,
                                        .u4RatioLV_Th3 = 110,
                                        .u4SatOffset = 0,
                                        .lum_speed = 8,
                                        .hue_speed = 9,
                                        .sat_speed = 10,
                                        .u4LSPMaxLV = 70,
                                        .u4OutdoorEnable = 1,
                                        .u4OutdoorLV_Start = 100,
                                        .u4OutdoorLV_End = 120,
                                        .u4PcaWord15 = 15,
                                        .u4OutdoorBase = 64};

TEST(Parameters, SaturationRatioFollowsTheLowByteOfTheLightValue) {
    const struct {
        std::uint32_t lv;
        std::uint32_t ratio;
    } cases[] = {
        {0, 9},    {19, 9},   {20, 9},   {22, 9},          {23, 10},  {39, 15},
        {40, 16},  {99, 16},  {100, 16}, {101, 16},        {102, 17}, {109, 23},
        {110, 24}, {255, 24}, {256, 9},  {0xffffffff, 24},
    };
    for (const auto& c : cases) EXPECT_EQ(saturation_ratio(kTuning, c.lv), c.ratio) << c.lv;
}

TEST(Parameters, FallingRampRoundsTowardItsStartAndEqualThresholdsJump) {
    ISP_NVRAM_PCA_PARAM_T tuning = kTuning;
    tuning.u4RatioLowLV = 16;
    tuning.u4RatioMidLV = 9;
    EXPECT_EQ(saturation_ratio(tuning, 22), 16U);
    EXPECT_EQ(saturation_ratio(tuning, 23), 15U);
    tuning.u4RatioLV_Th1 = tuning.u4RatioLV_Th0;
    EXPECT_EQ(saturation_ratio(tuning, 19), 16U);
    EXPECT_EQ(saturation_ratio(tuning, 20), 9U);
    tuning.u4RatioLowLV = 0xffffff05;  // only the low byte counts
    tuning.u4RatioLV_Th0 = 0x100 + 20;
    EXPECT_EQ(saturation_ratio(tuning, 19), 5U);
}

TEST(Parameters, OutdoorWeightRampsAndTheColourMapSwitchesAtTheMidpoint) {
    const struct {
        std::uint32_t lv, start, end, base, ratio;
        bool color_map;
    } cases[] = {
        {99, 100, 120, 64, 0, false},
        {100, 100, 120, 64, 0, false},
        {109, 100, 120, 64, 28, false},
        {110, 100, 120, 64, 32, true},
        {119, 100, 120, 64, 60, true},
        {120, 100, 120, 64, 64, true},
        {256 + 110, 100, 120, 64, 32, true},
        {99, 100, 100, 64, 0, false},
        {100, 100, 100, 64, 64, true},
        {100, 100, 90, 64, 64, true},
        {200, 100, 300, 0xffffffff, 21474835, true},
        {110, 100, 120, 0, 0, true},
        {9, 1, 0xffffffff, 64, 0, true},
    };
    for (const auto& c : cases) {
        ISP_NVRAM_PCA_PARAM_T tuning = kTuning;
        tuning.u4OutdoorLV_Start = c.start;
        tuning.u4OutdoorLV_End = c.end;
        tuning.u4OutdoorBase = c.base;
        EXPECT_EQ(outdoor_ratio(tuning, c.lv), c.ratio)
            << c.lv << " in " << c.start << ".." << c.end;
        EXPECT_EQ(takes_outdoor_map(tuning, c.lv), c.color_map)
            << c.lv << " in " << c.start << ".." << c.end;
    }
}

TEST(Parameters, EveryFieldComesFromItsOwnSource) {
    const FrameLight light{2, 3, 4000, 5000, 2500, 70};
    const ISP_SMOOTH_COLOR_PARAM_T param = derive_parameters(kTuning, light, true);
    EXPECT_EQ(param.IsBoot, 2U);
    EXPECT_EQ(param.IsCapture, 3U);
    EXPECT_EQ(param.LSPEnable, 1U);
    EXPECT_EQ(param.u4RealCT, 250U);
    EXPECT_EQ(param.u4UpperCT, 200U);
    EXPECT_EQ(param.u4LowerCT, 400U);
    EXPECT_EQ(param.lum_speed, 8U);
    EXPECT_EQ(param.hue_speed, 9U);
    EXPECT_EQ(param.sat_speed, 10U);
    EXPECT_EQ(param.u4PcaWord15, 15U);
    EXPECT_EQ(param.u4OutdoorBase, 64U);
    EXPECT_EQ(derive_parameters(kTuning, {0, 0, 0, 1000001, 1, 71}, true).LSPEnable, 0U);
    EXPECT_EQ(derive_parameters(kTuning, light, false).LSPEnable, 0U);
    EXPECT_EQ(to_mired(0), 0U);
    EXPECT_EQ(to_mired(1000001), 0U);
    EXPECT_EQ(to_mired(6), 166666U);
}

}  // namespace
}  // namespace imgtune
