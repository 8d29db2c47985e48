#include "workbench/judging/log_measures.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/studies/resting.h"

namespace imgtune::workbench {

namespace {

/// CIEDE2000 of the worst patch that counts as at rest: half of what half of all observers see.
constexpr double kAtRest = 0.4;

Measure measure_of(const ChartDifference& difference, std::uint64_t frame) {
    return {difference.worst, frame, chart_patches()[difference.worst_patch].name};
}

void take_larger(std::optional<Measure>& into, const Measure& measure) {
    if (!into || measure.value > into->value) into = measure;
}

/// In percent of all frames.
Measure share_of_frames(std::uint64_t count, const SummaryRecord& record) {
    return {record.frames == 0
                ? 0.0
                : 100.0 * static_cast<double>(count) / static_cast<double>(record.frames),
            0, ""};
}

std::uint64_t restless_changes(const SummaryRecord& record) {
    return record.settling[0].never_rests + record.settling[1].never_rests;
}

/// The slower of the jobs that ran.
std::optional<Measure> settling(const SummaryRecord& record) {
    std::optional<Measure> slowest;
    for (const Job job : {Job::ccm, Job::color}) {
        if (const auto measure = register_settling(record, job)) take_larger(slowest, *measure);
    }
    return slowest;
}

}  // namespace

LogMeasures::LogMeasures(const Tuning& tuning, Jobs jobs, const SummaryOptions& options)
    : camera_(tuning, jobs),
      summary_(camera_, options),
      visible_(camera_, {.frames_per_second = options.frames_per_second,
                         .noise_percent = options.noise_percent}) {}

void LogMeasures::add(const Frame& frame) {
    if (frames_++ == 0) {
        Camera probe = camera_;
        start_frames_ = run_to_rest(probe, frame).ccm.frames;
    }
    camera_.run(frame);
    summary_.add(frames_, frame, camera_);
    const VisibleFrame seen = visible_.next(frame, camera_);
    if (frames_ > start_frames_) note_step(seen);
    const bool held = seen.from_rest.has_value();
    if (held && !held_) note_rest(frame);
    held_ = held;
}

void LogMeasures::note_step(const VisibleFrame& seen) {
    if (!seen.step) return;
    take_larger(step_, measure_of(*seen.step, frames_));
    // The tail of a change is no flicker: the picture has to have come to rest first.
    settled_ = seen.from_rest && (settled_ || seen.from_rest->worst <= kAtRest);
    if (settled_) take_larger(steady_step_, measure_of(*seen.step, frames_));
}

/// The light has held for half a second: where its average ends, against what it asks for.
void LogMeasures::note_rest(const Frame& frame) {
    Camera probe = camera_;
    run_to_rest(probe, frame);
    const CallerSettings& caller = camera_.tuning().caller;
    const ChartView target(shown_matrix(target_registers(camera_, frame), caller));
    const ChartView rest(shown_matrix(probe.registers(), caller));
    take_larger(at_rest_, measure_of(chart_difference(target, rest, kLightSkin), frames_));
}

Measures LogMeasures::finish() {
    const SummaryRecord record = summary_.finish();
    Measures measures;
    const auto put = [&](Measured measured, const std::optional<Measure>& measure) {
        measures[static_cast<std::size_t>(measured)] = measure;
    };
    put(Measured::visible_step, step_);
    put(Measured::steady_step, steady_step_);
    put(Measured::error_at_rest, at_rest_);
    std::optional<Measure> settle = settling(record);
    put(Measured::settling_frames, settle);
    if (settle) settle->value /= record.frames_per_second;
    put(Measured::settling_seconds, settle);
    put(Measured::never_settles, Measure{static_cast<double>(restless_changes(record)), 0, ""});
    if (record.jobs.ccm)
        put(Measured::clipped_share, share_of_frames(record.clipped_frames, record));
    return measures;
}

std::optional<Measure> register_settling(const SummaryRecord& record, Job job) {
    const auto index = static_cast<std::size_t>(job);
    std::optional<Measure> slowest;
    const SettlingTotals& totals = record.settling[index];
    if (totals.unmoved > 0) slowest = Measure{};
    if (totals.most_frames) {
        slowest = Measure{static_cast<double>(*totals.most_frames), totals.slowest.last,
                          job == Job::ccm ? "matrix" : "colour"};
    }
    for (const LightChange& change : record.changes) {
        if (change.settling[index].state != Settling::moving) continue;
        const auto longer = static_cast<double>(change.held + 1);
        take_larger(slowest, {longer, change.last + change.held, "still moving"});
    }
    return slowest;
}

}  // namespace imgtune::workbench
