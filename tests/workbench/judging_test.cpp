#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/workbench/model_logs.h"
#include "tests/workbench/tuning_fixture.h"
#include "workbench/files/text_file.h"
#include "workbench/judging/judgement.h"
#include "workbench/judging/junit.h"
#include "workbench/judging/limits.h"
#include "workbench/judging/log_measures.h"
#include "workbench/judging/smoothing.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

constexpr const char* kHead = "format: imgtune-limits/1\n";

Limits limits_of(const std::string& text) {
    Faults faults;
    Limits limits = read_limits(kHead + text, "l.yaml", faults);
    EXPECT_TRUE(faults.empty()) << faults.text();
    return limits;
}

const Limit& limit(const LimitSet& set, Measured measured) {
    return set[static_cast<std::size_t>(measured)];
}

TEST(Limits, FaultsAreToldByLine) {
    struct {
        const char* text;
        const char* codes;
        int line;
    } const cases[] = {
        {"limits: {visible_stp: 2}", "T003", 2},
        {"limits:\n  visible_step: wide", "T005", 3},
        {"limits:\n  visible_step: -1", "T101", 3},
        {"limits:\n  flicker_share: 101", "T101", 3},
        {"limits:\n  visible_step: {at_most: .inf}", "T005", 3},
        {"limits:\n  visible_step: {atmost: 2}", "T003", 3},
        {"limits:\n  visible_step: []", "T005", 3},
        {"limits: {visible_step: 2, visible_step: 3}", "T009", 2},
        {"fps: 0", "T101", 2},
        {"overrides: {logs: a}", "T005", 2},
        {"overrides:\n  - limits: {visible_step: 2}", "T004", 3},
        {"overrides:\n  - logs: '*'\n    limits: {check_errors: 2}", "T003", 4},
        {"calibration: [a]", "T005", 2},
        {"limits: {visible_step: 2", "T001", 3},
    };
    for (const auto& [text, expected, line] : cases) {
        Faults faults;
        read_limits(std::string(kHead) + text + '\n', "l.yaml", faults);
        EXPECT_EQ(codes(faults), expected) << text;
        ASSERT_FALSE(faults.empty()) << text;
        EXPECT_EQ(faults.list()[0].line, line) << text;
    }
    Faults faults;
    read_limits("limits: {}", "l.yaml", faults);
    EXPECT_EQ(codes(faults), "T002");
}

TEST(Limits, TheStarterReadsBackAsTheTableSaysWithEveryLimitNamed) {
    Faults faults;
    const std::string text = starter_limits();
    const Limits limits = read_limits(text, "starter", faults);
    EXPECT_TRUE(faults.empty()) << faults.text();
    for (const LimitKind& kind : limit_kinds()) {
        EXPECT_NE(text.find(kind.name), text.npos) << kind.name;
        const Limit& read = limit(limits.limits, kind.measured);
        EXPECT_EQ(read.at_most.has_value(), kind.started) << kind.name;
        EXPECT_EQ(read.at_most.value_or(kind.starter), kind.starter) << kind.name;
        EXPECT_EQ(&kind, &kind_of(kind.measured)) << kind.name;
    }
}

TEST(Limits, LaterOverridesReplaceEarlierOnesByPathOrFileName) {
    const Limits limits = limits_of(
        "limits: {visible_step: 2, clipped_share: 5}\n"
        "overrides:\n"
        "  - {logs: 'night*', limits: {visible_step: 4}}\n"
        "  - {logs: '*/lab/*', limits: {visible_step: none}}\n"
        "  - {logs: night2.csv, limits: {visible_step: {no_worse_by: 1}}}\n");
    const auto step = [&](const char* log) {
        return limit(limits.for_log(log), Measured::visible_step);
    };
    EXPECT_EQ(step("day.csv").at_most, 2.0);
    EXPECT_EQ(step("logs/night1.csv").at_most, 4.0);
    EXPECT_TRUE(step("a/lab/night1.csv").is_none());
    EXPECT_EQ(step("night2.csv").no_worse_by, 1.0);
    EXPECT_FALSE(step("night2.csv").at_most);
    EXPECT_EQ(limit(limits.for_log("night1.csv"), Measured::clipped_share).at_most, 5.0);
    EXPECT_TRUE(limits.needs_old());
    EXPECT_FALSE(limits_of("limits: {visible_step: 2}").needs_old());
}

Measures with_step(std::optional<double> value) {
    Measures measures;
    if (value) measures[0] = Measure{*value, 7, "blue"};
    return measures;
}

