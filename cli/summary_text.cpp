#include "cli/summary_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "workbench/text/counted.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

constexpr std::array<const char*, 2> kJobNames = {"matrix", "colour"};
constexpr std::size_t kMostShown = 12;

bool runs(const SummaryRecord& record, std::size_t job) {
    return job == 0 ? record.jobs.ccm : record.jobs.color;
}

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
                               record.clipped.front().end == Clipping::low ? "low" : "high");
        }
        out += '\n';
    }
    return out;
}

std::string totals_text(const SummaryRecord& record) {
    std::string out;
    if (record.cold_start) {
        out +=
            fmt::format("{:<18}at rest after {} frame{} if the first light holds\n", "cold start",
                        record.cold_start_frames, record.cold_start_frames == 1 ? "" : "s");
    }
    out += fmt::format("{:<18}{}\n", "changes of light", record.change_count);
    for (std::size_t job = 0; job < kJobNames.size(); ++job) {
        if (!runs(record, job) || record.change_count == 0) continue;
        const SettlingTotals& totals = record.settling[job];
        out += fmt::format("{:<18}settled after {} of them", kJobNames[job], totals.settled);
        if (totals.most_frames) {
            out += fmt::format(", in {} frames (median), at most {} (change at frame {})",
                               *totals.median_frames, *totals.most_frames, text_of(totals.slowest));
        }
        if (totals.moving > 0) out += fmt::format("; still moving after {}", totals.moving);
        if (totals.never_rests > 0) out += fmt::format("; never rests in {}", totals.never_rests);
        if (totals.not_measured > 0) {
            out += fmt::format("; not measured in {}, which did not hold", totals.not_measured);
        }
        out += '\n';
    }
    return out;
}

std::string change_row(const std::string& frames, const LightChange& change) {
    std::string row = fmt::format("{:<20}{:>8}", frames, change.held);
    for (const JobSettling& settling : change.settling)
        row += fmt::format("{:>14}", text_of(settling));
    std::string stalls = stall_of(change.settling[0]);
    const std::string color = stall_of(change.settling[1]);
    if (!stalls.empty() && !color.empty()) stalls += ", ";
    return row + "   " + (stalls + color).append("\n");
}

std::string changes_text(const SummaryRecord& record) {
    if (!record.cold_start) return "";
    std::string out = fmt::format("\n{:<20}{:>8}{:>14}{:>14}   {}\n", "change at frame", "held for",
                                  "matrix in", "colour in", "rests short of its target");
    out +=
        change_row("start " + text_of(FrameSpan{record.cold_start->first, record.cold_start->last}),
                   *record.cold_start);
    for (std::size_t i = 0; i < std::min(kMostShown, record.changes.size()); ++i) {
        const LightChange& change = record.changes[i];
        out += change_row(text_of(FrameSpan{change.first, change.last}), change);
    }
    if (record.change_count > kMostShown) {
        out +=
            fmt::format("and {} more (--json lists {})\n", record.change_count - kMostShown,
                        record.change_count > record.changes.size() ? "the first thousand" : "all");
    }
    return out;
}

std::string fields_text(const SummaryRecord& record, const char* title, Restlessness by) {
    const std::vector<FieldMotion> fields = restless_fields(record, by);
    std::string out = fmt::format("\n{}: {}\n", title, counted(fields.size(), "field"));
    if (fields.empty()) return out;
    constexpr const char* kColumns = "{:<22}{:>12}{:>10}{:>11}{:>10}{:>14}{:>14}\n";
    out += fmt::format(kColumns, "field", "largest step", "at frame", "overshoot", "at frame",
                       "sign changes", "in steady");
    out += fmt::format(kColumns, "", "", "", "", "", "a second", "light");
    for (std::size_t i = 0; i < std::min(kMostShown, fields.size()); ++i) {
        const FieldMotion& motion = fields[i];
        out += fmt::format("{:<22}{:>12}{:>10}{:>11}{:>10}{:>14.2f}{:>14.2f}\n", motion.name,
                           motion.largest_step, motion.step_frame, motion.overshoot,
                           motion.overshoot > 0 ? fmt::format("{}", motion.overshoot_frame) : "-",
                           per_second(record, motion.sign_changes),
                           per_second(record, motion.steady_sign_changes));
    }
    return out;
}

}  // namespace

std::string summary_text(const SummaryRecord& record) {
    return head_text(record) + totals_text(record) + changes_text(record) +
           fields_text(record, "fields that moved after the start, largest steps first",
                       Restlessness::step) +
           fields_text(record, "fields that changed direction, most often first",
                       Restlessness::flicker);
}

}  // namespace imgtune::cli
