#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

constexpr double kFarFromTuned = 0.25;  ///< root mean square over coefficients, 1.0 = unity

using Matrix = NSIspTuning::ISP_CCM_T;

/// A polynomial and the row that it stands for.
struct Block {
    const ISP_CCM_POLY22_T& poly;
    const char* path;
    std::size_t row;
};

Matrix evaluate(const Checked& checked, const Block& block, std::size_t ct) {
    std::array<float, 9> p00{}, p10{}, p01{}, zero{};
    for (std::size_t k = 0; k < 9; ++k) {
        p00[k] = static_cast<float>(block.poly.i4P00[k]) / 10000.0f;
        p10[k] = static_cast<float>(block.poly.i4P10[k]) / 10000.0f;
        p01[k] = static_cast<float>(block.poly.i4P01[k]) / 10000.0f;
    }
    const AWB_GAIN_T& tuned = checked.ccm().rCTAWBGain[block.row][ct];
    Matrix m{};
    GenCCM({tuned.i4R, 512, tuned.i4B}, 0, 0, checked.unity(),
           static_cast<float>(block.poly.i4R_AVG) / 100.0f,
           static_cast<float>(block.poly.i4B_AVG) / 100.0f,
           static_cast<float>(block.poly.i4R_STD) / 100.0f,
           static_cast<float>(block.poly.i4B_STD) / 100.0f, p00.data(), p10.data(), p01.data(),
           zero.data(), zero.data(), zero.data(), m);
    return m;
}

/// The coefficients at both ends of the row; between them they are linear.
void check_ends(Checked& checked, const Block& block) {
    for (const std::size_t ct : {std::size_t{0}, checked.points(block.row) - 1}) {
        const Matrix m = evaluate(checked, block, ct);
        for (std::size_t k = 0; k < 9; ++k) {
            const std::int32_t c = m.i4Coef[k];
            if (checked.codec().decode(checked.codec().encode(c) & 0x1fffU) == c) continue;
            checked.report({.code = "T111",
                            .path = block.path,
                            .message = fmt::format("gives {} for coefficient {} at point {} of row "
                                                   "{}: beyond its 13-bit field",
                                                   c, k, ct, kRowNames[block.row]),
                            .value = std::to_string(c),
                            .effect = "the coefficient wraps: inverted colours",
                            .suggestion = "check the terms and their factor of 10000"});
            return;
        }
    }
}

// ---- factors left out

struct GainSpread {
    double lowest;
    double highest;
    double width() const { return highest - lowest; }
};

GainSpread gain_spread(const Checked& checked, std::size_t row, std::int32_t AWB_GAIN_T::*color) {
    GainSpread spread{1e9, 0.0};
    for (std::size_t ct = 0; ct < checked.points(row); ++ct) {
        const double gain = checked.ccm().rCTAWBGain[row][ct].*color;
        spread.lowest = std::min(spread.lowest, gain);
        spread.highest = std::max(spread.highest, gain);
    }
    return spread;
}

bool report_factor(Checked& checked, const Block& block, const char* field, std::int32_t value,
                   int factor, const std::string& evidence) {
    checked.report(
        {.code = "T126",
         .path = fmt::format("{}.{}", block.path, field),
         .message = fmt::format("is {}, but {}: it looks as if its factor {} were missing", value,
                                evidence, factor),
         .value = std::to_string(value),
         .effect = "the matrix is far from the tuned ones: wrong colours",
         .suggestion = fmt::format("{}", std::int64_t{value} * factor)});
    return true;
}

/// A mean outside the tuned gains that lies inside without its division by 100; a deviation
/// likewise against their spread.
bool check_gain_factors(Checked& checked, const Block& block, std::int32_t AWB_GAIN_T::*color,
                        const char* mean_name, std::int32_t mean, const char* deviation_name,
                        std::int32_t deviation) {
    const GainSpread gains = gain_spread(checked, block.row, color);
    bool found = false;
    if (mean / double{kHundredths} < gains.lowest / 2 && mean >= gains.lowest / 2 &&
        mean <= gains.highest * 2) {
        found = report_factor(checked, block, mean_name, mean, 100,
                              fmt::format("the tuned gains of row {} run from {} to {}",
                                          kRowNames[block.row], gains.lowest, gains.highest));
    }
    if (deviation / double{kHundredths} < gains.width() / 50 && deviation >= gains.width() / 10 &&
        deviation <= gains.width()) {
        found = report_factor(checked, block, deviation_name, deviation, 100,
                              fmt::format("the tuned gains of row {} spread over {}",
                                          kRowNames[block.row], gains.width()));
    }
    return found;
}

double largest(const std::int32_t (&terms)[9]) {
    double size = 0.0;
    for (const std::size_t k : kOffDiagonals) {
        size = std::max(size, std::fabs(static_cast<double>(terms[k])));
    }
    return size;
}

