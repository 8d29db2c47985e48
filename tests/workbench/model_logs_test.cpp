// What the summary says of logs whose truth is known from how they are made. A few seeds here;
// IMGTUNE_MODEL_SEEDS=200 for the figures of docs/visible.md, IMGTUNE_MODEL_TABLE=1 prints them.

#include "tests/workbench/model_logs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "workbench/appearance/color_difference.h"
#include "workbench/files/text_file.h"
#include "workbench/findings/faults.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/summary.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

constexpr std::uint32_t kDay = 100;  // no low-light matrix

/// Of each verdict, how often it was right.
class Tally {
  public:
    void count(const std::string& log, const std::string& verdict, bool right) {
        auto& [all, good] = counts_[log + ": " + verdict];
        ++all;
        good += right ? 1 : 0;
    }

    void check() const {
        for (const auto& [name, count] : counts_) {
            EXPECT_GE(20 * count.second, 19 * count.first) << name;
            if (std::getenv("IMGTUNE_MODEL_TABLE") == nullptr) continue;
            std::printf("%-64s %4d of %4d\n", name.c_str(), count.second, count.first);
        }
    }

  private:
    std::map<std::string, std::pair<int, int>> counts_;
};

struct Sensor {
    std::string name;
    Tuning tuning;
    LightLocus locus;
};

Sensor sensor(const std::string& name) {
    const std::string file = name + ".yaml";
    Faults faults;
    Tuning tuning = read_yaml(
        read_text(std::string(IMGTUNE_EXAMPLES) + "/" + file, std::size_t{1} << 20U), file, faults);
    EXPECT_FALSE(faults.has_errors()) << faults.text();
    LightLocus locus = tuned_locus(tuning);
    return {name, std::move(tuning), std::move(locus)};
}

SummaryRecord summarise(const Sensor& sensor, const ModelLog& log) {
    Camera camera(sensor.tuning, {true, true});
    Summary summary(camera, {});
    std::uint64_t number = 0;
    for (const Frame& frame : log.frames()) {
        camera.run(frame);
        summary.add(++number, frame, camera);
    }
    return summary.finish();
}

RealMatrix rest_of(const Sensor& sensor, const Frame& light) {
    Camera camera(sensor.tuning, {true, false});
    run_to_rest(camera, light);
    return shown_matrix(camera.registers(), sensor.tuning.caller);
}

/// By the scalar reference, on the log without noise: from this frame, from 0, until the worst
/// patch stays within 1 of the last light's rest.
std::uint64_t frames_to_settle(const Sensor& sensor, const ModelLog& clean, std::uint64_t first) {
    const RealMatrix rest = rest_of(sensor, clean.frames().back());
    Camera camera(sensor.tuning, {true, false});
    std::uint64_t settled = first;
    for (std::uint64_t n = 0; n < clean.count(); ++n) {
        camera.run(clean.frames()[n]);
        if (n < first) continue;
        const RealMatrix now = shown_matrix(camera.registers(), sensor.tuning.caller);
        if (chart_error(rest, now).largest >= 1.0) settled = n + 1;
    }
    return settled - first;
}

/// Two lights whose pictures differ plainly, drawn anew until they do.
std::pair<double, double> two_lights(const Sensor& sensor, ModelLog& log) {
    for (;;) {
        const double a = log.draw(2950, 6500);
        const double b = log.draw(2950, 6500);
        ModelLog still(sensor.locus, 0);
        still.show(a, kDay);
        still.show(b, kDay);
        const double size =
            chart_error(rest_of(sensor, still.frames()[0]), rest_of(sensor, still.frames()[1]))
                .largest;
        if (size >= 3.0) return {a, b};
    }
}

double mired_between(double a, double b, double share) {
    return 1e6 / (1e6 / a + (1e6 / b - 1e6 / a) * share);
}

/// Calls `make` with a log to fill, once with noise for the summary, once without for the truth.
template <class Make>
std::pair<ModelLog, ModelLog> made(const Sensor& sensor, std::uint32_t seed, Make make) {
    ModelLog noisy(sensor.locus, seed);
    ModelLog clean(sensor.locus, seed);
    make(noisy, true);
    make(clean, false);
    return {std::move(noisy), std::move(clean)};
}

class Judged {
  public:
    Judged(Tally& tally, std::string log, const SummaryRecord& record)
        : tally_(tally), log_(std::move(log)), record_(record) {}

