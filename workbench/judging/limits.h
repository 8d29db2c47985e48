#ifndef IMGTUNE_WORKBENCH_JUDGING_LIMITS_H
#define IMGTUNE_WORKBENCH_JUDGING_LIMITS_H

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/findings/faults.h"
#include "workbench/studies/summary.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// What a limit is about.
enum class Measured : std::size_t {
    visible_step,
    steady_step,
    settling_frames,
    settling_seconds,
    error_at_rest,
    overshoot,
    flicker_strength,
    flicker_share,
    clipped_share,
    color_settling_frames,
    steepest_step,
    check_errors,
    check_warnings,
    calibration_mean,
    calibration_worst,
};
inline constexpr std::size_t kMeasuredCount = 15;

/// One value for each log, or one for the tuning.
enum class LimitScope { log, tuning };

/// The one table of limits: reading, the starter, the schema and every report walk it.
struct LimitKind {
    Measured measured;
    const char* name;   ///< in the file
    const char* title;  ///< of a column
    const char* unit;
    const char* meaning;
    const char* unmeasured;  ///< why it may have no value
    LimitScope scope;
    double most;     ///< the largest limit that makes sense
    double starter;  ///< in the starter
    bool started;    ///< the starter has it; otherwise it stands there as a comment
};
std::span<const LimitKind, kMeasuredCount> limit_kinds();
const LimitKind& kind_of(Measured measured);

/// At most this; or no more above the old tuning's value than this; or both.
struct Limit {
    std::optional<double> at_most;
    std::optional<double> no_worse_by;

    bool is_none() const { return !at_most && !no_worse_by; }
};
using LimitSet = std::array<Limit, kMeasuredCount>;

/// Limits for logs of some names.
struct LimitOverride {
    std::string logs;  ///< pattern for a log's path or file name: * and ?
    std::array<std::optional<Limit>, kMeasuredCount> limits;
};

struct Limits {
    SummaryOptions options;   ///< rate and noise of the logs, and what counts as seen
    std::string calibration;  ///< path, beside the limits' file; empty: none
    LimitSet limits;
    std::vector<LimitOverride> overrides;

    /// What holds for a log: overrides of later lines replace those of earlier ones.
    LimitSet for_log(std::string_view log) const;
    /// Whether some limit compares with an old tuning.
    bool needs_old() const;
    /// The parts of a tuning that have to run for what is measured; none where it has no part.
    Jobs jobs_of(const Tuning& tuning) const;
};

/// Reads limits; every fault is added, and what is faulty is no limit.
Limits read_limits(const std::string& text, const std::string& file, Faults& faults);

/// Commented limits to start from.
std::string starter_limits();

}  // namespace imgtune::workbench

#endif
