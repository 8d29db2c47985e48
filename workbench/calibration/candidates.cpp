#include "workbench/calibration/candidates.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "workbench/appearance/chart_view.h"
#include "workbench/calibration/conversion.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFewestTuned = 3;
constexpr std::size_t kSearchLights = 21;  // along the locus, to compare sets of CTs by
constexpr int kSearchDeviations = 1;
constexpr std::size_t kJudgeLights = 41;  // along the locus, for what is reported
constexpr int kJudgeDeviations = 2;
constexpr std::size_t kMostGridPoints = 40;  // that sets are taken from
constexpr int kRounds = 6;                   // of weighing lights by how badly they come out

using Indices = std::vector<std::size_t>;

std::vector<FitLight> fit_lights(const std::vector<JudgedLight>& judged) {
    std::vector<FitLight> lights;
    double kelvin = 0.0;
    for (const JudgedLight& light : judged) {
        if (light.kelvin == kelvin) {
            lights.push_back(lights.back());
        } else {
            lights.push_back({light.matrix, visible_metric(light.matrix), 1.0, {}});
        }
        kelvin = light.kelvin;
    }
    return lights;
}

RealMatrix sum_of(const std::array<double, kMostShares>& shares,
                  const std::vector<RealMatrix>& matrices) {
    RealMatrix sum{};
    for (std::size_t i = 0; i < matrices.size(); ++i) {
        for (std::size_t k = 0; k < 9; ++k) sum[k] += shares[i] * matrices[i][k];
    }
    return sum;
}

/// What the sets of CTs are compared by: mean and largest over the lights of the root of the
/// visible square, weighed as in a candidate's score. (The worst patch is some twice the root of
/// its light's mean square.)
struct Cost {
    double mean = 0.0;
    double worst = 0.0;
    double total() const { return mean + 2.0 * worst / Candidate::kWorstCounts; }
};

Cost cost_of(const std::vector<FitLight>& lights, const std::vector<RealMatrix>& matrices,
             std::vector<double>* roots = nullptr) {
    Cost cost;
    if (roots != nullptr) roots->clear();
    for (const FitLight& light : lights) {
        const double square =
            visible_square(light.metric, light.wanted, sum_of(light.shares, matrices));
        const double root = std::sqrt(std::max(0.0, square));
        cost.mean += root / static_cast<double>(lights.size());
        cost.worst = std::max(cost.worst, root);
        if (roots != nullptr) roots->push_back(root);
    }
    return cost;
}

struct Fitted {
    std::vector<RealMatrix> matrices;  ///< tuned ones, or the polynomial's two terms
    Cost cost;
};

/// Least squares, then again with more weight on lights that come out badly; the best of these.
Fitted fit_again_and_again(std::vector<FitLight> lights, const std::vector<RealMatrix>& start) {
    Fitted best;
    std::vector<double> roots;
    for (int round = 0; round < kRounds; ++round) {
        const std::vector<RealMatrix> matrices = fit_matrices(lights, start);
        const Cost cost = cost_of(lights, matrices, &roots);
        if (round == 0 || cost.total() < best.cost.total()) best = {matrices, cost};
        for (std::size_t i = 0; i < lights.size(); ++i) {
            lights[i].importance *= (roots[i] + 0.1 * cost.mean + 1e-6) / (cost.mean + 1e-6);
        }
    }
    return best;
}

std::vector<RealMatrix> terms_of(const ISP_CCM_POLY22_T& polynomial) {
    std::vector<RealMatrix> terms(2);
    for (std::size_t k = 0; k < 9; ++k) {
        terms[0][k] = polynomial.i4P00[k] / kStoredTerm / 512.0;
        terms[1][k] = (polynomial.i4P10[k] - polynomial.i4P01[k]) / kStoredTerm / 512.0;
    }
    return terms;
}

void set_terms(ISP_CCM_POLY22_T& polynomial, const std::vector<RealMatrix>& terms) {
    for (std::size_t k = 0; k < 9; ++k) {
        const bool diagonal = k % 4 == 0;
        // The diagonals, which the library closes itself: what keeps the rows' sums.
        const double slope = diagonal ? terms[1][k] - 1.0 : terms[1][k];
        polynomial.i4P00[k] =
            static_cast<std::int32_t>(std::lround(terms[0][k] * 512.0 * kStoredTerm));
        polynomial.i4P10[k] =
            static_cast<std::int32_t>(std::lround(slope * 512.0 * kStoredTerm / 2.0));
        polynomial.i4P01[k] = -polynomial.i4P10[k];
    }
}

