#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/platform_fakes.h"

namespace {

using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
using Index = NSIspTuning::EIndex_PCA_LUT_CT;
namespace fakes = imgtune::fakes;

constexpr unsigned kSentinel = 0xfffffff7U;

/// One caller of SmoothCOLOR. Image (slot, ct) holds 10 slot + ct in every byte.
struct ColorCaller {
    Image table[4][5];
    ISP_NVRAM_PCA_PARAM_T tuning[4];
    NSIspTuning::RAWIspCamInfo state{};
    Image result{}, working{};
    unsigned short version = 0;
    int boot = 1;
    int capture = 0;
    unsigned upper_kelvin = 5000, lower_kelvin = 4000;
    int upper = 3, lower = 2;

    ColorCaller() {
        for (unsigned slot = 0; slot < 4; ++slot) {
            for (unsigned ct = 0; ct < 5; ++ct) {
                for (auto& w : table[slot][ct].u4Word) w = (10 * slot + ct) * 0x01010101U;
            }
            tuning[slot] = {16, 16, 16, 0, 0, 0, 0, 0, 1, 2, 3, 60, 0, 100, 120, 0, 64};
        }
        state.u4CCT =
            4000;  // the lower image; the colour map takes the upper one from 225 mired on
        state.u4RealLV = 50;
    }

    void run() {
        SmoothCOLOR(capture, upper_kelvin, lower_kelvin, static_cast<Index>(upper),
                    static_cast<Index>(lower), table, tuning, state, result, version, boot,
                    working);
    }

