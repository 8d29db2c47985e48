#ifndef IMGTUNE_TESTS_SUPPORT_CHART_SCENE_H
#define IMGTUNE_TESTS_SUPPORT_CHART_SCENE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/capture/matrix_fit.h"
#include "workbench/capture/picture.h"

// Photographs of a colour chart whose truth is known: made of measured spectra.

namespace imgtune::workbench {

/// Spectra of 380 to 780 nm: what a column of spectra.csv holds.
using Spectrum = std::vector<double>;

class Spectra {
  public:
    /// Reads tests/data/spectra.csv.
    explicit Spectra(const std::string& path);

    const Spectrum& column(const std::string& name) const;
    Spectrum black_body(double kelvin) const;

    /// Linear camera colours of the 24 patches, then of an even white; green of the white is 1.
    struct Camera {
        PatchColors patches;
        Rgb white;
    };
    Camera seen_by(const std::string& camera, const Spectrum& light) const;

    /// Linear sRGB of the patches under D65.
    ChartReference reference() const;

  private:
    std::vector<std::string> names_;
    std::vector<Spectrum> columns_;
};

/// How a photograph is taken. What is not said is honest.
struct Shot {
    std::size_t width = 480;
    std::size_t height = 360;
    std::array<std::uint8_t, 4> order{0, 1, 1, 2};
    std::size_t channels = 1;
    Quad corners{{{70.3, 60.8}, {418.6, 48.2}, {430.1, 296.4}, {61.7, 281.9}}};
    double black = 1024.0;
    double white = 16383.0;
    double exposure = 0.7;        ///< green of an even white, share of the range
    double shading = 0.0;         ///< loss in the corners of the picture
    double color_shading = 0.0;   ///< that red loses more than green, and blue less
    double slope_of_light = 0.0;  ///< from the left to the right
    double noise = 0.0;           ///< standard deviation at white, share; falls with the root
    double glare = 0.0;           ///< share of the white's light, everywhere
    double gamma = 1.0;           ///< of a curve over the range
    std::optional<std::size_t> covered;  ///< a patch with a thumb on it ...
    double covered_share = 1.0;          ///< ... from its left on
    bool is_flat = false;                ///< an even white in place of the chart
    bool is_dark = false;                ///< the lens covered
    std::size_t border = 0;              ///< masked columns and rows at left and top
    unsigned seed = 1;
};

/// Takes it. White and black are set as told, the file's name is "shot".
Picture take(const Shot& shot, const Spectra::Camera& camera);

}  // namespace imgtune::workbench

#endif
