#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/workbench/sample_tuning.h"
#include "workbench/camera/camera.h"
#include "workbench/studies/verify.h"
#include "workbench/text/bad_input.h"
#include "workbench/trace/trace_capture.h"
#include "workbench/trace/traced_frames.h"

namespace imgtune::workbench {
namespace {

using Lines = std::vector<std::string>;

Tuning tuning_with_outdoor_images() {
    Tuning tuning = make_tuning();
    tuning.pca[0].u4OutdoorEnable = 1;
    tuning.pca[0].u4OutdoorLV_Start = 80;
    tuning.pca[0].u4OutdoorLV_End = 120;
    tuning.pca[0].u4OutdoorBase = 64;
    for (auto& image : tuning.color[3]) image.u4Word[6] = 40;
    return tuning;
}

/// Indoors, outdoors, in low light with the scene condition, lit by the flash, a still capture.
std::vector<Frame> walk() {
    std::vector<Frame> frames{
        make_frame(60, 4000, {700, 512, 1250}), make_frame(100, 4100, {900, 512, 1050}),
        make_frame(30, 2800, {650, 512, 1300}), make_frame(30, 5500, {1000, 512, 1000}),
        make_frame(60, 3000, {760, 512, 1200}),
    };
    frames[2].state.u4SceneFlag = 1;
    frames[3].state.u4FlashMode = 2;
    frames[4].state.profile = 7;
    frames[4].capture = 1;
    return frames;
}

constexpr const char* kWalk[] = {
    "1,60,4000,,,,700,512,1250,0,0,0,0,", "2,100,4100,,,,900,512,1050,0,0,0,0,",
    "3,30,2800,,,,650,512,1300,0,1,0,0,", "4,30,5500,,,,1000,512,1000,2,,0,0,",
    "5,60,3000,,,,760,512,1200,0,0,7,1,",
};

/// What the phone traces of each frame.
std::vector<Lines> traces_of(const Tuning& tuning, const std::vector<Frame>& frames) {
    TraceCapture capture(trace_switches(false));
    Camera camera(tuning, {tuning.has_ccm, tuning.has_color});
    std::vector<Lines> traces;
    for (const Frame& frame : frames) {
        capture.lines().clear();
        camera.run(frame);
        traces.push_back(capture.lines());
    }
    return traces;
}

struct Form {
    const char* before;  ///< a message
    const char* after;
    const char* others;  ///< before the messages of another camera; empty: none
    const char* written_by;
};

constexpr Form kThreadtime = {
    "06-01 12:00:00.000  1234  1250 D ispfeature: ", "\n",
    "06-01 12:00:00.000  1234  1251 D ispfeature: ", "06-01 12:00:00.000,1234,1250,"};

std::string log_of(const std::vector<Lines>& traces, const Form& form) {
    std::string log = "--------- beginning of main\n";
    for (const Lines& trace : traces) {
        for (const std::string& line : trace) {
            if (*form.others != '\0') log += form.others + line + form.after;
            log += "06-01 12:00:00.000  1234  1250 I other: D/ispfeature( 1): Fullgain = 1\n";
            log += "06-01 12:00:00.000  1234  1250 I chatty  : uid=1041 identical 2 lines\n";
            log += std::string(form.before) + "LVpos of a neighbour\n\n";
            log += form.before + line + form.after;
        }
    }
    return log;
}

Verification verify(const Tuning& tuning, const std::string& log) {
    MemorySource source(log);
    TracedFrames frames(source, CameraChoice{1234, 1250});
    Verifier verifier(tuning);
    for (TracedFrame frame; frames.next(frame);) verifier.add(frame);
    return verifier.result();
}

TEST(PhoneLog, EveryFormGivesTheFramesAndVerifies) {
    constexpr Form kForms[] = {
        kThreadtime,
        {"D/ispfeature( 1234): ", "\n", "D/ispfeature( 4321): ", ",1234,0,"},
        {"D/ispfeature(cameraserver: 1234): ", "\n", "D/ispfeature( 1041: 4321): ", ",1234,0,"},
        {"D/ispfeature: ", "\n", "", ",0,0,"},
        {"06-01 12:00:00.000 D/ispfeature( 1234): ", "\r\n",
         "06-01 12:00:00.000 D/ispfeature( 4321): ", "06-01 12:00:00.000,1234,0,"},
        {"2024-06-01 12:00:00.000000 +0200  1234  1250 D ispfeature: ", "\n",
         "2024-06-01 12:00:00.000000 +0200  4321  1250 D ispfeature: ",
         "2024-06-01 12:00:00.000000 +0200,1234,1250,"},
        {"  1717236000.123  1041  1234  1250 D ispfeature: ", "\n",
         "  1717236000.123  1041  1234  1249 D ispfeature: ", "1717236000.123,1234,1250,"},
        {"\x1b[38;5;75m06-01 12:00:00.000  1234  1250 D ispfeature: ", "\x1b[0m\r\n",
         "\x1b[38;5;75m06-01 12:00:00.000  1234  1251 D ispfeature: ",
         "06-01 12:00:00.000,1234,1250,"},
        {"[ 06-01 12:00:00.000  1234: 1250 D/ispfeature ]\n", "\n\n",
         "[ 06-01 12:00:00.000 1041: 1234: 1251 D/ispfeature ]\n", "06-01 12:00:00.000,1234,1250,"},
    };
    const Tuning tuning = tuning_with_outdoor_images();
    const std::vector<Lines> traces = traces_of(tuning, walk());
    std::size_t lines = 0;
    for (const Lines& trace : traces) lines += trace.size();
    for (const Form& form : kForms) {
        SCOPED_TRACE(form.before);
        const std::string log = log_of(traces, form);
        MemorySource source(log);
        std::optional<CameraChoice> camera;
        if (*form.others != '\0')
            camera =
                CameraChoice{1234, std::string_view(form.written_by).ends_with(",0,") ? 0 : 1250};
        TracedFrames frames(source, camera);
        std::uint64_t count = 0;
        Verifier verifier(tuning);
        for (TracedFrame frame; frames.next(frame); verifier.add(frame)) {
            ASSERT_LT(count, std::size(kWalk));
            const std::string expected = std::string(kWalk[count]) + form.written_by;
            EXPECT_EQ(traced_frame_line(++count, frame).substr(0, expected.size()), expected);
        }
        EXPECT_EQ(count, 5U);
        EXPECT_EQ(frames.others().size(), *form.others == '\0' ? 0U : 1U);
        EXPECT_EQ(verifier.result().lines, lines);
        EXPECT_EQ(verifier.result().missing_lines, 0U);
        EXPECT_FALSE(verifier.result().first) << verifier.result().first->value;
    }
}

TEST(PhoneLog, OneChangedBitIsFoundAndNamed) {
    struct Case {
        std::function<void(Tuning&)> change;
        std::uint64_t frame;
        const char* value;
        const char* phone;
        const char* desk;
        TraceCause cause;
        const char* field;
    };
    const Case cases[] = {
        {[](Tuning& t) { t.caller.weights[1] ^= 2; }, 1, "Coef1, Coef2, Coef3[1]", "1", "3",
         TraceCause::caller, "caller.weights"},
        {[](Tuning& t) { t.ccm.i4PQType ^= 1; }, 1, "PQ type", "0", "1", TraceCause::tuning,
         "ccm.i4PQType"},
        {[](Tuning& t) { t.ccm.rCCM_Nvram[6][3].u4Word[4] ^= 4 << 16; }, 1,
         "LV_06_CT3_rCCM_Nvram[7]", "-300", "-304", TraceCause::tuning,
         "ccm.rows.flash.3.matrix[7]"},
        {[](Tuning& t) { t.ccm.rCTAWBGain[6][0].i4R ^= 512; }, 4, "Proj AWB Gain[0]", "1000", "961",
         TraceCause::tuning, "ccm.rows.flash.*.gain"},
        {[](Tuning& t) { t.pca[0].sat_speed ^= 1; }, 1, "SmoothCOLOR In Ram[10]", "010", "011",
         TraceCause::tuning, "color.tuning.normal.sat_speed"},
        {[](Tuning& t) { t.color[3][0].u4Word[6] ^= 1; }, 1, "InterParamByLVPartialY PY_High[0]",
         "040", "041", TraceCause::tuning, "color.images.outdoor.0.Luma.PY[0]"},
        {[](Tuning& t) { t.color[0][1].u4Word[4] ^= 8; }, 1, "InterParamByLVGlobal (Low) C", "0",
         "8", TraceCause::tuning, "color.images.normal.1.Global.C"},
        {[](Tuning& t) { t.color[2][1].u4Word[77] ^= 1; }, 4, "InterParam3DLUT W1_Y PL", "0000",
         "0001", TraceCause::tuning, "color.images.flash.2|1.ColorMap.W1.Y.PL"},
        {[](Tuning& t) { t.color[1][0].u4Word[44] ^= 1; }, 3, "InterParamSGainByY SGY0_Low[0]",
         "000", "001", TraceCause::tuning, "color.images.scene.0.SGainByY.SGY0[0]"},
    };
    const Tuning tuning = tuning_with_outdoor_images();
    const std::string log = log_of(traces_of(tuning, walk()), kThreadtime);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        Tuning changed = tuning;
        c.change(changed);
        const Verification result = verify(changed, log);
        ASSERT_TRUE(result.first);
        EXPECT_EQ(result.first->frame, c.frame);
        EXPECT_EQ(result.first->time, "06-01 12:00:00.000");
        EXPECT_EQ(result.first->value, c.value);
        EXPECT_EQ(result.first->phone, c.phone);
        EXPECT_EQ(result.first->desk, c.desk);
        EXPECT_EQ(result.first->cause.cause, c.cause);
        EXPECT_EQ(result.first->cause.field, c.field);
        EXPECT_EQ(result.fields.size(), c.cause == TraceCause::tuning ? 1U : 0U);
        for (const TracedField& one : result.fields) EXPECT_EQ(one.field, c.field);
    }
}

TEST(PhoneLog, AllFieldsThatDifferAndPartsThatNoFrameUsesAreNamed) {
    Tuning tuning = tuning_with_outdoor_images();
    tuning.ccm.i4Method = 1;
    Tuning changed = tuning;
    changed.ccm.rCCM_Nvram[0][1].u4Word[0] ^= 1;
    changed.pca[0].hue_speed ^= 1;
    changed.color[3][1].u4Word[6] ^= 3;
    changed.ccm.rCCMPoly22Flash.i4P10[8] ^= 1;
    changed.color[1][4].u4Word[6] ^= 1;  // for light that no frame shows
    std::vector<Frame> frames = walk();
    const Verification result = verify(changed, log_of(traces_of(tuning, frames), kThreadtime));
    Lines fields;
    for (const TracedField& one : result.fields) fields.push_back(one.field);
    EXPECT_EQ(fields, (Lines{"ccm.rows.normal.1.matrix[0]", "color.tuning.normal.hue_speed",
                             "color.images.outdoor.1.Luma.PY[0]", "ccm.rCCMPoly22Flash.i4P10[8]"}));
    EXPECT_EQ(result.fields.back().frame, 4U);
    EXPECT_EQ(result.unused, (Lines{"color.images.normal.2|3|4", "color.images.scene.2|3|4",
                                    "color.images.flash.0|3|4", "color.images.outdoor.2|3|4"}));
    frames.resize(2);
    EXPECT_EQ(verify(tuning, log_of(traces_of(tuning, frames), kThreadtime)).unused,
              (Lines{"ccm.rows.low_light", "ccm.rows.flash", "ccm.rCCMPoly22Flash",
                     "color.images.normal.2|3|4", "color.tuning.scene", "color.images.scene",
                     "color.tuning.flash", "color.images.flash", "color.images.outdoor.2|3|4"}));
}

TEST(PhoneLog, ADamagedLineIsNotBlamedOnTheTuning) {
    const Tuning tuning = make_tuning();
    std::vector<Lines> traces = traces_of(tuning, walk());
    for (std::string& line : traces[1]) {
        if (line.starts_with("Clipped AWB")) line = "Clipped AWB full Gain = (905, 512, 1050)";
    }
    const Verification result = verify(tuning, log_of(traces, kThreadtime));
    ASSERT_TRUE(result.first);
    EXPECT_EQ(result.first->value, "Clipped AWB full Gain[0]");
    EXPECT_EQ(result.first->cause.cause, TraceCause::log);
    EXPECT_TRUE(result.fields.empty());
}

TEST(PhoneLog, WhatLiesBeyondTheHighestGainIsNotHeldAgainstThePhone) {
    const Tuning tuning = make_tuning();
    const struct {
        std::int32_t red, blue;
        bool equal;
    } cases[] = {{2000, 300, true}, {800, 1100, false}};
    for (const auto& c : cases) {
        std::vector<Lines> traces =
            traces_of(tuning, {make_frame(100, 4000, {c.red, 512, c.blue})});
        int changed = 0;
        for (std::string& line : traces[0]) {
            const bool place = line.starts_with("range 2 = (");
            if (place) line = "range 2 = (77.000000)";
            changed += place ? 1 : 0;
        }
        EXPECT_GT(changed, 0);
        EXPECT_EQ(!verify(tuning, log_of(traces, kThreadtime)).first, c.equal) << c.red;
    }
}

TEST(PhoneLog, StateFromBeforeTheLogIsTakenFromIt) {
    const Tuning tuning = tuning_with_outdoor_images();
    std::vector<Frame> frames = walk();
    frames.pop_back();  // a capture settles what the steps left
    for (int i = 0; i < 3; ++i) frames.push_back(frames[0]);
    std::vector<Lines> traces = traces_of(tuning, frames);

    for (int start : {1, 2}) {  // with either entry of the ring as the next
        const Verification late =
            verify(tuning, log_of({traces.begin() + start, traces.end()}, kThreadtime));
        EXPECT_FALSE(late.first) << start << ' ' << late.first->value;
        EXPECT_EQ(late.state_taken, 0U);
    }

    std::vector<Lines> without_one = traces;
    without_one.erase(without_one.begin() + 5);
    const Verification broken = verify(tuning, log_of(without_one, kThreadtime));
    ASSERT_TRUE(broken.first);
    EXPECT_EQ(broken.first->frame, 6U);
    EXPECT_EQ(broken.first->cause.cause, TraceCause::state);
    EXPECT_EQ(broken.differing_frames, 1U);

    const std::string begin = log_of({traces.begin(), traces.begin() + 5}, kThreadtime);
    const std::string loss =
        "06-01 12:00:00.000  1234  1250 I chatty  : uid=1041(cameraserver) expire 190 lines\n";
    const std::string end = log_of({traces.begin() + 6, traces.end()}, kThreadtime);
    const Verification lossy = verify(tuning, begin + loss + end);
    EXPECT_FALSE(lossy.first) << lossy.first->value;
    EXPECT_EQ(lossy.state_taken, 2U);  // ring and colour

    traces.insert(traces.end(), traces.begin(), traces.end());
    const Verification restarted = verify(tuning, log_of(traces, kThreadtime));
    EXPECT_FALSE(restarted.first) << restarted.first->value;
}

TEST(PhoneLog, CallsOfOneJobAloneAreFramesEach) {
    Tuning tuning = tuning_with_outdoor_images();
    tuning.has_color = false;
    const std::vector<Frame> still(3, walk()[0]);
    EXPECT_EQ(verify(tuning, log_of(traces_of(tuning, still), kThreadtime)).frames, 3U);
}

TEST(PhoneLog, LostAndCutLinesAreCountedAndNoDifference) {
    const Tuning tuning = tuning_with_outdoor_images();
    std::vector<Lines> traces = traces_of(tuning, walk());
    std::string whole = log_of(traces, kThreadtime);
    whole.resize(whole.size() - 3);  // within the last line's last number
    const Verification cut = verify(tuning, whole);
    EXPECT_FALSE(cut.first) << cut.first->value;
    EXPECT_EQ(cut.missing_lines, 1U);
    traces[1].erase(traces[1].begin() + 60, traces[1].begin() + 63);
    const Verification lost = verify(tuning, log_of(traces, kThreadtime));
    EXPECT_FALSE(lost.first) << lost.first->value;
    EXPECT_EQ(lost.missing_lines, 3U);
}

TEST(PhoneLog, ReplayTakesWhatTheTraceDoesNotSay) {
    const std::string text =
        "lv,cct,full_r,full_g,full_b,awb_r,awb_g,awb_b,flash,scene\n"
        "60,,,,,700,512,1250,1,\n"
        "50,4000,,,,,,,,1\n"
        "40,,900,512,800,,,,,\n";
    MemorySource source(text);
    FrameLog log("frames.csv", source);
    constexpr FrameValues kExpected[] = {
        {60, 0, 700, 512, 1250, 700, 512, 1250, 1, 0, 0, 0},
        {50, 4000, 700, 512, 1250, 700, 512, 1250, 0, 1, 0, 0},
        {40, 4000, 900, 512, 800, 900, 512, 800, 0, 0, 0, 0},
    };
    Frame frame;
    for (const FrameValues& expected : kExpected) {
        ASSERT_TRUE(log.next(frame));
        EXPECT_EQ(to_values(frame), expected);
    }
    EXPECT_FALSE(log.next(frame));
    for (const char* line : {",4000,,,,700,512,1250,0,0\n", "60,4000,700,,900,,,,0,0\n"}) {
        const std::string bad = text.substr(0, text.find('\n') + 1) + line;
        MemorySource bad_source(bad);
        FrameLog bad_log("frames.csv", bad_source);
        EXPECT_THROW(bad_log.next(frame), BadInput) << line;
    }
}

}  // namespace
}  // namespace imgtune::workbench
