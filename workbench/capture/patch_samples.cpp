#include "workbench/capture/patch_samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "workbench/appearance/patches.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFewestSamples = 6;  // of a colour in a patch
constexpr double kOutlier = 4.0;           // robust standard deviations from the median
constexpr double kMadToDeviation = 1.4826;
constexpr double kThumbnailSide = 360.0;  // pixels, the longer one
constexpr double kShownWhite = 0.98;      // share of the samples that are darker than white shown

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Standard deviation, of the values near their median alone.
double robust_deviation(const std::vector<double>& values, double middle) {
    std::vector<double> distances;
    distances.reserve(values.size());
    for (const double value : values) distances.push_back(std::abs(value - middle));
    return kMadToDeviation * median(distances);
}

/// The mean without what lies far from the median: dust, hot pixels, a reflex. Orders `values`.
double robust_mean(std::vector<double>& values) {
    const double middle = median(values);
    const double reach = kOutlier * robust_deviation(values, middle) + 0.5;  // whole numbers
    double sum = 0.0;
    double count = 0.0;
    for (const double value : values) {
        if (std::abs(value - middle) > reach) continue;
        sum += value;
        count += 1.0;
    }
    return sum / count;
}

/// One colour of a patch.
struct Collected {
    std::vector<double> values;
    std::vector<double> steps;  ///< to the next sample of the same place in the cell
    std::array<std::vector<double>, 4> quarters;
    std::size_t clipped = 0;
};

/// Pixels from left and top up to those before right and bottom.
struct Bounds {
    std::size_t left, top, right, bottom;
};

struct Box {
    double left, top, right, bottom;
};

Box box_of(const Quad& area) {
    Box box{area[0].x, area[0].y, area[0].x, area[0].y};
    for (const PicturePoint& corner : area) {
        box.left = std::min(box.left, corner.x);
        box.top = std::min(box.top, corner.y);
        box.right = std::max(box.right, corner.x);
        box.bottom = std::max(box.bottom, corner.y);
    }
    return box;
}

/// None: the area is not wholly in the lit part.
std::optional<Bounds> bounds_of(const Picture& picture, const Quad& area) {
    const Box box = box_of(area);
    const auto last_x = static_cast<double>(picture.left + picture.lit_width - 1);
    const auto last_y = static_cast<double>(picture.top + picture.lit_height - 1);
    if (!(box.left >= static_cast<double>(picture.left) &&
          box.top >= static_cast<double>(picture.top) && box.right <= last_x &&
          box.bottom <= last_y)) {
        return std::nullopt;
    }
    return Bounds{static_cast<std::size_t>(std::ceil(box.left)),
                  static_cast<std::size_t>(std::ceil(box.top)),
                  static_cast<std::size_t>(std::floor(box.right)) + 1,
                  static_cast<std::size_t>(std::floor(box.bottom)) + 1};
}

/// Takes the samples of one patch apart.
class Collector {
  public:
    Collector(const Picture& picture, const PictureAids& aids, const WhiteLevels& white)
        : picture_(picture), aids_(aids), white_(white) {}

    std::array<Collected, 3> patch(const ChartGrid& grid, std::size_t index,
                                   const Bounds& bounds) const {
        std::array<Collected, 3> colors;
        const double column =
            static_cast<double>(index % ChartGrid::kColumns) * ChartGrid::kPitch + 0.5;
        const std::size_t rows_before = index / ChartGrid::kColumns;
        const double row = static_cast<double>(rows_before) * ChartGrid::kPitch + 0.5;
        const auto from_middle = [&](std::size_t x, std::size_t y) {
            const PicturePoint at = grid.in_chart(static_cast<double>(x), static_cast<double>(y));
            return PicturePoint{at.x - column, at.y - row};
        };
        const auto is_inside = [](const PicturePoint& at) {
            return std::abs(at.x) <= kSampledShare / 2.0 && std::abs(at.y) <= kSampledShare / 2.0;
        };
        const std::size_t step = picture_.is_mosaic() ? 2 : 1;
        for (std::size_t y = bounds.top; y < bounds.bottom; ++y) {
            for (std::size_t x = bounds.left; x < bounds.right; ++x) {
                const PicturePoint at = from_middle(x, y);
                if (!is_inside(at)) continue;
                const bool has_next =
                    x + step < bounds.right && is_inside(from_middle(x + step, y));
                const std::size_t quarter = (at.x < 0.0 ? 0U : 1U) + (at.y < 0.0 ? 0U : 2U);
                for (std::size_t k = 0; k < picture_.channels; ++k) {
                    const std::size_t channel = picture_.is_mosaic() ? picture_.color(x, y) : k;
                    Collected& color = colors[channel];
                    const double value = level(x, y, channel);
                    color.values.push_back(value);
                    color.quarters[quarter].push_back(value);
                    if (has_next) color.steps.push_back(level(x + step, y, channel) - value);
                    if (picture_.sample(x, y, channel) >= white_.clips[channel]) ++color.clipped;
                }
            }
        }
        return colors;
    }

  private:
    double level(std::size_t x, std::size_t y, std::size_t channel) const {
        const double value = above_black(picture_, aids_.dark, x, y, channel);
        if (aids_.flat == nullptr) return value;
        return value / aids_.flat->at(static_cast<double>(x), static_cast<double>(y), channel);
    }

    const Picture& picture_;
    const PictureAids& aids_;
    const WhiteLevels& white_;
};

