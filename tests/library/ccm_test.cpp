#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ccm_caller.h"

namespace {

using imgtune::CoefficientCodec;
using namespace imgtune::callers;
using NSIspTuning::ISP_CCM_T_2D;
namespace fakes = imgtune::fakes;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST_F(Ccm, CodecReadsAndWritesFields) {
    const struct {
        int a, b;
        std::uint32_t field;
        std::int32_t decoded;
    } reads[] = {
        {3, 9, 4097, -4095}, {3, 9, 4096, 4096}, {3, 9, 8191, -1},  {2, 8, 1500, -548},
        {2, 8, 3000, 952},   {2, 8, 1024, 1024}, {35, 9, 8191, -1},  // shift counts are modulo 32
    };
    for (const auto& c : reads) {
        EXPECT_EQ(CoefficientCodec(c.a, c.b).decode(c.field), c.decoded) << c.field;
    }
    const struct {
        int a, b;
        std::int32_t coefficient;
        std::uint32_t field;
    } writes[] = {{3, 9, -4096, 4096}, {3, 9, 8200, 8}, {2, 8, -1, 2047}, {3, 9, -1, 8191}};
    for (const auto& c : writes) {
        EXPECT_EQ(CoefficientCodec(c.a, c.b).encode(c.coefficient) & 0x1fff, c.field);
    }
    ISP_NVRAM_CCM_T image;
    std::memset(&image, 0xff, sizeof(image));
    kCodec.encode(ISP_CCM_T{}, image);
    for (int w = 0; w < 6; ++w) EXPECT_EQ(image.u4Word[w], w % 2 ? 0xffffe000U : 0xe000e000U);
}

TEST_F(Ccm, PolynomialGainIsProjectedOnTheChord) {
    ISP_NVRAM_MULTI_CCM_STRUCT t = three_ct_tuning(1);
    const struct {
        AWB_GAIN_T gain, projected;
    } cases[] = {
        {{600, 512, 1500}, {600, 512, 1500}},  {{1200, 7, 900}, {1200, 512, 900}},
        {{1001, 512, 1300}, {900, 512, 1200}},  // 300.5 both ways
        {{1500, 512, 600}, {1500, 512, 600}},   // beyond the chord's end
        {{500, 512, 1600}, {500, 512, 1600}},
    };
    for (const auto& c : cases) {
        AWB_GAIN_T projected{};
        int position = 77;
        float ratios[2] = {7, 7};
        GainProjection(c.gain, t, projected, 1, ratios, 3, 0, &position);
        EXPECT_EQ(projected.i4R, c.projected.i4R) << c.gain.i4R;
        EXPECT_EQ(projected.i4G, 512);
        EXPECT_EQ(projected.i4B, c.projected.i4B) << c.gain.i4B;
        EXPECT_EQ(position, 77);
        EXPECT_EQ(ratios[0], 7);
    }
    t.rCTAWBGain[0][2] = t.rCTAWBGain[0][0];  // a chord of no length
    AWB_GAIN_T projected{};
    GainProjection({900, 512, 1200}, t, projected, 1, nullptr, 3, 0, nullptr);
    EXPECT_EQ(projected.i4R, 600);
    EXPECT_EQ(projected.i4B, 1500);
    projected = {1, 2, 3};
    GainProjection({900, 512, 1200}, t, projected, 3, nullptr, 3, 0, nullptr);
    EXPECT_EQ(projected.i4G, 2);
}

TEST_F(Ccm, CtPositionIsTheNearestTunedCtWithinItsLimits) {
    // Gains in hundreds, so that distances read off directly.
    using Point = std::pair<int, int>;
    const auto position_in_plane = [](std::initializer_list<Point> tuned, Point gain) {
        ISP_NVRAM_MULTI_CCM_STRUCT t{};
        int j = 0;
        for (const auto& [r, b] : tuned) t.rCTAWBGain[0][j++] = {r * 100, 0, b * 100};
        AWB_GAIN_T projected{};
        float ratios[2];
        int position = 99;
        GainProjection({gain.first * 100, 512, gain.second * 100}, t, projected, 2, ratios,
                       static_cast<int>(tuned.size()), 0, &position);
        return position;
    };
    const auto position_of = [&](std::array<int, 5> reds, int red) {
        return position_in_plane(
            {{reds[0], 50}, {reds[1], 50}, {reds[2], 50}, {reds[3], 50}, {reds[4], 50}}, {red, 50});
    };
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 0), -1);
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 160), 15);
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 1), 1);    // nearest 0 moves inside
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 159), 3);  // nearest N - 1 moves inside
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 81), 2);
    EXPECT_EQ(position_of({0, 40, 81, 120, 160}, 68), 1);  // 13 is not closer than 28 - 15
    EXPECT_EQ(position_of({0, 40, 80, 120, 160}, 68), 2);  // 12 is closer than 28 - 15
    EXPECT_EQ(position_of({-120, 0, 30, 50, 300}, 1), 1);  // 121 is too far, 1 is near
    EXPECT_EQ(position_of({0, 10, 12, 14, 300}, 16), 1);   // nearest 0, coarse 4: one step
    // The nearest index is pulled one step toward the coarse one, from above and from below.
    EXPECT_EQ(position_in_plane({{4, 36}, {9, 32}, {39, 34}, {48, 56}, {76, 3}}, {72, 33}), 3);
    EXPECT_EQ(position_in_plane({{2, 4}, {27, 6}, {38, 14}, {47, 55}, {64, 22}}, {26, 57}), 2);
}

