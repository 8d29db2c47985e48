#include "ccm/gain_projection.h"

#include <imgtune/ccm.h>

#include <algorithm>
#include <cmath>

#include "ccm/trace.h"
#include "ccm/tuned_rows.h"
#include "common/arithmetic.h"
#include "common/vector.h"

namespace imgtune {

namespace {

constexpr std::int32_t kGreenUnity = 512;
constexpr double kDistanceScale = 0.01;       // distance units per gain unit
constexpr float kFarthestNearest = 100.0f;    // a CT at this distance or more is never nearest
constexpr float kHysteresisDistance = 15.0f;  // a later CT must be closer by more than this
constexpr double kRatioGuard = 0.01;          // keeps a ratio of two zero distances finite

// Distances are taken in the (R, B) plane. The build keeps every rounding to single precision here.

float distance(const AWB_GAIN_T& p, const AWB_GAIN_T& q) {
    const float red = static_cast<float>(p.i4R) - static_cast<float>(q.i4R);
    const float blue = static_cast<float>(p.i4B) - static_cast<float>(q.i4B);
    const double x = red * kDistanceScale;
    const double y = blue * kDistanceScale;
    return static_cast<float>(std::sqrt(x * x + y * y));
}

float share_of(float part, float other) {
    return static_cast<float>(part / ((part + other) + kRatioGuard));
}

/// Number of tuned gains below the gain's red, at most N - 1.
std::int32_t coarse_index(const AWB_GAIN_T& gain, const Locus& locus) {
    std::int32_t below = 0;
    for (std::int32_t j = 0; j < locus.count(); ++j) below += gain.i4R > locus.all()[j].i4R;
    return std::min(below, locus.count() - 1);
}

/// Nearest tuned gain; an earlier CT keeps its place until a later one is clearly closer, and for
/// good where none can be.
std::int32_t nearest_index(const AWB_GAIN_T& gain, const Locus& locus) {
    std::int32_t nearest = 0;
    float threshold = kFarthestNearest;
    for (std::int32_t j = 0; j < locus.count() && threshold > 0.0f; ++j) {
        const float here = distance(gain, locus.all()[j]);
        if (here < threshold) {
            nearest = j;
            threshold = here - kHysteresisDistance;
        }
    }
    return nearest;
}

std::int32_t ct_position(const AWB_GAIN_T& gain, const Locus& locus) {
    const std::int32_t count = locus.count();
    if (gain.i4R <= locus.lowest().i4R) return kBelowLowestCt;
    if (gain.i4R >= locus.highest().i4R) return count + kAboveHighestCt;

    std::int32_t position = nearest_index(gain, locus);
    if (position == 0) return 1;  // whatever the coarse index: it moves a position by one at most
    const std::int32_t coarse = coarse_index(gain, locus);
    if (position < coarse - 1) {
        ++position;
    } else if (position > coarse + 1) {
        --position;
    }
    return position == count - 1 ? count - 2 : position;
}

void trace_place(const float (&range)[4], const CtPlace& place) {
    const auto [position, coarse, fine] = place;
    ccm_trace("range 0 = (%f)\n", double{range[0]});
    ccm_trace("range 1 = (%f)\n", double{range[1]});
    ccm_trace("range 2 = (%f)\n", double{range[2]});
    ccm_trace("range 3 = (%f)\n", double{range[3]});
    ccm_trace("Coarse Blending Ratio between CT%d/CT%d = (%f)\n", position - 1, position + 1,
              double{1.0f - coarse});
    ccm_trace("Finer Blending Ratio with estimated CT%d = (%f)\n", position, double{1.0f - fine});
}

/// Distances are 0 or more, so that shares of them are 0 to 1 as they are.
CtPlace place_at(const AWB_GAIN_T& gain, const AWB_GAIN_T& foot, const Locus& locus,
                 std::int32_t position) {
    const AWB_GAIN_T &below = locus.at(position - 1), &at = locus.at(position),
                     &above = locus.at(position + 1);
    const auto difference = [&](std::int32_t AWB_GAIN_T::*part) {
        return to_reals(vector::quad(foot.*part, gain.*part, foot.*part, gain.*part)) -
               to_reals(vector::quad(below.*part, at.*part, above.*part, foot.*part));
    };
    float range[4];
    vector::store(
        range, lengths(difference(&AWB_GAIN_T::i4R), difference(&AWB_GAIN_T::i4B), kDistanceScale));
    const CtPlace place{position, share_of(range[0], range[2]), share_of(range[1], range[3])};
    if (ccm_trace_on()) trace_place(range, place);
    return place;
}

}  // namespace

AWB_GAIN_T project_on_chord(const AWB_GAIN_T& gain, const Locus& locus) {
    const AWB_GAIN_T& origin = locus.lowest();
    const std::int32_t red = wrap_sub(gain.i4R, origin.i4R);
    const std::int32_t blue = wrap_sub(gain.i4B, origin.i4B);
    const std::int32_t chord_red = wrap_sub(locus.highest().i4R, origin.i4R);
    const std::int32_t chord_blue = wrap_sub(locus.highest().i4B, origin.i4B);

    const std::int32_t along = wrap_add(wrap_mul(red, chord_red), wrap_mul(blue, chord_blue));
    const std::int32_t length =
        wrap_add(wrap_mul(chord_red, chord_red), wrap_mul(chord_blue, chord_blue));
    // A line of no length gives NaN, which truncates to 0: the lowest tuned gain.
    const float t = static_cast<float>(along) / static_cast<float>(length);
    std::int32_t from_origin[4];
    vector::store(from_origin, truncate(to_reals(vector::quad(chord_red, chord_blue, 0, 0)) * t));
    const AWB_GAIN_T foot{wrap_add(origin.i4R, from_origin[0]), kGreenUnity,
                          wrap_add(origin.i4B, from_origin[1])};
    ccm_trace("Proj AWB Gain = (%d, %d, %d)\n", foot.i4R, foot.i4G, foot.i4B);
    return foot;
}

CtPlace place_on_locus(const AWB_GAIN_T& gain, const Locus& locus) {
    const std::int32_t position = ct_position(gain, locus);
    ccm_trace("Estimated CT position = (%d)\n", position);
    const AWB_GAIN_T foot = project_on_chord(gain, locus);
    if (position < 1) {
        ccm_trace("Below lowest CT");
        return {position, 1.0f, 1.0f};
    }
    return place_at(gain, foot, locus, position);
}

}  // namespace imgtune

void GainProjection(AWB_GAIN_T const& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                    AWB_GAIN_T& projected, int method, float* fBlendRatio, int numCT, int lvRow,
                    int* i4CTPos) {
    using namespace imgtune;
    const Locus locus(tuning.rCTAWBGain[lv_row_in_record(lvRow)], numCT);
    if (method == 1) projected = project_on_chord(gain, locus);
    if (method == 2) {
        const CtPlace place = place_on_locus(gain, locus);
        fBlendRatio[0] = place.coarse;
        fBlendRatio[1] = place.fine;
        *i4CTPos = place.position;
    }
}