TEST(Judgement, ALimitIsAbsoluteOrAgainstTheOldTuningOrTheStricterOfBoth) {
    struct {
        const char* limit;
        std::optional<double> now, old;
        bool broken;
        double allowed;
    } const cases[] = {
        {"2", 2.0, {}, false, 2.0},
        {"2", 2.01, {}, true, 2.0},
        {"2", {}, {}, false, 2.0},
        {"{no_worse_by: 0.5}", 1.5, 1.0, false, 1.5},
        {"{no_worse_by: 0.5}", 1.6, 1.0, true, 1.5},
        {"{no_worse_by: 0.5}", 9.0, {}, false, 0.0},
        {"{at_most: 2, no_worse_by: 0.5}", 1.8, 1.0, true, 1.5},
        {"{at_most: 2, no_worse_by: 0.5}", 2.2, 3.0, true, 2.0},
        {"{at_most: 2, no_worse_by: 0.5}", 1.8, {}, false, 2.0},
    };
    for (const auto& [text, now, old, broken, allowed] : cases) {
        const Limits limits = limits_of(std::string("limits: {visible_step: ") + text + "}");
        const Measures before = with_step(old);
        const Verdict verdict = judge(limits.limits, LimitScope::log, with_step(now), &before);
        ASSERT_EQ(verdict.limits.size(), 1U) << text;
        EXPECT_EQ(verdict.limits[0].is_broken(), broken) << text;
        EXPECT_EQ(verdict.limits[0].limit, allowed) << text;
        EXPECT_EQ(verdict.is_accepted(), !broken) << text;
    }
}

TEST(Judgement, PutsWhatCannotBeJudgedFirstAndThenTheWorst) {
    const Limits limits = limits_of("limits: {visible_step: 2, check_errors: 0}");
    std::vector<Verdict> logs;
    for (const double value : {1.0, 5.0, 0.5}) {
        logs.push_back(judge(limits.limits, LimitScope::log, with_step(value), nullptr));
        logs.back().log = std::to_string(value);
        logs.back().frames = 10;
    }
    logs.emplace_back();
    logs.back().log = "none & <such>.csv";
    logs.back().error = "cannot be read";
    Faults findings;
    findings.add({.code = "T116", .path = "caller.weights", .message = "sum to 0"});
    findings.add({.code = "T118", .path = "caller.weights", .message = "stall"});
    Verdict tuning = judge(limits.limits, LimitScope::tuning, measures_of(findings), nullptr);
    EXPECT_EQ(tuning.limits[0].value->value, 1.0);
    const Judgement judgement = judgement_of(tuning, logs);
    EXPECT_EQ(judgement.logs[0].log, "none & <such>.csv");
    EXPECT_EQ(judgement.logs[1].log, "5.000000");
    EXPECT_EQ(judgement.logs[3].log, "0.500000");
    EXPECT_EQ(judgement.refused_logs(), 2U);
    EXPECT_EQ(judgement.broken(Measured::visible_step), 1U);
    EXPECT_EQ(judgement.broken(Measured::check_errors), 1U);
    EXPECT_EQ(judgement.frames(), 30U);
    EXPECT_FALSE(judgement.is_accepted());
    const std::string xml = junit_of(judgement, "t.yaml", [](auto&, auto&) { return "a > b"; });
    EXPECT_NE(xml.find("none &amp; &lt;such&gt;.csv"), xml.npos) << xml;
    EXPECT_NE(xml.find(">a &gt; b</failure>"), xml.npos) << xml;
}

/// Light that holds, jumps and holds again.
std::vector<Frame> jump(std::uint64_t first, std::uint64_t then) {
    std::vector<Frame> frames;
    for (std::uint64_t i = 0; i < first + then; ++i) {
        const bool after = i >= first;
        frames.push_back(to_frame({100, after ? 3000 : 6000, 0, 0, 0, after ? 750 : 1100, 512,
                                   after ? 1150 : 700, 0, 0, 0, 0}));
        frames.back().state.rAWBFullGain = frames.back().state.rAWBGain;
    }
    return frames;
}