/// Makes tunings of sets of points over one list of lights.
class Maker {
  public:
    Maker(const std::vector<JudgedLight>& judged, const Tuning& empty)
        : judged_(judged), lights_(fit_lights(judged)), empty_(empty), tuning_(empty) {}

    /// Fits what the points leave open; the cost is by the visible metric.
    Fitted fitted(const std::vector<TunedPoint>& points, CcmMethod method, CcmFit fit) {
        tuning_.ccm.i4Method = static_cast<std::int32_t>(method);
        fill_normal_row(tuning_, points);
        Shares shares(tuning_);
        for (std::size_t i = 0; i < judged_.size(); ++i) {
            lights_[i].shares = shares.at(judged_[i].gain);
        }
        std::vector<RealMatrix> start;
        if (method == CcmMethod::polynomial) {
            start = terms_of(tuning_.ccm.rCCMPoly22);
        } else {
            for (const TunedPoint& point : points) start.push_back(point.matrix);
        }
        if (fit == CcmFit::points) return {start, cost_of(lights_, start)};
        return fit_again_and_again(lights_, start);
    }

    /// The normal row of these points.
    Tuning tuned(std::vector<TunedPoint> points, CcmMethod method, CcmFit fit) {
        ISP_CCM_POLY22_T polynomial{};
        if (fit == CcmFit::lights) {
            const Fitted terms = fitted(points, CcmMethod::polynomial, fit);
            polynomial = tuning_.ccm.rCCMPoly22;
            set_terms(polynomial, terms.matrices);
            if (method == CcmMethod::blend) {
                const Fitted blend = fitted(points, method, fit);
                for (std::size_t i = 0; i < points.size(); ++i) {
                    points[i].matrix = blend.matrices[i];
                }
            }
        }
        Tuning made = empty_;
        made.ccm.i4Method = static_cast<std::int32_t>(method);
        fill_normal_row(made, points);
        if (fit == CcmFit::lights) made.ccm.rCCMPoly22 = polynomial;
        last_points_ = std::move(points);
        return made;
    }

    const std::vector<TunedPoint>& last_points() const { return last_points_; }

  private:
    const std::vector<JudgedLight>& judged_;
    std::vector<FitLight> lights_;
    Tuning empty_;
    Tuning tuning_;
    std::vector<TunedPoint> last_points_;
};

/// Finds good sets of CTs, one count after the other.
class SetSearch {
  public:
    SetSearch(Maker& maker, const std::vector<TunedPoint>& grid, CcmMethod method, CcmFit fit)
        : maker_(maker), grid_(grid), method_(method), fit_(fit) {}

    /// The best set of one more than last time (at first three) that holds both ends: the best
    /// way to add a point, then single points are exchanged until none helps.
    const Indices& next() {
        if (best_.empty()) best_ = {0, grid_.size() - 1};
        best_cost_ = INFINITY;
        const Indices before = best_;
        try_in_place(before, before.size());
        while (true) {
            const Indices kept = best_;
            for (std::size_t place = 1; place + 1 < kept.size() && kept.size() > 3; ++place) {
                try_in_place(kept, place);
            }
            if (best_ == kept) return best_;
        }
    }

    std::uint64_t tried() const { return costs_.size(); }

  private:
    /// Every point that is not there yet, in place of one of the set, or added to it.
    void try_in_place(const Indices& set, std::size_t place) {
        for (std::size_t i = 1; i + 1 < grid_.size(); ++i) {
            if (std::find(set.begin(), set.end(), i) != set.end()) continue;
            Indices changed = set;
            if (place < set.size()) {
                changed[place] = i;
            } else {
                changed.push_back(i);
            }
            std::sort(changed.begin(), changed.end());
            look_at(changed);
        }
    }

    void look_at(const Indices& set) {
        const auto [found, is_new] = costs_.try_emplace(set, 0.0);
        if (is_new) found->second = maker_.fitted(points_of(set), method_, fit_).cost.total();
        if (found->second >= best_cost_) return;
        best_cost_ = found->second;
        best_ = set;
    }

    std::vector<TunedPoint> points_of(const Indices& set) const {
        std::vector<TunedPoint> points;
        for (const std::size_t i : set) points.push_back(grid_[i]);
        return points;
    }

    Maker& maker_;
    const std::vector<TunedPoint>& grid_;
    CcmMethod method_;
    CcmFit fit_;
    Indices best_;
    double best_cost_ = INFINITY;
    std::map<Indices, double> costs_;
};

class Trial {
  public:
    Trial(const Sensor& sensor, const TrialChoices& choices, const Tuning& empty)
        : choices_(choices),
          search_lights_(judged_lights(sensor, kSearchLights, kSearchDeviations, choices.stretch)),
          judge_lights_(judged_lights(sensor, kJudgeLights, kJudgeDeviations, choices.stretch)),
          maker_(search_lights_, empty),
          grid_(thinned(sensor.points(), kMostGridPoints)) {
        for (TunedPoint& point : grid_) point.gain = stretched(point.gain, choices.stretch);
    }

