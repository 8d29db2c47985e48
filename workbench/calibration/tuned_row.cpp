#include "workbench/calibration/tuned_row.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "ccm/codec.h"
#include "workbench/appearance/chart_view.h"
#include "workbench/calibration/conversion.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

using NSIspTuning::ISP_CCM_T;

constexpr std::uint32_t kNormalLight = 100;  // LV: no low-light matrix

// A share of 1 in the results of the probes: a coefficient of a tuned matrix, and the slope of a
// polynomial, which no gain on the chord brings out of the coefficient's range.
constexpr std::int32_t kWholeShare = 4095;
constexpr std::int32_t kWholeSlope = 1500;
constexpr std::int32_t kStoredSlope = kWholeSlope * 10000 / 2;  // a half for each gain

Tuning without_gamut(Tuning tuning) {
    tuning.ccm.i4PQType = 0;
    return tuning;
}

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

/// Each off-diagonal carries the share of one tuned matrix, from `first` on.
Tuning blend_probe(Tuning tuning, std::size_t first) {
    const CoefficientCodec codec(tuning.caller.int_bits, tuning.caller.frac_bits);
    for (std::size_t ct = 0; ct < kMostShares; ++ct) {
        ISP_CCM_T matrix{};
        if (ct >= first && ct < first + kOffDiagonals.size()) {
            matrix.i4Coef[kOffDiagonals[ct - first]] = kWholeShare;
        }
        codec.encode(matrix, tuning.ccm.rCCM_Nvram[0][ct]);
    }
    return tuning;
}

Tuning polynomial_probe(Tuning tuning) {
    ISP_CCM_POLY22_T& polynomial = tuning.ccm.rCCMPoly22;
    for (std::size_t k = 0; k < 9; ++k) {
        polynomial.i4P00[k] = 0;
        polynomial.i4P10[k] = kStoredSlope;
        polynomial.i4P01[k] = -kStoredSlope;
    }
    return tuning;
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

Bench::Bench(const Tuning& tuning) : camera_(without_gamut(tuning), Jobs{true, false}) {
    camera_.set_weights({1, 0, 0});
}

ISP_CCM_T Bench::matrix_at(const AWB_GAIN_T& gain) {
    Frame frame;
    frame.state.rAWBFullGain = frame.state.rAWBGain = gain;
    frame.state.u4RealLV = kNormalLight;
    camera_.run(frame);
    ISP_CCM_T matrix{};
    const auto coefficients = decode(camera_.ccm(), camera_.tuning().caller);
    std::copy(coefficients.begin(), coefficients.end(), matrix.i4Coef);
    return matrix;
}

Shares::Shares(const Tuning& tuning)
    : polynomial_(tuning.ccm.i4Method == static_cast<std::int32_t>(CcmMethod::polynomial)) {
    if (polynomial_) {
        probes_.emplace_back(polynomial_probe(tuning));
        return;
    }
    const auto count = static_cast<std::size_t>(tuning.ccm.i4NumCT);
    for (std::size_t first = 0; first < count; first += kOffDiagonals.size()) {
        probes_.emplace_back(blend_probe(tuning, first));
    }
}

std::array<double, kMostShares> Shares::at(const AWB_GAIN_T& gain) {
    std::array<double, kMostShares> shares{};
    if (polynomial_) {
        const ISP_CCM_T seen = probes_.front().matrix_at(gain);
        shares[0] = 1.0;
        shares[1] = static_cast<double>(seen.i4Coef[kOffDiagonals[0]]) / kWholeSlope;
        return shares;
    }
    double sum = 0.0;
    std::size_t first = 0;
    for (Bench& probe : probes_) {
        const ISP_CCM_T seen = probe.matrix_at(gain);
        const std::size_t end = std::min(first + kOffDiagonals.size(), kMostShares);
        for (std::size_t ct = first; ct < end; ++ct) {
            shares[ct] = seen.i4Coef[kOffDiagonals[ct - first]];
            sum += shares[ct];
        }
        first = end;
    }
    if (sum > 0.0) {
        for (double& share : shares) share /= sum;
    }
    return shares;
}

std::vector<PointError> point_errors(const Tuning& tuning, std::span<const TunedPoint> points) {
    Bench bench(tuning);
    std::vector<PointError> errors;
    for (const TunedPoint& point : points) {
        const ISP_CCM_T reference = to_fixed(point.matrix);
        const ISP_CCM_T actual = bench.matrix_at(point.gain);
        const ChartDifference chart =
            chart_difference(ChartView(to_real(reference)), ChartView(to_real(actual)), 0);
        errors.push_back({point.kelvin, is_tuned(tuning, point),
                          farthest_coefficient(actual, reference), chart.mean, chart.worst});
    }
    return errors;
}

}  // namespace imgtune::workbench
