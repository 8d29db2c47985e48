#ifndef IMGTUNE_WORKBENCH_STUDIES_TRACE_CAUSE_H
#define IMGTUNE_WORKBENCH_STUDIES_TRACE_CAUSE_H

#include <string>

#include "workbench/trace/trace_comparison.h"
#include "workbench/trace/trace_reader.h"

namespace imgtune::workbench {

struct LikelyCause {
    TraceCause cause = TraceCause::version;
    /// The field or fields of the tuning to look at, as in its YAML form; empty for none.
    std::string field;
    /// The trace tells the field's own value, not one that is computed from it.
    bool tells_field = false;
};

/// Why a call differs at a value. `alone`: no other line of the call does.
LikelyCause likely_cause(const TracedCall& call, const LineDifference& difference, bool alone);

}  // namespace imgtune::workbench

#endif