    Trials run() {
        for (const CcmMethod method : {CcmMethod::blend, CcmMethod::polynomial}) {
            for (const CcmFit fit : {CcmFit::points, CcmFit::lights}) {
                if (choices_.method.value_or(method) != method) continue;
                if (choices_.fit.value_or(fit) != fit) continue;
                choices_.named.empty() ? try_counts(method, fit)
                                       : judge(choices_.named, method, fit, 0);
            }
        }
        choose();
        return std::move(trials_);
    }

  private:
    void try_counts(CcmMethod method, CcmFit fit) {
        SetSearch search(maker_, grid_, method, fit);
        const std::size_t most = std::min(choices_.most, grid_.size());
        std::uint64_t before = 0;
        for (std::size_t count = kFewestTuned; count <= most; ++count) {
            std::vector<TunedPoint> points;
            for (const std::size_t i : search.next()) points.push_back(grid_[i]);
            judge(points, method, fit, search.tried() - before);
            before = search.tried();
            // Fitted over the lights, a polynomial is the same whatever points lie between the
            // ends.
            if (method == CcmMethod::polynomial && fit == CcmFit::lights) return;
        }
    }

    void judge(const std::vector<TunedPoint>& points, CcmMethod method, CcmFit fit,
               std::uint64_t sets) {
        Candidate candidate;
        candidate.method = method;
        candidate.fit = fit;
        for (const TunedPoint& point : points) candidate.kelvins.push_back(point.kelvin);
        const Tuning made = maker_.tuned(points, method, fit);
        candidate.error = lights_error(made, judge_lights_);
        candidate.sets = sets;
        trials_.candidates.push_back(candidate);
        made_.push_back({maker_.last_points(), made.ccm.rCCMPoly22});
    }

    void choose() {
        const Candidate* const usual = point_by_point(trials_.candidates);
        const auto fits = [usual](const Candidate& candidate) {
            return usual == nullptr || (candidate.error.mean <= usual->error.mean &&
                                        candidate.error.worst <= usual->error.worst);
        };
        double best = INFINITY;
        for (std::size_t i = 0; i < trials_.candidates.size(); ++i) {
            const Candidate& candidate = trials_.candidates[i];
            if (!fits(candidate) || candidate.score() >= best) continue;
            best = candidate.score();
            trials_.chosen = i;
        }
        trials_.points = made_[trials_.chosen].points;
        trials_.polynomial = made_[trials_.chosen].polynomial;
    }

    struct Made {
        std::vector<TunedPoint> points;
        ISP_CCM_POLY22_T polynomial;
    };

    const TrialChoices& choices_;
    std::vector<JudgedLight> search_lights_;
    std::vector<JudgedLight> judge_lights_;
    Maker maker_;
    std::vector<TunedPoint> grid_;
    Trials trials_;
    std::vector<Made> made_;
};

}  // namespace

LightsError lights_error(const Tuning& tuning, const std::vector<JudgedLight>& lights) {
    Bench bench(tuning);
    LightsError error;
    for (const JudgedLight& light : lights) {
        const ChartDifference seen = chart_difference(
            ChartView(light.matrix), ChartView(to_real(bench.matrix_at(light.gain))), 0);
        error.mean += seen.mean / static_cast<double>(lights.size());
        if (seen.worst <= error.worst) continue;
        error.worst = seen.worst;
        error.worst_patch = seen.worst_patch;
        error.worst_kelvin = light.kelvin;
        error.worst_beside = light.beside;
    }
    return error;
}

const Candidate* point_by_point(const std::vector<Candidate>& candidates) {
    const Candidate* most = nullptr;
    for (const Candidate& candidate : candidates) {
        if (candidate.method != CcmMethod::blend || candidate.fit != CcmFit::points) continue;
        if (most == nullptr || candidate.kelvins.size() > most->kelvins.size()) most = &candidate;
    }
    return most;
}

Trials try_all(const Sensor& sensor, const TrialChoices& choices, const Tuning& empty) {
    return Trial(sensor, choices, empty).run();
}

Tuning tune_points(const Sensor& sensor, const std::vector<TunedPoint>& points, CcmMethod method,
                   CcmFit fit, double stretch, const Tuning& empty) {
    const std::vector<JudgedLight> lights =
        judged_lights(sensor, kSearchLights, kSearchDeviations, stretch);
    return Maker(lights, empty).tuned(points, method, fit);
}

}  // namespace imgtune::workbench
