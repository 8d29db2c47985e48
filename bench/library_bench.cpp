#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

#include "scenes.h"

namespace {

using Clock = std::chrono::steady_clock;

/// How far the slowest calls are from the median, clock reads included.
void steadiness(benchmark::State& state, const imgtune::bench::Scene& scene) {
    std::vector<double> times(1'000'000);
    for (auto _ : state) {
        int frame = 0;
        for (double& t : times) {
            const auto start = Clock::now();
            scene.call(frame++);
            t = std::chrono::duration<double, std::nano>(Clock::now() - start).count();
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
