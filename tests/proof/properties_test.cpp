#include <android/log.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "proof/traffic.h"

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;
using NSIspTuning::ISP_NVRAM_CCM_T;
using NSIspTuning::ISP_NVRAM_COLOR_T;
using NSIspTuning::RAWIspCamInfo;

template <class Record>
bool same(const Record& a, const Record& b) {
    return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

void expect_same_state(const Camera& a, const Camera& b) {
    EXPECT_TRUE(same(a.output, b.output));
    EXPECT_TRUE(same(a.ring, b.ring));
    EXPECT_EQ(a.index, b.index);
    EXPECT_TRUE(same(a.result, b.result));
    EXPECT_TRUE(same(a.working, b.working));
    EXPECT_EQ(a.boot, b.boot);
}

/// A coefficient field image whose nine fields are valid and whose rows sum to 512.
ISP_NVRAM_CCM_T closed_image(Random& random) {
    ISP_NVRAM_CCM_T image{};
    for (unsigned row = 0; row < 3; ++row) {
        int c[3];
        for (int& v : c) v = random.between(-900, 900);
        c[row] = 512 - c[(row + 1) % 3] - c[(row + 2) % 3];
        image.u4Word[2 * row] =
            (static_cast<unsigned>(c[0]) & 0x1fff) | (static_cast<unsigned>(c[1]) & 0x1fff) << 16;
        image.u4Word[2 * row + 1] = static_cast<unsigned>(c[2]) & 0x1fff;
    }
    return image;
}

/// Coefficients off the diagonal differ by at most `most`.
void expect_near(const ISP_NVRAM_CCM_T& a, const ISP_NVRAM_CCM_T& b, int most) {
    for (const unsigned k : {1U, 2U, 3U, 5U, 6U, 7U}) {
        const auto coefficient = [k](const ISP_NVRAM_CCM_T& image) {
            const unsigned bits = image.u4Word[k / 3 * 2 + k % 3 / 2] >> (k % 3 == 1 ? 16 : 0);
            return static_cast<int>(bits << 19) >> 19;
        };
        EXPECT_NEAR(coefficient(a), coefficient(b), most) << k;
    }
}

/// Fields that are interpolated and not scaled: brightness and contrast, luma, hue, saturation,
/// saturation gain by luma, LSP.
bool interpolated_fields_equal(const ISP_NVRAM_COLOR_T& a, const ISP_NVRAM_COLOR_T& b) {
    const auto fields_of = [](unsigned word) {
        if (word == 4) return 0x07ff03ffU;
        if (word < 14) return word == 5 ? 0U : 0x00ff00ffU;
        return word == 69 ? 0x1fffffffU : word == 70 ? 0x3fff7f7fU : ~0U;
    };
    for (unsigned w = 4; w < 71; ++w) {
        if (((a.u4Word[w] ^ b.u4Word[w]) & fields_of(w)) != 0) return false;
    }
    return true;
}

/// Makes the saturation curves of an image well formed: knots rise, so that slopes are defined.
void order_knots(ISP_NVRAM_COLOR_T& image) {
    for (unsigned w = 0; w < 5; ++w) {
        image.u4Word[34 + w] = (image.u4Word[34 + w] & 0x3f3f3f3fU) | 0x01010101U;
        image.u4Word[39 + w] = image.u4Word[34 + w] + 0x20202020U;
    }
}

TEST(Properties, EqualImagesAndTunedCtsComeBack) {
    Random random(1);
    for (int round = 0; round < 200; ++round) {
        const auto camera = std::make_unique<Camera>(random);
        for (auto& slot : camera->table) {
            for (auto& image : slot) order_knots(image);
        }
        RAWIspCamInfo state = imgtune::traffic::day_frame(random);
        const unsigned slot = state.u4FlashMode != 0 ? 2 : state.u4SceneFlag == 1 ? 1 : 0;
        for (auto& t : camera->color_tuning) t.u4OutdoorEnable = 0;

        // Equal images at any CT; outdoors too, when the outdoor image is that same image.
        const ISP_NVRAM_COLOR_T image = camera->table[slot][2];
        camera->table[slot][3] = camera->table[3][2] = camera->table[3][3] = image;
        camera->color_tuning[0].u4OutdoorEnable = random.below(2);
        camera->run_color(state, 1, 3, 2, 6500, 2300);
        EXPECT_TRUE(interpolated_fields_equal(camera->result, image)) << state.u4CCT;

        // A tuned CT takes its own image from either end of the bracket.
        camera->color_tuning[0].u4OutdoorEnable = 0;
        random.fill(camera->table[slot][3]);
        order_knots(camera->table[slot][3]);
        for (const auto& [kelvin, index] : {std::pair{4000U, 2}, std::pair{5000U, 3}}) {
            state.u4CCT = kelvin;
            camera->run_color(state, 1, 3, 2, 5000, 4000);
            EXPECT_TRUE(interpolated_fields_equal(camera->result, camera->table[slot][index]));
        }

        // CCM: the ends of the locus give their matrices exactly; equal matrices come back from
        // any gain, less one for each of the two mixes, which truncate.
        camera->ccm_tuning.i4PQType = 0;
        camera->weights[1] = camera->weights[2] = 0;
        state.u4RealLV = 50 + random.below(100);
        const int row = state.u4FlashMode != 0 ? 6 : 0;
        auto& tuned = camera->ccm_tuning.rCCM_Nvram[row];
        for (auto& matrix : tuned) matrix = closed_image(random);
        for (const int ct : {0, 4}) {
            state.rAWBGain = camera->ccm_tuning.rCTAWBGain[row][ct];
            camera->run_ccm(state, 0);
            EXPECT_TRUE(same(camera->output, tuned[ct])) << ct;
        }
        for (auto& matrix : tuned) matrix = tuned[0];
        state.rAWBGain = imgtune::traffic::day_frame(random).rAWBGain;
        camera->run_ccm(state, 0);
        expect_near(camera->output, tuned[0], 2);
    }
}

// The ring's mean truncates toward zero, so that constant light ends on a fixed point at most a few
// units from the matrix of the frame, and stays there; a new matrix alone gives it at once.
TEST(Properties, ConstantLightSettlesAndStays) {
    Random random(2);
    for (int round = 0; round < 100; ++round) {
        const auto camera = std::make_unique<Camera>(random);
        camera->ccm_tuning.i4PQType = 0;
        for (auto& row : camera->ccm_tuning.rCCM_Nvram) {
            for (auto& tuned : row) tuned = closed_image(random);
        }
        const RAWIspCamInfo state = imgtune::traffic::day_frame(random);
        const auto direct = std::make_unique<Camera>(*camera);
        direct->weights[1] = direct->weights[2] = 0;
        direct->run_ccm(state, 0);
        for (int frame = 0; frame < 100; ++frame) camera->run_ccm(state, 0);
        const auto settled = std::make_unique<Camera>(*camera);
        camera->run_ccm(state, 0);
        EXPECT_TRUE(same(camera->output, settled->output));
        EXPECT_TRUE(same(camera->ring, settled->ring));
        expect_near(camera->output, direct->output, 2);
    }
}

TEST(Properties, RepeatedFramesAndSplitRunsChangeNothing) {
    Random random(3);
    const auto whole = std::make_unique<Camera>(random);
    const auto first = std::make_unique<Camera>(*whole);
    auto second = std::make_unique<Camera>(*whole);
    second->boot = 77;
    constexpr int kFrames = 400, kSplit = 137;
    std::vector<RAWIspCamInfo> frames;
    for (int i = 0; i < kFrames; ++i) frames.push_back(imgtune::traffic::day_frame(random));
    const auto run = [](Camera& camera, const RAWIspCamInfo& state) {
        camera.run_ccm(state, 1);
        camera.run_color(state, 0);
    };
    for (int i = 0; i < kFrames; ++i) {
        const auto repeated = std::make_unique<Camera>(*whole);
        run(*repeated, frames[static_cast<std::size_t>(i)]);
        run(*whole, frames[static_cast<std::size_t>(i)]);
        expect_same_state(*repeated, *whole);
        if (i == kSplit) second = std::make_unique<Camera>(*first);
        run(i < kSplit ? *first : *second, frames[static_cast<std::size_t>(i)]);
    }
    expect_same_state(*second, *whole);
}

std::string log_of_run;

std::string run_traced() {
    log_of_run.clear();
    __android_log_set_logger(
        [](const __android_log_message* message) { log_of_run += message->message; });
    Random random(4);
    Camera camera(random);
    for (int frame = 0; frame < 50; ++frame) {
        camera.ccm_tuning.i4Method = 1 + frame % 2;
        const RAWIspCamInfo state = imgtune::traffic::day_frame(random);
        camera.run_ccm(state, 0);
        camera.run_color(state, 0);
        log_of_run.append(reinterpret_cast<const char*>(&camera.output), sizeof(camera.output));
        log_of_run.append(reinterpret_cast<const char*>(&camera.result), sizeof(camera.result));
    }
    __android_log_set_logger(nullptr);
    return log_of_run;
}

TEST(Properties, CommaDecimalLocaleChangesNothing) {
    property_set("debug.smooth_ccm.enable", "1");
    property_set("debug.smooth_color.dump", "1");
    const std::string plain = run_traced();
    setenv("LOCPATH", IMGTUNE_TEST_LOCALES, 1);
    const char* locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    unsetenv("LOCPATH");
    if (locale == nullptr) locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (locale == nullptr) {
        GTEST_SKIP() << "no German locale; install the packages locales and libc-bin and rebuild";
    }
    char half[8];
    std::snprintf(half, sizeof(half), "%.1f", 0.5);
    EXPECT_STREQ(half, "0,5");
    const std::string german = run_traced();
    std::setlocale(LC_ALL, "C");
    EXPECT_TRUE(german == plain);
    EXPECT_NE(plain.find("LV_blend ratio = (0."), std::string::npos);
}

}  // namespace
