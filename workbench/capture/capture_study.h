#ifndef IMGTUNE_WORKBENCH_CAPTURE_CAPTURE_STUDY_H
#define IMGTUNE_WORKBENCH_CAPTURE_CAPTURE_STUDY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/calibration/calibration.h"

// What photographs of a colour chart under several lights gave: one CaptureStudy a calibration, one
// LightStudy a light, one CapturedPicture a photograph. Plain records, filled by study_captures.

namespace imgtune::workbench {

inline constexpr std::size_t kChartPatches = 24;

/// Red, green, blue.
using Rgb = std::array<double, 3>;

/// Pixels of the picture as it is stored, masked border included and never rotated; the centre of
/// its first pixel is 0,0.
struct PicturePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Four corners, in turn round the area.
using Quad = std::array<PicturePoint, 4>;

/// The colours that the patches should have.
struct ChartReference {
    std::string name;                      ///< "before November 2014", or the file it came from
    std::array<Rgb, kChartPatches> rgb{};  ///< linear sRGB (D65), 1.0 = white; in the chart's order
};

/// One patch. What a table of means cannot tell is absent.
struct PatchMeasure {
    Rgb mean{};  ///< above black, 1.0 = the white level, flat field divided out; of a table: its
                 ///< unit
    std::optional<Rgb> noise;            ///< standard deviation of one sample, in the unit of mean
    std::optional<std::size_t> samples;  ///< that were looked at, of the three colours together
    std::optional<std::size_t> clipped;  ///< of them, at the white level
    std::optional<double> spread;        ///< between the means of its quarters, share of its mean
};

/// A small picture to look at: 8 bits, sRGB, three bytes a pixel, row after row.
struct Thumbnail {
    std::size_t width = 0;
    std::size_t height = 0;
    double left = 0.0;  ///< picture coordinates of the centre of its first pixel
    double top = 0.0;
    double scale = 1.0;  ///< pixels of the picture from one of its pixels to the next
    std::vector<std::uint8_t> rgb;
};

/// A photograph, or a table of means.
struct CapturedPicture {
    std::string file;
    std::string form;       ///< "raw mosaic RGGB", "RGB picture", "table of means"
    std::size_t width = 0;  ///< of the picture as it is stored; 0: a table
    std::size_t height = 0;
    std::array<double, 4>
        black{};                  ///< mean level at the places (0,0), (1,0), (0,1), (1,1) of a cell
    std::optional<double> white;  ///< level at which samples clip, in the picture's unit
    bool white_found = false;     ///< by samples that pile up there; else as the file or user says
    std::string flat;             ///< file of the flat frame; empty: none
    std::string dark;             ///< file of the dark frame; empty: none
    Quad corners{};               ///< outer corners of patches 1, 6, 24 and 19
    bool corners_turned = false;  ///< they were given, or found, in another order
    std::array<Quad, kChartPatches> outlines{};  ///< of the patches: corners as the chart stands
    std::array<Quad, kChartPatches> sampled{};   ///< the part that the means are taken of
    std::array<PatchMeasure, kChartPatches> patches{};
    Thumbnail crop;  ///< the chart and a little around it; empty: a table
};

/// A light: what its photographs gave together.
struct LightStudy {
    std::string name;     ///< of the file, without its ending; several: of the first
    double kelvin = 0.0;  ///< a label, from name, table or option; nothing in a picture tells it
    std::vector<CapturedPicture> pictures;
    std::array<PatchMeasure, kChartPatches> patches{};  ///< means over the pictures; counts as sums

    double red_gain = 1.0;                        ///< G/R of a neutral patch, 1.0 = unity
    double blue_gain = 1.0;                       ///< G/B
    std::array<double, kChartPatches> weights{};  ///< as used: the study's, 0 for clipped patches
    double exposure = 1.0;  ///< factor from balanced camera values to those of the reference
    RealMatrix matrix{};    ///< rows sum to 1

    std::array<Rgb, kChartPatches> fitted{};  ///< linear sRGB of the patches through the matrix
    std::array<double, kChartPatches> residual{};  ///< CIEDE2000 of fitted against the reference
    double mean_residual = 0.0;                    ///< unweighted
    double worst_residual = 0.0;
    std::size_t worst_patch = 0;        ///< index from 0
    double linear_mean_residual = 0.0;  ///< of the linear least squares it started from

    double grey_slope = 1.0;  ///< of ln(green) over ln(reference) of the greys; 0.9..1.01 is linear
    double glare =
        0.0;  ///< light that lies over every patch, share of a white's; told, not removed
    double grey_disagreement = 0.0;  ///< largest of a grey's R/G or B/G against all greys', share
    std::size_t grey_disagreeing_patch = 18;
    double unevenness =
        0.0;  ///< of the light over the chart after the flat field: (most - least) / most
    std::optional<double> other_edition_residual;  ///< mean, against the other edition of the chart
};

/// Photographs under several lights.
struct CaptureStudy {
    ChartReference reference;
    std::string other_edition;  ///< that other_edition_residual is against; empty: none
    std::array<double, kChartPatches> weights{};  ///< of each patch's squared CIEDE2000 in the fit
    std::vector<LightStudy> lights;               ///< by rising kelvin
};

/// As import_calibration takes it: gains as a grey locus, matrices as they were fitted.
Calibration calibration_of(const CaptureStudy& study);

}  // namespace imgtune::workbench

#endif
