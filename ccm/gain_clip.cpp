#include "ccm/gain_clip.h"

#include "ccm/trace.h"

namespace imgtune {

void clip_gain(AWB_GAIN_T& gain, const AWB_GAIN_T (&row)[kCtIndices], std::int32_t count) {
    const AWB_GAIN_T& lowest = row[0];
    const AWB_GAIN_T& highest = row[tuned_ct_count(count) - 1];
    if (gain.i4B > lowest.i4B) {
        gain.i4R = lowest.i4R;
        gain.i4B = lowest.i4B;
        ccm_trace("Clipped low R B full Gain \n");
    }
    if (gain.i4R < lowest.i4R) {
        gain.i4R = lowest.i4R;
        ccm_trace("Clipped low R B full Gain \n");
    }
    if (gain.i4B < highest.i4B) {
        gain.i4R = highest.i4R;
        gain.i4B = highest.i4B;
        ccm_trace("Clipped high R B full Gain \n");
    }
    if (gain.i4R > highest.i4R) {
        gain.i4R = highest.i4R;
        gain.i4B = highest.i4B;
        ccm_trace("Clipped high R B full Gain \n");
    }
    ccm_trace("Clipped AWB full Gain = (%d, %d, %d)\n", gain.i4R, gain.i4G, gain.i4B);
}

}  // namespace imgtune