    void changes(std::uint64_t count) const {
        tally_.count(log_, "changes of light", record_.change_count == count);
    }

    /// In at least two thirds of the frames from here on, at this rate.
    void flickers(double per_second, std::uint64_t frames) const {
        const auto& flicker = record_.visible.strongest_flicker;
        tally_.count(log_, "flicker seen", record_.visible.flicker_frames * 3 >= frames * 2);
        tally_.count(log_, "its rate",
                     flicker && std::abs(flicker->per_second / per_second - 1.0) <= 0.1);
    }

    void is_calm() const {
        tally_.count(log_, "no flicker", record_.visible.flicker_count == 0);
        const SeenDifference& step = record_.visible.steady_step;
        tally_.count(log_, "no step in steady light", step.size.worst < 1.0);
    }

    void settles(std::uint64_t frames) const {
        const auto told =
            record_.changes.empty() ? std::nullopt : record_.changes.back().visible.matrix.frames;
        const double slack = std::max(3.0, 0.1 * static_cast<double>(frames));
        tally_.count(
            log_, "frames to settle",
            told && std::abs(static_cast<double>(*told) - static_cast<double>(frames)) <= slack);
    }

    void overshoots(double size) const {
        const double told = record_.overshoot.size.worst;
        const bool right = size < 1.0 ? told < 1.0 : std::abs(told / size - 1.0) <= 0.25;
        tally_.count(log_, size < 1.0 ? "no overshoot" : "overshoot", right);
    }

  private:
    Tally& tally_;
    std::string log_;
    const SummaryRecord& record_;
};

constexpr double kJitters[] = {0.0, 0.3, 0.5, 1.0};

void steady_lights(const Sensor& sensor, std::uint32_t seed, Tally& tally) {
    for (const double percent : kJitters) {
        ModelLog log(sensor.locus, seed);
        log.jitter(percent);
        const double kelvin = log.draw(3050, 6500);
        for (int n = 0; n < 600; ++n) log.show(kelvin, kDay);
        const SummaryRecord record = summarise(sensor, log);
        const std::string name = sensor.name + ", jitter";
        const Judged judged(tally, name, record);
        judged.changes(0);
        judged.is_calm();
        tally.count(name, "no swings of light", record.light_swing_count == 0);
        if (percent > 0.0) continue;
        const auto& start = record.cold_start->visible.matrix;
        tally.count(name, "start settles", start.state == VisibleSettling::settled);
    }
    for (const double percent : {2.0, 4.0, 6.0, 8.0}) {
        ModelLog log(sensor.locus, seed);
        log.jitter(0.3);
        const double kelvin = log.draw(3300, 6000);
        const double period = log.draw(90, 150);
        const double phase = 2.0 * log.draw();
        for (int n = 0; n < 900; ++n) {
            const double breath = std::sin(3.14159265 * (2.0 * n / period + phase));
            log.show(kelvin, kDay, 1.0 + percent / 100.0 * breath);
        }
        const SummaryRecord record = summarise(sensor, log);
        const Judged judged(tally, sensor.name + ", breathing", record);
        judged.changes(0);
        tally.count(sensor.name + ", breathing", "no flicker", record.visible.flicker_count == 0);
        if (percent < 6.0) continue;
        tally.count(sensor.name + ", breathing", "light swings at 6 and 8 %",
                    record.light_swing_count > 0);
    }
}

void flickering_lights(const Sensor& sensor, std::uint32_t seed, Tally& tally) {
    const auto alternate = [&](ModelLog& log, int half) {
        log.jitter(0.3);
        const auto [a, b] = two_lights(sensor, log);
        for (int n = 0; n < 40; ++n) log.show(a, kDay);
        for (int n = 0; n < 600; ++n) log.show(n / half % 2 == 0 ? b : a, kDay);
    };
    ModelLog lamp(sensor.locus, seed);
    lamp.jitter(0.3);
    const auto [a, b] = two_lights(sensor, lamp);
    for (int n = 0; n < 40; ++n) lamp.show(a, kDay);
    for (int n = 0; n < 600; ++n) lamp.show(n % 15 < 8 ? b : a, kDay);
    const SummaryRecord led = summarise(sensor, lamp);
    const Judged lamp_judged(tally, sensor.name + ", LED lamp at 2 Hz", led);
    lamp_judged.flickers(2.0, 600);
    lamp_judged.changes(0);

    ModelLog hunting(sensor.locus, seed);
    const int half = hunting.draw(3, 10);
    alternate(hunting, half);
    const SummaryRecord hunt = summarise(sensor, hunting);
    const Judged hunt_judged(tally, sensor.name + ", hunting", hunt);
    hunt_judged.flickers(15.0 / half, 600);
    hunt_judged.changes(0);
}

