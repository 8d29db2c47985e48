#include "workbench/judging/log_measures.h"

#include <fmt/format.h>

#include <string>

namespace imgtune::workbench {

namespace {

std::string change_at(const FrameSpan& frames) {
    return frames.first == frames.last
               ? fmt::format("the change at frame {}", frames.first)
               : fmt::format("the change in frames {} to {}", frames.first, frames.last);
}

/// A measure of the matrices that never came about is 0.
Measure measure_of(const SeenDifference& seen) {
    if (seen.frame == 0 || seen.size.worst <= 0.0) return {};
    return {seen.size.worst, seen.frame, chart_patches()[seen.size.worst_patch].name};
}

std::optional<Measure> settling_of(const SettlingTotals& totals) {
    if (!totals.most_behind) return std::nullopt;
    if (*totals.most_behind == 0) return Measure{};
    const FrameSpan& change = totals.farthest_behind;
    return Measure{static_cast<double>(*totals.most_behind), change.last,
                   change_at(change) + (totals.still_moved ? ", still moving" : "")};
}

Measure clipping_of(const SummaryRecord& record) {
    if (record.clipped.empty()) return {};
    const ClippedSpan& first = record.clipped.front();
    return {100.0 * static_cast<double>(record.clipped_frames) / static_cast<double>(record.frames),
            first.frames.first,
            first.end == Clipping::low ? "beyond the low end" : "beyond the high end"};
}

void put_flicker(const SummaryRecord& record, Measures& measures) {
    Measure& strength = measures[static_cast<std::size_t>(Measured::flicker_strength)].emplace();
    Measure& share = measures[static_cast<std::size_t>(Measured::flicker_share)].emplace();
    const std::optional<VisibleFlicker>& strongest = record.visible.strongest_flicker;
    if (!strongest) return;
    strength = {strongest->worst, strongest->frames.first,
                fmt::format("{}, {:.1f} times a second until frame {}",
                            chart_patches()[strongest->worst_patch].name, strongest->per_second,
                            strongest->frames.last)};
    share = {100.0 * share_of_flicker(record), record.visible.flicker.front().frames.first, ""};
}

}  // namespace

Measures measures_of(const SummaryRecord& record) {
    Measures measures;
    const auto put = [&](Measured measured, const std::optional<Measure>& measure) {
        measures[static_cast<std::size_t>(measured)] = measure;
    };
    put(Measured::color_settling_frames, register_settling(record, Job::color));
    if (!record.visible.is_measured) return measures;

    SeenDifference step = record.visible.steady_step;
    keep_larger(step, record.visible.changing_step);
    put(Measured::visible_step, measure_of(step));
    put(Measured::steady_step, measure_of(record.visible.steady_step));

    std::optional<Measure> settling = settling_of(record.visible_settling);
    put(Measured::settling_frames, settling);
    if (settling) settling->value /= record.frames_per_second;
    put(Measured::settling_seconds, settling);

    SeenDifference at_rest = record.stall;
    if (record.cold_start) keep_larger(at_rest, record.cold_start->visible.stall);
    if (at_rest.frame != 0) put(Measured::error_at_rest, measure_of(at_rest));
    if (record.overshoot.frame != 0) put(Measured::overshoot, measure_of(record.overshoot));
    put_flicker(record, measures);
    put(Measured::clipped_share, clipping_of(record));
    return measures;
}

std::optional<Measure> register_settling(const SummaryRecord& record, Job job) {
    return settling_of(record.settling[static_cast<std::size_t>(job)]);
}

}  // namespace imgtune::workbench
