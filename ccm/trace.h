#ifndef IMGTUNE_CCM_TRACE_H
#define IMGTUNE_CCM_TRACE_H

#include <imgtune/ccm_types.h>

#include <cstddef>

#include "common/log.h"
#include "common/relaxed_word.h"

namespace imgtune {

/// The gate of every CCM trace line. SmoothCCM sets it from its debug switch on every call; until
/// then the building blocks trace.
extern RelaxedWord g_Smooth_CCM_Debug;

inline bool ccm_trace_on() {
    return g_Smooth_CCM_Debug.load() != 0;
}

template <class... Values>
void ccm_trace(const char* format, Values... values) {
    if (ccm_trace_on()) log_line(format, values...);
}

/// The nine values of an array fill the format's last nine conversions.
template <class... Values, class Nine>
void ccm_trace_nine(const char* format, const Nine (&nine)[9], Values... values) {
    if (!ccm_trace_on()) return;
    log_line(format, values..., nine[0], nine[1], nine[2], nine[3], nine[4], nine[5], nine[6],
             nine[7], nine[8]);
}

}  // namespace imgtune

#endif
