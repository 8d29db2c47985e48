#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/platform_fakes.h"

namespace {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Param = ISP_SMOOTH_COLOR_PARAM_T;
using BlockFunction = void (*)(Param&, const Image&, const Image&, Image&);
namespace fakes = imgtune::fakes;

constexpr std::uint32_t kStay = 0;

/// High and Low image count half each between 150 and 350 mired, and by 16 of 64 outdoors.
Param half_way() {
    Param p{};
    p.u4Ratio = 16;
    p.u4RealCT = 250;
    p.u4UpperCT = 150;
    p.u4LowerCT = 350;
    p.lum_speed = p.sat_speed = p.hue_speed = 6;
    p.u4OutdoorBase = 64;
    p.u4OutdoorRatio = 16;
    return p;
}

Param at_once(Param p) {
    p.IsCapture = 1;
    return p;
}

Image filled(std::uint32_t word) {
    Image image;
    for (auto& w : image.u4Word) w = word;
    return image;
}

unsigned byte_of(const Image& image, unsigned word, unsigned byte) {
    return image.u4Word[word] >> 8 * byte & 0xff;
}

TEST(ColorScalars, FollowTheirRules) {
    const struct {
        int x, p, q, vp, vq, by_ct, unguarded;
    } by_ct[] = {
        {300, 200, 250, 10, 20, 30, 30},
        {220, 200, 250, 10, 20, 14, 14},
        {200, 200, 250, 10, 20, 10, 10},
        {250, 200, 250, 10, 20, 20, 20},
        {0, 200, 250, 10, 20, 20, -30},
        {220, 250, 250, 10, 20, 20, 0},
        {220, 0, 250, 10, 20, 20, 18},
        {3, 1, 3, -7, 0, 0, 0},
        {2, 1, 3, -7, 0, -3, -3},
        {2, 3, 1, -7, 0, -3, -3},
        {1, 2, 1, 5, -2147483647 - 1, -2147483647 - 1, -2147483647 - 1},
    };
    for (const auto& c : by_ct) {
        EXPECT_EQ(InterParamByCT(c.x, c.p, c.q, c.vp, c.vq), c.by_ct) << c.x << " " << c.p;
        EXPECT_EQ(InterParam_PCA(c.x, c.p, c.q, c.vp, c.vq), c.unguarded) << c.x << " " << c.p;
    }
    const struct {
        int ratio, base, outdoor, normal, value;
    } by_lv[] = {{0, 16, 99, 7, 7},
                 {16, 16, 99, 7, 99},
                 {8, 16, 99, 7, 53},
                 {5, 0, 99, 7, 0},
                 {1, -1, 0, 1, 2},
                 {32, 16, 10, 20, 0},
                 {0, -1, 9, -2147483647 - 1, -2147483647 - 1}};
    for (const auto& c : by_lv) {
        EXPECT_EQ(InterParamByLV(c.ratio, c.base, c.outdoor, c.normal), c.value) << c.ratio;
    }
    const struct {
        unsigned previous, target, step, next;
    } iir[] = {{10, 20, 3, 13},
               {20, 10, 3, 17},
               {10, 12, 3, 12},
               {10, 20, 0, 10},
               {7, 7, 0, 7},
               {0, 0x80000000U, 5, 5},
               {0x80000000U, 0, 0x7fffffffU, 1},
               {5, 0xfffffff0U, 30, 0xfffffff0U},
               {5, 0xfffffff0U, 20, 25},
               {0, 9, ~0U, 9}};
    for (const auto& c : iir) {
        EXPECT_EQ(IIR(c.previous, c.target, c.step), c.next) << c.previous << " " << c.target;
    }
    EXPECT_EQ(Clip(5, 20, 10), 10U);
    EXPECT_EQ(Clip(25, 10, 20), 20U);
    EXPECT_EQ(Clip(static_cast<unsigned>(-10), 10, 20), 20U);
    EXPECT_EQ(IsCCTBoundary(3, 5, 5), 1);
    EXPECT_EQ(IsCCTBoundary(0, 5, 6), 1);
    EXPECT_EQ(IsCCTBoundary(3, 5, 6), 0);
}

TEST(ColorBlocks, GlobalIsScaledOffsetAndSteppedButNotClamped) {
    fakes::reset();
    Image high = filled(0), low = filled(0), working = filled(0xffffffff);
    high.u4Word[4] = 300U << 16 | 100;  // B, C
    low.u4Word[4] = 200U << 16 | 50;
    high.u4Word[5] = 100;  // S
    low.u4Word[5] = 400;

    Param p = at_once(half_way());
    InterParamGlobal(p, high, low, working);
    EXPECT_EQ(working.u4Word[4], 0xf800fc00U | 250U << 16 | 75);
    EXPECT_EQ(working.u4Word[5], 0xfffffc00U | 250);

    p.u4UpperCT = p.u4LowerCT;  // the Low image, then 24 / 16 and 10 more
    p.u4Ratio = 24;
    p.u4SatOffset = 10;
    InterParamGlobal(p, high, low, working);
    EXPECT_EQ(working.u4Word[5] & 0x3ff, 610U);

    p = at_once(half_way());
    p.u4RealCT = 550;  // beyond the bracket: B 100, C 0, S 700; then S 1400 loses its high bit
    p.u4Ratio = 32;
    InterParamGlobal(p, high, low, working);
    EXPECT_EQ(working.u4Word[4], 0xf800fc00U | 100U << 16);
    EXPECT_EQ(working.u4Word[5] & 0x3ff, 1400U - 1024);

    p = half_way();
    p.lum_speed = 8;
    p.sat_speed = 3;
    for (const std::uint32_t boot : {0U, 2U}) {  // only 1 skips the step
        p.IsBoot = boot;
        working.u4Word[4] = 200U << 16 | 80;
        working.u4Word[5] = 240;
        InterParamGlobal(p, high, low, working);
        EXPECT_EQ(working.u4Word[4], 208U << 16 | 75) << boot;
        EXPECT_EQ(working.u4Word[5], 243U) << boot;
    }
    InterParamByLVGlobal(p, high, low, working);
    EXPECT_EQ(working.u4Word[4], 225U << 16 | 62);
    EXPECT_EQ(working.u4Word[5], 325U);
}

TEST(ColorBlocks, LumaIsClampedSteppedAndKeepsTheBytesBetween) {
    fakes::reset();
    const struct {
        unsigned real, high, low, previous, speed, next;
    } cases[] = {
        {220, 100, 50, 80, kStay, 80},  // (30 * 100 + 20 * 50) / 50
        {300, 100, 50, 0, 255, 50},     // 0 clamps to 50
        {300, 200, 10, 0, 255, 200},    // -180 is a large unsigned value
        {220, 100, 50, 60, 6, 66},     {220, 100, 50, 60, 0, 60}, {220, 100, 50, 79, 6, 80},
        {220, 100, 50, 255, 6, 249},   {0, 100, 50, 50, 0, 50},
    };
    for (const auto& c : cases) {
        Param p = half_way();
        p.u4UpperCT = 200;
        p.u4LowerCT = 250;
        p.u4RealCT = c.real;
        p.lum_speed = c.speed;
        const Image high = filled(c.high | c.high << 16), low = filled(c.low | c.low << 16);
        Image working = filled(0xab00cd00U | c.previous | c.previous << 16);
        InterParamPartialY(p, high, low, working);
        for (unsigned w = 6; w <= 13; ++w) {
            EXPECT_EQ(working.u4Word[w], 0xab00cd00U | c.next | c.next << 16) << c.real;
        }
        EXPECT_EQ(working.u4Word[5], working.u4Word[14]);
    }
}

TEST(ColorBlocks, HueTreatsAllTwentyAlikeAndHasNoWrapAround) {
    fakes::reset();
    const Image high = filled(128U << 24 | 10U << 16 | 200U << 8 | 250);
    const Image low = filled(128U << 24 | 20U << 16 | 100U << 8 | 5);
    Param p = half_way();
    Image working = filled(0U << 24 | 15U << 16 | 140U << 8 | 120);
    InterParamPartialH(p, high, low, working);
    for (unsigned w = 14; w <= 18; ++w) {
        EXPECT_EQ(working.u4Word[w], 6U << 24 | 15U << 16 | 146U << 8 | 126);
    }
    p = at_once(p);
    p.u4RealCT = 450;  // -117 clamps to the larger source, 50 to the smaller
    InterParamPartialH(p, high, low, working);
    EXPECT_EQ(working.u4Word[18], 128U << 24 | 20U << 16 | 100U << 8 | 250);

    p.u4OutdoorRatio = 128;  // 495 and 300 lose their high bits
    InterParamByLVPartialH(p, high, low, working);
    EXPECT_EQ(working.u4Word[18], 128U << 24 | 0U << 16 | 44U << 8 | 239);
}

/// Every curve of the block the same.
Image curves(unsigned sp1, unsigned sp2, unsigned sg1, unsigned sg2, unsigned sg3) {
    Image image = filled(0x5a5a5a5a);
    const unsigned values[5] = {sg1, sg2, sg3, sp1, sp2};
    for (unsigned w = 19; w <= 43; ++w) image.u4Word[w] = values[(w - 19) / 5] * 0x01010101U;
    return image;
}

std::vector<unsigned> curve_of(const Image& image) {
    return {byte_of(image, 38, 3), byte_of(image, 43, 3), byte_of(image, 23, 3),
            byte_of(image, 28, 3), byte_of(image, 33, 3)};
}

TEST(ColorBlocks, SaturationBlendsKnotsAndLevelsAndDerivesTheGains) {
    fakes::reset();
    using Curve = std::vector<unsigned>;  // SP1, SP2, SG1, SG2, SG3
    const Image high = curves(64, 128, 100, 80, 60), low = curves(32, 96, 120, 100, 40);
    const auto by_lv = [](Param p, const Image& h, const Image& l) {
        Image out = filled(0xffffffff);
        InterParamByLVPartialS(p, h, l, out);
        return curve_of(out);
    };
    const auto by_ct = [](Param p, const Image& h, const Image& l, const Image& previous) {
        Image out = previous;
        InterParamPartialS(p, h, l, out);
        return curve_of(out);
    };
    Param p = half_way();
    EXPECT_EQ(by_lv(p, high, low), (Curve{40, 104, 112, 95, 45}));
    p.sat_speed = 4;
    EXPECT_EQ(by_ct(p, high, low, curves(9, 9, 110, 95, 50)), (Curve{48, 112, 106, 91, 50}));
    p.sat_speed = 0;
    EXPECT_EQ(by_ct(p, high, low, curves(9, 9, 110, 95, 7)), (Curve{48, 112, 110, 95, 7}));

    p.u4OutdoorRatio = 128;  // extrapolation
    EXPECT_EQ(by_lv(p, high, low), (Curve{96, 160, 93, 60, 80}));
    p.u4OutdoorBase = 0;
    EXPECT_EQ(by_lv(p, high, low), (Curve{0, 0, 0, 0, 0}));

    // Knots out of order: the position difference wraps, the quotient is 0; the clamp lifts it.
    const Image crossed_high = curves(64, 40, 100, 80, 60),
                crossed_low = curves(32, 20, 120, 100, 40);
    p = half_way();
    EXPECT_EQ(by_lv(p, crossed_high, crossed_low)[3], 0U);
    EXPECT_EQ(by_ct(at_once(p), crossed_high, crossed_low, low)[3], 80U);

    p = at_once(half_way());
    p.u4UpperCT = p.u4LowerCT;
    EXPECT_EQ(by_ct(p, high, low, high), (Curve{32, 96, 120, 100, 40}));
    EXPECT_EQ(by_ct(p, high, curves(0, 96, 120, 100, 40), high), (Curve{0, 96, 100, 100, 40}));
}

TEST(ColorBlocks, ColourMapIsTakenWholeFromOneSide) {
    fakes::reset();
    const Image high = filled(0x0f0f0f0f), low = filled(0xf0f0f0f0);
    const struct {
        std::uint32_t real, upper, lower;
        bool takes_high;
    } cases[] = {
        {250, 150, 350, true},
        {249, 150, 350, false},
        {250, 150, 351, true},
        {250, 350, 150, true},
        {0, 0, 0, true},
        {249, 250, 250, false},
        {0x7fffffff, 0xffffffff, 1, true},  // the sum wraps to 0
    };
    for (const auto& c : cases) {
        Param p{};
        p.u4RealCT = c.real;
        p.u4UpperCT = c.upper;
        p.u4LowerCT = c.lower;
        const Image before = filled(0xffffffff);
        Image working = before;
        InterParam3DLUT(p, high, low, working);
        const std::uint32_t source = c.takes_high ? 0x0f0f0f0f : 0xf0f0f0f0;
        const auto mixed = [source](std::uint32_t mask) { return (source & mask) | ~mask; };
        EXPECT_EQ(working.u4Word[70], 0xffffffffU);
        EXPECT_EQ(working.u4Word[71], mixed(0x000037ff)) << c.real;
        for (unsigned k = 72; k <= 112; k += 5) {
            EXPECT_EQ(working.u4Word[k], mixed(0x3fffffff)) << k;
            EXPECT_EQ(working.u4Word[k + 1], mixed(0x3fffffff)) << k;
            EXPECT_EQ(working.u4Word[k + 2], mixed(0x0ff3ffff)) << k;
            EXPECT_EQ(working.u4Word[k + 3], source) << k;
            EXPECT_EQ(working.u4Word[k + 4], mixed(0x03ff03ff)) << k;
        }
    }
}

const struct {
    const char* name;
    BlockFunction function;
    const char* property;
    int detail_lines;
} kBlocks[] = {
    {"InterParamByLVGlobal", InterParamByLVGlobal, "debug.smooth_color.lvdump.global", 4},
    {"InterParamGlobal", InterParamGlobal, "debug.smooth_color.dump.global", 4},
    {"InterParamByLVPartialY", InterParamByLVPartialY, "debug.smooth_color.lvdump.lum", 4},
    {"InterParamPartialY", InterParamPartialY, "debug.smooth_color.dump.lum", 4},
    {"InterParamByLVPartialH", InterParamByLVPartialH, "debug.smooth_color.lvdump.hue", 4},
    {"InterParamPartialH", InterParamPartialH, "debug.smooth_color.dump.hue", 4},
    {"InterParamByLVPartialS", InterParamByLVPartialS, "debug.smooth_color.lvdump.sat", 21},
    {"InterParamPartialS", InterParamPartialS, "debug.smooth_color.dump.sat", 21},
    {"InterParamByLVSGainByY", InterParamByLVSGainByY, "debug.smooth_color.lvdump.sgy", 15},
    {"InterParamSGainByY", InterParamSGainByY, "debug.smooth_color.dump.sgy", 15},
    {"InterParamByLVLSP", InterParamByLVLSP, "debug.smooth_color.lvdump.lsp", 6},
    {"InterParamLSP", InterParamLSP, "debug.smooth_color.dump.lsp", 6},
    {"InterParam3DLUT", InterParam3DLUT, "debug.smooth_color.dump.cm", 13},
};

TEST(ColorBlocks, SwitchOneLogsDetailsOthersTheHeaderOnly) {
    const Image image = filled(0x01020304);
    for (const auto& block : kBlocks) {
        const std::string longest = std::string(90, ' ') + "1";  // all that the device gives
        for (const auto& [value, lines] : {std::pair<std::string, int>{"0", 0},
                                           {"2", 1},
                                           {"-1", 1},
                                           {"1", 1 + block.detail_lines},
                                           {longest, 1 + block.detail_lines}}) {
            fakes::reset();
            fakes::properties[block.property] = value;
            Param p = half_way();
            Image out = image;
            block.function(p, image, image, out);
            EXPECT_EQ(fakes::log_lines.size(), static_cast<std::size_t>(lines)) << block.name;
            EXPECT_EQ(fakes::property_reads, std::vector<std::string>{block.property});
            for (const auto& line : fakes::log_lines) {
                EXPECT_EQ(line.text.find("[" + std::string(block.name) + "()] "), 0U) << line.text;
            }
        }
    }
}

Image random_image(std::mt19937& random) {
    Image image;
    for (auto& w : image.u4Word) w = static_cast<std::uint32_t>(random());
    return image;
}

/// Weights on both sides of every limit up to which a blend is narrow: (weight, full scale).
constexpr std::uint32_t kShares[][2] = {{0, 1},
                                        {1, 1},
                                        {2, 1},
                                        {0, 50},
                                        {1, 50},
                                        {49, 50},
                                        {50, 50},
                                        {51, 50},
                                        {~0U, 50},
                                        {0, 8192},
                                        {8191, 8192},
                                        {8192, 8192},
                                        {8193, 8192},
                                        {0, 8193},
                                        {4000, 8193},
                                        {8193, 8193},
                                        {0, 0},
                                        {5, 0},
                                        {3, ~0U},
                                        {7, 1U << 31},
                                        {100, 255},
                                        {128, 257},
                                        {123456, 1U << 20}};

/// Knots apart, equal or falling, gains and everything else of all sizes.
Image limit_image(std::mt19937& random) {
    Image image = random_image(random);
    auto* bytes = reinterpret_cast<unsigned char*>(image.u4Word);
    const unsigned style = random() % 4;
    for (unsigned j = 0; j < 20; ++j) {
        unsigned char &first = bytes[34 * 4 + j], &second = bytes[39 * 4 + j];
        if (style < 3 && first > second) std::swap(first, second);
        if (style == 1 && random() % 4 == 0) first = second;
        if (style == 2) first = static_cast<unsigned char>(j), second = 255;
    }
    if (style == 3 && random() % 2 == 0) {
        for (auto& w : image.u4Word) w = random() % 2 == 0 ? 0xffffffff : 0;
    }
    return image;
}

// A call that logs blends by the plain rule; one that does not takes whatever way is quickest.
TEST(ColorBlocks, LoggingChangesNoResultOnEitherSideOfAnyLimit) {
    std::mt19937 random(31);
    for (const auto& block : kBlocks) {
        for (int round = 0; round < 40; ++round) {
            for (const auto& share : kShares) {
                Param p = half_way();
                p.u4OutdoorRatio = share[0];
                p.u4OutdoorBase = share[1];
                p.u4UpperCT = 1 + static_cast<std::uint32_t>(random()) % 300;
                p.u4LowerCT = p.u4UpperCT + share[1];
                p.u4RealCT = p.u4LowerCT - share[0];
                p.IsBoot = static_cast<std::uint32_t>(random()) % 2;
                p.LSPEnable = static_cast<std::uint32_t>(random()) % 2;
                p.hue_speed = static_cast<std::uint32_t>(random()) % 300;
                const Image high = limit_image(random), low = limit_image(random);
                const Image before = random_image(random);
                Image silent = before, logged = before;
                fakes::reset();
                block.function(p, high, low, silent);
                fakes::properties[block.property] = "2";
                block.function(p, high, low, logged);
                ASSERT_EQ(std::memcmp(&silent, &logged, sizeof(silent)), 0)
                    << block.name << " " << share[0] << " of " << share[1];
            }
        }
    }
}

std::string traced(BlockFunction function, const char* property, Param p, const Image& high,
                   const Image& low, Image working) {
    fakes::reset_with({property});
    function(p, high, low, working);
    return fakes::log_text();
}

TEST(ColorTraces, ShowValuesBeforeTheyAreCut) {
    Param p = half_way();
    Image high = filled(0), low = filled(0), working = filled(0);
    high.u4Word[4] = 7U << 16 | 1;
    low.u4Word[4] = 5U << 16 | 1023;
    high.u4Word[5] = 9;
    low.u4Word[5] = 1023;
    p.u4RealCT = 550;
    p.sat_speed = 5;
    EXPECT_EQ(traced(InterParamGlobal, "debug.smooth_color.dump.global", p, high, low, working),
              "[InterParamGlobal()] IsCapture = 0, lum_speed =6, sat_speed = 5, u4RealCT = 550, "
              "u4LowerCT = 350, u4UpperCT = 150\n"
              "[InterParamGlobal()] (Low)  B:005,C:1023,S:1023\n"
              "[InterParamGlobal()] (High) B:007,C:1,S:009\n"
              "[InterParamGlobal()] (Tgt)  B:003,C:2045,S:2037\n"
              "[InterParamGlobal()] (Out)  B:003,C:6,S:005\n");
    p.u4OutdoorRatio = 128;
    EXPECT_EQ(
        traced(InterParamByLVGlobal, "debug.smooth_color.lvdump.global", p, high, low, working),
        "[InterParamByLVGlobal()] u4OutdoorRatio = 128, u4OutdoorBase = 64\n"
        "[InterParamByLVGlobal()] (Low)  B:005,C:1023,S:1023\n"
        "[InterParamByLVGlobal()] (High) B:007,C:1,S:009\n"
        "[InterParamByLVGlobal()] (Tgt)  B:009,C:-1021,S:-1005\n"
        "[InterParamByLVGlobal()] (Out)  B:009,C:-1021,S:-1005\n");

    high.u4Word[69] = 1U << 22 | 2U << 14 | 3U << 7 | 4;
    low.u4Word[70] = 5U << 23 | 6U << 16 | 7U << 8 | 100;
    p = half_way();
    p.LSPEnable = 1;
    EXPECT_EQ(traced(InterParamLSP, "debug.smooth_color.dump.lsp", p, high, low, working),
              "[InterParamLSP()] Enable = 1, u4RealCT = 250, u4LowerCT = 350, u4UpperCT = 150\n"
              "[InterParamLSP()] LSP1_Low : 000,000,000,000\n"
              "[InterParamLSP()] LSP1_High: 001,002,003,004\n"
              "[InterParamLSP()] LSP1_Out : 000,001,001,002\n"
              "[InterParamLSP()] LSP2_Low : 005,006,007,100\n"
              "[InterParamLSP()] LSP2_High: 000,000,000,000\n"
              "[InterParamLSP()] LSP2_Out : 002,003,003,050\n");
    for (const std::uint32_t enable : {1U, 2U}) {  // 1 alone enables
        p.LSPEnable = enable;
        InterParamLSP(p, high, low, working);
        EXPECT_EQ(working.u4Word[0] >> 20U & 1U, enable == 1 ? 1U : 0U) << enable;
    }

    // SGainByY: -10 shows as -10 although 246 is stored.
    p.u4RealCT = 300;
    p.u4UpperCT = 100;
    p.u4LowerCT = 200;
    const Image ten = filled(0x0a0a0a0a);
    const std::string sgy =
        traced(InterParamSGainByY, "debug.smooth_color.dump.sgy", p, ten, filled(0), working);
    EXPECT_EQ(sgy.find("[InterParamSGainByY()] u4RealCT = 300, u4LowerCT = 200, u4UpperCT = 100\n"
                       "[InterParamSGainByY()] SGY0_Low : 000,000,"),
              0U)
        << sgy;
    EXPECT_NE(
        sgy.find("[InterParamSGainByY()] SGY256_Out : -10,-10,-10,-10,-10,-10,-10,-10,-10,-10,"
                 "-10,-10,-10,-10,-10,-10,-10,-10,-10,-10\n"),
        std::string::npos)
        << sgy;
}

/// "v,v+1,...", n of them.
std::string count_up(int from, int n) {
    std::string text;
    for (int i = 0; i < n; ++i) {
        char value[16];
        std::snprintf(value, sizeof(value), "%03d%s", from + i, i + 1 < n ? "," : "\n");
        text += value;
    }
    return text;
}

TEST(ColorTraces, RowsCarryTheirEntriesInOrder) {
    Image low = filled(0), high = filled(0);
    for (unsigned j = 0; j < 20; ++j) {
        low.u4Word[14 + j / 4] |= (100 + j) << 8 * (j % 4);
        high.u4Word[14 + j / 4] |= (110 + j) << 8 * (j % 4);
    }
    for (unsigned j = 0; j < 16; ++j) {
        low.u4Word[6 + j / 2] |= (20 + j) << 16 * (j % 2);
        high.u4Word[6 + j / 2] |= (40 + j) << 16 * (j % 2);
    }
    Param p = half_way();
    p.hue_speed = 2;
    const std::string hue = "[InterParamPartialH()] ";
    EXPECT_EQ(traced(InterParamPartialH, "debug.smooth_color.dump.hue", p, high, low, low),
              hue +
                  "IsCapture = 0, u4Step = 2, u4RealCT = 250, u4LowerCT = 350, u4UpperCT = 150\n" +
                  hue + "PH_Low : " + count_up(100, 16) + hue + "PH_High: " + count_up(110, 16) +
                  hue + "PH_Tgt : " + count_up(105, 16) + hue + "PH_Out : " + count_up(102, 16));
    const std::string luma = "[InterParamByLVPartialY()] ";
    EXPECT_EQ(traced(InterParamByLVPartialY, "debug.smooth_color.lvdump.lum", p, high, low, low),
              luma + "u4OutdoorRatio = 16, u4OutdoorBase = 64\n" + luma +
                  "PY_Low : " + count_up(20, 16) + luma + "PY_High: " + count_up(40, 16) + luma +
                  "PY_Tgt : " + count_up(25, 16) + luma + "PY_Out : " + count_up(25, 16));

    const Image sat_high = curves(64, 128, 100, 80, 60), sat_low = curves(32, 96, 120, 100, 40);
    const auto row = [](const char* label, int value) {
        std::string text = "[InterParamPartialS()] " + std::string(label) + ": ";
        for (int i = 0; i < 20; ++i)
            text += count_up(value, 1).substr(0, 3) + (i < 19 ? "," : "\n");
        return text;
    };
    p.IsBoot = 2;
    p.IsCapture = 1;
    p.sat_speed = 4;
    EXPECT_EQ(traced(InterParamPartialS, "debug.smooth_color.dump.sat", p, sat_high, sat_low,
                     curves(0, 0, 110, 95, 50)),
              "[InterParamPartialS()] IsCapture = 3, u4Step = 4, u4Ratio = 16, u4RealCT = 250, "
              "u4LowerCT = 350, u4UpperCT = 150\n" +
                  row("SP1_Low ", 32) + row("SP1_High", 64) + row("SP1_Out ", 48) +
                  row("SP2_Low ", 96) + row("SP2_High", 128) + row("SP2_Out ", 112) +
                  row("SP3_Low ", 128) + row("SP3_High", 160) + row("SP3_Tgt ", 144) +
                  row("SG1_Low ", 120) + row("SG1_High", 100) + row("SG1_Tgt ", 106) +
                  row("SG1_Out ", 106) + row("SG2_Low ", 100) + row("SG2_High", 80) +
                  row("SG2_Tgt ", 90) + row("SG2_Out ", 91) + row("SG3_Low ", 40) +
                  row("SG3_High", 60) + row("SG3_Tgt ", 50) + row("SG3_Out ", 50));
}

TEST(ColorTraces, ShowInputsAsTheyWereThoughTheOutputIsOneOfThem) {
    std::mt19937 random(37);
    for (const auto& block : kBlocks) {
        if (block.function == InterParam3DLUT) continue;  // it shows what it wrote
        const Image a = random_image(random), b = random_image(random);
        Param p = at_once(half_way());
        p.u4RealCT = 200;
        const struct {
            bool high_is_out, low_is_out;
        } cases[] = {{true, false}, {false, true}, {true, true}};
        for (const auto& c : cases) {
            const std::string apart = traced(block.function, block.property, p,
                                             c.high_is_out ? a : b, c.low_is_out ? a : b, a);
            Image out = a;
            fakes::reset_with({block.property});
            block.function(p, c.high_is_out ? out : b, c.low_is_out ? out : b, out);
            EXPECT_EQ(fakes::log_text(), apart) << block.name;
        }
    }
}

TEST(ColorTraces, ColourMapShowsEveryFieldOfTheWorkingImage) {
    Image image = filled(0);
    image.u4Word[71] = 1U | 1U << 2 | 1U << 6 | 1U << 7 | 1U << 10 | 2U << 12;
    image.u4Word[72] = 1U | 2U << 10 | 3U << 20;
    image.u4Word[73] = 4U | 5U << 10 | 6U << 20;
    image.u4Word[74] = 7U | 8U << 10 | 9U << 20;
    image.u4Word[75] = 10U | 11U << 8 | 12U << 16 | 13U << 24;
    image.u4Word[76] = 0x0155U | 0x02aaU << 16;
    Param p{};
    const std::string text =
        traced(InterParam3DLUT, "debug.smooth_color.dump.cm", p, image, filled(0), filled(0));
    const std::string zeros =
        ": PL=0000, P0=0000, P1=0000, P2=0000, P3=0000, P4=0000, PU=0000, S0=0000, S1=0000, "
        "S2=0000, S3=0000, S4=0000, S5=0000, WGTL=0000, WGTU=0000\n";
    const std::string f = "[InterParam3DLUT()] ";
    EXPECT_EQ(text, f + "u4RealCT = 0, u4LowerCT = 0, u4UpperCT = 0\n" + f +
                        "CTRL: BYPASS=1, INK_DELTA=1, INK_CH=2\n" + f +
                        "W1  : EN=0, WGR_EN=1, INK_EN=0\n" + f + "W1_Y" + zeros + f +
                        "W1_H: PL=0001, P0=0003, P1=0004, P2=0005, P3=0006, P4=0007, PU=0002, "
                        "S0=0008, S1=0009, S2=0010, S3=0011, S4=0012, S5=0013, WGTL=0341, "
                        "WGTU=0682\n" +
                        f + "W1_S" + zeros + f + "W2  : EN=0, WGR_EN=0, INK_EN=1\n" + f + "W2_Y" +
                        zeros + f + "W2_H" + zeros + f + "W2_S" + zeros + f +
                        "W3  : EN=1, WGR_EN=0, INK_EN=0\n" + f + "W3_Y" + zeros + f + "W3_H" +
                        zeros + f + "W3_S" + zeros);
}

}  // namespace
