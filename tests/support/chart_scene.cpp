#include "support/chart_scene.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "workbench/capture/chart_grid.h"

namespace imgtune::workbench {

namespace {

constexpr double kBoard = 0.04;        // reflectance between the patches
constexpr double kSurroundings = 0.2;  // and around the chart
constexpr double kThumb[3] = {0.55, 0.3, 0.2};

/// The same numbers everywhere: no library's generator.
class Random {
  public:
    explicit Random(unsigned seed) : state_(seed * 2654435761ULL + 1) {}
    /// Near enough to normal: twelve even ones.
    double normal() {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) {
            state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
            sum += static_cast<double>(state_ >> 40U) / 16777216.0;
        }
        return sum;
    }

  private:
    std::uint64_t state_;
};

Rgb scaled(const Rgb& color, double factor) {
    return {color[0] * factor, color[1] * factor, color[2] * factor};
}

}  // namespace

Spectra::Spectra(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (line.empty() || line.front() == '#') continue;
        std::istringstream cells(line);
        std::string cell;
        for (std::size_t i = 0; std::getline(cells, cell, ','); ++i) {
            if (columns_.size() <= i) {
                names_.push_back(cell);
                columns_.emplace_back();
            } else {
                columns_[i].push_back(std::stod(cell));
            }
        }
    }
    if (columns_.empty()) throw std::runtime_error("no spectra in " + path);
}

const Spectrum& Spectra::column(const std::string& name) const {
    const auto at = std::find(names_.begin(), names_.end(), name);
    if (at == names_.end()) throw std::runtime_error("no spectrum " + name);
    return columns_[static_cast<std::size_t>(at - names_.begin())];
}

Spectrum Spectra::black_body(double kelvin) const {
    Spectrum light;
    for (const double nanometres : column("nm")) {
        const double metres = nanometres * 1e-9;
        light.push_back(1e-30 / std::pow(metres, 5.0) / std::expm1(1.4387769e-2 / metres / kelvin));
    }
    return light;
}

Spectra::Camera Spectra::seen_by(const std::string& camera, const Spectrum& light) const {
    const auto sum = [&](const std::string& channel, const Spectrum* reflected) {
        const Spectrum& response = column(camera + "_" + channel);
        double total = 0.0;
        for (std::size_t i = 0; i < light.size(); ++i) {
            total += response[i] * light[i] * (reflected != nullptr ? (*reflected)[i] : 1.0);
        }
        return total;
    };
    Camera seen{};
    const double unit = sum("g", nullptr);
    const char* const channels[] = {"r", "g", "b"};
    for (std::size_t k = 0; k < 3; ++k) {
        seen.white[k] = sum(channels[k], nullptr) / unit;
        for (std::size_t i = 0; i < kChartPatches; ++i) {
            const std::string number = (i < 9 ? "0" : "") + std::to_string(i + 1);
            seen.patches[i][k] = sum(channels[k], &column("patch_" + number)) / unit;
        }
    }
    return seen;
}

ChartReference Spectra::reference() const {
    const Spectrum& light = column("light_D65");
    ChartReference reference;
    reference.name = "spectra";
    const char* const observers[] = {"cie1931_x", "cie1931_y", "cie1931_z"};
    constexpr double kWhite[3] = {0.95047, 1.0, 1.08883};
    constexpr double kToSrgb[3][3] = {{3.2404542, -1.5371385, -0.4985314},
                                      {-0.9692660, 1.8760108, 0.0415560},
                                      {0.0556434, -0.2040259, 1.0572252}};
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const Spectrum& patch =
            column("patch_" + std::string(i < 9 ? "0" : "") + std::to_string(i + 1));
        double xyz[3] = {};
        for (std::size_t k = 0; k < 3; ++k) {
            const Spectrum& observer = column(observers[k]);
            double of_white = 0.0;
            for (std::size_t n = 0; n < light.size(); ++n) {
                xyz[k] += observer[n] * light[n] * patch[n];
                of_white += observer[n] * light[n];
            }
            xyz[k] *= kWhite[k] / of_white;
        }
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t k = 0; k < 3; ++k) reference.rgb[i][row] += kToSrgb[row][k] * xyz[k];
        }
    }
    return reference;
}

Picture take(const Shot& shot, const Spectra::Camera& camera) {
    Picture picture;
    picture.file = "shot";
    picture.width = shot.width + shot.border;
    picture.height = shot.height + shot.border;
    picture.left = picture.top = shot.border;
    picture.lit_width = shot.width;
    picture.lit_height = shot.height;
    picture.channels = shot.channels;
    picture.order = shot.order;
    picture.black = {1, 1, {shot.black}};
    picture.white = shot.white;
    picture.samples.resize(picture.width * picture.height * shot.channels);
    const auto grid = ChartGrid::through(shot.corners);
    if (!grid) throw std::runtime_error("no chart in the scene");
    Random random(shot.seed);
    const double range = shot.white - shot.black;

    const auto color_at = [&](double x, double y) -> Rgb {
        if (shot.is_flat) return camera.white;
        const PicturePoint at = grid->in_chart(x, y);
        const double column = std::floor(at.x / ChartGrid::kPitch);
        const double row = std::floor(at.y / ChartGrid::kPitch);
        if (column < 0 || column >= 6 || row < 0 || row >= 4) {
            const bool on_board = at.x > -0.5 && at.y > -0.5 && at.x < ChartGrid::kWidth + 0.5 &&
                                  at.y < ChartGrid::kHeight + 0.5;
            return scaled(camera.white, on_board ? kBoard : kSurroundings);
        }
        const double u = at.x - column * ChartGrid::kPitch;
        const double v = at.y - row * ChartGrid::kPitch;
        if (u > 1.0 || v > 1.0) return scaled(camera.white, kBoard);
        const auto index = static_cast<std::size_t>(row * 6 + column);
        if (shot.covered == index && u < shot.covered_share) {
            return {camera.white[0] * kThumb[0], camera.white[1] * kThumb[1],
                    camera.white[2] * kThumb[2]};
        }
        return camera.patches[index];
    };
    for (std::size_t y = 0; y < picture.height; ++y) {
        for (std::size_t x = 0; x < picture.width; ++x) {
            const bool masked = x < shot.border || y < shot.border;
            const Rgb color = masked || shot.is_dark
                                  ? Rgb{}
                                  : color_at(static_cast<double>(x), static_cast<double>(y));
            const double u =
                2.0 * static_cast<double>(x - shot.border) / static_cast<double>(shot.width - 1) -
                1.0;
            const double v =
                2.0 * static_cast<double>(y - shot.border) / static_cast<double>(shot.height - 1) -
                1.0;
            for (std::size_t k = 0; k < shot.channels; ++k) {
                const std::size_t channel = shot.channels == 1 ? picture.color(x, y) : k;
                const double loss =
                    shot.shading + shot.color_shading * (1.0 - static_cast<double>(channel));
                double light =
                    shot.exposure *
                    (color[channel] +
                     (masked || shot.is_dark ? 0.0 : shot.glare * camera.white[channel]));
                light *=
                    (1.0 - loss * (u * u + v * v) / 2.0) * (1.0 + shot.slope_of_light * u / 2.0);
                if (shot.gamma != 1.0) light = std::pow(std::max(light, 0.0), shot.gamma);
                light += shot.noise * std::sqrt(std::max(light, 0.002)) * random.normal();
                picture.samples[(y * picture.width + x) * shot.channels + k] =
                    static_cast<std::uint16_t>(
                        std::clamp(std::round(shot.black + range * light), 0.0, shot.white));
            }
        }
    }
    return picture;
}

}  // namespace imgtune::workbench
