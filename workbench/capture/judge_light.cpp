#include "workbench/capture/judge_light.h"

#include <fmt/format.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace imgtune::workbench {

namespace {

// Thresholds are held against synthetic captures whose faults are known; tests/workbench keeps
// them.
constexpr double kNoChart = 10.0;          // mean CIEDE2000; real charts under odd lamps reach 6
constexpr double kCoveredResidual = 10.0;  // CIEDE2000 of a patch in a fit without it ...
constexpr double kCoveredTimes = 4.0;      // ... and times the mean of the others
constexpr std::size_t kMostCovered = 3;
constexpr double kCoveredSpread = 0.25;  // between the quarters of a patch, share of its mean
constexpr double kLeastSlope = 0.9;      // of honest linear captures, up to kMostSlope
constexpr double kMostSlope = 1.01;
constexpr double kGammaSlope = 0.8;  // below, a curve was applied, or black is far off
constexpr double kSteepSlope = 1.15;
constexpr double kGlare = 0.01;          // share of a white's light, ...
constexpr double kNoGlare = 0.0005;      // ... and what does not show in a table
constexpr double kGreysDisagree = 0.03;  // of a grey's R/G or B/G
constexpr double kNoisy = 0.05;          // standard deviation of a sample of the white, share
constexpr double kUneven = 0.08;         // of the light over the chart
constexpr double kEditionBetter = 0.15;  // mean CIEDE2000, and a tenth of the own residual

void tell(const LightStudy& light, const char* code, std::string message, std::string advice,
          Faults& faults, std::string path = {}) {
    faults.add({.code = code,
                .file = light.pictures.front().file,
                .path = std::move(path),
                .message = std::move(message),
                .suggestion = std::move(advice)});
}

PatchColors balanced_colors(const LightStudy& light) {
    PatchColors colors{};
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        colors[i] = light.patches[i].mean;
        colors[i][0] *= light.red_gain;
        colors[i][2] *= light.blue_gain;
    }
    return colors;
}

/// Of the greys in use, brightest first.
std::vector<std::size_t> greys_in_use(const LightStudy& light) {
    std::vector<std::size_t> greys;
    for (std::size_t i = kFirstGrey; i < kChartPatches; ++i) {
        if (light.weights[i] > 0.0) greys.push_back(i);
    }
    return greys;
}

/// A straight line by least squares.
struct Line {
    double slope;
    double start;
};

Line line_through(const std::vector<double>& x, const std::vector<double>& y,
                  const std::vector<double>& weights) {
    double sum = 0.0;
    double sx = 0.0;
    double sy = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sum += weights[i];
        sx += weights[i] * x[i];
        sy += weights[i] * y[i];
    }
    double xx = 0.0;
    double xy = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double from_mean = x[i] - sx / sum;
        xx += weights[i] * from_mean * from_mean;
        xy += weights[i] * from_mean * (y[i] - sy / sum);
    }
    const double slope = xx > 0.0 ? xy / xx : 0.0;
    return {slope, (sy - slope * sx) / sum};
}

void measure_greys(LightStudy& light, const ChartReference& reference) {
    std::vector<double> wanted;
    std::vector<double> seen;
    std::vector<double> log_wanted;
    std::vector<double> log_seen;
    std::vector<double> relative;
    std::vector<double> even;
    for (const std::size_t i : greys_in_use(light)) {
        const double green = light.patches[i].mean[1];
        wanted.push_back(reference.rgb[i][1]);
        seen.push_back(green);
        relative.push_back(1.0 / (reference.rgb[i][1] * reference.rgb[i][1]));
        // A patch at or below black has no logarithm; it is far below any slope.
        log_wanted.push_back(std::log(reference.rgb[i][1]));
        log_seen.push_back(std::log(std::max(green, 1e-6)));
        even.push_back(1.0);
    }
    light.grey_slope = line_through(log_wanted, log_seen, even).slope;
    const Line line = line_through(wanted, seen, relative);
    light.glare = line.slope > 0.0 ? line.start / line.slope : 0.0;
    if (std::abs(light.glare) < kNoGlare) light.glare = 0.0;  // as good as none has no sign

    light.grey_disagreement = 0.0;
    for (const std::size_t i : greys_in_use(light)) {
        if (i == kBlackPatch) continue;
        const Rgb& mean = light.patches[i].mean;
        const Rgb& own = reference.rgb[i];
        const double red = mean[0] / mean[1] * light.red_gain / (own[0] / own[1]);
        const double blue = mean[2] / mean[1] * light.blue_gain / (own[2] / own[1]);
        const double off = std::max(std::abs(red - 1.0), std::abs(blue - 1.0));
        if (off <= light.grey_disagreement) continue;
        light.grey_disagreement = off;
        light.grey_disagreeing_patch = i;
    }
}