TEST_F(Ccm, BlendRatiosComeFromProjectedAndUnprojectedDistances) {
    ISP_NVRAM_MULTI_CCM_STRUCT t = three_ct_tuning(2);
    AWB_GAIN_T projected{1, 2, 3};
    float ratios[2];
    int position;
    GainProjection({900, 512, 1200}, t, projected, 2, ratios, 3, 0, &position);
    EXPECT_EQ(position, 1);
    EXPECT_FLOAT_EQ(ratios[0], 0.49941143f);  // 3 sqrt 2 / (6 sqrt 2 + 0.01)
    EXPECT_EQ(ratios[1], 0.0f);
    EXPECT_EQ(projected.i4G, 2);
    GainProjection({1000, 512, 1300}, t, projected, 2, ratios, 3, 0, &position);
    EXPECT_FLOAT_EQ(ratios[1], 0.49823847f);  // sqrt 2 / (2 sqrt 2 + 0.01), both off the chord
    GainProjection({600, 512, 1300}, t, projected, 2, ratios, 3, 0, &position);
    EXPECT_EQ(position, -1);
    EXPECT_EQ(ratios[0], 1.0f);
    EXPECT_EQ(ratios[1], 1.0f);
}

// Distances and their sums are rounded to single precision before the ratios are formed; left
// unrounded, every one of these would differ in its last bit.
TEST_F(Ccm, DistancesAreRoundedToSinglePrecision) {
    const struct {
        int red, blue;
        float coarse, fine;
    } cases[] = {
        {1060, 1280, 0x1.21cab6p-1f, 0x1.05fd6cp-1f},
        {1081, 1339, 0x1.1198fcp-1f, 0x1.008756p-1f},
        {940, 1084, 0x1.422e2ap-1f, 0x1.620d12p-1f},
        {961, 1303, 0x1.db997ap-2f, 0x1.02f768p-1f},
    };
    ISP_NVRAM_MULTI_CCM_STRUCT t = three_ct_tuning(2);
    for (const auto& c : cases) {
        float ratios[2];
        int position = 0;
        AWB_GAIN_T unused{};
        GainProjection({c.red, 512, c.blue}, t, unused, 2, ratios, 3, 0, &position);
        EXPECT_EQ(ratios[0], c.coarse) << c.red;
        EXPECT_EQ(ratios[1], c.fine) << c.red;
    }
}

