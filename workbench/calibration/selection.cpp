#include "workbench/calibration/selection.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <tuple>

#include "ccm/codec.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/calibration/conversion.h"
#include "workbench/camera/camera.h"

namespace imgtune::workbench {

namespace {

using NSIspTuning::ISP_CCM_T;

constexpr std::uint64_t kMostSets = 20000;
constexpr std::uint32_t kNormalLight = 100;  // LV: no low-light matrix

/// The camera, its average switched off, in front of the light of one point after the other.
class Bench {
  public:
    explicit Bench(const Tuning& tuning) : camera_(without_gamut(tuning), Jobs{true, false}) {
        camera_.set_weights({1, 0, 0});
    }

    ISP_CCM_T matrix_at(const TunedPoint& point) {
        Frame frame;
        frame.state.rAWBFullGain = frame.state.rAWBGain = point.gain;
        frame.state.u4CCT = static_cast<std::uint32_t>(point.kelvin);
        frame.state.u4RealLV = kNormalLight;
        camera_.run(frame);
        ISP_CCM_T matrix{};
        const auto coefficients = decode(camera_.ccm(), camera_.tuning().caller);
        std::copy(coefficients.begin(), coefficients.end(), matrix.i4Coef);
        return matrix;
    }

  private:
    static Tuning without_gamut(Tuning tuning) {
        tuning.ccm.i4PQType = 0;
        return tuning;
    }

    Camera camera_;
};

std::int32_t farthest_coefficient(const ISP_CCM_T& a, const ISP_CCM_T& b) {
    std::int32_t largest = 0;
    for (std::size_t k = 0; k < 9; ++k) {
        largest = std::max(largest, std::abs(a.i4Coef[k] - b.i4Coef[k]));
    }
    return largest;
}

bool is_tuned(const Tuning& tuning, const TunedPoint& point) {
    const AWB_GAIN_T* gains = tuning.ccm.rCTAWBGain[0];
    return std::any_of(gains, gains + tuning.ccm.i4NumCT, [&point](const AWB_GAIN_T& gain) {
        return gain.i4R == point.gain.i4R && gain.i4B == point.gain.i4B;
    });
}

using Indices = std::vector<std::size_t>;
using Score = std::tuple<std::int32_t, std::int32_t, std::int64_t>;  // the lower the better

class Judge {
  public:
    Judge(std::span<const TunedPoint> points, CcmMethod method) : points_(points) {
        tuning_.has_ccm = true;
        tuning_.ccm.i4Method = static_cast<std::int32_t>(method);
        for (const TunedPoint& point : points) references_.push_back(to_fixed(point.matrix));
    }

    void look_at(const Indices& kept) {
        std::vector<TunedPoint> chosen;
        for (const std::size_t i : kept) chosen.push_back(points_[i]);
        fill_normal_row(tuning_, chosen);
        Bench bench(tuning_);
        Score score{0, 0, 0};
        for (std::size_t i = 0; i < points_.size(); ++i) {
            const std::int32_t error =
                farthest_coefficient(bench.matrix_at(points_[i]), references_[i]);
            const bool dropped = std::find(kept.begin(), kept.end(), i) == kept.end();
            if (dropped) std::get<0>(score) = std::max(std::get<0>(score), error);
            std::get<1>(score) = std::max(std::get<1>(score), error);
            std::get<2>(score) += error;
        }
        ++tried_;
        if (!best_ || score < *best_) {
            best_ = score;
            best_kept_ = kept;
        }
    }

    const Indices& best() const { return best_kept_; }
    std::uint64_t tried() const { return tried_; }

  private:
    std::span<const TunedPoint> points_;
    Tuning tuning_;
    std::vector<ISP_CCM_T> references_;
    std::optional<Score> best_;
    Indices best_kept_;
    std::uint64_t tried_ = 0;
};

/// n over k, or more than kMostSets.
std::uint64_t sets_of(std::size_t n, std::size_t k) {
    std::uint64_t sets = 1;
    for (std::size_t i = 1; i <= k && sets <= kMostSets; ++i) sets = sets * (n - k + i) / i;
    return sets;
}

/// Every set of `most` points with both ends.
void look_at_all(Judge& judge, std::size_t count, std::size_t most) {
    Indices kept(most);
    for (std::size_t i = 0; i + 1 < most; ++i) kept[i] = i;
    kept[most - 1] = count - 1;
    while (true) {
        judge.look_at(kept);
        std::size_t at = most - 1;
        while (at > 1 && kept[at - 1] == count - 1 - (most - at)) --at;
        if (at <= 1) return;
        ++kept[at - 1];
        for (std::size_t i = at; i + 1 < most; ++i) kept[i] = kept[i - 1] + 1;
    }
}

/// From evenly spread points on, exchanges a kept one for a dropped one until none helps.
void exchange(Judge& judge, std::size_t count, std::size_t most) {
    Indices kept(most);
    for (std::size_t i = 0; i < most; ++i) kept[i] = i * (count - 1) / (most - 1);
    judge.look_at(kept);
    while (true) {
        for (std::size_t place = 1; place + 1 < most; ++place) {
            for (std::size_t i = 1; i + 1 < count; ++i) {
                if (std::find(kept.begin(), kept.end(), i) != kept.end()) continue;
                Indices changed = kept;
                changed[place] = i;
                std::sort(changed.begin(), changed.end());
                judge.look_at(changed);
            }
        }
        if (judge.best() == kept) return;
        kept = judge.best();
    }
}

}  // namespace

void fill_normal_row(Tuning& tuning, std::span<const TunedPoint> points) {
    const CoefficientCodec codec(tuning.caller.int_bits, tuning.caller.frac_bits);
    std::vector<AWB_GAIN_T> gains;
    std::vector<ISP_CCM_T> matrices;
    for (std::size_t ct = 0; ct < points.size(); ++ct) {
        gains.push_back(points[ct].gain);
        matrices.push_back(to_fixed(points[ct].matrix));
        tuning.ccm.rCTAWBGain[0][ct] = gains.back();
        codec.encode(matrices.back(), tuning.ccm.rCCM_Nvram[0][ct]);
        tuning.kelvin[0][ct] = static_cast<std::uint32_t>(std::lround(points[ct].kelvin));
    }
    tuning.ccm.i4NumCT = static_cast<std::int32_t>(points.size());
    tuning.ccm.rCCMPoly22 = fit_polynomial(gains, matrices);
}

std::vector<PointError> point_errors(const Tuning& tuning, std::span<const TunedPoint> points) {
    Bench bench(tuning);
    std::vector<PointError> errors;
    for (const TunedPoint& point : points) {
        const ISP_CCM_T reference = to_fixed(point.matrix);
        const ISP_CCM_T actual = bench.matrix_at(point);
        const ChartError chart = chart_error(to_real(reference), to_real(actual));
        errors.push_back({point.kelvin, is_tuned(tuning, point),
                          farthest_coefficient(actual, reference), chart.mean, chart.largest});
    }
    return errors;
}

Selection select_points(std::span<const TunedPoint> points, std::size_t most, CcmMethod method) {
    Selection selection;
    if (points.size() <= most) {
        for (std::size_t i = 0; i < points.size(); ++i) selection.kept.push_back(i);
        selection.all = true;
        return selection;
    }
    Judge judge(points, method);
    selection.all = sets_of(points.size() - 2, most - 2) <= kMostSets;
    selection.all ? look_at_all(judge, points.size(), most) : exchange(judge, points.size(), most);
    selection.kept = judge.best();
    selection.tried = judge.tried();
    return selection;
}

}  // namespace imgtune::workbench