/// How the light that the patches show, against what the matrix makes of their colours, changes
/// over the chart: a surface of second degree through its logarithm.
double unevenness_of(const LightStudy& light, const ChartReference& reference) {
    const Eigen::Matrix3d matrix =
        Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(light.matrix.data());
    const Eigen::FullPivLU<Eigen::Matrix3d> inverse(matrix);
    if (!inverse.isInvertible()) return 0.0;
    const PatchColors colors = balanced_colors(light);
    Eigen::Matrix<double, kChartPatches, 6> places;
    Eigen::Matrix<double, kChartPatches, 1> logarithms;
    Eigen::Matrix<double, kChartPatches, 6> all_places;
    Eigen::Index used = 0;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const double u = (static_cast<double>(i % 6) - 2.5) / 2.5;
        const std::size_t row = i / 6;
        const double v = (static_cast<double>(row) - 1.5) / 1.5;
        all_places.row(static_cast<Eigen::Index>(i)) << 1.0, u, v, u * u, u * v, v * v;
        if (light.weights[i] == 0.0 || i == kBlackPatch) continue;
        const Eigen::Vector3d expected = inverse.solve(
            Eigen::Vector3d(reference.rgb[i][0], reference.rgb[i][1], reference.rgb[i][2]));
        const double seen = (colors[i][0] + colors[i][1] + colors[i][2]) * light.exposure;
        if (!(expected.sum() > 0.0 && seen > 0.0)) continue;
        places.row(used) = all_places.row(static_cast<Eigen::Index>(i));
        logarithms[used++] = std::log(seen / expected.sum());
    }
    if (used < 12) return 0.0;
    const Eigen::VectorXd surface =
        places.topRows(used).colPivHouseholderQr().solve(logarithms.head(used));
    const Eigen::VectorXd over = all_places * surface;
    return 1.0 - std::exp(over.minCoeff() - over.maxCoeff());
}

/// The patches without which the others fit far better.
std::vector<std::size_t> covered_patches(const LightStudy& light, const CaptureChoices& choices) {
    const PatchColors colors = balanced_colors(light);
    PatchWeights weights = light.weights;
    std::vector<std::size_t> covered;
    while (covered.size() <= kMostCovered) {
        std::optional<std::size_t> worst;
        double least_mean = 0.0;
        double own = 0.0;
        for (std::size_t i = 0; i < kChartPatches; ++i) {
            if (weights[i] == 0.0) continue;
            PatchWeights without = weights;
            without[i] = 0.0;
            const MatrixFit fit = fit_linear(colors, choices.reference.rgb, without);
            if (worst && fit.mean >= least_mean) continue;
            worst = i;
            least_mean = fit.mean;
            own = fit.residual[i];
        }
        if (!worst || own < kCoveredResidual || own < kCoveredTimes * least_mean) break;
        covered.push_back(*worst);
        weights[*worst] = 0.0;
    }
    return covered;
}

/// False: there is no chart.
bool tell_patches(const LightStudy& light, const CaptureChoices& choices, Faults& faults) {
    const std::vector<std::size_t> covered = covered_patches(light, choices);
    if (covered.size() > kMostCovered || (covered.empty() && light.mean_residual > kNoChart) ||
        !has_dominant_diagonal(light.matrix)) {
        tell(light, "P110",
             fmt::format("what lies between the corners is no chart of 24 patches: a mean "
                         "CIEDE2000 of {:.1f} is left",
                         light.mean_residual),
             "look at the corners; they are those of patches 1, 6, 24 and 19", faults);
        return false;
    }
    for (const std::size_t i : covered) {
        tell(light, "P111",
             "does not fit the others at all: covered, in a reflex, or of another chart",
             fmt::format("photograph it again, or leave it out with --weight '{}=0'", i + 1),
             faults, patch_name(i));
    }
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const auto& spread = light.patches[i].spread;
        if (!spread || *spread < kCoveredSpread || light.weights[i] == 0.0 || i == kBlackPatch) {
            continue;
        }
        if (std::find(covered.begin(), covered.end(), i) != covered.end()) continue;
        tell(light, "P111",
             fmt::format("is not even: its quarters differ by {:.0f} %", 100.0 * *spread),
             fmt::format("photograph it again without what covers a part of it, look at the "
                         "corners, or leave it out with --weight '{}=0'",
                         i + 1),
             faults, patch_name(i));
    }
    return true;
}