TEST_F(Ccm, PolynomialEvaluatesTermByTerm) {
    ISP_NVRAM_MULTI_CCM_STRUCT t = three_ct_tuning(1);
    ISP_CCM_POLY22_T& p = t.rCCMPoly22;
    p = {.i4R_AVG = 90000,
         .i4R_STD = 10000,
         .i4B_AVG = 120000,
         .i4B_STD = 5000,
         .i4Reserved = {},
         .i4P00 = {9, -1500000, 255000, 9999, 0, -9999, 10000, 20000, 1},
         .i4P10 = {0, 100000, 0, 0, 0, 0, 5000, 0, 1},
         .i4P01 = {0, 0, -20000, 0, 0, 0, 0, 15000, 1}};
    t.rCCMPoly22Flash = p;
    t.rCCMPoly22Flash.i4P00[1] = 70000;
    auto table = std::make_unique<ISP_CCM_T_2D>();
    const auto at = [&](AWB_GAIN_T gain, int flash, int frac_bits) {
        ISP_CCM_T out = imgtune::kIdentity;
        Interpolation(gain, 3, frac_bits, t, *table, flash, out, nullptr, 1, 0, 0, 3);
        return out;
    };
    // nr = nb = 0; then nr = 1, nb = -2; values are truncated toward zero
    expect_matrix(at({900, 512, 1200}, 0, 9), matrix_of(-150, 25, 0, 0, 1, 2), "at the mean");
    expect_matrix(at({1000, 512, 1100}, 0, 9), matrix_of(-140, 29, 0, 0, 1, -1), "off the mean");
    expect_matrix(at({900, 512, 1200}, 1, 10), matrix_of(7, 25, 0, 0, 1, 2, 1024), "flash");
    // A zero deviation: 100 / 0 is infinite, infinity times 0 is NaN, which truncates to 0.
    p.i4R_STD = 0;
    expect_matrix(at({1000, 512, 1200}, 0, 9), matrix_of(0, 0, 0, 0, 0, 0), "no deviation");

    float one[9], zero[9] = {}, huge[9];
    for (float& v : one) v = 1.5f;
    for (float& v : huge) v = 3e9f;
    ISP_CCM_T out;
    GenCCM({1024, 512, 512}, 0, 0, 512, 512, 512, 256, 512, zero, zero, zero, one, one, one, out);
    expect_matrix(out, matrix_of(6, 6, 6, 6, 6, 6), "nr = 2, nb = 0: only P20 counts");
    GenCCM({1, 0, 1}, 0, 0, 512, 0, 0, 1, 1, zero, one, zero, zero, zero, zero, out);
    expect_matrix(out, matrix_of(0, 0, 0, 0, 0, 0), "zero green");
    GenCCM({1, 1, 1}, 0, 0, 512, 512, 512, 1, 1, huge, zero, zero, zero, zero, zero, out);
    EXPECT_EQ(out.i4Coef[1], std::numeric_limits<std::int32_t>::max());
}

TEST_F(Ccm, BlendMixesTheThreeCtsAroundThePosition) {
    auto table = std::make_unique<ISP_CCM_T_2D>();
    for (int ct = 0; ct < 8; ++ct) {
        constexpr int kC1[8] = {100, 50, 200, -7, 9, 11, 13, 15};
        for (int k = 0; k < 9; ++k) table->i4Plane[k][2][ct] = k == 1 ? kC1[ct] : 0;
    }
    const struct {
        float coarse, fine;
        int position, count, c1;
    } cases[] = {
        {0.5f, 0.0f, 1, 5, 50},
        {0.5f, 1.0f, 1, 5, 150},
        {0.25f, 0.5f, 1, 5, 87},
        {0.0f, 1.0f, 1, 5, 100},
        {1.0f, 1.0f, 1, 5, 200},
        {0.5f, 0.5f, -1, 5, 100},
        {0.5f, 0.5f, 15, 5, 9},
        {0.5f, 0.5f, 10, 3, 200},
        {0.3f, 0.9f, 3, 5, 127},
        {0.5f, 0.5f, 10, 0, 100},
        {0.5f, 0.5f, 10, 99, 15},
        {0.5f, 1.0f, 9, 5, 15},
        {0.5f, 1.0f, std::numeric_limits<int>::min(), 5, 100},
        {kNan, kNan, 1, 5, 0},
    };
    for (const auto& c : cases) {
        float ratios[2] = {c.coarse, c.fine};
        ISP_CCM_T out;
        BlendCCM(ratios, *table, out, c.position, 2, c.count);
        expect_matrix(out, matrix_of(c.c1, 0, 0, 0, 0, 0));
        AWB_GAIN_T unused{};
        ISP_NVRAM_MULTI_CCM_STRUCT t{};
        Interpolation(unused, 3, 10, t, *table, 0, out, ratios, 2, 2, c.position, c.count);
        EXPECT_EQ(out.i4Coef[0], 1024 - c.c1);
    }
}

