#include "workbench/capture/flat_field.h"

#include <fmt/format.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <vector>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostBlocks = 32;     // a side
constexpr std::size_t kFewestPixels = 128;  // a side of the lit part
constexpr std::size_t kBlockPixels = 8;     // a side, at least: 16 samples of red in a mosaic
constexpr double kMostClipped = 0.001;      // of the samples
constexpr double kDarkest = 0.02;           // of the white level, on average
constexpr double kRough = 0.02;             // rms of what the polynomial leaves, share

/// Powers of the place in the lit part, which reaches from -1 to 1.
FlatField::Terms powers(const Picture& layout, double x, double y) {
    const auto place = [](double at, std::size_t first, std::size_t count) {
        return 2.0 * (at - static_cast<double>(first)) / static_cast<double>(count - 1) - 1.0;
    };
    const double u = place(x, layout.left, layout.lit_width);
    const double v = place(y, layout.top, layout.lit_height);
    FlatField::Terms out{};
    std::size_t at = 0;
    double u_power = 1.0;
    for (int i = 0; i <= FlatField::kDegree; ++i, u_power *= u) {
        double product = u_power;
        for (int j = 0; i + j <= FlatField::kDegree; ++j, product *= v) out[at++] = product;
    }
    return out;
}

struct FlatBlock {
    double x;  ///< its middle
    double y;
    double level;
};

/// The mean of the middle half of the samples of a colour; medians of whole numbers come in steps.
std::optional<double> middle_mean(std::vector<double>& levels) {
    if (levels.size() < 8) return std::nullopt;
    const auto quarter = static_cast<std::ptrdiff_t>(levels.size() / 4);
    std::sort(levels.begin(), levels.end());
    double sum = 0.0;
    for (auto at = levels.begin() + quarter; at != levels.end() - quarter; ++at) sum += *at;
    return sum / static_cast<double>(levels.end() - levels.begin() - 2 * quarter);
}

std::vector<FlatBlock> blocks_of(const Picture& flat, const Picture* dark, std::size_t channel) {
    std::vector<FlatBlock> blocks;
    std::vector<double> levels;
    const std::size_t rows = std::min(kMostBlocks, flat.lit_height / kBlockPixels);
    const std::size_t columns = std::min(kMostBlocks, flat.lit_width / kBlockPixels);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t top = flat.top + flat.lit_height * row / rows;
        const std::size_t bottom = flat.top + flat.lit_height * (row + 1) / rows;
        for (std::size_t column = 0; column < columns; ++column) {
            const std::size_t left = flat.left + flat.lit_width * column / columns;
            const std::size_t right = flat.left + flat.lit_width * (column + 1) / columns;
            levels.clear();
            for (std::size_t y = top; y < bottom; ++y) {
                for (std::size_t x = left; x < right; ++x) {
                    if (flat.is_mosaic() && flat.color(x, y) != channel) continue;
                    levels.push_back(above_black(flat, dark, x, y, channel));
                }
            }
            const auto level = middle_mean(levels);
            if (!level) continue;
            blocks.push_back({static_cast<double>(left + right - 1) / 2.0,
                              static_cast<double>(top + bottom - 1) / 2.0, *level});
        }
    }
    return blocks;
}

double clipped_share(const Picture& flat) {
    if (!flat.white) return 0.0;
    std::size_t clipped = 0;
    for (std::size_t y = flat.top; y < flat.top + flat.lit_height; ++y) {
        for (std::size_t x = flat.left; x < flat.left + flat.lit_width; ++x) {
            for (std::size_t k = 0; k < flat.channels; ++k) {
                if (flat.sample(x, y, k) >= *flat.white) ++clipped;
            }
        }
    }
    return static_cast<double>(clipped) /
           static_cast<double>(flat.lit_width * flat.lit_height * flat.channels);
}

/// The polynomial through the blocks, and how far they lie from it.
struct SmoothFit {
    FlatField::Terms terms{};
    double mean = 0.0;
    double least = 0.0;
    double rough = 0.0;  ///< root mean square of what is left, share of the mean
};