TEST(LogMeasures, ANewMatrixAtOnceStepsAtTheChangeAndAnAverageSpreadsIt) {
    Tuning tuning = starter_tuning();
    const auto measures_with = [&](const RingWeights& weights) {
        tuning.caller.weights = weights;
        LogMeasures measures(tuning, {true, false}, {});
        for (const Frame& frame : jump(60, 90)) measures.add(frame);
        return measures_of(measures.finish());
    };
    const auto at = [](const Measures& measures, Measured measured) {
        const auto& measure = measures[static_cast<std::size_t>(measured)];
        EXPECT_TRUE(measure) << kind_of(measured).name;
        return measure.value_or(Measure{});
    };
    const Measures at_once = measures_with({1, 0, 0});
    const Measures spread = measures_with({1, 4, 4});
    EXPECT_EQ(at(at_once, Measured::visible_step).frame, 61U);
    EXPECT_EQ(at(at_once, Measured::settling_frames).value, 0.0);
    EXPECT_NEAR(at(at_once, Measured::error_at_rest).value, 0.0, 0.001);
    EXPECT_EQ(at(at_once, Measured::steady_step).value, 0.0);
    EXPECT_LT(at(spread, Measured::visible_step).value,
              0.5 * at(at_once, Measured::visible_step).value);
    EXPECT_GT(at(spread, Measured::settling_frames).value, 5.0);
    EXPECT_EQ(at(spread, Measured::settling_frames).frame, 61U);
    EXPECT_EQ(at(spread, Measured::settling_seconds).value,
              at(spread, Measured::settling_frames).value / 30.0);
    EXPECT_GT(at(spread, Measured::error_at_rest).value, 0.0);
}

TEST(LogMeasures, AChangeThatStillMovesCountsLongerThanItsHold) {
    Tuning tuning = starter_tuning();
    tuning.caller.weights = {1, 8, 8};
    LogMeasures measures(tuning, {true, false}, {});
    for (const Frame& frame : jump(60, 16)) measures.add(frame);
    const Measures measured = measures_of(measures.finish());
    const auto& settle = measured[static_cast<std::size_t>(Measured::settling_frames)];
    ASSERT_TRUE(settle);
    EXPECT_EQ(settle->value, 16.0);  // held for 15 frames after the first
    // On its way to no rest, it overshoots none.
    EXPECT_FALSE(measured[static_cast<std::size_t>(Measured::overshoot)]);
}

TEST(LogMeasures, WhatIsNotThereIsNotMeasured) {
    Tuning tuning = starter_tuning();
    const auto measured = [&](const std::vector<Frame>& log) {
        LogMeasures measures(tuning, limits_of("limits: {visible_step: 2}").jobs_of(tuning), {});
        for (const Frame& frame : log) measures.add(frame);
        std::string names;
        const Measures all = measures_of(measures.finish());
        for (const LimitKind& kind : limit_kinds()) {
            const bool has_value = all[static_cast<std::size_t>(kind.measured)].has_value();
            if (kind.scope == LimitScope::log && has_value) names += std::string(kind.name) + ' ';
        }
        return names;
    };
    const std::string always =
        "visible_step steady_step flicker_strength flicker_share clipped_share ";
    EXPECT_EQ(measured(jump(10, 0)), always);
    std::string with_rest = always;
    EXPECT_EQ(measured(jump(40, 0)), with_rest.insert(always.find("flicker"), "error_at_rest "));
    tuning.has_ccm = false;
    EXPECT_EQ(measured(jump(60, 60)), "");
    const Limits color = limits_of("limits: {color_settling_frames: 9}");
    EXPECT_TRUE(color.jobs_of(tuning).color);
    EXPECT_FALSE(color.jobs_of(tuning).ccm);
}

