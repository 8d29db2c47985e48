#include "workbench/calibration/import.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "ccm/codec.h"
#include "workbench/calibration/conversion.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFewestCts = 3;
constexpr std::size_t kMostCts = 8;

bool choices_fit(const ImportChoices& choices, Faults& faults) {
    const auto refuse = [&faults](std::string message, const char* allowed) {
        message += fmt::format("; allowed are {}", allowed);
        faults.add({.code = "C201", .message = std::move(message), .allowed = allowed});
    };
    const auto share = [&refuse](double value, const char* what) {
        if (!(value >= 0.0 && value <= 1.0)) refuse(fmt::format("{} is {}", what, value), "0..1");
    };
    share(choices.low_light_saturation, "the low-light saturation");
    share(choices.flash_share, "the flash's share");
    if (!(choices.flash_kelvin >= 1000.0 && choices.flash_kelvin <= 1e6)) {
        refuse(fmt::format("the light of the flash is {} K", choices.flash_kelvin),
               "1000..1000000 K");
    }
    if (!(choices.stretch >= 0.1 && choices.stretch <= 10.0)) {
        refuse(fmt::format("the factor of the gains is {}", choices.stretch), "0.1..10");
    }
    if (choices.most_cts < kFewestCts || choices.most_cts > kMostCts) {
        refuse(fmt::format("{} tuned CTs", choices.most_cts), "3..8");
    }
    const std::size_t named = choices.kelvins.size();
    if (named != 0 && (named < kFewestCts || named > kMostCts)) {
        refuse(fmt::format("{} CTs named", named), "3..8");
    }
    for (const double kelvin : choices.kelvins) {
        if (!std::isfinite(kelvin)) refuse(fmt::format("a CT of {} K", kelvin), "kelvin");
    }
    return !faults.has_errors();
}

std::vector<TunedPoint> named_points(const Sensor& sensor, std::vector<double> kelvins,
                                     Faults& faults) {
    std::sort(kelvins.begin(), kelvins.end());
    const double lowest = sensor.points().front().kelvin;
    const double highest = sensor.points().back().kelvin;
    std::vector<TunedPoint> points;
    for (const double kelvin : kelvins) {
        if (kelvin < lowest || kelvin > highest) {
            faults.add({.code = "C202",
                        .message = fmt::format("no light of {} K is calibrated", kelvin),
                        .allowed = fmt::format("{}..{}", lowest, highest),
                        .suggestion = fmt::format("name CTs from {} to {} K", lowest, highest)});
            continue;
        }
        const TunedPoint point = sensor.at(kelvin);
        if (!points.empty() && point.gain.i4R <= points.back().gain.i4R) {
            faults.add({.code = "C202",
                        .message = fmt::format("{} K and {} K are named, which have the same gains",
                                               points.back().kelvin, kelvin),
                        .suggestion = "name one of them"});
        }
        if (!point.published) {
            faults.add({.code = "C203",
                        .message = fmt::format("no matrix is calibrated at {} K; gains and matrix "
                                               "lie between its neighbours', in mired",
                                               kelvin)});
        }
        points.push_back(point);
    }
    return points;
}

const TunedPoint& nearest(const std::vector<TunedPoint>& points, double kelvin) {
    return *std::min_element(points.begin(), points.end(),
                             [kelvin](const TunedPoint& a, const TunedPoint& b) {
                                 return std::abs(a.kelvin - kelvin) < std::abs(b.kelvin - kelvin);
                             });
}

/// Low-light or flash row: the same gains, `change` of each matrix. Returns the matrices.
template <typename Change>
std::vector<NSIspTuning::ISP_CCM_T> fill_row(Tuning& tuning, std::size_t row,
                                             const std::vector<TunedPoint>& points, Change change) {
    const CoefficientCodec codec(tuning.caller.int_bits, tuning.caller.frac_bits);
    std::vector<NSIspTuning::ISP_CCM_T> matrices;
    for (std::size_t ct = 0; ct < points.size(); ++ct) {
        matrices.push_back(to_fixed(change(points[ct].matrix)));
        codec.encode(matrices.back(), tuning.ccm.rCCM_Nvram[row][ct]);
        tuning.ccm.rCTAWBGain[row][ct] = points[ct].gain;
        tuning.kelvin[row][ct] = tuning.kelvin[0][ct];
    }
    return matrices;
}

/// The polynomial whose matrices lie this share of the way to one matrix.
ISP_CCM_POLY22_T drawn_to(ISP_CCM_POLY22_T polynomial, const NSIspTuning::ISP_CCM_T& matrix,
                          double share) {
    const auto stored = [](double value) { return static_cast<std::int32_t>(std::lround(value)); };
    for (std::size_t k = 0; k < 9; ++k) {
        polynomial.i4P00[k] =
            stored((1.0 - share) * polynomial.i4P00[k] + share * kStoredTerm * matrix.i4Coef[k]);
        polynomial.i4P10[k] = stored((1.0 - share) * polynomial.i4P10[k]);
        polynomial.i4P01[k] = -polynomial.i4P10[k];
    }
    return polynomial;
}

