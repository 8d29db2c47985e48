#include "workbench/calibration/points.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "workbench/calibration/conversion.h"
#include "workbench/text/counted.h"

namespace imgtune::workbench {

namespace {

constexpr double kLowestKelvin = 1000.0;
constexpr double kHighestKelvin = 1000000.0;
constexpr double kLargestGain = 32767.0;
constexpr double kUnclosed = 0.001;  // of a row's sum, beyond published figures' own rounding
constexpr double kLowestRowSum = 0.5;
constexpr double kHighestRowSum = 2.0;
constexpr std::int32_t kLowestCoefficient = -4095;
constexpr std::int32_t kHighestCoefficient = 4096;
constexpr std::size_t kFewestPoints = 3;  // of a blend

/// Sorted by CT, one entry a CT; what is left out is told.
template <typename Entry>
std::vector<Entry> by_kelvin(const std::vector<Entry>& entries, const char* what, Faults& faults) {
    std::vector<Entry> sorted = entries;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Entry& a, const Entry& b) { return a.kelvin < b.kelvin; });
    std::vector<Entry> kept;
    for (const Entry& entry : sorted) {
        if (entry.kelvin < kLowestKelvin || entry.kelvin > kHighestKelvin) {
            faults.add(
                {.code = "C101",
                 .line = entry.line,
                 .message = fmt::format("CT of {} K", entry.kelvin),
                 .value = fmt::format("{}", entry.kelvin),
                 .allowed = fmt::format("{}..{}", kLowestKelvin, kHighestKelvin),
                 .suggestion = fmt::format("write kelvin, {}..{}", kLowestKelvin, kHighestKelvin)});
        } else if (!kept.empty() && entry.kelvin == kept.back().kelvin) {
            faults.add(
                {.code = "C102",
                 .line = entry.line,
                 .message = fmt::format("a second {} at {} K; left out: the first one counts", what,
                                        entry.kelvin)});
        } else {
            kept.push_back(entry);
        }
    }
    return kept;
}

/// Redder and less blue light from b to a.
bool follows(const LocusPoint& a, const LocusPoint& b) {
    return a.red > b.red && a.blue < b.blue;
}

/// Indices of the longest run of points, not necessarily neighbours, in which each follows.
std::vector<std::size_t> longest_rise(const std::vector<LocusPoint>& locus) {
    std::vector<std::size_t> length(locus.size(), 1);
    std::vector<std::size_t> before(locus.size(), locus.size());
    std::size_t last = 0;
    for (std::size_t i = 0; i < locus.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (follows(locus[j], locus[i]) && length[j] + 1 > length[i]) {
                length[i] = length[j] + 1;
                before[i] = j;
            }
        }
        if (length[i] > length[last]) last = i;
    }
    std::vector<std::size_t> rise;
    for (std::size_t i = last; i < locus.size(); i = before[i]) rise.push_back(i);
    std::reverse(rise.begin(), rise.end());
    return rise;
}

bool fits(const RealMatrix& matrix) {
    const auto fixed = to_fixed(matrix);
    return std::all_of(std::begin(fixed.i4Coef), std::end(fixed.i4Coef), [](std::int32_t c) {
        return c >= kLowestCoefficient && c <= kHighestCoefficient;
    });
}

/// False for an error.
bool close_matrix(CalibratedMatrix& matrix, bool divide, Faults& faults) {
    double farthest = 1.0;
    for (std::size_t row = 0; row < 3; ++row) {
        const double sum = row_sum(matrix.coefficients, row);
        if (!(sum >= kLowestRowSum && sum <= kHighestRowSum)) {
            faults.add(
                {.code = "C109",
                 .line = matrix.line,
                 .message = fmt::format("row {} of the matrix sums to {:.6g}", row, sum),
                 .suggestion = "write 1.0 for unity: rows sum to 1, so that white stays white"});
            return false;
        }
        if (std::abs(sum - 1.0) > std::abs(farthest - 1.0)) farthest = sum;
    }
    if (std::abs(farthest - 1.0) <= kUnclosed) return true;
    faults.add(
        {.code = "C110",
         .line = matrix.line,
         .message = fmt::format(
             "a row of the matrix at {} K sums to {:.4f}, not 1; {}", matrix.kelvin, farthest,
             divide ? "each row was divided by its sum" : "the diagonal takes what is missing")});
    if (divide) matrix.coefficients = divide_rows(matrix.coefficients);
    return true;
}

