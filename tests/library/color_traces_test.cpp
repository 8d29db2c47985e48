#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "color_images.h"
#include "support/platform_fakes.h"

namespace {

using namespace imgtune::callers;
namespace fakes = imgtune::fakes;

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
