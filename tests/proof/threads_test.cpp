#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "proof/traffic.h"

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;

/// Runs the frames from one of them on, with the tuning read in place by all threads.
Camera run(const Camera& shared, const std::vector<NSIspTuning::RAWIspCamInfo>& frames,
           std::size_t first) {
    using Index = NSIspTuning::EIndex_PCA_LUT_CT;
    Camera own = shared;
    auto& tuning = const_cast<ISP_NVRAM_MULTI_CCM_STRUCT&>(shared.ccm_tuning);  // only read
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto& state = frames[(first + i) % frames.size()];
        SmoothCCM(0, 3, 9, tuning, own.output, own.version, state, own.ring, own.index,
                  own.weights);
        SmoothCOLOR(0, 5000, 4000, Index{3}, Index{2}, shared.table, shared.color_tuning, state,
                    own.result, own.version, own.boot, own.working);
    }
    return own;
}

bool same_results(const Camera& a, const Camera& b) {
    return std::memcmp(&a.output, &b.output, sizeof(a.output)) == 0 &&
           std::memcmp(a.ring, b.ring, sizeof(a.ring)) == 0 &&
           std::memcmp(&a.working, &b.working, sizeof(a.working)) == 0;
}

TEST(Threads, SharedInputsAndSeparateStatesGiveTheSingleThreadedResults) {
    Random random(5);
    const auto shared = std::make_unique<Camera>(random);
    std::vector<NSIspTuning::RAWIspCamInfo> frames;
    for (int i = 0; i < 300; ++i) frames.push_back(imgtune::traffic::day_frame(random));
    const Camera alone[2] = {run(*shared, frames, 0), run(*shared, frames, 97)};
    Camera together[2] = {*shared, *shared};
    std::thread threads[2];
    for (std::size_t t = 0; t < 2; ++t) {
        threads[t] = std::thread([&, t] { together[t] = run(*shared, frames, 97 * t); });
    }
    // Someone sets a switch meanwhile; these values change no result.
    for (int i = 0; i < 200; ++i) property_set("debug.smooth_color.enable", i % 2 ? "2" : "3");
    for (auto& thread : threads) thread.join();
    for (std::size_t t = 0; t < 2; ++t) EXPECT_TRUE(same_results(alone[t], together[t])) << t;
    EXPECT_FALSE(same_results(alone[0], alone[1]));
}

}  // namespace