void tell_greys(const LightStudy& light, Faults& faults) {
    const std::string slope =
        fmt::format("the greys rise with a slope of {:.2f}", light.grey_slope);
    if (light.grey_slope < kGammaSlope || light.grey_slope > kSteepSlope) {
        tell(light, "P112", slope + ": a gamma curve was applied, or the black level is wrong",
             "give linear captures with their black level; linear ones have 0.9 to 1.01", faults);
    } else if (light.grey_slope < kLeastSlope || light.grey_slope > kMostSlope) {
        tell(light, "P113", slope + ", linear captures with 0.9 to 1.01",
             light.grey_slope < kLeastSlope ? "look for glare, and at the black level"
                                            : "look at the black level: too much is taken off",
             faults);
    }
    if (light.glare > kGlare) {
        tell(light, "P114",
             fmt::format("{:.1f} % of a white's light lie over every patch: glare, or a black "
                         "level too low",
                         100.0 * light.glare),
             "shade the lens and keep bright surfaces out of the picture; it is not removed",
             faults);
    }
    if (light.grey_disagreement > kGreysDisagree) {
        tell(light, "P115",
             fmt::format("differs by {:.1f} % in R/G or B/G from the greys together",
                         100.0 * light.grey_disagreement),
             "look for a second light, reflexes and shading of colour", faults,
             patch_name(light.grey_disagreeing_patch));
    }
}

void tell_noise(const LightStudy& light, Faults& faults) {
    const PatchMeasure& white = light.patches[kFirstGrey];
    if (!white.noise || light.weights[kFirstGrey] == 0.0) return;
    double noise = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
        noise = std::max(noise, (*white.noise)[k] / std::max(white.mean[k], 1e-9));
    }
    if (noise <= kNoisy) return;
    tell(light, "P116",
         fmt::format("samples of the white patch scatter by {:.0f} %", 100.0 * noise),
         "take it with a lower gain and a longer exposure, or average several", faults);
}

}  // namespace

void tell_clipped(const LightStudy& light, const PatchWeights& wanted, Faults& faults) {
    std::string names;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        if (wanted[i] == 0.0 || light.weights[i] > 0.0) continue;
        names += fmt::format("{}{}", names.empty() ? "" : "; ", patch_name(i));
    }
    if (names.empty()) return;
    tell(light, "P117", fmt::format("clipped and left out: {}", names),
         "take it again with a shorter exposure", faults);
}

void judge_light(LightStudy& light, const CaptureChoices& choices, Faults& faults) {
    measure_greys(light, choices.reference);
    light.unevenness = unevenness_of(light, choices.reference);
    if (!tell_patches(light, choices, faults)) return;
    tell_greys(light, faults);
    tell_noise(light, faults);
    if (light.unevenness > kUneven) {
        const bool has_flat = !light.pictures.front().flat.empty();
        tell(light, "P118",
             fmt::format("the light differs by {:.0f} % over the chart{}", 100.0 * light.unevenness,
                         has_flat ? ", flat frame divided out" : ""),
             has_flat ? "take chart and flat frame in the same place and light"
                      : "give a flat frame with --flat, or light the chart evenly",
             faults);
    }
    if (light.other_edition_residual && choices.other_edition) {
        const double better = light.mean_residual - *light.other_edition_residual;
        if (better > kEditionBetter && better > 0.1 * light.mean_residual) {
            tell(light, "P120",
                 fmt::format("fits the chart from {} better: mean CIEDE2000 {:.2f} against {:.2f}",
                             choices.other_edition->name, *light.other_edition_residual,
                             light.mean_residual),
                 "look at the date on the chart's back, and name its edition with --edition",
                 faults);
        }
    }
}

}  // namespace imgtune::workbench