double quarters_spread(Collected& color, double mean, double noise) {
    double least = 0.0;
    double most = 0.0;
    double fewest = 0.0;
    for (std::size_t i = 0; i < 4; ++i) {
        if (color.quarters[i].empty()) return 0.0;
        const auto count = static_cast<double>(color.quarters[i].size());
        const double level = robust_mean(color.quarters[i]);
        least = i == 0 ? level : std::min(least, level);
        most = i == 0 ? level : std::max(most, level);
        fewest = i == 0 ? count : std::min(fewest, count);
    }
    // By so much noise alone may spread four means: three of their standard deviations.
    const double by_noise = 3.0 * noise * std::sqrt(2.0 / fewest);
    return mean > 0.0 ? std::max(0.0, most - least - by_noise) / mean : 0.0;
}

Thumbnail thumbnail(const Picture& picture, const PictureAids& aids, const Bounds& bounds,
                    double side) {
    Thumbnail out;
    const std::size_t across = bounds.right - bounds.left;
    const std::size_t down = bounds.bottom - bounds.top;
    const auto longer = static_cast<double>(std::max(across, down));
    const auto step = static_cast<std::size_t>(
        std::max(picture.is_mosaic() ? 2.0 : 1.0, std::ceil(longer / side)));
    out.scale = static_cast<double>(step);
    out.width = across / step;
    out.height = down / step;
    out.left = static_cast<double>(bounds.left) + (out.scale - 1.0) / 2.0;
    out.top = static_cast<double>(bounds.top) + (out.scale - 1.0) / 2.0;
    if (out.width == 0 || out.height == 0) return {};

    std::array<std::vector<double>, 3> planes;
    for (std::vector<double>& plane : planes) plane.reserve(out.width * out.height);
    for (std::size_t i = 0; i < out.width * out.height; ++i) {
        const std::size_t left = bounds.left + i % out.width * step;
        const std::size_t top = bounds.top + i / out.width * step;
        Rgb sum{};
        Rgb count{};
        for (std::size_t y = top; y < top + step; ++y) {
            for (std::size_t x = left; x < left + step; ++x) {
                for (std::size_t k = 0; k < picture.channels; ++k) {
                    const std::size_t channel = picture.is_mosaic() ? picture.color(x, y) : k;
                    sum[channel] += above_black(picture, aids.dark, x, y, channel);
                    count[channel] += 1.0;
                }
            }
        }
        for (std::size_t k = 0; k < 3; ++k) {
            planes[k].push_back(count[k] > 0.0 ? sum[k] / count[k] : 0.0);
        }
    }
    // Each colour up to its own bright end: the eye finds the chart, and no colour is claimed.
    Rgb white{};
    for (std::size_t k = 0; k < 3; ++k) {
        std::vector<double> levels = planes[k];
        const auto at = levels.begin() + static_cast<std::ptrdiff_t>(
                                             kShownWhite * static_cast<double>(levels.size() - 1));
        std::nth_element(levels.begin(), at, levels.end());
        white[k] = std::max(1.0, *at);
    }
    out.rgb.reserve(planes[0].size() * 3);
    for (std::size_t i = 0; i < planes[0].size(); ++i) {
        const auto shown =
            encoded({planes[0][i] / white[0], planes[1][i] / white[1], planes[2][i] / white[2]});
        out.rgb.insert(out.rgb.end(), shown.begin(), shown.end());
    }
    return out;
}

}  // namespace

std::optional<std::array<PatchMeasure, kChartPatches>> measure_patches(const Picture& picture,
                                                                       const PictureAids& aids,
                                                                       const ChartGrid& grid,
                                                                       const WhiteLevels& white) {
    const Collector collector(picture, aids, white);
    std::array<PatchMeasure, kChartPatches> patches;
    for (std::size_t index = 0; index < kChartPatches; ++index) {
        const auto bounds = bounds_of(picture, grid.patch(index, kSampledShare));
        if (!bounds) return std::nullopt;
        std::array<Collected, 3> colors = collector.patch(grid, index, *bounds);
        PatchMeasure& patch = patches[index];
        Rgb deviation{};
        std::size_t samples = 0;
        std::size_t clipped = 0;
        double spread = 0.0;
        for (std::size_t k = 0; k < 3; ++k) {
            Collected& color = colors[k];
            if (color.values.size() < kFewestSamples) return std::nullopt;
            const double mean = robust_mean(color.values);
            double noise = 0.0;
            if (!color.steps.empty()) {
                // Of neighbours, so that what changes slowly over the patch is left out.
                noise = robust_deviation(color.steps, median(color.steps)) / std::sqrt(2.0);
            }
            spread = std::max(spread, quarters_spread(color, mean, noise));
            samples += color.values.size();
            clipped += color.clipped;
            patch.mean[k] = mean / white.unit;
            deviation[k] = noise / white.unit;
        }
        patch.noise = deviation;
        patch.samples = samples;
        patch.clipped = clipped;
        patch.spread = spread;
    }
    return patches;
}

Thumbnail chart_thumbnail(const Picture& picture, const PictureAids& aids, const Quad& corners) {
    const Box box = box_of(corners);
    const double margin = 0.08 * std::max(box.right - box.left, box.bottom - box.top);
    const auto inside = [](double value, std::size_t first, std::size_t count) {
        return static_cast<std::size_t>(
            std::clamp(value, static_cast<double>(first), static_cast<double>(first + count)));
    };
    return thumbnail(picture, aids,
                     {inside(box.left - margin, picture.left, picture.lit_width),
                      inside(box.top - margin, picture.top, picture.lit_height),
                      inside(box.right + margin, picture.left, picture.lit_width),
                      inside(box.bottom + margin, picture.top, picture.lit_height)},
                     kThumbnailSide);
}

Thumbnail picture_thumbnail(const Picture& picture, double side) {
    return thumbnail(picture, {},
                     {picture.left, picture.top, picture.left + picture.lit_width,
                      picture.top + picture.lit_height},
                     side);
}

}  // namespace imgtune::workbench