/// Logs of known light on a sample sensor, under the starter's limits.
TEST(LogMeasures, BreaksTheLimitsThatTheLogWasMadeToBreak) {
    Faults faults;
    const std::string path = std::string(IMGTUNE_EXAMPLES) + "/imx477-polynomial.yaml";
    const Tuning sample = read_yaml(read_text(path, std::size_t{1} << 20U), path, faults);
    ASSERT_FALSE(faults.has_errors()) << faults.text();
    const LightLocus locus = tuned_locus(sample);
    const Limits limits = read_limits(starter_limits(), "starter", faults);
    using Course = std::function<double(int)>;  // kelvin, by the frames after the first 90
    const auto lamp = [](double from, double to) {
        return [=](int n) { return n < 0 ? from : to; };
    };
    struct {
        const char* name;
        RingWeights weights;
        double jitter;
        Course kelvin;
        const char* broken;
    } const cases[] = {
        {"jitter", {2, 1, 1}, 1.0, [](int) { return 4600.0; }, ""},
        {"a lamp nobody minds", {2, 1, 1}, 0.3, lamp(5000, 4400), ""},
        {"a sudden lamp", {2, 1, 1}, 0.3, lamp(6200, 3000), "visible_step "},
        {"the same, spread", {1, 4, 3}, 0.0, lamp(6200, 3000), ""},
        {"the same, dragged out",
         {1, 8, 8},
         0.0,
         lamp(6200, 3000),
         "settling_frames error_at_rest "},
        {"LED lamp at 2 Hz",
         {1, 1, 1},
         0.3,
         [](int n) { return n % 15 < 8 ? 4300.0 : 5200.0; },
         "flicker_strength flicker_share "},
        {"hunting at 5 Hz",
         {1, 1, 1},
         0.3,
         [](int n) { return n % 6 < 3 ? 4300.0 : 5600.0; },
         "flicker_strength flicker_share "},
        {"a lamp that goes too far first",
         {1, 1, 1},
         0.3,
         [](int n) {
             const double beyond = std::exp(-(n - 12.0) * (n - 12.0) / 60.0);
             return n < 0 ? 5200.0 : 5200.0 - 1000.0 * (1.0 - std::exp(-n / 6.0)) - 800.0 * beyond;
         },
         "overshoot "},
        {"a sunset",
         {2, 1, 1},
         0.3,
         [](int n) { return 6200.0 - 2600.0 * std::clamp(n / 400.0, 0.0, 1.0); },
         ""},
    };
    for (const auto& [name, weights, jitter, kelvin, expected] : cases) {
        for (const std::uint32_t seed : {1U, 2U, 3U}) {
            Tuning tuning = sample;
            tuning.caller.weights = weights;
            ModelLog log(locus, seed);
            log.jitter(jitter);
            for (int n = -90; n < 500; ++n) log.show(kelvin(n), 100);
            LogMeasures measures(tuning, limits.jobs_of(tuning), limits.options);
            for (const Frame& frame : log.frames()) measures.add(frame);
            const Verdict verdict = judge(limits.for_log(name), LimitScope::log,
                                          measures_of(measures.finish()), nullptr);
            std::string broken;
            for (const LimitVerdict& limit : verdict.limits) {
                if (limit.is_broken()) broken += kind_of(limit.measured).name + std::string(" ");
            }
            EXPECT_EQ(broken, expected) << name << ", seed " << seed;
        }
    }
}

TEST(Smoothing, TriesEveryShareOnceAndFindsTheSmallestStepThatMeetsTheWish) {
    EXPECT_EQ(ring_weights().size(), 526U);
    const auto tried = [](RingWeights weights, double settle, double step, double at_rest) {
        WeightsTried each;
        each.weights = weights;
        each.reached = {settle, step, at_rest, 0.0};
        return each;
    };
    const std::vector<WeightsTried> all = {
        tried({1, 0, 0}, 0, 9.0, 0.0),  tried({2, 1, 1}, 8, 3.0, 0.1),
        tried({1, 1, 1}, 15, 2.0, 0.2), tried({1, 2, 1}, 16, 2.5, 0.2),
        tried({1, 4, 4}, 30, 1.0, 0.6), tried({1, 8, 8}, 60, 0.5, 3.0)};
    struct {
        double settle, step, at_rest;
        RingWeights chosen;
        bool met;
        Binding binds;
    } const cases[] = {
        {20, 2.5, 1.0, {1, 1, 1}, true, Binding::step},
        {40, 2.5, 1.0, {1, 4, 4}, true, Binding::settle},
        {100, 2.5, 1.0, {1, 4, 4}, true, Binding::at_rest},
        {100, 2.5, 4.0, {1, 8, 8}, true, Binding::at_rest},
        {10, 1.0, 1.0, {1, 1, 1}, false, Binding::step},
    };
    for (const auto& [settle, step, at_rest, chosen, met, binds] : cases) {
        Smoothing answer;
        answer.wish = {settle, step, at_rest, 0.0};
        choose_weights(all, answer);
        EXPECT_EQ(answer.weights->weights, chosen) << settle << ' ' << step;
        EXPECT_EQ(answer.met, met) << settle << ' ' << step;
        EXPECT_EQ(answer.weights->strain.binds, binds) << settle << ' ' << step;
    }
    Smoothing answer;
    choose_weights(all, answer);  // (1, 2, 1) is beaten in both, (1, 8, 8) stalls too far
    ASSERT_EQ(answer.front.size(), 4U);
    EXPECT_EQ(answer.front.back().weights, (RingWeights{1, 4, 4}));
}

}  // namespace
}  // namespace imgtune::workbench
