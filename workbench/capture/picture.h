#ifndef IMGTUNE_WORKBENCH_CAPTURE_PICTURE_H
#define IMGTUNE_WORKBENCH_CAPTURE_PICTURE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace imgtune::workbench {

/// Levels that repeat over the picture, from its first pixel on.
struct LevelPattern {
    std::size_t rows = 1;
    std::size_t columns = 1;
    std::vector<double> levels{0.0};  ///< row after row

    double at(std::size_t x, std::size_t y) const {
        return levels[y % rows * columns + x % columns];
    }
};

/// The samples of a photograph as they are stored, masked border included.
struct Picture {
    std::string file;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t channels = 1;  ///< 1: a mosaic; 3: red, green and blue a pixel
    std::array<std::uint8_t, 4> order{0, 1, 1,
                                      2};  ///< of a mosaic: colour (0 red, 1 green, 2 blue)
                                           ///< at the places (0,0), (1,0), (0,1), (1,1)
    std::size_t left = 0;                  ///< of the part that light falls on
    std::size_t top = 0;
    std::size_t lit_width = 0;
    std::size_t lit_height = 0;
    LevelPattern black;
    std::optional<double> white;  ///< level at which samples clip; absent: not known
    std::vector<std::uint16_t> samples;

    bool is_mosaic() const { return channels == 1; }
    std::size_t color(std::size_t x, std::size_t y) const { return order[y % 2 * 2 + x % 2]; }
    std::uint16_t sample(std::size_t x, std::size_t y, std::size_t channel) const {
        return samples[(y * width + x) * channels + (channels == 1 ? 0 : channel)];
    }
};

/// "raw mosaic RGGB", "RGB picture".
std::string form_of(const Picture& picture);

/// Whether one picture's samples can be taken off the other's.
bool same_layout(const Picture& a, const Picture& b);

/// For red, green and blue the level at which samples clip, where so many share the largest value
/// that nothing else explains it; none: nothing clips that far.
std::array<std::optional<double>, 3> find_clipping_levels(const Picture& picture);

}  // namespace imgtune::workbench

#endif
