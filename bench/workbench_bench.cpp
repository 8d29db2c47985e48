// Frames a second of the workbench's studies, on one core: a log's summary, with what a viewer
// sees.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "workbench/camera/locus.h"
#include "workbench/judging/log_measures.h"
#include "workbench/tuning/starter.h"

namespace {

using namespace imgtune::workbench;

enum Course : std::int64_t { kStill, kJitter, kWalk };

/// A minute of white light on the tuned locus: one frame over and over; with gains and colour
/// temperature that jitter by 0.5 %; and so jittering while the light goes from 6200 to 3000 K and
/// back every four seconds.
std::vector<Frame> light_of(const Tuning& tuning, std::int64_t course) {
    const LightLocus locus = tuned_locus(tuning);
    std::mt19937 random(1);
    std::vector<Frame> frames;
    for (int n = 0; n < 1800; ++n) {
        const double way = course == kWalk ? 0.5 - 0.5 * std::cos(n / 19.0) : 0.3;
        const double kelvin = 6200.0 - 3200.0 * way;
        const AWB_GAIN_T gain = locus.at(static_cast<std::uint32_t>(kelvin));
        const auto noisy = [&](double value) {
            const double off = static_cast<double>(random() % 2001) / 1000.0 - 1.0;
            return static_cast<std::int32_t>(value *
                                             (course == kStill ? 1.0 : 1.0 + 0.00866 * off));
        };
        Frame frame;
        frame.state.u4RealLV = 100;
        frame.state.u4CCT = static_cast<std::uint32_t>(noisy(kelvin));
        frame.state.rAWBGain =
            frame.state.rAWBFullGain = {noisy(gain.i4R), gain.i4G, noisy(gain.i4B)};
        frames.push_back(frame);
    }
    return frames;
}

/// `jobs.color` as a limit on the colour registers asks for it.
void measures(benchmark::State& state, Jobs jobs) {
    const Tuning tuning = starter_tuning();
    const std::vector<Frame> frames = light_of(tuning, state.range(0));
    for (auto _ : state) {
        LogMeasures log(tuning, jobs, {});
        for (const Frame& frame : frames) log.add(frame);
        benchmark::DoNotOptimize(measures_of(log.finish()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(frames.size()));
    constexpr const char* kNames[] = {"still", "jitter", "walk"};
    state.SetLabel(kNames[state.range(0)]);
}

BENCHMARK_CAPTURE(measures, judge, Jobs{true, false})->DenseRange(kStill, kWalk);
BENCHMARK_CAPTURE(measures, both_jobs_and_registers, Jobs{true, true})->DenseRange(kStill, kWalk);

}  // namespace

BENCHMARK_MAIN();