SmoothFit fit_smooth(const Picture& flat, const std::vector<FlatBlock>& blocks) {
    const auto count = static_cast<Eigen::Index>(blocks.size());
    Eigen::MatrixXd system(count, FlatField::kTerms);
    Eigen::VectorXd levels(count);
    for (Eigen::Index i = 0; i < count; ++i) {
        const FlatBlock& block = blocks[static_cast<std::size_t>(i)];
        const FlatField::Terms row = powers(flat, block.x, block.y);
        system.row(i) = Eigen::Map<const Eigen::RowVectorXd>(row.data(), FlatField::kTerms);
        levels[i] = block.level;
    }
    const Eigen::VectorXd terms = system.colPivHouseholderQr().solve(levels);
    const Eigen::VectorXd smooth = system * terms;
    SmoothFit fit;
    std::copy_n(terms.data(), FlatField::kTerms, fit.terms.begin());
    fit.mean = levels.mean();
    fit.least = smooth.minCoeff();
    fit.rough = std::sqrt((smooth - levels).squaredNorm() / static_cast<double>(count)) / fit.mean;
    return fit;
}

void refuse(const Picture& flat, std::string message, std::string advice, Faults& faults) {
    faults.add({.code = "P108",
                .file = flat.file,
                .message = std::move(message),
                .suggestion = std::move(advice)});
}

bool is_usable(const Picture& flat, const Picture* dark, Faults& faults) {
    if (dark != nullptr && !same_layout(flat, *dark)) {
        refuse(flat, "the flat frame has another size or mosaic than the dark frame",
               "take both with the same camera and mode", faults);
        return false;
    }
    if (std::min(flat.lit_width, flat.lit_height) < kFewestPixels) {
        refuse(flat,
               fmt::format("the flat frame has {} x {} pixels", flat.lit_width, flat.lit_height),
               fmt::format("take one of {0} x {0} pixels or more", kFewestPixels), faults);
        return false;
    }
    if (const double share = clipped_share(flat); share > kMostClipped) {
        refuse(flat, fmt::format("{:.1f} % of the flat frame are clipped", 100.0 * share),
               "take it again with a shorter exposure", faults);
        return false;
    }
    return true;
}

}  // namespace

std::optional<FlatField> FlatField::fit(const Picture& flat, const Picture* dark, Faults& faults) {
    if (!is_usable(flat, dark, faults)) return std::nullopt;
    constexpr const char* kColors[] = {"red", "green", "blue"};
    FlatField field;
    field.layout_ = flat;
    field.layout_.samples = {};
    const double brightest = flat.white.value_or(65535.0);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const std::vector<FlatBlock> blocks = blocks_of(flat, dark, channel);
        if (blocks.size() < 4 * std::size_t{kTerms}) {
            refuse(flat, fmt::format("the flat frame has too few samples of {}", kColors[channel]),
                   "take it with the camera's full resolution", faults);
            return std::nullopt;
        }
        SmoothFit smooth = fit_smooth(flat, blocks);
        if (smooth.mean < kDarkest * brightest) {
            refuse(flat,
                   fmt::format("the flat frame is dark: {} is at {:.1f} % of the white level",
                               kColors[channel], 100.0 * smooth.mean / brightest),
                   "take it with a longer exposure", faults);
            return std::nullopt;
        }
        // In the middle all powers but the first are 0: the first term is the level there.
        const double middle = smooth.terms[0];
        if (!(middle > 0.0 && smooth.least > 0.05 * middle)) {
            refuse(flat, "the flat frame falls off to nothing",
                   "photograph an even white surface that fills the picture", faults);
            return std::nullopt;
        }
        if (smooth.rough > kRough) {
            faults.add({.code = "P109",
                        .file = flat.file,
                        .message = fmt::format("{} of the flat frame is not smooth: a polynomial "
                                               "leaves {:.1f} %",
                                               kColors[channel], 100.0 * smooth.rough),
                        .suggestion = "photograph an even white surface, out of focus"});
        }
        for (double& term : smooth.terms) term /= middle;
        field.terms_[channel] = smooth.terms;
    }
    return field;
}

double FlatField::at(double x, double y, std::size_t channel) const {
    const Terms place = powers(layout_, x, y);
    double sum = 0.0;
    for (std::size_t i = 0; i < place.size(); ++i) sum += place[i] * terms_[channel][i];
    return sum;
}

}  // namespace imgtune::workbench
