#ifndef IMGTUNE_WORKBENCH_CAPTURE_PATCH_SAMPLES_H
#define IMGTUNE_WORKBENCH_CAPTURE_PATCH_SAMPLES_H

#include <array>
#include <optional>

#include "workbench/capture/capture_study.h"
#include "workbench/capture/chart_grid.h"
#include "workbench/capture/flat_field.h"
#include "workbench/capture/picture.h"

namespace imgtune::workbench {

/// What goes with a photograph.
struct PictureAids {
    const Picture* dark = nullptr;    ///< of the same layout; null: black as the file says
    const FlatField* flat = nullptr;  ///< of the same layout; null: none
};

/// The middle share of a patch's sides that is looked at.
inline constexpr double kSampledShare = 0.55;

/// Levels in the picture's unit: that which means are a share of, and those at which red, green and
/// blue clip.
struct WhiteLevels {
    double unit = 65535.0;
    Rgb clips{65535.0, 65535.0, 65535.0};
};

/// Robust means of the patches of a chart. None where a patch lies outside what is lit, or holds
/// too few samples.
std::optional<std::array<PatchMeasure, kChartPatches>> measure_patches(const Picture& picture,
                                                                       const PictureAids& aids,
                                                                       const ChartGrid& grid,
                                                                       const WhiteLevels& white);

/// The chart and a little around it, to be looked at.
Thumbnail chart_thumbnail(const Picture& picture, const PictureAids& aids, const Quad& corners);

/// All that is lit, to be looked at; `side`: pixels of its longer side at most.
Thumbnail picture_thumbnail(const Picture& picture, double side);

}  // namespace imgtune::workbench

#endif
