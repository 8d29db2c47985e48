#ifndef IMGTUNE_WORKBENCH_CALIBRATION_REPORT_H
#define IMGTUNE_WORKBENCH_CALIBRATION_REPORT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/appearance/chart_view.h"
#include "workbench/calibration/import.h"

// What a tuning made of a calibration is worth, light by light. All differences are CIEDE2000 over
// the chart's 24 patches, of the library's matrix against the calibrated one.

namespace imgtune::workbench {

/// A calibrated light.
struct ReportedLight {
    double kelvin = 0.0;
    AWB_GAIN_T gain{};
    bool tuned = false;   ///< a tuned point stands there
    bool at_end = false;  ///< left out, it lies beyond what is tuned: the library clips its gains
    ChartDifference error;
    RealMatrix made{};  ///< the library's matrix
    RealMatrix calibrated{};
    /// The same with a tuning made without this light; none where too few are left.
    std::optional<ChartDifference> left_out;
};

/// What a photograph of the chart told of a light; there is none for a calibration that was read.
struct ReportedCapture {
    std::string file;
    double kelvin = 0.0;
    ChartDifference residual;     ///< of the light's own matrix against the reference
    std::size_t clipped = 0;      ///< samples at the white level
    std::optional<double> noise;  ///< of the white patch's noisiest channel, over its mean
    double grey_slope = 1.0;      ///< log-log; 0.9..1.01 of honest linear captures
    double glare = 0.0;           ///< share of white
    double unevenness = 0.0;      ///< of the light over the chart: (most - least) / most

    /// The chart and a little around it: sRGB, three bytes a pixel, row after row. Empty: a table.
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> rgb;
    /// Of the patches, corners x and y in pixels of the picture above.
    std::vector<std::array<std::array<double, 2>, 4>> outlines;
};

/// A few lights in place of all, judged along the whole locus.
struct FewLights {
    CcmMethod method = CcmMethod::blend;
    std::vector<double> kelvins;
    LightsError error;
    std::uint64_t sets = 0;  ///< of lights that were compared
};

/// A light on the locus, calibrated or between the calibrated ones.
struct LocusError {
    double kelvin = 0.0;
    AWB_GAIN_T gain{};
    ChartDifference chosen;          ///< by the chosen tuning
    ChartDifference point_by_point;  ///< by the blend of most calibrated points, as they are
};

struct CalibrationReport {
    std::vector<ReportedLight> lights;
    std::vector<FewLights> few;  ///< the best two for the polynomial, the best three for the blend
    std::vector<LocusError> along;
    std::vector<ReportedCapture> captures;  ///< filled in by who has them
};

/// Of an import without errors.
CalibrationReport report_on(const Calibration& calibration, const ImportChoices& choices,
                            const Import& import);

}  // namespace imgtune::workbench

#endif
