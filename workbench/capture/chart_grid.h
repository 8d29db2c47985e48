#ifndef IMGTUNE_WORKBENCH_CAPTURE_CHART_GRID_H
#define IMGTUNE_WORKBENCH_CAPTURE_CHART_GRID_H

#include <array>
#include <cstddef>
#include <optional>

#include "workbench/capture/capture_study.h"

namespace imgtune::workbench {

/// Where the chart's patches lie in a picture, in perspective.
///
/// The chart's own unit is the side of a patch: six columns and four rows of them, with gaps
/// between.
class ChartGrid {
  public:
    static constexpr std::size_t kColumns = 6;
    static constexpr std::size_t kRows = 4;
    static constexpr double kPitch = 1.125;  ///< from one patch to the next
    static constexpr double kWidth = (kColumns - 1) * kPitch + 1.0;
    static constexpr double kHeight = (kRows - 1) * kPitch + 1.0;

    /// `corners`: outer corners of patches 1, 6, 24 and 19. None where these are no quadrilateral
    /// that a flat chart can look like.
    static std::optional<ChartGrid> through(const Quad& corners);

    /// From the chart's unit to the picture, and back.
    PicturePoint in_picture(double u, double v) const;
    PicturePoint in_chart(double x, double y) const;

    /// The middle `share` of a patch's sides.
    Quad patch(std::size_t index, double share) const;

  private:
    using Projection = std::array<double, 9>;
    ChartGrid(const Projection& to_picture, const Projection& to_chart)
        : to_picture_(to_picture), to_chart_(to_chart) {}

    Projection to_picture_;
    Projection to_chart_;
};

/// The corners as they are called when the chart lies otherwise: `turn` 0..3 quarters round, 4..7
/// the same seen in a mirror. 0 is the order given.
Quad turned(const Quad& corners, std::size_t turn);
inline constexpr std::size_t kTurns = 8;

}  // namespace imgtune::workbench

#endif
