#include "workbench/files/judge_files.h"

#include <fmt/format.h>

#include <filesystem>
#include <mutex>
#include <optional>
#include <utility>

#include "workbench/calibration/points.h"
#include "workbench/calibration/reader.h"
#include "workbench/calibration/tuned_row.h"
#include "workbench/files/file_source.h"
#include "workbench/files/replay_files.h"
#include "workbench/files/text_file.h"
#include "workbench/judging/log_measures.h"
#include "workbench/studies/check.h"
#include "workbench/studies/steepness.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLongestLimits = std::size_t{1} << 20U;

/// Of the tuning and of the old one; the log is read once, and both see each frame.
struct BothMeasures {
    Measures now;
    std::optional<Measures> old;
    std::uint64_t frames = 0;
};

BothMeasures measures_of_log(const JudgeRequest& request, const std::string& path) {
    FrameFile file(path);
    const Limits& limits = request.limits;
    LogMeasures now(request.tuning, limits.jobs_of(request.tuning), limits.options);
    std::optional<LogMeasures> old;
    if (request.old != nullptr)
        old.emplace(*request.old, limits.jobs_of(*request.old), limits.options);
    for (Frame frame; file.log().next(frame);) {
        now.add(frame);
        if (old) old->add(frame);
    }
    if (now.frames() == 0) throw BadInput(file.log().name() + ": the log has no frames");
    BothMeasures both{measures_of(now.finish()), std::nullopt, now.frames()};
    if (old) both.old = measures_of(old->finish());
    return both;
}

[[noreturn]] void throw_faults(const std::string& what, Faults& faults) {
    faults.sort();
    std::string text = faults.text();
    text.pop_back();
    throw BadInput(what + text);
}

/// What the library makes of the calibration's lights, against its matrices.
void add_calibration_error(const Tuning& tuning, const Limits& limits,
                           const std::string& limits_path, Measures& measures) {
    if (limits.calibration.empty()) {
        throw BadInput(limits_path +
                       ": calibration_mean and calibration_worst need a calibration; add "
                       "'calibration: FILE', a path beside the limits");
    }
    const std::filesystem::path path =
        std::filesystem::path(limits_path).parent_path() / limits.calibration;
    Faults faults;
    const Calibration calibration =
        read_calibration(read_text(path.string(), kLargestCalibrationText), path.string(), faults);
    const Sensor sensor(calibration, {}, faults);
    if (faults.has_errors()) throw_faults("the calibration cannot be used\n", faults);
    Measure mean;
    Measure worst;
    const std::vector<PointError> errors = point_errors(tuning, sensor.points());
    for (const PointError& error : errors) {
        mean.value += error.mean_difference / static_cast<double>(errors.size());
        if (error.largest_difference < worst.value) continue;
        worst = {error.largest_difference, 0, fmt::format("at {:.0f} K", error.kelvin)};
    }
    if (errors.empty() || !tuning.has_ccm) return;
    measures[static_cast<std::size_t>(Measured::calibration_mean)] = mean;
    measures[static_cast<std::size_t>(Measured::calibration_worst)] = worst;
}

/// The strongest place of all that the study has looked at.
std::optional<Measure> steepest_measure(const Tuning& tuning) {
    if (!tuning.has_ccm) return std::nullopt;
    std::optional<Measure> most;
    const auto take = [&](const std::optional<SteepPlace>& place) {
        if (!place || (most && place->strength() <= most->value)) return;
        const auto& [from, to] = place->lights;
        most = Measure{place->strength(), 0,
                       fmt::format("{} row, {:.0f} K at light value {} to {:.0f} K at {}",
                                   kRowNames[place->row], from.kelvin, from.lv, to.kelvin, to.lv)};
    };
    const Steepness steepness = find_steepest(tuning);
    for (const Steepness::Row& row : steepness.rows) {
        take(row.on_locus);
        take(row.beside);
    }
    take(steepness.over_lv);
    return most ? most : Measure{};
}

bool has_limit(const Limits& limits, Measured measured) {
    return !limits.limits[static_cast<std::size_t>(measured)].is_none();
}

}  // namespace

Limits require_limits(const std::string& path) {
    Faults faults;
    Limits limits =
        read_limits(read_text(path, kLongestLimits), path == "-" ? "standard input" : path, faults);
    if (!faults.empty()) throw_faults("the limits cannot be used\n", faults);
    return limits;
}

Measures tuning_measures(const Tuning& tuning, const Limits& limits,
                         const std::string& limits_path) {
    Faults findings;
    check_tuning(tuning, findings);
    Measures measures = measures_of(findings);
    // Values that check calls errors can lead the library outside its tables.
    if (has_limit(limits, Measured::steepest_step) && !findings.has_errors())
        measures[static_cast<std::size_t>(Measured::steepest_step)] = steepest_measure(tuning);
    if (has_limit(limits, Measured::calibration_mean) ||
        has_limit(limits, Measured::calibration_worst)) {
        add_calibration_error(tuning, limits, limits_path, measures);
    }
    return measures;
}

Verdict judge_tuning(const Tuning& tuning, const Tuning* old, const Limits& limits,
                     const std::string& limits_path) {
    const Measures now = tuning_measures(tuning, limits, limits_path);
    const Measures before =
        old != nullptr ? tuning_measures(*old, limits, limits_path) : Measures{};
    return judge(limits.limits, LimitScope::tuning, now, old != nullptr ? &before : nullptr);
}

Verdict judge_log(const JudgeRequest& request, const std::string& log) {
    Verdict verdict;
    try {
        const BothMeasures measures = measures_of_log(request, log);
        verdict = judge(request.limits.for_log(log), LimitScope::log, measures.now,
                        measures.old ? &*measures.old : nullptr);
        verdict.frames = measures.frames;
    } catch (const BadInput& error) {
        verdict.error = error.what();
    }
    verdict.log = log;
    return verdict;
}

std::vector<Verdict> judge_logs(const JudgeRequest& request, const std::vector<std::string>& logs,
                                unsigned workers, const LogsDone& done) {
    std::vector<Verdict> verdicts(logs.size());
    std::mutex telling;
    std::size_t count = 0;
    std::uint64_t frames = 0;
    in_parallel(logs.size(), workers, [&](std::size_t i) {
        verdicts[i] = judge_log(request, logs[i]);
        const std::lock_guard lock(telling);
        frames += verdicts[i].frames;
        if (done) done(++count, frames);
    });
    return verdicts;
}

}  // namespace imgtune::workbench
