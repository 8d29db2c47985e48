#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "proof/traffic.h"

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;

constexpr unsigned kThreads = 4;
constexpr int kFrames = 500;

struct SharedTuning {
    ISP_NVRAM_MULTI_CCM_STRUCT ccm;
    NSIspTuning::ISP_NVRAM_COLOR_T table[4][5];
    ISP_NVRAM_PCA_PARAM_T color[4];
    std::vector<NSIspTuning::RAWIspCamInfo> frames;
};

struct Outcome {
    NSIspTuning::ISP_NVRAM_CCM_T output{}, ring[2] = {};
    NSIspTuning::ISP_NVRAM_COLOR_T result{}, working{};
};

/// Runs the shared frames from one of them on, with the tuning read in place.
Outcome run(SharedTuning& shared, std::size_t first) {
    using Index = NSIspTuning::EIndex_PCA_LUT_CT;
    Outcome o;
    unsigned index = 0, weights[3] = {5, 3, 2};
    unsigned short version = 0;
    int boot = 1;
    for (std::size_t i = 0; i < shared.frames.size(); ++i) {
        const auto& state = shared.frames[(first + i) % shared.frames.size()];
        SmoothCCM(0, 3, 9, shared.ccm, o.output, version, state, o.ring, index, weights);
        SmoothCOLOR(0, 5000, 4000, Index{3}, Index{2}, shared.table, shared.color, state, o.result,
                    version, boot, o.working);
    }
    return o;
}

TEST(Threads, SharedInputsAndSeparateStatesGiveTheSingleThreadedResults) {
    Random random(5);
    const auto camera = std::make_unique<Camera>(random);
    const auto shared = std::make_unique<SharedTuning>();
    shared->ccm = camera->ccm_tuning;
    std::memcpy(shared->table, camera->table, sizeof(shared->table));
    std::memcpy(shared->color, camera->color_tuning, sizeof(shared->color));
    for (int i = 0; i < kFrames; ++i) {
        shared->frames.push_back(imgtune::traffic::day_frame(random));
    }

    Outcome alone[kThreads], together[kThreads];
    for (unsigned t = 0; t < kThreads; ++t) alone[t] = run(*shared, 97 * t);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] { together[t] = run(*shared, 97 * t); });
    }
    // Someone sets switches meanwhile; these change no result.
    threads.emplace_back([] {
        for (int i = 0; i < 200; ++i) property_set("debug.smooth_color.enable", i % 2 ? "2" : "3");
    });
    for (auto& thread : threads) thread.join();
    for (unsigned t = 0; t < kThreads; ++t) {
        EXPECT_EQ(std::memcmp(&alone[t], &together[t], sizeof(Outcome)), 0) << t;
    }
    EXPECT_NE(std::memcmp(&alone[0], &alone[1], sizeof(Outcome)), 0);
}

}  // namespace