    unsigned hue() const { return working.u4Word[14] & 0xff; }
    unsigned map() const { return working.u4Word[75] & 0xff; }
};

TEST(SmoothColor, OutdoorRampBlendsAndSwitchesTheColourMap) {
    const struct {
        std::uint32_t lv, base;
        unsigned hue, map;
    } cases[] = {
        {99, 64, 2, 3},    {100, 64, 2, 3},   {105, 64, 9, 3},         {109, 64, 15, 3},
        {110, 64, 17, 33}, {120, 64, 32, 33}, {256 + 120, 64, 32, 33}, {120, 0, 0, 33},
    };
    for (const auto& c : cases) {
        fakes::reset();
        ColorCaller caller;
        caller.tuning[0].u4OutdoorEnable = 7;
        caller.tuning[0].u4OutdoorBase = c.base;
        caller.state.u4RealLV = c.lv;
        caller.run();
        EXPECT_EQ(caller.hue(), c.hue) << c.lv;
        EXPECT_EQ(caller.map(), c.map) << c.lv;
    }
}

// A frame that logs takes no short cut: none past a blend whose weight is 0 or full, none of a
// narrow blend. Light wanders over both ends of the outdoor ramp and of the CT bracket.
TEST(SmoothColor, LoggingChangesNoFrameOfALongDay) {
    std::mt19937 random(41);
    const auto below = [&random](unsigned end) { return static_cast<unsigned>(random()) % end; };
    for (const unsigned base : {64U, 1U, 8192U, 8193U, 0U}) {
        ColorCaller silent;
        for (auto& slot : silent.table) {
            for (auto& image : slot) {
                for (auto& w : image.u4Word) w = static_cast<std::uint32_t>(random());
                if (below(4) == 0) continue;  // knots in any order
                for (unsigned w = 34; w < 39; ++w) {
                    image.u4Word[w] = (image.u4Word[w] & 0x3f3f3f3fU) | 0x01010101U;
                    image.u4Word[w + 5] |= 0x40404040U;
                }
            }
        }
        silent.tuning[0].u4OutdoorEnable = 1;
        silent.tuning[0].u4OutdoorBase = base;
        ColorCaller logged = silent;
        unsigned lv = 110;
        for (int frame = 0; frame < 1500; ++frame) {
            lv = std::clamp(lv + below(5) - 2, 95U, 125U);
            silent.state.u4RealLV = lv;
            silent.state.u4CCT = 3950 + below(1100);
            silent.upper = static_cast<int>(below(5));
            silent.capture = below(16) == 0;
            logged.state = silent.state;
            logged.upper = silent.upper;
            logged.capture = silent.capture;
            fakes::reset();
            silent.run();
            for (const char* step : {"dump", "lvdump"}) {
                for (const char* block : {"global", "lum", "hue", "sat", "sgy", "lsp"}) {
                    fakes::properties[std::string("debug.smooth_color.") + step + "." + block] =
                        "2";
                }
            }
            logged.run();
            ASSERT_EQ(std::memcmp(&silent.working, &logged.working, sizeof(Image)), 0)
                << "base " << base << ", LV " << lv << ", frame " << frame;
        }
    }
}

TEST(SmoothColor, OnlySmoothedFieldsMoveInSteps) {
    fakes::reset();
    ColorCaller caller;
    caller.boot = 0;
    caller.run();
    const Image& w = caller.working;
    EXPECT_EQ(w.u4Word[6], 0x00010001U) << "luma: lum_speed";
    EXPECT_EQ(w.u4Word[14], 0x02020202U) << "hue: hue_speed";
    EXPECT_EQ(w.u4Word[34], 0x02020202U) << "knots at once";
    EXPECT_EQ(w.u4Word[44], 0x02020202U) << "gain by luma at once";
    EXPECT_EQ(w.u4Word[75], 0x03030303U) << "colour map at once";
    caller.boot = 1;
    caller.capture = 1;
    caller.run();
    EXPECT_EQ(w.u4Word[6], 0x00020002U);
    caller.state.u4SceneFlag = 1;
    caller.capture = 2;
    caller.run();
    EXPECT_EQ(w.u4Word[14], 0x04040404U) << "capture 2 is no capture";
    const auto hue_with_scene = [](std::int32_t flag) {
        ColorCaller other;
        other.capture = 1;
        other.state.u4SceneFlag = flag;
        other.run();
        return other.working.u4Word[14];
    };
    EXPECT_EQ(hue_with_scene(2), hue_with_scene(0)) << "scene images are for flag 1";
    EXPECT_NE(hue_with_scene(1), hue_with_scene(0));
}

TEST(SmoothColor, BypassSwitchesNeedEnableAndTheMapTakesItsOwnBitBack) {
    fakes::reset_with({"debug.smooth_color.enable"});
    fakes::properties["debug.smooth_color.bypass.yeng"] = "3";
    fakes::properties["debug.smooth_color.bypass.heng"] = "2";
    fakes::properties["debug.smooth_color.bypass.seng"] = "1";
    fakes::properties["debug.smooth_color.bypass.cm"] = "-1";
    ColorCaller caller;
    caller.table[0][0].u4Word[0] = 0xffefffffU;
    caller.table[0][3].u4Word[71] = 0;
    caller.run();
    EXPECT_EQ(caller.result.u4Word[0], 0xffefffefU);
    EXPECT_EQ(caller.result.u4Word[71] & 1, 0U);
    fakes::properties["debug.smooth_color.lock"] = "1";
    caller.run();
    EXPECT_EQ(caller.result.u4Word[71] & 1, 1U) << "locked: nothing takes it back";
    fakes::properties["debug.smooth_color.lock"] = "10";
    caller.run();
    EXPECT_EQ(caller.result.u4Word[71] & 1, 0U) << "1 alone locks";
    caller.table[0][0].u4Word[0] = 0;
    caller.run();
    EXPECT_EQ(caller.result.u4Word[0], 0x0000000cU) << "luma and saturation are set, hue is not";
    fakes::properties["debug.smooth_color.lock"] = "1";
    caller.table[0][0].u4Word[0] = 0xffefffffU;
    fakes::properties["debug.smooth_color.enable"] = "2";
    caller.run();
    EXPECT_EQ(caller.result.u4Word[0], 0xffefffffU);
}

TEST(SmoothColor, LockKeepsTheWorkingImageAndIsAlwaysLogged) {
    fakes::reset_with({"debug.smooth_color.lock"});
    ColorCaller caller;
    for (auto& w : caller.working.u4Word) w = kSentinel;
    caller.run();
    EXPECT_EQ(fakes::log_text(), "[SmoothCOLOR()] Force Lock!!\n");
    EXPECT_EQ(caller.boot, 0);
    EXPECT_EQ(caller.version, 100);
    for (unsigned w = 0; w < 117; ++w) {
        EXPECT_EQ(caller.result.u4Word[w], w < 4 ? 0U : kSentinel) << w;
    }
    fakes::properties["debug.smooth_color.lock"] = "2";
    caller.run();
    EXPECT_EQ(caller.hue(), 0xf7U - 2) << "only 1 locks";
}

TEST(SmoothColor, TracesTheDriverInOrder) {
    fakes::reset_with({"debug.smooth_color.dump"});
    ColorCaller caller;
    caller.capture = 1;
    caller.state.profile = -4;
    caller.state.u4RealLV = 0xffffffff;
    caller.tuning[0] = {0x110, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xffffffff, 1000};
    caller.table[0][0].u4Word[0] = 1U << 20;
    caller.run();
    EXPECT_EQ(fakes::log_text(),
              "[SmoothCOLOR()] u4RealCT = 4000, u4LowerCT = 4000, u4UpperCT = 5000, eUpperIdx = 3, "
              "eLowerIdx = 2\n"
              "[SmoothCOLOR()] u4RealLV = -1, SceneMode = 0, profile = -4, IsCapture = 1, "
              "IsBoot = 1\n"
              "[SmoothCOLOR()] In Ram: 272, 001, 002, 003, 004, 005, 006, 007, 008, 009, 010, 011, "
              "012, 013, 014, -01, 1000\n"
              "[SmoothCOLOR()] LSP = (0, 1)\n"
              "[SmoothCOLOR()] Capture mode!!\n"
              "[SmoothCOLOR()] Outdoor mode !!\n");
}

TEST(SmoothColor, ReadsItsPropertiesInOrder) {
    const std::vector<std::string> driver = {
        "debug.smooth_color.dump",        "debug.smooth_color.lock",
        "debug.smooth_color.enable",      "debug.smooth_color.bypass.yeng",
        "debug.smooth_color.bypass.heng", "debug.smooth_color.bypass.seng",
        "debug.smooth_color.bypass.cm"};
    std::vector<std::string> indoor = driver, outdoor = driver;
    for (const char* block : {"global", "lum", "hue", "sat", "sgy", "lsp"}) {
        const std::string name = block;
        indoor.push_back("debug.smooth_color.dump." + name);
        outdoor.insert(outdoor.end(),
                       {"debug.smooth_color.lvdump." + name, "debug.smooth_color.lvdump." + name,
                        "debug.smooth_color.dump." + name});
    }
    indoor.push_back("debug.smooth_color.dump.cm");
    outdoor.push_back("debug.smooth_color.dump.cm");
    fakes::reset();
    ColorCaller caller;
    caller.run();
    EXPECT_EQ(fakes::property_reads, indoor);
    fakes::reset();
    caller.tuning[0].u4OutdoorEnable = 1;
    caller.run();
    EXPECT_EQ(fakes::property_reads, outdoor);
}

TEST(SmoothColor, CtIndicesOutsideTheGridTakeItsEnds) {
    fakes::reset();
    for (const auto& [index, ct] : {std::pair{-1, 0}, std::pair{5, 4}, std::pair{0x7fffffff, 4}}) {
        ColorCaller caller;
        caller.lower = caller.upper = index;
        caller.run();
        EXPECT_EQ(caller.hue(), static_cast<unsigned>(ct));
    }
}

}  // namespace
