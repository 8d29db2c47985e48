#include "workbench/capture/picture.h"

#include <algorithm>

namespace imgtune::workbench {

namespace {

// Of the samples near the top of a picture, so many at the very top are no accident: with honest
// noise a value is about as frequent as the ones below it.
constexpr std::size_t kFewestPiledUp = 64;
constexpr std::size_t kTimesTheNeighbours = 8;
constexpr std::size_t kNeighbours = 16;

std::optional<double> piled_up_level(const std::vector<std::size_t>& count) {
    std::size_t top = count.size() - 1;
    // A few hot pixels may stand above the level at which the others clip.
    for (std::size_t above = 0; top > 0 && above < kFewestPiledUp; above += count[top], --top) {
        if (count[top] < kFewestPiledUp) continue;
        std::size_t most = 0;  // of the values just below that occur
        std::size_t seen = 0;
        for (std::size_t level = top; level-- > 0 && seen < kNeighbours;) {
            if (count[level] == 0) continue;
            most = std::max(most, count[level]);
            ++seen;
        }
        if (count[top] >= kTimesTheNeighbours * most) return static_cast<double>(top);
    }
    return std::nullopt;
}

}  // namespace

std::string form_of(const Picture& picture) {
    if (!picture.is_mosaic()) return "RGB picture";
    std::string form = "raw mosaic ";
    for (const std::uint8_t color : picture.order) form += "RGB"[color];
    return form;
}

bool same_layout(const Picture& a, const Picture& b) {
    return a.width == b.width && a.height == b.height && a.channels == b.channels &&
           (!a.is_mosaic() || a.order == b.order);
}

std::array<std::optional<double>, 3> find_clipping_levels(const Picture& picture) {
    std::array<std::vector<std::size_t>, 3> counts;
    for (std::vector<std::size_t>& count : counts) count.resize(65536);
    for (std::size_t y = picture.top; y < picture.top + picture.lit_height; ++y) {
        for (std::size_t x = picture.left; x < picture.left + picture.lit_width; ++x) {
            for (std::size_t k = 0; k < picture.channels; ++k) {
                const std::size_t channel = picture.is_mosaic() ? picture.color(x, y) : k;
                ++counts[channel][picture.sample(x, y, channel)];
            }
        }
    }
    return {piled_up_level(counts[0]), piled_up_level(counts[1]), piled_up_level(counts[2])};
}

}  // namespace imgtune::workbench