TEST_F(Ccm, GainIsClippedInOrder) {
    const struct {
        AWB_GAIN_T gain;
        const char* clips;  // L: low line, H: high line
        AWB_GAIN_T clipped;
    } cases[] = {
        {{900, 512, 1200}, "", {900, 512, 1200}},   {{500, 512, 1600}, "L", {600, 512, 1500}},
        {{500, 512, 1400}, "L", {600, 512, 1400}},  {{1300, 512, 800}, "H", {1200, 512, 900}},
        {{1300, 512, 1000}, "H", {1200, 512, 900}}, {{500, 512, 800}, "LH", {1200, 512, 900}},
        {{1300, 512, 1600}, "L", {600, 512, 1500}}, {{-1, -2, -3}, "LH", {1200, -2, 900}},
    };
    for (const auto& c : cases) {
        CcmCaller caller(0);
        caller.state.rAWBGain = c.gain;
        fakes::reset_with({"debug.smooth_ccm.enable"});
        caller.run();
        std::string clips;
        for (const auto& line : fakes::log_lines) {
            if (line.text == "Clipped low R B full Gain \n") clips += 'L';
            if (line.text == "Clipped high R B full Gain \n") clips += 'H';
        }
        EXPECT_EQ(clips, c.clips) << c.gain.i4R << ", " << c.gain.i4B;
        char expected[80];
        std::snprintf(expected, sizeof(expected), "Clipped AWB full Gain = (%d, %d, %d)\n",
                      c.clipped.i4R, c.clipped.i4G, c.clipped.i4B);
        EXPECT_NE(fakes::log_text().find(expected), std::string::npos) << expected;
    }
}

TEST_F(Ccm, TunedMatricesAreLoggedUnderLiteralFormats) {
    CcmCaller caller(0);
    fakes::reset_with({"debug.smooth_ccm.enable"});
    caller.run();
    std::vector<std::string> formats;
    for (const auto& line : fakes::log_lines) {
        if (line.format.rfind("LV_", 0) == 0) formats.push_back(line.format);
    }
    ASSERT_EQ(formats.size(), 24U);
    EXPECT_EQ(formats[0], "LV_00_CT0_rCCM_Nvram = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n");
    EXPECT_EQ(formats[15], "LV_01_CT7_rCCM_Nvram = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n");
    EXPECT_EQ(formats[22], "LV_06_CT6_rCCM_Nvram = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n");
}

TEST_F(Ccm, RwbSeparationScalesAndLimits) {
    const struct {
        float ratio;
        std::uint32_t f1, f2, out0, out1, out2;
    } cases[] = {
        {1.0f, 100, 50, 362, 100, 50},    {0.0f, 100, 50, 512, 0, 0},
        {-1.0f, 100, 50, 512, 0, 0},      {kNan, 100, 50, 512, 0, 0},
        {2.0f, 3000, 0, 2704, 4095, 0},   {0.5f, 8092, 0, 4095, 4046, 0},
        {1.0f, 400, 300, 4095, 400, 300}, {1e30f, 1, 0, 513, 4095, 0},
    };
    for (const auto& c : cases) {
        ISP_NVRAM_CCM_T image{};
        for (auto& w : image.u4Word) w = 0xe000e000U;
        imgtune::kCoefficientFields[1].write(image.u4Word, c.f1);
        imgtune::kCoefficientFields[2].write(image.u4Word, c.f2);
        seperate_RWB_CCM_by_ratio(&image, c.ratio, 3, 9);
        EXPECT_EQ(image.u4Word[0], 0xe000e000U | c.out1 << 16 | c.out0) << c.ratio;
        EXPECT_EQ(image.u4Word[1], 0xe000e000U | c.out2) << c.ratio;
        EXPECT_EQ(image.u4Word[2], 0xe000e000U | 512U << 16);
        EXPECT_EQ(image.u4Word[5], 0xe000e000U | 512U);
    }
    ISP_NVRAM_CCM_T image{};  // the last field is limited, too: 512 - 300 - 300
    image.u4Word[4] = 300U | 300U << 16;
    seperate_RWB_CCM_by_ratio(&image, 1.0f, 3, 9);
    EXPECT_EQ(image.u4Word[5], 4095U);
}

}  // namespace
