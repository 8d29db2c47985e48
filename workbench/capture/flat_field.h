#ifndef IMGTUNE_WORKBENCH_CAPTURE_FLAT_FIELD_H
#define IMGTUNE_WORKBENCH_CAPTURE_FLAT_FIELD_H

#include <array>
#include <optional>
#include <string>

#include "workbench/capture/picture.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// A sample above black: of the dark frame where there is one, else of the levels of the file.
inline double above_black(const Picture& picture, const Picture* dark, std::size_t x, std::size_t y,
                          std::size_t channel) {
    const double black = dark != nullptr ? dark->sample(x, y, channel) : picture.black.at(x, y);
    return picture.sample(x, y, channel) - black;
}

/// How light and lens fall off over the picture: a smooth polynomial a colour, 1 in the middle of
/// the lit part.
class FlatField {
  public:
    static constexpr int kDegree = 6;  ///< what a fall-off with the fourth power of a cosine needs
    static constexpr int kTerms = (kDegree + 1) * (kDegree + 2) / 2;
    using Terms = std::array<double, kTerms>;

    /// From the photograph of an evenly lit white surface. None where it says nothing, as its fault
    /// tells: clipped, dark, or of another layout than `dark`.
    static std::optional<FlatField> fit(const Picture& flat, const Picture* dark, Faults& faults);

    double at(double x, double y, std::size_t channel) const;

    const std::string& file() const { return layout_.file; }
    const Picture& layout() const { return layout_; }  ///< of the flat frame, without its samples

  private:
    Picture layout_;
    std::array<Terms, 3> terms_{};
};

}  // namespace imgtune::workbench

#endif
