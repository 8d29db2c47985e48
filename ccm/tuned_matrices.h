#ifndef IMGTUNE_CCM_TUNED_MATRICES_H
#define IMGTUNE_CCM_TUNED_MATRICES_H

#include <imgtune/ccm_types.h>

#include "ccm/codec.h"

namespace imgtune {

/// Logs the tuned matrices of normal light, low light and flash.
void trace_tuned_matrices(const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, const CoefficientCodec& codec);

}  // namespace imgtune

#endif
