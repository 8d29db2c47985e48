#ifndef IMGTUNE_WORKBENCH_CAPTURE_STUDY_CAPTURES_H
#define IMGTUNE_WORKBENCH_CAPTURE_STUDY_CAPTURES_H

#include <optional>
#include <string>
#include <vector>

#include "workbench/capture/capture_study.h"
#include "workbench/capture/chart_reference.h"
#include "workbench/capture/flat_field.h"
#include "workbench/capture/matrix_fit.h"
#include "workbench/capture/patch_samples.h"
#include "workbench/capture/picture.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// What the chart is held against.
struct CaptureChoices {
    ChartReference reference = chart_reference(ChartEdition::before_2014);
    /// The other edition, where `reference` is one of the maker's: told where it fits better.
    std::optional<ChartReference> other_edition = chart_reference(ChartEdition::after_2014);
    PatchWeights weights{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
};

/// Whether weights leave enough of a chart: three greys before black, and twelve patches. Else it
/// is told.
bool weights_fit(const PatchWeights& weights, Faults& faults);

/// Measures the chart whose outer corners of patches 1, 6, 24 and 19 are given, in any order: of
/// the eight ways in which a chart can lie there, the one that fits its colours best counts. None,
/// and an error, where there is no chart that can be used.
std::optional<CapturedPicture> measure_picture(const Picture& picture, const PictureAids& aids,
                                               const Quad& corners, const CaptureChoices& choices,
                                               Faults& faults);

/// A table of 24 means in place of a photograph.
CapturedPicture measured_table(const std::string& file,
                               const std::array<PatchMeasure, kChartPatches>& patches);

/// The photographs of one light.
struct LightInput {
    std::string name;
    double kelvin = 0.0;
    std::vector<CapturedPicture> pictures;  ///< at least one
};

/// Gains, matrix and judgement of every light, by rising kelvin. What is wrong with a light is
/// told; after an error the study is for looking at, and no calibration.
CaptureStudy study_captures(std::vector<LightInput> lights, const CaptureChoices& choices,
                            Faults& faults);

}  // namespace imgtune::workbench

#endif