/// @param flash the calibrated matrix in the light of the flash
void fill_derived_rows(Tuning& tuning, const std::vector<TunedPoint>& points, CcmFit fit,
                       const RealMatrix& flash, const ImportChoices& choices) {
    fill_row(tuning, kRowLowLight, points, [&choices](const RealMatrix& matrix) {
        return desaturate(matrix, choices.low_light_saturation);
    });
    const auto matrices =
        fill_row(tuning, kRowFlash, points, [&choices, &flash](const RealMatrix& matrix) {
            return mix(matrix, flash, choices.flash_share);
        });
    if (fit == CcmFit::lights) {
        tuning.ccm.rCCMPoly22Flash =
            drawn_to(tuning.ccm.rCCMPoly22, to_fixed(flash), choices.flash_share);
        return;
    }
    std::vector<AWB_GAIN_T> gains;
    gains.reserve(points.size());
    for (const TunedPoint& point : points) gains.push_back(point.gain);
    tuning.ccm.rCCMPoly22Flash = fit_polynomial(gains, matrices);
}

Tuning empty_ccm(const Tuning& base, const ImportChoices& choices) {
    Tuning tuning = base;
    tuning.name = choices.name;
    tuning.has_ccm = true;
    tuning.ccm = {};
    std::fill_n(&tuning.kelvin[0][0], 64, 0U);
    tuning.caller.int_bits = 3;
    tuning.caller.frac_bits = 9;
    tuning.ccm.i4NumLV = 2;
    tuning.ccm.i4NumFlash = 1;
    return tuning;
}

}  // namespace

void choose_by_words(ImportChoices& choices, std::string_view method, std::string_view fit) {
    if (method == "blend") choices.method = CcmMethod::blend;
    if (method == "polynomial") choices.method = CcmMethod::polynomial;
    if (fit == "points") choices.fit = CcmFit::points;
    if (fit != "blend") return;
    if (choices.method == CcmMethod::polynomial) {
        throw BadInput(
            "a polynomial is not fitted through the blend; choose the fit points, or leave it out");
    }
    choices.method = CcmMethod::blend;
    choices.fit = CcmFit::lights;
}

ImportError import_error(const std::vector<PointError>& errors, bool with_kept, bool with_dropped) {
    ImportError result;
    for (const PointError& error : errors) {
        if (!(error.kept ? with_kept : with_dropped)) continue;
        ++result.points;
        if (error.largest > result.largest || result.points == 1) {
            result.largest = error.largest;
            result.largest_kelvin = error.kelvin;
        }
        result.mean_difference += error.mean_difference;
        result.largest_difference = std::max(result.largest_difference, error.largest_difference);
    }
    if (result.points > 0) result.mean_difference /= static_cast<double>(result.points);
    return result;
}

Import import_calibration(const Calibration& calibration, const ImportChoices& choices,
                          const Tuning& base, Faults& faults) {
    Import result;
    if (!choices_fit(choices, faults)) return result;
    const Sensor sensor(calibration, choices.points, faults);
    if (faults.has_errors()) return result;
    TrialChoices trial{choices.method, choices.fit, {}, choices.most_cts, choices.stretch};
    if (!choices.kelvins.empty()) {
        trial.named = named_points(sensor, choices.kelvins, faults);
        for (TunedPoint& point : trial.named) point.gain = stretched(point.gain, choices.stretch);
    }
    if (faults.has_errors()) return result;

    result.tuning = empty_ccm(base, choices);
    Trials trials = try_all(sensor, trial, result.tuning);
    const Candidate& chosen = trials.candidates[trials.chosen];
    result.tuning.ccm.i4Method = static_cast<std::int32_t>(chosen.method);
    fill_normal_row(result.tuning, trials.points);
    result.tuning.ccm.rCCMPoly22 = trials.polynomial;
    result.flash_tuned_kelvin = nearest(trials.points, choices.flash_kelvin).kelvin;
    fill_derived_rows(result.tuning, trials.points, chosen.fit,
                      sensor.at(result.flash_tuned_kelvin).matrix, choices);
    result.kept = std::move(trials.points);
    result.chosen = trials.chosen;
    result.candidates = std::move(trials.candidates);
    std::vector<TunedPoint> calibrated = sensor.points();
    for (TunedPoint& point : calibrated) point.gain = stretched(point.gain, choices.stretch);
    result.errors = point_errors(result.tuning, calibrated);
    return result;
}

}  // namespace imgtune::workbench
