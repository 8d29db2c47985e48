#ifndef IMGTUNE_CCM_GAIN_PROJECTION_H
#define IMGTUNE_CCM_GAIN_PROJECTION_H

#include <imgtune/ccm_types.h>

#include <algorithm>

#include "ccm/tuned_rows.h"

namespace imgtune {

/// The tuned gains of one LV row.
class Locus {
  public:
    Locus(const AWB_GAIN_T (&row)[kCtIndices], std::int32_t count)
        : gains_(row), count_(tuned_ct_count(count)) {}

    std::int32_t count() const { return count_; }
    const AWB_GAIN_T& lowest() const { return gains_[0]; }
    const AWB_GAIN_T& highest() const { return gains_[count_ - 1]; }
    /// The gain of a CT index, one beyond the row's ends taken as its end.
    const AWB_GAIN_T& at(std::int32_t ct) const { return gains_[std::clamp(ct, 0, count_ - 1)]; }
    const AWB_GAIN_T (&all() const)[kCtIndices] { return gains_; }

  private:
    const AWB_GAIN_T (&gains_)[kCtIndices];
    std::int32_t count_;
};

/// Where a gain lies on a locus, as a blend takes it.
struct CtPlace {
    std::int32_t position;
    float coarse;  ///< share of the CT above against the one below
    float fine;    ///< share of their blend against the CT at the position
};

/// Foot of the perpendicular on the line from the lowest to the highest tuned gain.
AWB_GAIN_T project_on_chord(const AWB_GAIN_T& gain, const Locus& locus);

CtPlace place_on_locus(const AWB_GAIN_T& gain, const Locus& locus);

}  // namespace imgtune

#endif