/// The largest tuned coefficient beside the diagonal, and the largest change over the row.
struct TunedSize {
    double value = 0.0;
    double change = 0.0;
};

TunedSize tuned_size(const Checked& checked, std::size_t row) {
    TunedSize size;
    for (const std::size_t k : kOffDiagonals) {
        double lowest = 1e9;
        double highest = -1e9;
        for (std::size_t ct = 0; ct < checked.points(row); ++ct) {
            const double c = checked.matrix(row, ct).i4Coef[k];
            lowest = std::min(lowest, c);
            highest = std::max(highest, c);
        }
        size.value = std::max({size.value, std::fabs(lowest), std::fabs(highest)});
        size.change = std::max(size.change, highest - lowest);
    }
    return size;
}

/// Terms whose division by 10000 leaves next to nothing of the tuned size.
bool check_term_factors(Checked& checked, const Block& block) {
    const TunedSize tuned = tuned_size(checked, block.row);
    struct Terms {
        const char* name;
        const std::int32_t (&values)[9];
        double expected;
    };
    const Terms all[] = {{"i4P00", block.poly.i4P00, tuned.value},
                         {"i4P10", block.poly.i4P10, tuned.change},
                         {"i4P01", block.poly.i4P01, tuned.change}};
    bool found = false;
    for (const Terms& terms : all) {
        const double size = largest(terms.values);
        if (size / kTenThousandths >= terms.expected / 500 || size < terms.expected / 50) continue;
        const auto at =
            std::find_if(std::begin(terms.values), std::end(terms.values),
                         [&](std::int32_t v) { return std::abs(double{1} * v) == size; });
        found = report_factor(checked, block, terms.name, *at, 10000,
                              fmt::format("the tuned matrices of row {} reach or change by {}",
                                          kRowNames[block.row], terms.expected));
    }
    return found;
}

/// Root mean square over the row's off-diagonal coefficients.
double distance(const Checked& checked, const Block& block) {
    double sum = 0.0;
    double count = 0.0;
    for (std::size_t ct = 0; ct < checked.points(block.row); ++ct) {
        const Matrix generated = evaluate(checked, block, ct);
        const Matrix tuned = checked.matrix(block.row, ct);
        for (const std::size_t k : kOffDiagonals) {
            const double off = static_cast<double>(generated.i4Coef[k]) - tuned.i4Coef[k];
            sum += off * off;
            count += 1.0;
        }
    }
    return std::sqrt(sum / count);
}

/// Against the gains and matrices tuned for the same light; true when there is a finding.
bool check_against_tuned(Checked& checked, const Block& block) {
    bool found = check_gain_factors(checked, block, &AWB_GAIN_T::i4R, "i4R_AVG", block.poly.i4R_AVG,
                                    "i4R_STD", block.poly.i4R_STD);
    found |= check_gain_factors(checked, block, &AWB_GAIN_T::i4B, "i4B_AVG", block.poly.i4B_AVG,
                                "i4B_STD", block.poly.i4B_STD);
    if (!checked.has_matrices(block.row)) return found;
    found |= check_term_factors(checked, block);
    if (found) {
        checked.suppress(block.path);
        return true;
    }
    const double off = distance(checked, block) / checked.unity();
    if (off <= kFarFromTuned) return false;
    checked.report({.code = "T127",
                    .path = block.path,
                    .message = fmt::format("gives coefficients {:.2f} of the unity (rms) off the "
                                           "tuned matrices of row {}; usual are up to {:.2f}",
                                           off, kRowNames[block.row], kFarFromTuned),
                    .value = fmt::format("{:.2f}", off),
                    .allowed = fmt::format("up to {:.2f}", kFarFromTuned),
                    .effect = "colours unlike those that were tuned",
                    .suggestion = "fit the polynomial again, or check means and deviations"});
    return false;
}

}  // namespace

void check_polynomials(Checked& checked) {
    if (!checked.rows_matter() || checked.ccm().i4Method != kPolynomialMethod ||
        !checked.codec_fits()) {
        return;
    }
    const ISP_NVRAM_MULTI_CCM_STRUCT& ccm = checked.ccm();
    const Block blocks[] = {{ccm.rCCMPoly22, "ccm.rCCMPoly22", kRowNormal},
                            {ccm.rCCMPoly22, "ccm.rCCMPoly22", kRowLowLight},
                            {ccm.rCCMPoly22Flash, "ccm.rCCMPoly22Flash", kRowFlash}};
    for (const Block& block : blocks) {
        if (!checked.is_row_used(block.row) || checked.is_row_missing(block.row) ||
            block.poly.i4R_STD == 0 || block.poly.i4B_STD == 0 ||
            checked.is_suppressed(block.path)) {
            continue;
        }
        // The low-light row shares the polynomial of the normal one.
        const bool off = block.row != kRowLowLight && check_against_tuned(checked, block);
        if (!off) check_ends(checked, block);
    }
}

}  // namespace imgtune::workbench
