#include "workbench/capture/picture.h"

#include <algorithm>

namespace imgtune::workbench {

namespace {

// Of the samples near the top of a picture, so many at the very top are no accident: with honest
// noise a value is about as frequent as the ones below it.
constexpr std::size_t kFewestPiledUp = 64;
constexpr std::size_t kTimesTheNeighbours = 8;
constexpr std::size_t kNeighbours = 16;

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

std::optional<double> find_clipping_level(const Picture& picture) {
    std::vector<std::size_t> count(65536);
    for (std::size_t y = picture.top; y < picture.top + picture.lit_height; ++y) {
        const std::uint16_t* const row = &picture.samples[y * picture.width * picture.channels];
        for (std::size_t i = picture.left * picture.channels;
             i < (picture.left + picture.lit_width) * picture.channels; ++i) {
            ++count[row[i]];
        }
    }
    std::size_t top = count.size() - 1;
    while (top > 0 && count[top] == 0) --top;
    // A few hot pixels may stand above the level at which the others clip.
    std::size_t above = 0;
    for (; top > 0 && above < kFewestPiledUp; above += count[top], --top) {
        std::size_t most = 0;  // of the values just below that occur
        std::size_t seen = 0;
        for (std::size_t level = top; level-- > 0 && seen < kNeighbours;) {
            if (count[level] == 0) continue;
            most = std::max(most, count[level]);
            ++seen;
        }
        if (count[top] >= kFewestPiledUp && count[top] >= kTimesTheNeighbours * most) {
            return static_cast<double>(top);
        }
    }
    return std::nullopt;
}

}  // namespace imgtune::workbench
