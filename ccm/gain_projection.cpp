#include <imgtune/ccm.h>

#include <algorithm>
#include <cmath>

#include "ccm/trace.h"
#include "ccm/tuned_rows.h"
#include "common/arithmetic.h"

namespace imgtune {

namespace {

constexpr std::int32_t kGreenUnity = 512;
constexpr double kDistanceScale = 0.01;       // distance units per gain unit
constexpr float kFarthestNearest = 100.0f;    // a CT at this distance or more is never nearest
constexpr float kHysteresisDistance = 15.0f;  // a later CT must be closer by more than this
constexpr double kRatioGuard = 0.01;          // keeps a ratio of two zero distances finite

// Distances are taken in the (R, B) plane. The build keeps every rounding to single precision here.

double squared_distance(const AWB_GAIN_T& p, const AWB_GAIN_T& q) {
    const float red = static_cast<float>(p.i4R) - static_cast<float>(q.i4R);
    const float blue = static_cast<float>(p.i4B) - static_cast<float>(q.i4B);
    const double x = red * kDistanceScale;
    const double y = blue * kDistanceScale;
    return x * x + y * y;
}

float share_of(float part, float other) {
    return static_cast<float>(part / ((part + other) + kRatioGuard));
}

/// The tuned gains of one LV row.
class Locus {
  public:
    Locus(const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, std::int32_t row, std::int32_t count)
        : gains_(tuning.rCTAWBGain[lv_row_in_record(row)]), count_(tuned_ct_count(count)) {}

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

/// Foot of the perpendicular on the line from the lowest to the highest tuned gain.
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
    return {wrap_add(origin.i4R, truncate_to_int32(static_cast<float>(chord_red) * t)), kGreenUnity,
            wrap_add(origin.i4B, truncate_to_int32(static_cast<float>(chord_blue) * t))};
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
        const auto distance = static_cast<float>(std::sqrt(squared_distance(gain, locus.all()[j])));
        if (distance < threshold) {
            nearest = j;
            threshold = std::max(distance - kHysteresisDistance, 0.0f);
        }
    }
    return nearest;
}

std::int32_t ct_position(const AWB_GAIN_T& gain, const Locus& locus) {
    const std::int32_t count = locus.count();
    if (gain.i4R <= locus.lowest().i4R) return kBelowLowestCt;
    if (gain.i4R >= locus.highest().i4R) return count + kAboveHighestCt;

    const std::int32_t coarse = coarse_index(gain, locus);
    std::int32_t position = nearest_index(gain, locus);
    if (position < coarse - 1) {
        ++position;
    } else if (position > coarse + 1) {
        --position;
    }
    if (position == count - 1) return count - 2;
    return position == 0 ? 1 : position;
}

void trace_projection(const AWB_GAIN_T& projected) {
    ccm_trace("Proj AWB Gain = (%d, %d, %d)\n", projected.i4R, projected.i4G, projected.i4B);
}

void trace_ratios(const float (&range)[4], std::int32_t position, float coarse, float fine) {
    ccm_trace("range 0 = (%f)\n", double{range[0]});
    ccm_trace("range 1 = (%f)\n", double{range[1]});
    ccm_trace("range 2 = (%f)\n", double{range[2]});
    ccm_trace("range 3 = (%f)\n", double{range[3]});
    ccm_trace("Coarse Blending Ratio between CT%d/CT%d = (%f)\n", position - 1, position + 1,
              double{1.0f - coarse});
    ccm_trace("Finer Blending Ratio with estimated CT%d = (%f)\n", position, double{1.0f - fine});
}

/// Coarse and fine blending ratio at a position, before they are limited.
void blending_ratios(const AWB_GAIN_T& gain, const AWB_GAIN_T& foot, const Locus& locus,
                     std::int32_t position, float* ratios) {
    const double squares[4] = {
        squared_distance(foot, locus.at(position - 1)),
        squared_distance(gain, locus.at(position)),
        squared_distance(foot, locus.at(position + 1)),
        squared_distance(gain, foot),
    };
    float range[4];  // square roots side by side
    for (int j = 0; j < 4; ++j) range[j] = static_cast<float>(std::sqrt(squares[j]));
    ratios[0] = share_of(range[0], range[2]);
    ratios[1] = share_of(range[1], range[3]);
    if (ccm_trace_on()) trace_ratios(range, position, ratios[0], ratios[1]);
}

void project_for_polynomial(const AWB_GAIN_T& gain, const Locus& locus, AWB_GAIN_T& projected) {
    projected = project_on_chord(gain, locus);
    trace_projection(projected);
}

void locate_for_blend(const AWB_GAIN_T& gain, const Locus& locus, float* ratios,
                      std::int32_t* position_out) {
    const std::int32_t position = ct_position(gain, locus);
    ccm_trace("Estimated CT position = (%d)\n", position);
    const AWB_GAIN_T foot = project_on_chord(gain, locus);
    trace_projection(foot);
    float blended[2] = {1.0f, 1.0f};
    if (position < 1) {
        ccm_trace("Below lowest CT");
    } else {
        blending_ratios(gain, foot, locus, position, blended);
    }
    ratios[0] = std::clamp(blended[0], 0.0f, 1.0f);
    ratios[1] = std::clamp(blended[1], 0.0f, 1.0f);
    *position_out = position;
}

}  // namespace

}  // namespace imgtune

void GainProjection(AWB_GAIN_T const& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                    AWB_GAIN_T& projected, int method, float* fBlendRatio, int numCT, int lvRow,
                    int* i4CTPos) {
    const imgtune::Locus locus(tuning, lvRow, numCT);
    if (method == 1) imgtune::project_for_polynomial(gain, locus, projected);
    if (method == 2) imgtune::locate_for_blend(gain, locus, fBlendRatio, i4CTPos);
}
