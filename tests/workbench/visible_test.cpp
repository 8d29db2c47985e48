#include "workbench/studies/visible.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "tests/workbench/sample_tuning.h"
#include "workbench/appearance/chart_view.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/studies/resting.h"

namespace imgtune::workbench {
namespace {

RealMatrix random_matrix(std::mt19937& random, double spread) {
    std::uniform_real_distribution<double> off(-spread, spread);
    RealMatrix matrix{};
    for (std::size_t row = 0; row < 9; row += 3) {
        for (std::size_t k = 0; k < 3; ++k) matrix[row + k] = off(random);
        matrix[row + row / 3] = 1.0;
    }
    return matrix;
}

TEST(ChartView, AgreesWithTheReference) {
    std::mt19937 random(1);
    for (const double spread : {0.001, 0.02, 0.3}) {
        for (int n = 0; n < 200; ++n) {
            const RealMatrix a = random_matrix(random, spread);
            const RealMatrix b = random_matrix(random, spread);
            const ChartError slow = chart_error(a, b);
            const ChartDifference fast = chart_difference(ChartView(a), ChartView(b), kLightSkin);
            EXPECT_NEAR(fast.mean, slow.mean, 0.01);
            const PatchDifferences all = patch_differences(ChartView(a), ChartView(b));
            const PatchDifferences bounds = ChartComparison(ChartView(a), ChartView(b)).bounds();
            for (std::size_t i = 0; i < kPatchCount; ++i) {
                EXPECT_NEAR(all[i], slow.patches[i].difference, 0.01) << i;
                EXPECT_GE(bounds[i], all[i]) << i;
            }
            EXPECT_EQ(chart_difference_from(ChartView(a), ChartView(b), 0, fast.mean, 1e9)->mean,
                      fast.mean);
            EXPECT_EQ(chart_difference_from(ChartView(a), ChartView(b), 0, 1e9, fast.worst)->worst,
                      fast.worst);
            EXPECT_EQ(fast.worst_patch, slow.largest_patch);
            EXPECT_FLOAT_EQ(static_cast<float>(fast.chosen), all[kLightSkin]);
        }
    }
    // What loses colours shows the chart's values as the camera's.
    RealMatrix grey{};
    grey.fill(1.0 / 3.0);
    const RealMatrix unity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_NEAR(chart_difference(ChartView(grey), ChartView(unity), 0).worst,
                chart_error(grey, unity).largest, 0.01);
    EXPECT_FALSE(chart_difference_from(ChartView(unity), ChartView(unity), 0, 1e-9, 1e-9));
}

TEST(ChartView, AGainThatIsOffTintsGreyAndEqualGainsDoNot) {
    const RealMatrix matrix = {1.6, -0.4, -0.2, -0.3, 1.6, -0.3, 0.0, -0.6, 1.6};
    const ChartView right(matrix);
    const PatchDifferences same = patch_differences(right, ChartView(matrix, {1, 1, 1}));
    EXPECT_LT(*std::max_element(same.begin(), same.end()), 0.01F);
    // A tenth too much red through that matrix: grey 160 becomes (1.16, 0.97, 1) of itself.
    const std::size_t grey = *find_patch("neutral 6.5");
    const std::array<double, 3> own = linear(chart_patches()[grey]);
    const Lab tinted = to_lab({own[0] * 1.16, own[1] * 0.97, own[2]});
    EXPECT_NEAR(patch_differences(right, ChartView(matrix, {1.1, 1, 1}))[grey],
                ciede2000(to_lab(own), tinted), 0.01);
    EXPECT_EQ(find_patch("no patch"), std::nullopt);
}

const Frame kWarmLight = make_frame(100, 2500, {600, 512, 1400});
const Frame kColdLight = make_frame(100, 5000, {1200, 512, 800});

/// Sixty frames of one light, sixty of another.
std::vector<VisibleFrame> watch_a_change(Frame second) {
    Camera camera(make_tuning(), {true, false});
    VisibleWatch watch(camera);
    std::vector<VisibleFrame> told;
    for (int n = 0; n < 120; ++n) {
        const Frame& frame = n < 60 ? kWarmLight : second;
        camera.run(frame);
        told.push_back(watch.next(frame, camera));
    }
    return told;
}

TEST(VisibleWatch, TellsTheStepAndTheWayToRest) {
    const Tuning tuning = make_tuning();
    const std::vector<VisibleFrame> told = watch_a_change(kColdLight);
    EXPECT_FALSE(told[0].step.has_value());
    EXPECT_FALSE(told[14].from_rest.has_value());  // held for 14 frames
    EXPECT_EQ(told[59].step->worst, 0.0);
    EXPECT_NEAR(told[59].from_rest->worst, 0.0, 1e-3);
    // Half of the way between the two lights at once, the old light having been at rest.
    Camera camera(tuning, {true, false});
    run_to_rest(camera, kWarmLight);
    const RealMatrix warm = shown_matrix(camera.registers(), tuning.caller);
    camera.run(kColdLight);
    const RealMatrix half = shown_matrix(camera.registers(), tuning.caller);
    EXPECT_NEAR(told[60].step->worst, chart_error(warm, half).largest, 0.01);
    EXPECT_FALSE(told[60].from_rest.has_value());
    EXPECT_NEAR(told[119].from_rest->mean, 0.0, 1e-3);
    // As if the light had been the old one still, doubled red is plain to see.
    EXPECT_GT(told[60].step_with_gains->mean, 10.0);
    EXPECT_EQ(told[61].step_with_gains->mean, told[61].step->mean);
    EXPECT_NEAR(told[119].from_rest_with_gains->mean, 0.0, 1e-3);
}

TEST(VisibleWatch, TellsGainsThatAreOffFromTheMatrix) {
    // One frame, white balance off by 3 % in a light that holds.
    Camera camera(make_tuning(), {true, false});
    VisibleWatch watch(camera);
    VisibleFrame off;
    for (int n = 0; n < 40; ++n) {
        Frame frame = kWarmLight;
        if (n == 39) frame.state.rAWBGain.i4B += 42;
        camera.run(frame);
        off = watch.next(frame, camera);
    }
    EXPECT_LT(off.from_rest->mean, 0.01);  // beyond the tuned gains: the matrix stays
    EXPECT_GT(off.from_rest_with_gains->mean, 0.5);
    EXPECT_GT(off.step_with_gains->mean, 0.5);
    // A camera without a matrix shows nothing to measure.
    Camera color(make_tuning(), {false, true});
    VisibleWatch blind(color);
    color.run(kWarmLight);
    EXPECT_FALSE(blind.next(kWarmLight, color).step.has_value());
}

}  // namespace
}  // namespace imgtune::workbench
