#ifndef IMGTUNE_CCM_GAIN_CLIP_H
#define IMGTUNE_CCM_GAIN_CLIP_H

#include <imgtune/ccm_types.h>

#include "ccm/tuned_rows.h"

namespace imgtune {

/// Limits a gain to the tuned range of a row; each test sees what the previous one left.
void clip_gain(AWB_GAIN_T& gain, const AWB_GAIN_T (&row)[kCtIndices], std::int32_t count);

}  // namespace imgtune

#endif
