#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <vector>

#include "color_images.h"
#include "support/platform_fakes.h"

namespace {

using namespace imgtune::callers;
namespace fakes = imgtune::fakes;

constexpr std::uint32_t kStay = 0;

Param at_once(Param p) {
    p.IsCapture = 1;
    return p;
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

}  // namespace
