#ifndef IMGTUNE_WORKBENCH_STUDIES_TRACE_CAUSE_H
#define IMGTUNE_WORKBENCH_STUDIES_TRACE_CAUSE_H

#include <string>

#include "workbench/trace/trace_comparison.h"
#include "workbench/trace/trace_reader.h"

namespace imgtune::workbench {

/// Why a phone's trace and the desk's may differ first at a value, when all before it agree.
enum class TraceCause {
    tuning,   ///< the phone has another tuning
    caller,   ///< its camera stack passes other settings: weights, which gain
    state,    ///< frames before are not in the log, or its camera started anew
    version,  ///< its library computes otherwise, or traces otherwise
};

struct LikelyCause {
    TraceCause cause = TraceCause::version;
    /// The field or fields of the tuning to look at, as in its YAML form; empty for none.
    std::string field;
};

LikelyCause likely_cause(const TracedCall& call, const LineDifference& difference);

}  // namespace imgtune::workbench

#endif
