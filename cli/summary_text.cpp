#include "cli/summary_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "workbench/text/counted.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

constexpr std::array<const char*, 2> kJobNames = {"matrix", "colour"};
constexpr std::size_t kMostShown = 12;

std::string text_of(const FrameSpan& frames) {
    return frames.first == frames.last ? fmt::format("{}", frames.first)
                                       : fmt::format("{}-{}", frames.first, frames.last);
}

std::string text_of(const JobSettling& settling) {
    switch (settling.state) {
        case Settling::not_run:
            return "-";
        case Settling::not_held:
            return "not measured";
        case Settling::unmoved:
            return "nothing moved";
        case Settling::settled:
            return fmt::format("{}", *settling.frames);
        case Settling::moving:
            return "moving";
        case Settling::never_rests:
            return "never rests";
    }
    return "";
}

std::string stall_of(const JobSettling& settling) {
    if (settling.stall_field.empty()) return "";
    return fmt::format("{} {} of {}", settling.stall_field, settling.stall_resting,
                       settling.stall_target);
}

std::string head_text(const SummaryRecord& record) {
    std::string out = fmt::format(
        "{:<18}{} ({:.1f} s at {:g} frames a second)\n", "frames", record.frames,
        static_cast<double>(record.frames) / record.frames_per_second, record.frames_per_second);
    if (record.noise_percent > 0.0) {
        out += fmt::format(
            "{:<18}gains and colour temperature within {:g} %, light value within {:g}; held for "
            "{} frames (--noise)\n",
            "same light", record.noise_percent, record.noise_percent, record.hold_frames);
    } else {
        out += fmt::format("{:<18}no value differs; held for {} frames (--noise)\n", "same light",
                           record.hold_frames);
    }
    if (record.jobs.ccm) {
        out += fmt::format("{:<18}{}", "gain clipped", counted(record.clipped_frames, "frame"));
        if (record.clipped_frames > 0) {
            out += fmt::format(" ({:.1f} %) in {} runs, the first from frame {} ({} end)",
                               100.0 * static_cast<double>(record.clipped_frames) /
                                   static_cast<double>(record.frames),
                               record.clipped_span_count, record.clipped.front().frames.first,
                               clipping_name(record.clipped.front().end));
        }
        out += '\n';
    }
    return out;
}

/// "0.52 in the mean, 1.42 in orange".
std::string text_of(const ChartDifference& size) {
    if (size.worst < 0.005) return "none";
    return fmt::format("{:.2f} in the mean, {:.2f} in {}", size.mean, size.worst,
                       chart_patches()[size.worst_patch].name);
}

std::string step_text(const SeenDifference& seen, const VisibleLimits& limits) {
    if (seen.frame == 0) return "none";
    std::string out = text_of(seen.size);
    if (seen.size.worst < 0.005) return out;
    return out + fmt::format(", {:.2f} in {}, at frame {}", seen.size.chosen,
                             chart_patches()[limits.patch].name, seen.frame);
}

std::string flicker_text(const SummaryRecord& record) {
    const VisibleRecord& visible = record.visible;
    std::string out = fmt::format("{:<18}", "flicker");
    const std::string limit = fmt::format(
        "swings of {:g} in the mean or {:g} in one patch that recur 0.5 to 15 times a second",
        visible.limits.flicker_mean, visible.limits.flicker_patch);
    const std::optional<VisibleFlicker> strongest = visible.strongest_flicker;
    if (!strongest) return out + fmt::format("none: no {}\n", limit);
    out += fmt::format("in {:.1f} % of the frames: {}\n", 100.0 * share_of_flicker(record), limit);
    constexpr std::size_t kMostFlickerShown = 4;
    for (std::size_t i = 0; i < std::min(kMostFlickerShown, visible.flicker.size()); ++i) {
        const VisibleFlicker& flicker = visible.flicker[i];
        out += fmt::format(
            "{:<18}frames {}: {:.1f} times a second, {:.2f} in the mean, {:.2f} in "
            "{}; {}\n",
            "", text_of(flicker.frames), flicker.per_second, flicker.mean, flicker.worst,
            chart_patches()[flicker.worst_patch].name,
            flicker.light_moves ? "the light moves, too" : "the light holds");
    }
    if (visible.flicker_count > kMostFlickerShown) {
        out += fmt::format("{:<18}and {} more; the strongest is {:.2f} at frames {}\n", "",
                           visible.flicker_count - kMostFlickerShown, strongest->worst,
                           text_of(strongest->frames));
    }
    return out;
}

