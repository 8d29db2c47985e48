#include "workbench/json/summary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/summary_text.h"
#include "tests/workbench/sample_tuning.h"
#include "workbench/studies/clipping.h"
#include "workbench/studies/light_watch.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/settling.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/swings.h"
#include "workbench/trace/trace_capture.h"

namespace imgtune::workbench {
namespace {

/// Gains, one a frame, against how the watch takes them: Begins, moves on, holds.
TEST(LightWatch, PartsNoiseRampsAndSteps) {
    const auto told = [](const std::vector<int>& reds, double noise) {
        LightWatch watch(CallerSettings{}, {true, false}, noise, 3);
        std::string events;
        for (const int red : reds) {
            events += "Bm."[static_cast<int>(watch.next(make_frame(100, 5000, {red, 512, 900})))];
        }
        return events;
    };
    EXPECT_EQ(told({700, 700, 700, 701, 701, 701, 701}, 0), "B..B...");
    EXPECT_EQ(told({700, 693, 707, 704, 697, 706, 700}, 2), "B......");
    EXPECT_EQ(told({700, 693, 707, 704, 740, 735, 742}, 2), "B...B..");
    // A hold of three frames ends the change, one of two does not; the first hold always does.
    EXPECT_EQ(told({700, 800, 800, 800, 900, 900, 900, 900, 700}, 1), "BB..m...B");
    // A slow ramp drifts out of the tolerance again and again, and is one change.
    std::vector<int> dusk(40, 1000);
    for (int n = 0; n < 60; ++n) dusk.push_back(1000 - 4 * n);
    const std::string events = told(dusk, 2);
    EXPECT_EQ(std::count(events.begin(), events.end(), 'B'), 2) << events;
    // Flash, scene and capture know no tolerance.
    LightWatch watch(CallerSettings{}, {}, 50, 1);
    Frame frame = make_frame(100, 4640, {991, 512, 945});
    watch.next(frame);
    for (auto* kind : {&frame.state.u4FlashMode, &frame.state.u4SceneFlag, &frame.capture}) {
        watch.next(frame);
        watch.next(frame);
        *kind = 1;
        EXPECT_EQ(watch.next(frame), LightWatch::Event::begins);
    }
}

TEST(LightWatch, HoldsTheMeanAndTheNoiseOfTheFirstFrames) {
    LightWatch watch(CallerSettings{}, {true, false}, 5, 3);
    const auto show = [&](const std::vector<int>& reds) {
        for (const int red : reds) watch.next(make_frame(100, 5000, {red, 512, 900}));
    };
    show({1000, 1010, 1000, 990});
    EXPECT_EQ(watch.held(), 3U);
    // What comes later moves neither.
    show({1030, 1030, 970});
    EXPECT_EQ(watch.held(), 6U);
    EXPECT_EQ(watch.held_light().state.rAWBGain.i4R, 1000);
    // Twice the noise seen, and no more than the tolerance.
    EXPECT_EQ(watch.noisy_light(2, true)->state.rAWBGain.i4R, 1020);
    EXPECT_EQ(watch.noisy_light(2, false)->state.rAWBGain.i4R, 980);
    EXPECT_FALSE(watch.noisy_light(4, true).has_value());
    show({500, 524, 490, 490});  // a new light, 501 in the mean
    EXPECT_EQ(watch.noisy_light(2, true)->state.rAWBGain.i4R, 526);
}

TEST(HoldJudge, RestIsABandThatIsKeptForAWhile) {
    const Tuning tuning = make_tuning();
    const Jobs ccm{true, false};
    const Camera camera(tuning, ccm);
    const Frame light = make_frame(100, 5000, {1200, 512, 800});
    Camera resting = camera;
    run_to_rest(resting, light);
    const auto target = decode(target_registers(camera, light).ccm, tuning.caller);
    const auto rest = decode(resting.ccm(), tuning.caller);
    ASSERT_NE(target[1], rest[1]);

    for (const int noise : {0, 2}) {
        LightWatch watch(tuning.caller, ccm, 5, 3);
        for (const int lv : {100, 100 + noise, 100 - noise, 100}) {  // moves no target
            Frame frame = light;
            frame.state.u4RealLV = static_cast<std::uint32_t>(lv);
            watch.next(frame);
        }
        FieldMotions motions(tuning.caller, ccm);
        HoldJudge judge(camera, motions, 3);
        std::uint64_t number = 0;
        const auto show = [&](std::int32_t off) {
            NSIspTuning::ISP_CCM_T values{};
            std::copy(rest.begin(), rest.end(), std::begin(values.i4Coef));
            values.i4Coef[0] += off;
            values.i4Coef[1] -= off;
            Registers registers;
            CoefficientCodec(3, 9).encode(values, registers.ccm);
            motions.next(++number, registers, FieldMotions::Phase::light_holds);
        };
        show(0);
        judge.begin(camera.state());
        for (const int off : {50, 0, 0, 0, 0}) {
            show(off);
            judge.next();
        }
        judge.judge_by(watch);
        show(50);  // after three frames at rest it counts no more
        judge.next();
        const JobSettling verdict = judge.verdicts()[0];
        EXPECT_EQ(verdict.state, Settling::settled);
        EXPECT_EQ(verdict.frames, 2U);

        // Noise adds the stall, 1 with these weights; the diagonal closes a row of two.
        for (const std::size_t k : {0U, 1U}) {
            const int stall = noise == 0 ? 0 : k == 0 ? 2 : 1;
            EXPECT_EQ(judge.bands(0)[k].low, std::min(target[k], rest[k]) - stall) << k;
            EXPECT_EQ(judge.bands(0)[k].high, std::max(target[k], rest[k]) + stall) << k;
        }
    }
}

TEST(FieldMotions, TellStepsAndTurns) {
    // c1: two steps up while the light moves, beyond, back, then to and fro.
    using Phase = FieldMotions::Phase;
    FieldMotions motions(CallerSettings{}, {true, false});
    std::uint64_t number = 0;
    const auto show = [&](std::initializer_list<std::int32_t> values, Phase phase) {
        for (const std::int32_t c1 : values) {
            Registers registers;
            CoefficientCodec(3, 9).encode({{512 - c1, c1}}, registers.ccm);
            motions.next(++number, registers, phase);
        }
    };
    show({-90, 0}, Phase::cold_start);
    show({5}, Phase::light_moves);
    show({10, 30, 24, 20, 20}, Phase::light_holds);
    EXPECT_FALSE(motions.moved()[0]);
    show({25, 20, 25}, Phase::light_holds);
    EXPECT_TRUE(motions.moved()[0]);
    const FieldMotion& c1 = motions.motions()[1];
    EXPECT_EQ(c1.largest_step, 20);
    EXPECT_EQ(c1.step_frame, 5U);
    EXPECT_EQ(c1.sign_changes, 4U);  // up, up, up, down, down, up, down, up
    EXPECT_EQ(c1.steady_sign_changes, 4U);
    EXPECT_EQ(motions.motions()[2].largest_step, 0);
}

TEST(LightWatch, BelievesAChangeOnlyWhenItStays) {
    // Half a second is 15 frames: three of them beyond the tolerance make a change.
    LightWatch watch(CallerSettings{}, {true, false}, 5, 15);
    std::string events;
    const auto show = [&](const std::vector<int>& reds) {
        for (const int red : reds) {
            events += "Bm."[static_cast<int>(watch.next(make_frame(100, 5000, {red, 512, 900})))];
        }
    };
    show(std::vector<int>(20, 1000));
    show({1100, 1000, 900, 1100, 1100, 900, 1000});  // noise to both sides
    EXPECT_EQ(events, "B..........................");
    EXPECT_FALSE(watch.is_in_doubt());
    EXPECT_EQ(watch.held(), 26U);
    show({1100, 1110});
    EXPECT_TRUE(watch.is_in_doubt());
    show({1105});
    EXPECT_EQ(events.back(), 'B');
    EXPECT_EQ(watch.held(), 2U);
    EXPECT_EQ(watch.held_light().state.rAWBGain.i4R, 1105);
}

TEST(Turns, AreThereAndBackByOne) {
    Turns<double> turns(10);
    std::uint64_t frame = 0;
    std::string told;
    const auto show = [&](std::initializer_list<double> values) {
        for (const double value : values) {
            const auto turn = turns.next(++frame, value, [](double a, double b, double least) {
                const double distance = std::abs(a - b);
                return distance < least ? 0.0 : distance;  // as one may that only bounds it
            });
            if (turn) told += std::to_string(turn->frame) + ' ';
        }
    };
    show({0, 0.4, -0.4, 0.5, 0});  // noise
    show({1.2, 2.5, 2.6, 2.4});    // out, the first to come nearly so far is 7
    show({1.5, 0, 1.4});           // back at 10, out again
    EXPECT_EQ(told, "7 11 ");
    frame += 20;  // a pause: what comes back now is another way
    show({2.0, 0.0});
    EXPECT_EQ(told, "7 11 ");
}

TEST(Clipping, AgreesWithTheTraces) {
    Tuning tuning = make_tuning();
    tuning.ccm.rCTAWBGain[6][0] = {900, 512, 900};
    const struct {
        AWB_GAIN_T gain;
        int flash;
        Clipping end;
    } cases[] = {
        {{600, 512, 1400}, 0, Clipping::none}, {{1200, 512, 800}, 0, Clipping::none},
        {{599, 512, 1400}, 0, Clipping::low},  {{600, 512, 1401}, 0, Clipping::low},
        {{1201, 512, 800}, 0, Clipping::high}, {{1200, 512, 799}, 0, Clipping::high},
        {{1300, 512, 1500}, 0, Clipping::low}, {{850, 512, 1000}, 1, Clipping::low},
        {{950, 512, 890}, 1, Clipping::none},  {{850, 512, 1000}, 2, Clipping::low},
    };
    for (const auto& c : cases) {
        Frame frame = make_frame(100, 4000, c.gain);
        frame.state.u4FlashMode = c.flash;
        EXPECT_EQ(find_clipping(tuning, frame), c.end) << c.gain.i4R << ' ' << c.gain.i4B;
        TraceCapture trace(kCcmSwitches);
        Camera(tuning, {true, false}).run(frame);
        bool traced = false;
        for (const std::string& line : trace.lines()) {
            traced = traced || line.find(" R B full Gain") != std::string::npos;
        }
        EXPECT_EQ(traced, c.end != Clipping::none) << c.gain.i4R << ' ' << c.gain.i4B;
    }
}

struct Stretch {
    int frames;
    Frame light;
    int noise = 0;  ///< of the red gain, up and down in turn
};

SummaryRecord summarise(const Tuning& tuning, Jobs jobs, const std::vector<Stretch>& log,
                        SummaryOptions options = {}) {
    Camera camera(tuning, jobs);
    Summary summary(camera, options);
    std::uint64_t number = 0;
    for (const Stretch& stretch : log) {
        for (int n = 0; n < stretch.frames; ++n) {
            Frame frame = stretch.light;
            frame.state.rAWBGain.i4R += n % 2 == 0 ? stretch.noise : -stretch.noise;
            camera.run(frame);
            summary.add(++number, frame, camera);
        }
    }
    return summary.finish();
}

const Frame kWarm = make_frame(100, 2500, {600, 512, 1400});
const Frame kCold = make_frame(100, 5000, {1200, 512, 800});

TEST(SummaryOfLog, JudgesSettlingByTheRest) {
    // c1 by hand, from 0: -50 -62 -78 -85 -90 -93 -95 -97 -98 -98 -99, and there it stays.
    SummaryRecord record = summarise(make_tuning(), {true, false}, {{40, kWarm}, {40, kCold}});
    EXPECT_EQ(record.frames, 80U);
    ASSERT_TRUE(record.cold_start.has_value());
    EXPECT_EQ(record.cold_start->held, 39U);
    EXPECT_EQ(record.cold_start->settling[0].state, Settling::settled);
    EXPECT_GE(*record.cold_start->settling[0].frames, 10U);
    EXPECT_EQ(record.cold_start->settling[1].state, Settling::not_run);
    ASSERT_EQ(record.changes.size(), 1U);
    EXPECT_EQ(record.changes[0].first, 41U);
    EXPECT_EQ(record.changes[0].last, 41U);
    // The start is the largest step of all, and does not count: half of 60 is.
    const FieldMotion& c1 = record.fields[1];
    EXPECT_EQ(c1.largest_step, 30);
    EXPECT_EQ(c1.step_frame, 41U);

    // What cannot come near its target is told with how far it stays away.
    Tuning slow = make_tuning();
    slow.caller.weights = {1, 500, 499};
    record = summarise(slow, {true, false}, {{40, kWarm}});
    const JobSettling& stalled = record.cold_start->settling[0];
    EXPECT_EQ(stalled.state, Settling::settled);
    EXPECT_EQ(stalled.stall_field, "c7");
    EXPECT_EQ(stalled.stall_target, -300);
    EXPECT_EQ(stalled.stall_resting, 0);
    EXPECT_NE(cli::summary_text(record).find("c7 0 of -300"), std::string::npos);
}

TEST(SummaryOfLog, TellsMovingFromNotMeasured) {
    Frame scene = kWarm;
    scene.state.u4SceneFlag = 1;
    const Jobs color{false, true};
    // From 100 to 160 in steps of 10.
    const SummaryRecord settled = summarise(make_tuning(), color, {{20, kWarm}, {20, scene}});
    EXPECT_EQ(settled.changes.at(0).settling[1].state, Settling::settled);
    EXPECT_EQ(settled.changes[0].settling[1].frames, 5U);
    EXPECT_EQ(settled.settling[1].median_frames, 5U);

    const SummaryRecord moving = summarise(make_tuning(), color, {{20, kWarm}, {4, scene}});
    EXPECT_EQ(moving.changes.at(0).settling[1].state, Settling::moving);
    EXPECT_EQ(moving.settling[1].moving, 1U);
    EXPECT_FALSE(moving.settling[1].median_frames.has_value());

    const SummaryRecord unheld = summarise(make_tuning(), color, {{20, kWarm}, {1, scene}});
    EXPECT_EQ(unheld.changes.at(0).settling[1].state, Settling::not_held);
    const nlohmann::json json = to_json(unheld);
    EXPECT_EQ(json["changes"][0]["color"]["state"], "not_measured");
    EXPECT_TRUE(json["changes"][0]["color"]["settled_after"].is_null());
    EXPECT_TRUE(json["settling"]["color"]["median_frames"].is_null());
    EXPECT_NE(cli::summary_text(unheld).find("not measured"), std::string::npos);

    EXPECT_EQ(summarise(make_tuning(), {}, {}).cold_start, std::nullopt);
}

TEST(SummaryOfLog, TakesNoiseForNoChange) {
    Frame shade = kWarm;
    shade.state.rAWBGain.i4R = 800;
    shade.state.rAWBGain.i4B = 1200;
    const Frame sun = make_frame(100, 5000, {1150, 512, 850});
    const std::vector<Stretch> log = {{40, shade, 3}, {40, sun, 3}, {40, shade, 3}};
    const SummaryRecord record = summarise(make_tuning(), {true, false}, log);
    EXPECT_EQ(record.change_count, 2U);
    for (const LightChange& change : record.changes) {
        EXPECT_EQ(change.settling[0].state, Settling::settled);
        EXPECT_GE(*change.settling[0].frames, 2U) << cli::summary_text(record);
        EXPECT_LE(*change.settling[0].frames, 12U);
    }
    EXPECT_GT(record.flicker.at(0).turns, 10U);
    // What no tolerance takes for noise, the light's own swing is.
    EXPECT_GT(summarise(make_tuning(), {true, false}, log, {30.0, 0.1}).change_count, 0U);
}

TEST(SummaryOfLog, NamesWhatSwitchesImagesAndWhatNeverMoved) {
    // A light that sits at the grid's 5000 K takes the map of either neighbour in turn.
    Tuning tuning = make_tuning();
    for (std::size_t ct = 0; ct < 5; ++ct) {
        tuning.color[0][ct].u4Word[72] = 100U * static_cast<std::uint32_t>(ct);  // W1.H.PL
    }
    Frame below = kCold;
    below.state.u4CCT = 4990;
    std::vector<Stretch> log{{30, kCold}};
    for (int n = 0; n < 10; ++n) log.insert(log.end(), {{1, below}, {1, kCold}});
    Frame scene = kCold;
    scene.state.u4SceneFlag = 1;
    log.push_back({30, scene});
    const SummaryRecord record = summarise(tuning, {false, true}, log);
    ASSERT_EQ(record.image_switches.size(), 2U);
    EXPECT_EQ(record.image_switches[0].cause, SwitchCause::grid_ct);
    EXPECT_EQ(record.image_switches[0].kelvin, 5000U);
    EXPECT_EQ(record.image_switches[0].count, 20U);
    EXPECT_NEAR(per_second(record.image_switches[0], 30.0), 30.0, 1e-9);
    EXPECT_EQ(record.image_switches[1].cause, SwitchCause::slot);
    const std::string text = cli::summary_text(record);
    EXPECT_NE(text.find("the grid's 5000 K: 20 times"), std::string::npos) << text;

    // The matrix of another scene is the same.
    const SummaryRecord both = summarise(make_tuning(), {true, false}, {{30, kCold}, {30, scene}});
    EXPECT_EQ(both.changes.at(0).settling[0].state, Settling::unmoved);
    EXPECT_EQ(both.changes[0].visible.matrix.state, VisibleSettling::unmoved);
    EXPECT_EQ(both.visible_settling.unmoved, 1U);
}

TEST(SummaryOfLog, MarksClippedRuns) {
    Frame low = kWarm;
    low.state.rAWBGain.i4R = 599;
    Frame high = kCold;
    high.state.rAWBGain.i4B = 799;
    const SummaryRecord record = summarise(make_tuning(), {true, false},
                                           {{3, low}, {2, kWarm}, {4, high}, {1, low}, {2, kCold}});
    EXPECT_EQ(record.clipped_frames, 8U);
    const nlohmann::json expected = nlohmann::json::parse(R"([
        {"first": 1, "last": 3, "end": "low"}, {"first": 6, "last": 9, "end": "high"},
        {"first": 10, "last": 10, "end": "low"}])");
    EXPECT_EQ(nlohmann::json(to_json(record))["clipped"]["spans"], expected);
}

}  // namespace
}  // namespace imgtune::workbench