void judge_offsets(const CalibratedMatrix& matrix, Faults& faults) {
    const auto& o = matrix.offsets;
    if (o[0] == 0.0 && o[1] == 0.0 && o[2] == 0.0) return;
    faults.add({.code = "C111",
                .line = matrix.line,
                .message = fmt::format(
                    "offsets [{}, {}, {}] at {} K; left out: the library has no place for them",
                    o[0], o[1], o[2], matrix.kelvin)});
}

}  // namespace

Sensor::Sensor(const Calibration& calibration, const PointChoices& choices, Faults& faults) {
    if (faults.has_errors()) return;
    take_locus(calibration, faults);
    if (faults.has_errors()) return;
    take_matrices(calibration, choices, faults);
    if (faults.has_errors()) return;
    take_points(calibration, faults);
    if (faults.has_errors()) points_.clear();
}

Sensor::Sensor(const std::vector<TunedPoint>& points) : points_(points) {
    for (const TunedPoint& point : points) {
        locus_.push_back({point.kelvin, 512.0 / point.gain.i4R, 512.0 / point.gain.i4B, 0});
        CalibratedMatrix matrix;
        matrix.kelvin = point.kelvin;
        matrix.coefficients = point.matrix;
        matrix.line = point.line;
        matrices_.push_back(matrix);
    }
}

void Sensor::take_locus(const Calibration& calibration, Faults& faults) {
    const std::vector<LocusPoint> all = by_kelvin(calibration.locus, "locus point", faults);
    const std::vector<std::size_t> rise = longest_rise(all);
    if (all.size() >= 2 && 2 * rise.size() <= all.size()) {
        faults.add(
            {.code = "C103",
             .line = calibration.locus_line,
             .message = "the locus does not rise in red gain and fall in blue gain with the CT",
             .suggestion = "look for R/G and B/G exchanged, for gains in place of ratios, or for "
                           "another order of the columns"});
        return;
    }
    std::size_t next = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (next < rise.size() && rise[next] == i) {
            locus_.push_back(all[i]);
            ++next;
        } else {
            faults.add({.code = "C104",
                        .line = all[i].line,
                        .message = fmt::format("the locus point at {} K is out of order: with the "
                                               "CT, R/G ({}) falls and B/G ({}) rises; left out",
                                               all[i].kelvin, all[i].red, all[i].blue),
                        .suggestion = "measure it again"});
        }
    }
    for (const LocusPoint& point : locus_) {
        if (512.0 / point.red < 1.0 || 512.0 / point.blue < 1.0 ||
            512.0 / point.red > kLargestGain || 512.0 / point.blue > kLargestGain) {
            faults.add(
                {.code = "C105",
                 .line = point.line,
                 .message = fmt::format("R/G {} and B/G {}", point.red, point.blue),
                 .suggestion = "write ratios of a grey patch: gains go from 1/512 to 63.99"});
        }
    }
    if (locus_.size() < 2) {
        faults.add({.code = "C106",
                    .line = calibration.locus_line,
                    .message = "the locus is too short: " + counted(locus_.size(), "point"),
                    .suggestion = "calibrate at two colour temperatures or more"});
    }
}

