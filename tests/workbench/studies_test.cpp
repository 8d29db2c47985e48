#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "cli/explanation_text.h"
#include "tests/workbench/sample_tuning.h"
#include "workbench/files/tuning_files.h"
#include "workbench/json/explanation.h"
#include "workbench/studies/explanation.h"
#include "workbench/studies/resting.h"
#include "workbench/trace/trace_grammar.h"
#include "workbench/tuning/stall.h"

namespace imgtune::workbench {
namespace {

// ---- where the registers rest

Tuning imx708(const std::array<std::uint32_t, 3>& weights) {
    Tuning tuning = require_tuning(std::string(IMGTUNE_EXAMPLES) + "/imx708-blend.yaml");
    tuning.caller.weights = weights;
    return tuning;
}

const Frame kShade = make_frame(100, 4640, {991, 512, 945});
const Frame kLamp = make_frame(100, 2800, {640, 512, 1650});

TEST(Resting, IsWhereTheTruncatingAverageStops) {
    const struct {
        std::array<std::uint32_t, 3> weights;
        bool after_lamp;
        std::int64_t c0, c1;
        std::uint64_t frames;
    } cases[] = {
        {{1, 0, 0}, false, 795, -185, 1},
        {{2, 1, 1}, false, 793, -184, 14},
        {{1, 9, 9}, false, 759, -167, 95},
        {{1, 9, 9}, true, 795, -185, 89},  // truncation helps on the way to 0
        {{1, 500, 499}, false, 512, 0, 1},
    };
    for (const auto& c : cases) {
        Camera camera(imx708(c.weights), {true, false});
        if (c.after_lamp) run_to_rest(camera, kLamp);
        const RestingStudy study = study_resting(camera, kShade);
        EXPECT_TRUE(study.rest.ccm.still);
        EXPECT_EQ(study.ccm[0].name, "c0");
        EXPECT_EQ(study.ccm[0].target, 795);
        EXPECT_EQ(study.ccm[0].resting, c.c0) << c.weights[1];
        EXPECT_EQ(study.ccm[0].short_by, 795 - c.c0);
        EXPECT_EQ(study.ccm[1].target, -185);
        EXPECT_EQ(study.ccm[1].resting, c.c1) << c.weights[1];
        EXPECT_EQ(study.rest.ccm.frames, c.frames) << c.weights[1];
        EXPECT_TRUE(study.color.empty());

        // The state at rest goes on as it is.
        camera.set_state(study.state);
        camera.run(kShade);
        EXPECT_EQ(decode(camera.ccm(), camera.tuning().caller)[0], c.c0);
    }
}

TEST(Resting, ColourReachesItsTargetAndWhatCannotIsNamed) {
    Camera camera(make_tuning(), {});
    Frame frame = make_frame(100, 2500, {600, 512, 1400});
    run_to_rest(camera, frame);
    frame.state.u4SceneFlag = 1;  // Luma.PY[0] from 100 to 160 in steps of 10
    const Rest rest = run_to_rest(camera, frame);
    EXPECT_TRUE(rest.color.still);
    EXPECT_EQ(rest.color.frames, 6U);
    EXPECT_EQ(rest.ccm.frames, 1U);

    // A step of 0 never leaves; a target of 1593 does not fit the ten bits of Global.S, whose
    // value climbs and wraps for ever.
    Tuning odd = make_tuning();
    odd.pca[1].lum_speed = 0;
    odd.pca[1].u4RatioMidLV = 255;
    odd.pca[1].u4RatioLV_Th2 = 200;
    for (auto& image : odd.color[1]) image.u4Word[5] = 100;
    Camera odd_camera(odd, {false, true});
    odd_camera.run(make_frame(100, 2500, {600, 512, 1400}));
    const RestingStudy study = study_resting(odd_camera, frame);
    EXPECT_FALSE(study.rest.color.still);
    EXPECT_GT(study.rest.period, 2U);
    ASSERT_EQ(study.color.size(), 2U);
    EXPECT_EQ(study.color[1].name, "Luma.PY[0]");
    EXPECT_EQ(study.color[1].short_by, 60);
}

TEST(Stall, FollowsFromTheWeights) {
    const struct {
        std::array<std::uint32_t, 3> weights;
        std::int32_t stall;
    } cases[] = {
        {{1, 0, 0}, 0},    {{2, 1, 1}, 1},   {{4, 1, 1}, 1},       {{1, 1, 1}, 2},
        {{1, 9, 9}, 18},   {{2, 9, 9}, 9},   {{1, 500, 499}, 999}, {{0, 1, 1}, 4095},
        {{0, 0, 0}, 4095}, {{100, 0, 0}, 0},
    };
    for (const auto& c : cases) EXPECT_EQ(worst_stall(c.weights), c.stall) << c.weights[1];
}

// ---- one frame, told in order

TEST(Explain, InSeveralThreadsTellsWhatOneTells) {
    const Tuning tuning = make_tuning();
    const auto told = [&tuning](std::uint32_t lv) {
        Camera camera(tuning, {});
        return to_json(explain_at_rest(camera, make_frame(lv, 3000, {700, 512, 1300}))).dump();
    };
    const std::string dark = told(20);
    const std::string bright = told(100);
    constexpr int kTimes = 40;
    int wrong = 0;
    std::thread other([&] {
        for (int i = 0; i < kTimes; ++i) wrong += told(100) == bright ? 0 : 1;
    });
    int wrong_here = 0;
    for (int i = 0; i < kTimes; ++i) wrong_here += told(20) == dark ? 0 : 1;
    other.join();
    EXPECT_EQ(wrong + wrong_here, 0);
}

TEST(Explain, TellsClippedClampedAndWrappedValues) {
    Tuning tuning = make_tuning();
    tuning.pca[0].u4RatioMidLV = 255;
    tuning.pca[0].u4RatioLV_Th2 = 200;
    // S: 100 * 255 / 16 = 1593 needs 11 bits. SG1: knots 4 and 3 average to 3, levels 400 and 300
    // to 350, and 350 / 3 = 116 is above both gains.
    for (auto& image : tuning.color[0]) {
        image.u4Word[5] = 100;
        image.u4Word[19] = 100;
        image.u4Word[34] = 3;
    }
    tuning.color[0][1].u4Word[34] = 4;
    Frame frame = make_frame(30, 3333, {500, 512, 1300});  // 300 mired
    frame.capture = 1;
    Camera camera(tuning, {});
    const Explanation told = explain_at_rest(camera, frame);
    const nlohmann::json json = to_json(told);
    EXPECT_EQ(json["ccm"]["clipped_gain"], nlohmann::json({600, 512, 1300}));
    EXPECT_EQ(json["ccm"]["clipped_low"], true);
    EXPECT_EQ(json["ccm"]["clipped_high"], false);
    EXPECT_EQ(json["ccm"]["ct_position"], -1);
    EXPECT_EQ(json["ccm"]["low_light_weight"], 0.666667);
    // One unit short of 700, -100, -88, -100, 700, -88, 0, -300, 812, and the diagonals close.
    EXPECT_EQ(json["ccm"]["written"], nlohmann::json({698, -99, -87, -99, 698, -87, 0, -299, 811}));
    EXPECT_EQ(json["resting"]["ccm"]["short_of_target"]["c1"]["short_by"], -1);
    EXPECT_EQ(json["color"]["mired"]["upper_share"], 0.5);
    EXPECT_EQ(json["color"]["Global.S"]["written"], nlohmann::json({1593}));
    EXPECT_EQ(
        json["color"]["wrapped"],
        nlohmann::json::parse(R"([{"field": "Global.S", "computed": 1593, "written": 569}])"));
    EXPECT_EQ(json["color"]["unreachable"][0]["bits"], 10);
    EXPECT_EQ(json["color"]["clamped"],
              nlohmann::json::parse(
                  R"([{"field": "Saturation.SG1[0]", "target": 116, "clamped": 100}])"));
    EXPECT_EQ(json["registers"]["color"][6], "0x00000064");

    const std::string all = cli::explanation_text(told, cli::Detail::all);
    for (const char* piece :
         {"600, 512, 1300  (clipped to the low end", "c1 -99 of -100", "Global.S 1593 became 569",
          "Saturation.SG1[0] 116 to 100", "0x00000239  Global.S 569"}) {
        EXPECT_NE(all.find(piece), std::string::npos) << piece << '\n' << all;
    }
    const std::string screen = cli::explanation_text(told, cli::Detail::screen);
    EXPECT_LE(std::count(screen.begin(), screen.end(), '\n'), 50);
}

TEST(Explain, PolynomialNumbersAreReadInAnyLocale) {
    const TraceLine line = parse_trace_line("rCCMPoly22.i4P00[9] = (-1.500000, nan, -inf, 12.25)");
    ASSERT_EQ(line.values.size(), 4U);
    EXPECT_EQ(line.values[0].real(), -1.5);
    EXPECT_TRUE(std::isnan(line.values[1].real()));
    EXPECT_EQ(line.values[2].real(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(line.values[3].real(), 12.25);
}

TEST(Explain, LeavesCameraAndSwitchesAsTheyWere) {
    Camera camera(make_tuning(), {});
    Camera other = camera;
    const Frame frame = make_frame(30, 3333, {700, 512, 1300});
    testing::internal::CaptureStderr();
    explain_frame(camera, frame);
    other.run(frame);
    EXPECT_TRUE(camera.state() == other.state());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace imgtune::workbench
