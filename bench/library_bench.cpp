#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>

#include "scenes.h"

namespace {

using Clock = std::chrono::steady_clock;

/// How far the slowest of a million calls are from the median, clock reads included. Each call is
/// made five times on the same light and its least time counts: what the machine does meanwhile
/// does not hit a call five times, what the library does would.
void steadiness(benchmark::State& state, const imgtune::bench::Scene& scene) {
    std::vector<double> times(1'000'000, std::numeric_limits<double>::max());
    for (auto _ : state) {
        for (int round = 0; round < 5; ++round) {
            int frame = 0;
            for (double& t : times) {
                const auto start = Clock::now();
                scene.call(frame++);
                const auto end = Clock::now();
                t = std::min(t, std::chrono::duration<double, std::nano>(end - start).count());
            }
        }
    }
    std::sort(times.begin(), times.end());
    state.counters["median_ns"] = times[times.size() / 2];
    state.counters["p99.99_ns"] = times[times.size() - times.size() / 10000];
    state.counters["slowest_ns"] = times.back();
}

}  // namespace

int main(int argc, char** argv) {
    for (const auto& scene : imgtune::bench::scenes()) {
        benchmark::RegisterBenchmark(scene.name.c_str(), [scene](benchmark::State& state) {
            int frame = 0;
            for (auto _ : state) scene.call(frame++);
        });
        if (scene.name == "SmoothCCM/blend-low-light" || scene.name == "SmoothCOLOR/outdoor") {
            benchmark::RegisterBenchmark(
                ("steadiness/" + scene.name).c_str(),
                [scene](benchmark::State& state) { steadiness(state, scene); })
                ->Iterations(1);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
