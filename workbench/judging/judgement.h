#ifndef IMGTUNE_WORKBENCH_JUDGING_JUDGEMENT_H
#define IMGTUNE_WORKBENCH_JUDGING_JUDGEMENT_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/findings/faults.h"
#include "workbench/judging/limits.h"
#include "workbench/studies/summary.h"

namespace imgtune::workbench {

/// A value that a limit is about, and where it was worst.
struct Measure {
    double value = 0.0;
    std::uint64_t frame = 0;  ///< from 1; 0: no single frame
    std::string where;        ///< patch, field or light, in words; empty: nothing to add
};
/// Without a value: not measured, as settling in a log whose light never holds.
using Measures = std::array<std::optional<Measure>, kMeasuredCount>;

/// Of a tuning: what check finds, and what its caller has measured besides.
Measures measures_of(const Faults& findings);

/// What became of one limit.
struct LimitVerdict {
    Measured measured = Measured::visible_step;
    std::optional<Measure> value;  ///< nullopt: not measured, which breaks nothing
    std::optional<double> old;     ///< of the tuning that is compared with
    double limit = 0.0;            ///< the stricter one, when both are given
    bool is_relative = false;      ///< that one comes of the old tuning
    bool is_known = false;         ///< false: compares with a value that was not measured

    bool is_broken() const { return value && is_known && value->value > limit; }
};

/// A log, or the tuning itself, under its limits.
struct Verdict {
    std::string log;    ///< empty: the tuning
    std::string error;  ///< why it cannot be judged, which refuses it; empty: it was
    std::uint64_t frames = 0;
    std::vector<LimitVerdict> limits;  ///< in the order of limit_kinds()

    bool is_accepted() const;
    std::size_t broken() const;
    /// How near the nearest limit is: 1 is at it, more is beyond.
    double strain() const;
};

/// Holds measures against the limits of their scope.
Verdict judge(const LimitSet& limits, LimitScope scope, const Measures& measures,
              const Measures* old);

struct Judgement {
    Verdict tuning;
    std::vector<Verdict> logs;  ///< worst first

    bool is_accepted() const;
    std::size_t refused_logs() const;
    /// Logs, or the tuning, that break the limit.
    std::size_t broken(Measured measured) const;
    std::uint64_t frames() const;
};

/// Puts the verdicts together, the worst log first: those that cannot be judged, then by strain.
Judgement judgement_of(Verdict tuning, std::vector<Verdict> logs);

}  // namespace imgtune::workbench

#endif