std::string settling_text(const SettlingTotals& totals, std::uint64_t changes,
                          double frames_per_second) {
    std::string out;
    const auto add = [&out](const std::string& text) { out += (out.empty() ? "" : "; ") + text; };
    const auto seconds = [&](std::uint64_t frames) {
        return fmt::format("{} ({:.1f} s)", counted(frames, "frame"),
                           static_cast<double>(frames) / frames_per_second);
    };
    if (totals.settled > 0) {
        add(fmt::format("settled after {} of {}, in {} (median)", totals.settled, changes,
                        seconds(*totals.median_frames)));
        out += fmt::format(", at most {} (change at frame {})", seconds(*totals.most_frames),
                           text_of(totals.slowest));
    }
    if (totals.unmoved > 0) add(fmt::format("nothing moved in {}", totals.unmoved));
    if (totals.moving > 0) add(fmt::format("still moving after {}", totals.moving));
    if (totals.never_rests > 0) add(fmt::format("never rests in {}", totals.never_rests));
    if (totals.not_measured > 0) add(fmt::format("not measured in {}", totals.not_measured));
    return out;
}

std::string largest_text(const SeenDifference& seen, double limit) {
    if (seen.frame == 0) return "not measured in any change of light";
    if (seen.size.worst < limit) {
        return fmt::format("none visible: at most {:.2f}, at frame {}", seen.size.worst,
                           seen.frame);
    }
    return text_of(seen.size) + fmt::format(", at frame {}", seen.frame);
}

std::string visible_text(const SummaryRecord& record) {
    if (!record.jobs.ccm) {
        return "\nWhat a viewer sees is not measured: the matrix does not run, and of the colour "
               "engine no picture is known.\n";
    }
    const VisibleRecord& visible = record.visible;
    std::string out =
        "\nWhat a viewer sees: CIEDE2000 of the chart's 24 patches through the matrix, white "
        "balance taken as perfect\n";
    out += flicker_text(record);
    out += fmt::format("{:<18}{}\n", "step, light holds",
                       step_text(visible.steady_step, visible.limits));
    if (visible.gain_step.frame != 0) {
        out += fmt::format("{:<18}{}\n", "  with the gains",
                           step_text(visible.gain_step, visible.limits));
    }
    out += fmt::format("{:<18}{}\n", "step at a change",
                       step_text(visible.changing_step, visible.limits));
    if (record.change_count > 0) {
        out += fmt::format(
            "{:<18}below {:g} of rest: {}\n", "settling", visible.limits.settled,
            settling_text(record.visible_settling, record.change_count, record.frames_per_second));
        out += fmt::format("{:<18}{}\n", "  with the gains",
                           settling_text(record.visible_settling_with_gains, record.change_count,
                                         record.frames_per_second));
        out += fmt::format("{:<18}{}\n", "overshoot",
                           largest_text(record.overshoot, visible.limits.settled));
        out += fmt::format("{:<18}{}\n", "rests short",
                           largest_text(record.stall, visible.limits.settled));
    }
    out += fmt::format("{:<18}{}\n", "limits", kVisibleLimitsSource);
    return out;
}

std::string switch_text(const SummaryRecord& record, const ImageSwitches& switches) {
    std::string out;
    switch (switches.cause) {
        case SwitchCause::slot:
            out = "scene or flash switches the slot";
            break;
        case SwitchCause::grid_ct:
            out = fmt::format("the light crosses the grid's {} K", switches.kelvin);
            break;
        case SwitchCause::midpoint:
            out = fmt::format("the light crosses {} K, half way between two of the grid",
                              switches.kelvin);
            break;
        case SwitchCause::outdoor:
            out = "the light value crosses the outdoor limit";
            break;
    }
    out += fmt::format(": {}, first at frame {}", counted(switches.count, "time"),
                       switches.frames.first);
    const double rate = per_second(switches, record.frames_per_second);
    if (switches.back_and_forth > 0) {
        out += fmt::format("; the light sits there: {} of them back and forth, {:.1f} a second",
                           switches.back_and_forth, rate);
    }
    return out;
}

std::string totals_text(const SummaryRecord& record) {
    std::string out;
    if (record.cold_start) {
        out += fmt::format("{:<18}at rest after {} if the first light holds\n", "cold start",
                           counted(record.cold_start_frames, "frame"));
    }
    out += fmt::format("{:<18}{}\n", "changes of light", record.change_count);
    for (const LightSwing& swing : record.light_swings) {
        if (&swing != &record.light_swings.front() && &swing != &record.light_swings.back())
            continue;
        out += fmt::format("{:<18}in frames {}: {:.1f} times a second, not counted as changes\n",
                           "light swings", text_of(swing.frames), swing.per_second);
    }
    if (record.light_swing_count > 2) {
        out += fmt::format("{:<18}and {} times between\n", "", record.light_swing_count - 2);
    }
    out += visible_text(record);
    if (!record.jobs.color) return out;
    out += "\nThe colour map is taken whole from one image, never blended\n";
    for (std::size_t i = 0; i < std::min<std::size_t>(record.image_switches.size(), 6); ++i) {
        out += fmt::format("{:<18}{}\n", i == 0 ? "image switches" : "",
                           switch_text(record, record.image_switches[i]));
    }
    if (record.image_switches.empty()) out += fmt::format("{:<18}never\n", "image switches");
    return out;
}

