#include "workbench/judging/limits.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/text/file_name.h"
#include "workbench/text/glob.h"

namespace imgtune::workbench {

namespace {

constexpr double kMostDifference = 200.0;
constexpr double kMostLimitFrames = 1e9;
constexpr double kMostPercent = 100.0;

constexpr const char* kNoMatrix = "the tuning has no matrices";
constexpr const char* kNoHold =
    "no change of light before light that holds for half a second, or no matrices";

// The starter's figures are those of a camera whose smoothing nobody minds: nothing seen in light
// that holds or beyond the new light, a change of light over in a second and a half.
constexpr LimitKind kLimitKinds[kMeasuredCount] = {
    {Measured::visible_step, "visible_step", "step", "CIEDE2000",
     "largest step from one frame to the next, in the patch that shows it most; without the start",
     kNoMatrix, LimitScope::log, kMostDifference, 2.0, true},
    {Measured::steady_step, "steady_step", "steady", "CIEDE2000",
     "the same in light that holds, once the picture has settled", kNoMatrix, LimitScope::log,
     kMostDifference, 1.0, true},
    {Measured::settling_frames, "settling_frames", "settle", "frames",
     "once the light has changed, until every patch stays within 'settled' of rest; the slowest",
     kNoHold, LimitScope::log, kMostLimitFrames, 45.0, true},
    {Measured::settling_seconds, "settling_seconds", "settle s", "seconds", "the same", kNoHold,
     LimitScope::log, kMostLimitFrames, 1.5, false},
    {Measured::error_at_rest, "error_at_rest", "at rest", "CIEDE2000",
     "where the average comes to rest, against what the light asks for; the worst light that holds",
     "no light holds for half a second, or no matrices", LimitScope::log, kMostDifference, 1.0,
     true},
    {Measured::overshoot, "overshoot", "overshoot", "CIEDE2000",
     "how far a patch goes beyond both ends of a change of light",
     "the picture came to rest after no change of light but those with a flash, or no matrices",
     LimitScope::log, kMostDifference, 1.0, true},
    {Measured::flicker_strength, "flicker_strength", "flicker", "CIEDE2000",
     "strongest swings that recur 0.5 to 15 times a second: their mean, in the patch that shows "
     "it most; 0: none is seen",
     kNoMatrix, LimitScope::log, kMostDifference, 1.0, true},
    {Measured::flicker_share, "flicker_share", "flicker %", "percent",
     "frames in which the picture flickers so", kNoMatrix, LimitScope::log, kMostPercent, 1.0,
     true},
    {Measured::clipped_share, "clipped_share", "clipped %", "percent",
     "frames with AWB gains beyond the tuned ones", kNoMatrix, LimitScope::log, kMostPercent, 10.0,
     true},
    {Measured::color_settling_frames, "color_settling_frames", "colour", "frames",
     "from a change of light until the colour engine's registers stand; how they look is not known",
     "no change of light before light that holds for half a second, or no colour engine",
     LimitScope::log, kMostLimitFrames, 60.0, false},
    {Measured::steepest_step, "steepest_step", "steepest", "times what is just seen",
     "steepest place of the matrices over light, one mired from the next",
     "the tuning has no matrices, or errors", LimitScope::tuning, kMostDifference, 1.0, true},
    {Measured::check_errors, "check_errors", "errors", "findings", "errors that check finds", "",
     LimitScope::tuning, kMostLimitFrames, 0.0, true},
    {Measured::check_warnings, "check_warnings", "warnings", "findings",
     "warnings that check finds", "", LimitScope::tuning, kMostLimitFrames, 3.0, true},
    {Measured::calibration_mean, "calibration_mean", "mean error", "CIEDE2000",
     "the chart's colours against those of the calibration's matrices, mean of patches and lights",
     "no matrices in the tuning, or no lights in the calibration", LimitScope::tuning,
     kMostDifference, 1.5, false},
    {Measured::calibration_worst, "calibration_worst", "worst error", "CIEDE2000",
     "the same, the worst patch in the worst light",
     "no matrices in the tuning, or no lights in the calibration", LimitScope::tuning,
     kMostDifference, 5.0, false},
};

std::string limit_line(const LimitKind& kind) {
    return fmt::format("{}{:<27}# {}; {}\n", kind.started ? "  " : "  # ",
                       fmt::format("{}: {}", kind.name, kind.starter), kind.unit, kind.meaning);
}

}  // namespace

std::span<const LimitKind, kMeasuredCount> limit_kinds() {
    return kLimitKinds;
}

const LimitKind& kind_of(Measured measured) {
    return kLimitKinds[static_cast<std::size_t>(measured)];
}

LimitSet Limits::for_log(std::string_view log) const {
    LimitSet set = limits;
    for (const LimitOverride& each : overrides) {
        if (!matches_glob(each.logs, log) && !matches_glob(each.logs, file_name(log))) continue;
        for (std::size_t i = 0; i < set.size(); ++i) {
            if (each.limits[i]) set[i] = *each.limits[i];
        }
    }
    return set;
}

bool Limits::needs_old() const {
    const auto compares = [](const Limit& limit) { return limit.no_worse_by.has_value(); };
    return std::any_of(limits.begin(), limits.end(), compares) ||
           std::any_of(overrides.begin(), overrides.end(), [&](const LimitOverride& each) {
               return std::any_of(each.limits.begin(), each.limits.end(),
                                  [&](const auto& limit) { return limit && compares(*limit); });
           });
}

Jobs Limits::jobs_of(const Tuning& tuning) const {
    const auto i = static_cast<std::size_t>(Measured::color_settling_frames);
    const bool wants_color =
        !limits[i].is_none() ||
        std::any_of(overrides.begin(), overrides.end(), [&](const LimitOverride& each) {
            return each.limits[i] && !each.limits[i]->is_none();
        });
    return {tuning.has_ccm, tuning.has_color && wants_color};
}

std::string starter_limits() {
    std::string text =
        "# Limits that a tuning must hold, for 'imgtune judge'. A limit is a number, at most "
        "which\n"
        "# the value may be; or {no_worse_by: 0.2}, compared with the tuning that --against "
        "names;\n"
        "# or both: {at_most: 2, no_worse_by: 0.2}. A limit that is left out does not count.\n"
        "format: imgtune-limits/1\n"
        "fps: 30    # frames per second of the logs\n"
        "noise: 5   # percent of gains and CT, tenths of an EV, that are no change of light\n"
        "settled: 1         # CIEDE2000 of a patch from where it rests that still counts as at "
        "rest\n"
        "flicker_patch: 1   # CIEDE2000 of a swing in one patch that is seen when it recurs, ...\n"
        "flicker_mean: 0.5  # ... or of the chart's mean; docs/visible.md says where from\n"
        "# calibration: sensor.json  # beside this file; what calibration_mean and _worst are "
        "against\n"
        "limits:\n";
    for (const LimitScope scope : {LimitScope::log, LimitScope::tuning}) {
        text += scope == LimitScope::log ? "  # of each log\n" : "  # of the tuning\n";
        for (const LimitKind& kind : kLimitKinds) {
            if (kind.scope == scope) text += limit_line(kind);
        }
    }
    return text +
           "overrides:  # for logs by the pattern of their names; later ones win\n"
           "  - logs: \"*flash*\"\n"
           "    limits: {visible_step: 8, settling_frames: none}\n";
}

}  // namespace imgtune::workbench
