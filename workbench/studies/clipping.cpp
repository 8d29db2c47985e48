#include "workbench/studies/clipping.h"

#include "ccm/tuned_rows.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

Clipping find_clipping(const Tuning& tuning, const Frame& frame) {
    const auto& state = frame.state;
    const AWB_GAIN_T& gain = tuning.caller.full_gain == 1 ? state.rAWBFullGain : state.rAWBGain;
    const auto& row = tuning.ccm.rCTAWBGain[state.u4FlashMode != 0 ? kRowFlash : kRowNormal];
    const AWB_GAIN_T& lowest = row[0];
    const AWB_GAIN_T& highest = row[tuned_ct_count(tuning.ccm.i4NumCT) - 1];
    if (gain.i4B > lowest.i4B || gain.i4R < lowest.i4R) return Clipping::low;
    if (gain.i4B < highest.i4B || gain.i4R > highest.i4R) return Clipping::high;
    return Clipping::none;
}

const char* clipping_name(Clipping clipping) {
    constexpr const char* kClippingNames[] = {"none", "low", "high"};
    return kClippingNames[static_cast<std::size_t>(clipping)];
}

}  // namespace imgtune::workbench