void changes_of_light(const Sensor& sensor, std::uint32_t seed, Tally& tally) {
    struct Course {
        const char* name;
        /// Share of the way at a frame after the change.
        std::function<double(int)> share;
        bool overshoots;
    };
    const Course courses[] = {
        {"sudden lamp", [](int) { return 1.0; }, false},
        {"lamp, white balance follows with 0.4 s",
         [](int n) { return 1.0 - std::exp(-(n + 1) / 12.0); }, false},
        {"door", [](int n) { return std::min(1.0, (n + 1) / 25.0); }, false},
        {"overshoot of white balance",
         [](int n) {
             return 1.0 - std::exp(-(n + 1) / 6.0) +
                    1.2 * std::exp(-(n - 12.0) * (n - 12.0) / 40.0);
         },
         true},
    };
    for (const Course& course : courses) {
        const auto [noisy, clean] = made(sensor, seed, [&](ModelLog& log, bool jitters) {
            const auto [a, b] = two_lights(sensor, log);
            if (jitters) log.jitter(0.3);
            for (int n = 0; n < 90; ++n) log.show(a, 90);
            for (int n = 0; n < 210; ++n) log.show(mired_between(a, b, course.share(n)), 120);
        });
        const SummaryRecord record = summarise(sensor, noisy);
        const Judged judged(tally, sensor.name + ", " + course.name, record);
        judged.changes(1);
        judged.settles(frames_to_settle(sensor, clean, 90));
        // Along a straight line between matrices the picture goes as far beyond as the light.
        if (sensor.name != "imx477-polynomial") continue;
        double farthest = 0.0;
        Camera camera(sensor.tuning, {true, false});
        RealMatrix before{};
        for (std::uint64_t n = 0; n < clean.count(); ++n) {
            camera.run(clean.frames()[n]);
            const RealMatrix now = shown_matrix(camera.registers(), sensor.tuning.caller);
            if (n == 89) before = now;
            if (n < 90) continue;
            const ChartError there = chart_error(before, rest_of(sensor, clean.frames().back()));
            const ChartError out = chart_error(before, now);
            for (std::size_t i = 0; i < kPatchCount; ++i) {
                farthest =
                    std::max(farthest, out.patches[i].difference - there.patches[i].difference);
            }
        }
        EXPECT_EQ(course.overshoots, farthest >= 1.0) << course.name << " seed " << seed;
        judged.overshoots(farthest);
    }
    ModelLog sunset(sensor.locus, seed);
    sunset.jitter(0.3);
    const double end = sunset.draw(3000, 3600);
    for (int n = 0; n < 60; ++n) sunset.show(6200, 120);
    for (int n = 0; n < 1800; ++n) {
        sunset.show(mired_between(6200, end, n / 1800.0), static_cast<std::uint32_t>(120 - n / 60));
    }
    for (int n = 0; n < 60; ++n) sunset.show(end, 90);
    const SummaryRecord record = summarise(sensor, sunset);
    const Judged judged(tally, sensor.name + ", sunset", record);
    judged.is_calm();
    if (sensor.name == "imx477-polynomial") judged.overshoots(0.0);
}

TEST(ModelLogs, VerdictsAreRight) {
    const char* wanted = std::getenv("IMGTUNE_MODEL_SEEDS");
    const int seeds = wanted != nullptr ? std::atoi(wanted) : 2;
    Tally tally;
    for (const char* name : {"imx708-blend", "imx477-polynomial"}) {
        const Sensor chosen = sensor(name);
        for (int seed = 1; seed <= seeds; ++seed) {
            const auto number = static_cast<std::uint32_t>(seed);
            steady_lights(chosen, number, tally);
            flickering_lights(chosen, number, tally);
            changes_of_light(chosen, number, tally);
        }
    }
    tally.check();
}

}  // namespace
}  // namespace imgtune::workbench