std::string text_of(const VisibleWay& way) {
    switch (way.state) {
        case VisibleSettling::not_measured:
            return "not measured";
        case VisibleSettling::unmoved:
            return "nothing seen";
        case VisibleSettling::settled:
            return fmt::format("{}", *way.frames);
        case VisibleSettling::moving:
            return "moving";
    }
    return "";
}

std::string change_row(const SummaryRecord& record, const std::string& frames,
                       const LightChange& change) {
    std::string row = fmt::format("{:<20}{:>9}", frames, change.held);
    const VisibleChange& seen = change.visible;
    if (record.jobs.ccm) {
        row += fmt::format(
            "{:>14}{:>14}{:>10}", text_of(seen.matrix), text_of(seen.with_gains),
            seen.overshoot.frame != 0 ? fmt::format("{:.2f}", seen.overshoot.size.worst) : "-");
    }
    for (std::size_t job = 0; job < change.settling.size(); ++job) {
        if (runs(record.jobs, job)) row += fmt::format("{:>15}", text_of(change.settling[job]));
    }
    std::string stalls = stall_of(change.settling[0]);
    const std::string color = stall_of(change.settling[1]);
    if (!stalls.empty() && !color.empty()) stalls += ", ";
    return row + "   " + (stalls + color).append("\n");
}

std::string changes_text(const SummaryRecord& record) {
    if (!record.cold_start) return "";
    std::string out =
        "\nChanges of light: frames until the picture, then until the registers stand\n";
    out += fmt::format("{:<20}{:>9}", "change at frame", "held for");
    if (record.jobs.ccm)
        out += fmt::format("{:>14}{:>14}{:>10}", "seen", "with gains", "overshoot");
    if (runs(record.jobs, kCcmJob)) out += fmt::format("{:>15}", "matrix");
    if (runs(record.jobs, kColorJob)) out += fmt::format("{:>15}", "colour");
    out += "   registers that rest short of their target\n";
    out += change_row(
        record, "start " + text_of(FrameSpan{record.cold_start->first, record.cold_start->last}),
        *record.cold_start);
    for (std::size_t i = 0; i < std::min(kMostShown, record.changes.size()); ++i) {
        const LightChange& change = record.changes[i];
        out += change_row(record, text_of(FrameSpan{change.first, change.last}), change);
    }
    if (record.change_count > kMostShown) {
        out +=
            fmt::format("and {} more (--json lists {})\n", record.change_count - kMostShown,
                        record.change_count > record.changes.size() ? "the first thousand" : "all");
    }
    return out;
}

const char* text_of(StepCause cause) {
    switch (cause) {
        case StepCause::smoothing:
            return "";
        case StepCause::image:
            return "another image";
        case StepCause::slot:
            return "another slot";
        case StepCause::capture:
            return "a still capture";
    }
    return "";
}

/// The colour map's fields step together: one stands for all of them.
std::vector<FieldMotion> without_twins(std::vector<FieldMotion> fields) {
    constexpr std::string_view kMap = "ColorMap.";
    const auto is_of_map = [&](const FieldMotion& field) { return field.name.starts_with(kMap); };
    const auto all =
        static_cast<std::size_t>(std::count_if(fields.begin(), fields.end(), is_of_map));
    const auto first = std::find_if(fields.begin(), fields.end(), is_of_map);
    if (first == fields.end()) return fields;
    first->name = fmt::format("ColorMap, {} fields", all);
    fields.erase(std::remove_if(first + 1, fields.end(), is_of_map), fields.end());
    return fields;
}

std::string fields_text(const SummaryRecord& record, const char* title, Restlessness by) {
    const std::vector<FieldMotion> all = restless_fields(record, by);
    std::string out = fmt::format("\n{}: {}\n", title, counted(all.size(), "field"));
    if (all.empty()) return out;
    const std::vector<FieldMotion> fields = without_twins(all);
    constexpr const char* kColumns = "{:<22}{:>12}{:>10}{:>17}{:>14}{:>14}\n";
    out += fmt::format(kColumns, "field", "largest step", "at frame", "because of", "sign changes",
                       "in steady");
    out += fmt::format(kColumns, "", "", "", "", "a second", "light");
    for (std::size_t i = 0; i < std::min(kMostShown, fields.size()); ++i) {
        const FieldMotion& motion = fields[i];
        out += fmt::format("{:<22}{:>12}{:>10}{:>17}{:>14.2f}{:>14.2f}\n", motion.name,
                           motion.largest_step, motion.step_frame, text_of(motion.step_cause),
                           per_second(record, motion.sign_changes),
                           per_second(record, motion.steady_sign_changes));
    }
    return out;
}

}  // namespace

std::string summary_text(const SummaryRecord& record) {
    return head_text(record) + totals_text(record) + changes_text(record) +
           fields_text(
               record,
               "Registers, which say nothing of what is seen; those that moved after the start",
               Restlessness::step) +
           fields_text(record, "Registers that changed direction, most often first",
                       Restlessness::flicker);
}

}  // namespace imgtune::cli