void Sensor::take_matrices(const Calibration& calibration, const PointChoices& choices,
                           Faults& faults) {
    for (CalibratedMatrix& matrix : by_kelvin(calibration.matrices, "matrix", faults)) {
        const double lowest = locus_.front().kelvin;
        const double highest = locus_.back().kelvin;
        if (matrix.kelvin < lowest || matrix.kelvin > highest) {
            faults.add(
                {.code = "C107",
                 .line = matrix.line,
                 .message = fmt::format("the matrix at {} K lies outside the locus, {}..{} K; {}",
                                        matrix.kelvin, lowest, highest,
                                        choices.extrapolate
                                            ? "its gains are taken from the locus's continuation"
                                            : "left out"),
                 .suggestion = choices.extrapolate ? "" : "--extrapolate, which takes it in"});
            if (!choices.extrapolate) continue;
        }
        if (!close_matrix(matrix, choices.divide_rows, faults)) continue;
        judge_offsets(matrix, faults);
        if (!fits(matrix.coefficients)) {
            faults.add(
                {.code = "C112",
                 .line = matrix.line,
                 .message = fmt::format("the matrix at {} K has a coefficient that does not fit",
                                        matrix.kelvin),
                 .allowed = "-7.998..8",
                 .suggestion = "write 1.0 for unity: coefficients go from -7.998 to 8"});
        }
        matrices_.push_back(matrix);
    }
    if (matrices_.empty() && !faults.has_errors()) {
        faults.add({.code = "C108",
                    .line = calibration.matrices_line,
                    .message = "no colour matrix within the locus",
                    .suggestion = "calibrate matrices at colour temperatures of the locus"});
    }
}

void Sensor::take_points(const Calibration& calibration, Faults& faults) {
    std::vector<double> kelvins;
    for (const CalibratedMatrix& matrix : matrices_) kelvins.push_back(matrix.kelvin);
    if (matrices_.size() < kFewestPoints) {
        const double low = locus_.front().kelvin;
        const double high = locus_.back().kelvin;
        const double middle = std::round(2e6 / (to_mired(low) + to_mired(high)));
        faults.add(
            {.code = "C113",
             .line = calibration.matrices_line,
             .message = fmt::format("{} {} within the locus; interpolated ones added at {}, "
                                    "{} and {} K",
                                    matrices_.size(), matrices_.size() == 1 ? "matrix" : "matrices",
                                    low, middle, high)});
        kelvins.insert(kelvins.end(), {low, middle, high});
        std::sort(kelvins.begin(), kelvins.end());
        kelvins.erase(std::unique(kelvins.begin(), kelvins.end()), kelvins.end());
    }
    for (const double kelvin : kelvins) {
        TunedPoint point = at(kelvin);
        if (!points_.empty() && (point.gain.i4R <= points_.back().gain.i4R ||
                                 point.gain.i4B >= points_.back().gain.i4B)) {
            faults.add({.code = "C114",
                        .line = point.line,
                        .message = fmt::format(
                            "the gains at {} K equal those at {} K once rounded; left out", kelvin,
                            points_.back().kelvin)});
            continue;
        }
        points_.push_back(point);
    }
    if (points_.size() < kFewestPoints) {
        faults.add(
            {.code = "C106",
             .line = calibration.locus_line,
             .message = fmt::format("the locus is too short: {} of the points have gains of their "
                                    "own",
                                    points_.size()),
             .suggestion = "calibrate at colour temperatures further apart"});
    }
}

TunedPoint Sensor::at(double kelvin) const {
    TunedPoint point;
    point.kelvin = kelvin;
    point.gain = to_gain(locus_at(locus_, kelvin));
    point.matrix = matrix_at(matrices_, kelvin);
    point.published = false;
    for (const CalibratedMatrix& matrix : matrices_) {
        if (matrix.kelvin != kelvin) continue;
        point.published = true;
        point.line = matrix.line;
    }
    return point;
}

std::vector<TunedPoint> thinned(const std::vector<TunedPoint>& points, std::size_t most) {
    if (points.size() <= most) return points;
    std::vector<TunedPoint> kept;
    for (std::size_t i = 0; i < most; ++i) {
        kept.push_back(points[i * (points.size() - 1) / (most - 1)]);
    }
    return kept;
}

}  // namespace imgtune::workbench
