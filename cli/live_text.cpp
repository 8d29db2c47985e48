#include "cli/live_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "cli/verification_text.h"
#include "workbench/appearance/patches.h"
#include "workbench/text/counted.h"
#include "workbench/text/shown_text.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

using Matrix = std::array<std::int32_t, 9>;

constexpr double kOne = 512.0;  // of a gain
constexpr std::chrono::seconds kQuiet{3};

std::string row(const char* name, const std::string& text) {
    return fmt::format("{:<10}{}", name, text);
}

std::string gain_text(const FrameValues& values, std::size_t first) {
    return fmt::format("{} {} {} = {:.3f} {:.3f} {:.3f}", values[first], values[first + 1],
                       values[first + 2], static_cast<double>(values[first]) / kOne,
                       static_cast<double>(values[first + 1]) / kOne,
                       static_cast<double>(values[first + 2]) / kOne);
}

/// What the tuning says the camera stack gives to the matrix.
std::size_t used_gain(const LiveStudy& study) {
    return study.camera().tuning().caller.full_gain == 1 ? kFullGain : kAwbGain;
}

std::string light_text(const FrameValues& values) {
    std::string text =
        fmt::format("LV {:.1f}   {} K", static_cast<double>(values[kLv]) / 10.0, values[kCct]);
    constexpr std::pair<Column, const char*> kSwitches[] = {
        {kFlash, "flash"}, {kScene, "scene"}, {kProfile, "profile"}, {kCapture, "capture"}};
    for (const auto& [column, name] : kSwitches) {
        if (values[column] != 0) text += fmt::format("   {} {}", name, values[column]);
    }
    return text;
}

/// The coefficient that is farthest from what the light asks for, in units of the codec.
std::int32_t to_target(const LiveFrame& frame) {
    std::int32_t most = 0;
    for (std::size_t k = 0; k < frame.matrix->size(); ++k) {
        most = std::max(most, std::abs((*frame.target)[k] - (*frame.matrix)[k]));
    }
    return most;
}

/// CIEDE2000 of the chart's patches; "with gains" counts what the AWB gains are off as well.
std::string visible_text(const std::optional<ChartDifference>& matrix,
                         const std::optional<ChartDifference>& with_gains, const char* unknown) {
    if (!matrix) return unknown;
    std::string text = fmt::format("{:.2f} mean, {:.2f} {}", matrix->mean, matrix->worst,
                                   chart_patches()[matrix->worst_patch].name);
    if (with_gains) text += fmt::format("; with gains {:.2f}", with_gains->mean);
    return text;
}

std::string settled_text(const JobSettling& settling) {
    std::string text;
    switch (settling.state) {
        case Settling::not_run:
            return "not judged yet";
        case Settling::not_held:
            return "not measured: the light did not hold";
        case Settling::unmoved:
            return "does not move";
        case Settling::settled:
            text = "settled in " + counted(*settling.frames, "frame");
            break;
        case Settling::moving:
            text = "still moving";
            break;
        case Settling::never_rests:
            text = "never rests";
            break;
    }
    if (settling.stall_field.empty()) return text;
    return text + fmt::format("; {} rests at {}, its target is {}", settling.stall_field,
                              settling.stall_resting, settling.stall_target);
}

/// A change of light and how each job follows it.
std::vector<std::string> change_rows(const char* name, const LightChange& change, bool start,
                                     Jobs jobs) {
    const std::string frames = change.first == change.last
                                   ? fmt::format("frame {}", change.first)
                                   : fmt::format("frames {} to {}", change.first, change.last);
    const std::string held =
        change.held == 0 ? "the light moves" : fmt::format("held for {} since", change.held);
    std::vector<std::string> rows{
        row(name, fmt::format("{}{}; {}", start ? "start, " : "", frames, held))};
    if (change.held == 0) return rows;
    if (jobs.ccm) rows.push_back(row("", "matrix " + settled_text(change.settling[kCcmJob])));
    if (jobs.color) rows.push_back(row("", "colour " + settled_text(change.settling[kColorJob])));
    return rows;
}

std::string verdict_text(const Verification& so_far) {
    if (so_far.lines == 0) return "nothing to compare yet";
    if (!so_far.first) {
        return fmt::format("equal: {}, {}", counted(so_far.frames, "frame"),
                           counted(so_far.lines, "trace line"));
    }
    return fmt::format("different: {} of {}", so_far.differing_frames,
                       counted(so_far.frames, "frame"));
}

std::string clock_text(std::chrono::milliseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
    return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
}

std::vector<std::string> matrix_rows(const LiveFrame& frame, double one) {
    std::vector<std::string> rows{
        fmt::format("{:<10}{:^27}     {:^27}", "matrix", "programmed", "what this light asks for")};
    for (std::size_t r = 0; r < 3; ++r) {
        std::string text(10, ' ');
        for (const Matrix& matrix : {*frame.matrix, *frame.target}) {
            for (std::size_t c = 0; c < 3; ++c)
                text += fmt::format("{:9.3f}", matrix[3 * r + c] / one);
            text += "     ";
        }
        rows.push_back(text);
    }
    rows.push_back(row(
        "", fmt::format("farthest coefficient {:.3f} from its target", to_target(frame) / one)));
    return rows;
}

