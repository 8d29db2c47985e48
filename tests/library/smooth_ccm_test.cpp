#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ccm_caller.h"

namespace {

using namespace imgtune::callers;
namespace fakes = imgtune::fakes;

TEST_F(Ccm, LightPicksRowAndLowLightShare) {
    // c1 is -100 - 10 row - ct; the gain sits on CT 1.
    const struct {
        std::uint32_t lv;
        int flash, num_lv, c1;
    } cases[] = {
        {100, 0, 2, -101}, {50, 0, 2, -101}, {49, 0, 2, -101},         {35, 0, 2, -106},
        {20, 0, 2, -111},  {0, 0, 2, -111},  {0xffffffff, 0, 2, -101}, {35, 0, 1, -101},
        {35, 1, 2, -161},  {35, 2, 2, -161},
    };
    for (const auto& c : cases) {
        CcmCaller caller(2);
        caller.state.u4RealLV = c.lv;
        caller.state.u4FlashMode = c.flash;
        caller.tuning.i4NumLV = c.num_lv;
        expect_matrix(caller.run(), matrix_of(c.c1, 20, -30, 40, -50, 60), "light");
        EXPECT_EQ(caller.version, 200);
    }
    CcmCaller caller(2);
    EXPECT_EQ(caller.run(1).i4Coef[1], -102) << "full gain: highest CT";
    EXPECT_EQ(caller.run(2).i4Coef[1], -101) << "only 1 means full gain";
}

TEST_F(Ccm, RingIsAveragedByFixedSlots) {
    CcmCaller caller(2);
    kCodec.encode(matrix_of(100, 0, 0, 0, 0, 0), caller.ring[0]);
    kCodec.encode(matrix_of(-200, 0, 0, 0, 0, 0), caller.ring[1]);
    caller.ring[0].u4Word[1] |= 0xffffe000U;
    caller.weights[0] = 2;
    caller.weights[1] = 3;
    caller.weights[2] = 5;
    EXPECT_EQ(caller.run().i4Coef[1], -90);  // (-202 + 300 - 1000) / 10 = -90.2
    EXPECT_EQ(caller.index, 1U);
    EXPECT_EQ(kCodec.decode(caller.ring[0]).i4Coef[1], -90);
    EXPECT_EQ(kCodec.decode(caller.ring[1]).i4Coef[1], -200);
    EXPECT_EQ(caller.ring[0].u4Word[1] & 0xffffe000U, 0xffffe000U);
    EXPECT_EQ(caller.run().i4Coef[1], -147);  // (-202 - 270 - 1000) / 10
    EXPECT_EQ(caller.index, 0U);
    EXPECT_EQ(kCodec.decode(caller.ring[1]).i4Coef[1], -147);

    caller.index = 2;
    const ISP_NVRAM_CCM_T before[2] = {caller.ring[0], caller.ring[1]};
    caller.run();
    EXPECT_EQ(caller.index, 2U);
    EXPECT_EQ(std::memcmp(before, caller.ring, sizeof(before)), 0);

    const unsigned sums_to_zero[3] = {0x80000000U, 0x7fffffffU, 1};
    std::memcpy(caller.weights, sums_to_zero, sizeof(sums_to_zero));
    expect_matrix(caller.run(), imgtune::kIdentity, "zero sum");
}

// A frame that logs generates every matrix; one that does not leaves out what counts for nothing.
// Both sides of every light limit, codecs that keep fields and that do not, any ring and weights.
TEST_F(Ccm, LoggingChangesNoResult) {
    std::mt19937 random(43);
    const auto below = [&random](unsigned end) { return static_cast<int>(random() % end); };
    const std::uint32_t lights[] = {0, 19, 20, 21, 49, 50, 0xffffffff};
    for (int round = 0; round < 4000; ++round) {
        CcmCaller silent(1 + below(2));
        for (auto& row : silent.tuning.rCCM_Nvram) {
            for (auto& w : row[below(3)].u4Word) w = static_cast<std::uint32_t>(random());
        }
        for (int k = 0; k < 9; ++k) {
            silent.tuning.rCCMPoly22.i4P00[k] = below(4000000) - 2000000;
            silent.tuning.rCCMPoly22.i4P10[k] = below(4000000) - 2000000;
        }
        silent.tuning.rCCMPoly22.i4R_STD = below(3) * 1000;  // 0: no finite gain
        silent.tuning.rCCMPoly22.i4B_STD = 1000;
        silent.tuning.i4PQType = below(4);
        silent.state.u4RealLV = lights[below(7)];
        silent.state.rAWBGain = {500 + below(800), 512, 800 + below(800)};
        for (auto& image : silent.ring) {
            for (auto& w : image.u4Word) w = static_cast<std::uint32_t>(random());
        }
        silent.index = static_cast<unsigned>(below(3));
        for (auto& w : silent.weights) w = static_cast<unsigned>(below(4));
        const int int_bits = round % 2 == 0 ? 3 : below(24) - 9;
        CcmCaller logged = silent;
        const auto run = [int_bits](CcmCaller& c) {
            SmoothCCM(0, int_bits, 9, c.tuning, c.output, c.version, c.state, c.ring, c.index,
                      c.weights);
        };
        fakes::reset();
        run(silent);
        fakes::reset_with({"debug.smooth_ccm.enable"});
        run(logged);
        ASSERT_EQ(std::memcmp(&silent.output, &logged.output, sizeof(silent.output)), 0) << round;
        ASSERT_EQ(std::memcmp(silent.ring, logged.ring, sizeof(silent.ring)), 0) << round;
    }
}

TEST_F(Ccm, SlotsLeftAloneAreStillEncodedAnew) {
    const struct {
        int int_bits;
        std::uint32_t before, after;
    } cases[] = {
        {2, 5000, 904},   // 12 bits: 5000 - 4096
        {2, 8191, 4095},  // and 8191 - 4096
        {3, 8191, 8191},  // 13 bits keep every field
        {4, 8191, 8191},
    };
    for (const auto& c : cases) {
        CcmCaller caller(0);
        caller.index = 2;
        caller.ring[0].u4Word[1] = 0xabcde000U | c.before;
        SmoothCCM(0, c.int_bits, 9, caller.tuning, caller.output, caller.version, caller.state,
                  caller.ring, caller.index, caller.weights);
        EXPECT_EQ(caller.ring[0].u4Word[1], 0xabcde000U | c.after) << c.int_bits;
    }
}

TEST_F(Ccm, GamutMatrixUsesTheCoefficientsJustComputed) {
    const struct {
        int pq_type;
        ISP_CCM_T expected;
    } cases[] = {
        {0, matrix_of(-101, 20, -30, 40, -50, 60)},
        {1, matrix_of(-10, 18, -7, 36, -30, 89)},
        {2, matrix_of(17, 18, -21, 36, -36, 100)},
        {3, matrix_of(-101, 20, -30, 40, -50, 60)},
    };
    for (const auto& c : cases) {
        CcmCaller caller(2);
        caller.tuning.i4PQType = c.pq_type;
        expect_matrix(caller.run(), c.expected, "gamut");
        EXPECT_EQ(kCodec.decode(caller.ring[0]).i4Coef[1], -101) << "the ring is kept before it";
    }
}

TEST_F(Ccm, TracesOneCall) {
    CcmCaller caller(2);
    caller.state.u4RealLV = 35;
    fakes::reset_with({"debug.smooth_ccm.enable"});
    caller.run();
    std::string expected =
        "Fullgain = 0\n"
        "Input AWB full Gain = (900, 512, 1200)\n"
        "Flash mode = 0\n"
        "Real LV = 35\n"
        "Method = 2\n"
        "Number of CT = 3\n"
        "Number of LV = 2\n"
        "Number of Flash = 1\n"
        "PQ type = 0\n"
        "LVpos = 0\n"
        "Clipped AWB full Gain = (900, 512, 1200)\n";
    for (const char* row : {"00", "01", "06"}) {
        for (int ct = 0; ct < 8; ++ct) {
            const int c1 = -100 - 10 * (row[1] - '0') - ct;
            expected += "LV_" + std::string(row) + "_CT" + std::to_string(ct) + "_rCCM_Nvram = (";
            expected += ct > 2 ? "0, 0, 0, 0, 0, 0, 0, 0, 0)\n"
                               : std::to_string(492 - c1) + ", " + std::to_string(c1) +
                                     ", 20, -30, 502, 40, -50, 60, 502)\n";
        }
    }
    for (const int row : {0, 1}) {
        const std::string c1 = std::to_string(-101 - 10 * row);
        const std::string c0 = std::to_string(593 + 10 * row);
        expected +=
            "Estimated CT position = (1)\n"
            "Proj AWB Gain = (900, 512, 1200)\n"
            "range 0 = (4.242640)\n"
            "range 1 = (0.000000)\n"
            "range 2 = (4.242640)\n"
            "range 3 = (0.000000)\n"
            "Coarse Blending Ratio between CT0/CT2 = (0.500589)\n"
            "Finer Blending Ratio with estimated CT1 = (1.000000)\n"
            "LV postion in BlendCCM = " +
            std::to_string(row) +
            "\n"
            "rCCM_Output after interpolation = (" +
            c0 + ", " + c1 + ", 20, -30, 502, 40, -50, 60, 502)\n";
    }
    expected +=
        "LV_blend ratio = (0.500000)\n"
        "Coef1, Coef2, Coef3 = 1, 0, 0\n"
        "Temporal CCM 0 = (0, 0, 0, 0, 0, 0, 0, 0, 0)\n"
        "Temporal CCM 1 = (0, 0, 0, 0, 0, 0, 0, 0, 0)\n"
        "rCCM_Output after averaging = (598, -106, 20, -30, 502, 40, -50, 60, 502)\n";
    EXPECT_EQ(fakes::log_text(), expected);
    EXPECT_EQ(fakes::property_reads, std::vector<std::string>{"debug.smooth_ccm.enable"});
    for (const auto& line : fakes::log_lines) {
        ASSERT_EQ(line.priority, 3);
        ASSERT_EQ(line.tag, "ispfeature");
    }

    caller.tuning.i4Method = 1;
    caller.tuning.rCCMPoly22.i4R_AVG = 12345;
    caller.tuning.rCCMPoly22.i4P10[8] = -5;
    caller.state.u4RealLV = 50;
    fakes::log_lines.clear();
    caller.run();
    const std::string nine_zeros =
        "(0.000000, 0.000000, 0.000000, 0.000000, 0.000000, 0.000000, "
        "0.000000, 0.000000, ";
    EXPECT_NE(fakes::log_text().find(
                  "Proj AWB Gain = (900, 512, 1200)\n"
                  "rCCMPoly22.i4R_AVG = 123.449997\n"
                  "rCCMPoly22.i4R_STD = 0.000000\n"
                  "rCCMPoly22.i4B_AVG = 0.000000\n"
                  "rCCMPoly22.i4B_STD = 0.000000\n"
                  "rCCMPoly22.i4P00[9] = " +
                  nine_zeros +
                  "0.000000)\n"
                  "rCCMPoly22.i4P10[9] = " +
                  nine_zeros +
                  "-0.000500)\n"
                  "rCCMPoly22.i4P01[9] = " +
                  nine_zeros +
                  "0.000000)\n"
                  "rCCM_Output after interpolation = (512, 0, 0, 0, 512, 0, 0, 0, 512)\n"),
              std::string::npos)
        << fakes::log_text();

    caller.tuning.i4Method = 2;
    for (const auto& [red, line] :
         {std::pair{600, "Below lowest CT"}, std::pair{600, "CCM result by lowest CT \n"},
          std::pair{1200, "CCM result by highest CT \n"},
          std::pair{1200, "Estimated CT position = (13)\n"}}) {
        caller.state.rAWBGain.i4R = red;
        fakes::log_lines.clear();
        caller.run();
        EXPECT_NE(fakes::log_text().find(line), std::string::npos) << line;
    }

    fakes::reset();
    caller.run();
    EXPECT_TRUE(fakes::log_lines.empty());
}

}  // namespace