std::vector<std::string> waiting_rows(const Screen& screen, const LiveClock& clock) {
    std::vector<std::string> rows;
    if (clock.lines == 0) {
        rows.push_back("waiting for the first line of the log");
        if (clock.since_start < kQuiet) return rows;
        rows.push_back(screen.quiet("is the phone plugged in? 'adb devices' lists it"));
    } else if (clock.trace_lines == 0) {
        rows.push_back(
            fmt::format("{}, none of them from the library", counted(clock.lines, "line")));
        if (clock.since_start < kQuiet) return rows;
        rows.push_back(screen.quiet("switch its traces on:   imgtune props | sh"));
        rows.push_back(screen.quiet("and open the camera"));
    } else {
        rows.push_back(fmt::format("{} of the library, but no frame from its start yet",
                                   counted(clock.trace_lines, "line")));
        if (clock.since_start < kQuiet) return rows;
        rows.push_back(screen.quiet("are all switches on?   imgtune props | sh"));
    }
    return rows;
}

}  // namespace

std::vector<std::string> live_screen(const Screen& screen, const std::string& tuning,
                                     LiveStudy& study, const LiveClock& clock) {
    const LiveFrame& frame = study.newest();
    std::vector<std::string> rows;
    std::string head = screen.bold("imgtune watch") + "  " + shown_text(tuning, 40) + "   " +
                       counted(frame.number, "frame");
    if (clock.frames_per_second)
        head += fmt::format("   {:.1f} a second", *clock.frames_per_second);
    rows.push_back(head + "   " + clock_text(clock.since_start));
    rows.emplace_back();
    if (frame.number == 0) {
        for (const std::string& text : waiting_rows(screen, clock)) rows.push_back(text);
    } else {
        rows.push_back(row("light", light_text(frame.values)));
        rows.push_back(row("gain", gain_text(frame.values, used_gain(study))));
        rows.emplace_back();
        if (frame.matrix) {
            const double one = 1 << std::clamp(study.camera().tuning().caller.frac_bits, 0, 12);
            for (const std::string& text : matrix_rows(frame, one)) rows.push_back(text);
            const VisibleFrame& seen = frame.visible;
            rows.push_back(row(
                "visible", "from rest    " + visible_text(seen.from_rest, seen.from_rest_with_gains,
                                                          "not measured: the light moves")));
            rows.push_back(
                row("CIEDE2000", "from before  " + visible_text(seen.step, seen.step_with_gains,
                                                                "not measured: no frame before")));
            rows.push_back(row(
                "clip",
                frame.clipping == Clipping::none
                    ? "none"
                    : screen.bad(fmt::format("the gain lies beyond the {} end of the tuned range",
                                             clipping_name(frame.clipping)))));
            rows.emplace_back();
        }
        const Jobs jobs = study.camera().jobs();
        for (const std::string& text :
             change_rows("change", study.change(), study.in_start(), jobs)) {
            rows.push_back(text);
        }
        if (study.change_before()) {
            for (const std::string& text :
                 change_rows("before", *study.change_before(), false, jobs)) {
                rows.push_back(screen.quiet(text));
            }
        }
        rows.emplace_back();
        const Verification& so_far = study.verification();
        const std::string verdict = verdict_text(so_far);
        rows.push_back(row("verify", so_far.first ? screen.bad(verdict) : screen.good(verdict)));
        if (so_far.first) {
            const TraceDifference& first = *so_far.first;
            rows.push_back(row(
                "",
                fmt::format("first in frame {}, {}: phone {}, desk {}", first.frame,
                            shown_text(first.value), shown_text(first.phone, 60),
                            first.desk.empty() ? "(no such line)" : shown_text(first.desk, 60))));
            rows.push_back(row("", "likely cause: " + cause_text(first.cause)));
        }
        if (clock.since_frame && *clock.since_frame >= kQuiet) {
            rows.push_back(
                screen.bad(row("quiet", fmt::format("no frame for {} s: is the camera open?",
                                                    clock.since_frame->count() / 1000))));
        }
    }
    if (clock.lost_lines > 0) {
        rows.push_back(row("log", fmt::format("{} reported; a larger buffer keeps them: adb "
                                              "logcat -G 16M",
                                              counted(clock.lost_lines, "lost line"))));
    }
    if (clock.unusable_calls > 0) {
        rows.push_back(row("log", fmt::format("{} left out: lines with their inputs are missing",
                                              counted(clock.unusable_calls, "call"))));
    }
    if (!clock.others.empty()) rows.push_back(row("others", clock.others));
    rows.emplace_back();
    rows.push_back(screen.quiet("Ctrl-C ends with the summary"));
    return rows;
}

std::string live_line(LiveStudy& study) {
    const LiveFrame& frame = study.newest();
    std::string text = fmt::format("frame {}", frame.number);
    if (!frame.time.empty()) text += "  " + frame.time;
    text += "  " + light_text(frame.values);
    const std::size_t gain = used_gain(study);
    text += fmt::format("   gain {} {} {}", frame.values[gain], frame.values[gain + 1],
                        frame.values[gain + 2]);
    if (frame.matrix) {
        text += "   matrix";
        for (const std::int32_t value : *frame.matrix) text += fmt::format(" {}", value);
        text += fmt::format("   to target {}   clip {}", to_target(frame),
                            clipping_name(frame.clipping));
    }
    if (frame.matrix) {
        const auto mean = [](const std::optional<ChartDifference>& difference) {
            return difference ? fmt::format("{:.2f}", difference->mean) : std::string("-");
        };
        text += fmt::format("   from rest {}, from before {}", mean(frame.visible.from_rest),
                            mean(frame.visible.step));
    }
    const Verification& so_far = study.verification();
    if (so_far.lines > 0) {
        text += so_far.first
                    ? fmt::format("   {} differ", counted(so_far.differing_frames, "frame"))
                    : "   equal";
    }
    return text + '\n';
}

}  // namespace imgtune::cli
