#include "workbench/capture/study_captures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "workbench/capture/chart_grid.h"
#include "workbench/capture/judge_light.h"
#include "workbench/text/counted.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFewestGreys = 3;
constexpr std::size_t kFewestPatches = 12;
constexpr double kClippedShare = 0.005;        // of a patch's samples: its mean is no longer true
constexpr double kDisagreeingPictures = 0.02;  // of a patch's share in the whole, of one light

struct Pose {
    std::size_t turn = 0;
    std::array<PatchMeasure, kChartPatches> patches{};
    MatrixFit fit;
};

PatchColors means_of(const std::array<PatchMeasure, kChartPatches>& patches) {
    PatchColors colors{};
    for (std::size_t i = 0; i < kChartPatches; ++i) colors[i] = patches[i].mean;
    return colors;
}

PatchColors balanced(PatchColors colors, const WhiteBalance& gains) {
    for (Rgb& color : colors) {
        color[0] *= gains.red;
        color[2] *= gains.blue;
    }
    return colors;
}

/// Without the patches that are clipped, as far as the samples tell.
PatchWeights usable(PatchWeights weights, const std::array<PatchMeasure, kChartPatches>& patches) {
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const auto& [mean, noise, samples, clipped, spread] = patches[i];
        if (samples && clipped &&
            static_cast<double>(*clipped) > kClippedShare * static_cast<double>(*samples)) {
            weights[i] = 0.0;
        }
    }
    return weights;
}

/// Whether greys above black are there to balance by.
bool has_greys(const PatchColors& colors, const PatchWeights& weights) {
    std::size_t greys = 0;
    for (std::size_t i = kFirstGrey; i < kBlackPatch; ++i) {
        if (weights[i] > 0.0 && *std::min_element(colors[i].begin(), colors[i].end()) > 0.0) {
            ++greys;
        }
    }
    return greys >= kFewestGreys;
}

std::optional<MatrixFit> linear_fit(const PatchColors& colors, const CaptureChoices& choices,
                                    const PatchWeights& weights) {
    if (!has_greys(colors, weights)) return std::nullopt;
    const WhiteBalance gains = white_balance(colors, choices.reference.rgb, weights);
    return fit_linear(balanced(colors, gains), choices.reference.rgb, weights);
}

/// A chart measured in one of the ways in which it can lie.
struct MeasuredGrid {
    ChartGrid grid;
    std::array<PatchMeasure, kChartPatches> patches;
};

/// The same samples in another order: of a chart turned by half, or in a mirror. None: its patches
/// are other parts of the picture.
std::optional<std::array<PatchMeasure, kChartPatches>> reordered(const MeasuredGrid& measured,
                                                                 const ChartGrid& grid) {
    std::array<PatchMeasure, kChartPatches> patches;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const PicturePoint middle = grid.patch(i, 0.0)[0];
        const PicturePoint at = measured.grid.in_chart(middle.x, middle.y);
        const double column = (at.x - 0.5) / ChartGrid::kPitch;
        const double row = (at.y - 0.5) / ChartGrid::kPitch;
        if (std::abs(column - std::round(column)) > 0.01 ||
            std::abs(row - std::round(row)) > 0.01) {
            return std::nullopt;
        }
        if (column < -0.5 || row < -0.5 || column > 5.5 || row > 3.5) return std::nullopt;
        const auto index = static_cast<std::size_t>(std::round(row) * 6.0 + std::round(column));
        patches[i] = measured.patches[index];
    }
    return patches;
}

/// The best of the eight ways in which the chart can lie; none: not one can be measured.
std::optional<Pose> best_pose(const Picture& picture, const PictureAids& aids, const Quad& corners,
                              const WhiteLevels& white, const CaptureChoices& choices) {
    std::optional<Pose> best;
    bool best_is_dominant = false;
    std::vector<MeasuredGrid> measured;
    for (std::size_t turn = 0; turn < kTurns; ++turn) {
        const auto grid = ChartGrid::through(turned(corners, turn));
        if (!grid) return std::nullopt;
        std::optional<std::array<PatchMeasure, kChartPatches>> patches;
        for (const MeasuredGrid& other : measured) {
            if (!patches) patches = reordered(other, *grid);
        }
        if (!patches) {
            patches = measure_patches(picture, aids, *grid, white);
            if (patches) measured.push_back({*grid, *patches});
        }
        if (!patches) continue;
        const auto fit = linear_fit(means_of(*patches), choices, usable(choices.weights, *patches));
        if (!fit) continue;
        const bool dominant = has_dominant_diagonal(fit->matrix);
        if (best && (best_is_dominant && !dominant)) continue;
        if (best && best_is_dominant == dominant && !(fit->mean < best->fit.mean)) continue;
        best = Pose{turn, *patches, *fit};
        best_is_dominant = dominant;
    }
    return best;
}

/// Where samples clip: as the file says, or lower where they pile up.
struct FoundWhite {
    WhiteLevels levels;
    std::optional<double> found;  ///< the lowest that is below what the file says
};

FoundWhite find_white(const Picture& picture) {
    FoundWhite white;
    const double named = picture.white.value_or(65535.0);
    white.levels.unit = named;
    white.levels.clips = {named, named, named};
    const auto found = find_clipping_levels(picture);
    for (std::size_t k = 0; k < 3; ++k) {
        if (!found[k] || *found[k] > named) continue;
        white.levels.clips[k] = *found[k];
        white.found = std::min(*found[k], white.found.value_or(*found[k]));
    }
    if (!picture.white && white.found) white.levels.unit = *white.found;
    return white;
}

void tell_white(const Picture& picture, const std::optional<double>& found, Faults& faults) {
    if (!picture.white && !found) {
        faults.add({.code = "P104",
                    .file = picture.file,
                    .message = "the file gives no white level, and no samples pile up at one",
                    .suggestion = "name it with --white; else clipped patches may go unseen"});
    } else if (picture.white && found && *found < *picture.white * 0.999) {
        faults.add({.code = "P105",
                    .file = picture.file,
                    .message = fmt::format("samples clip at {:g}, below the white level of {:g}",
                                           *found, *picture.white),
                    .suggestion = "the level found is taken; patches that reach it "
                                  "count as clipped"});
    }
}

bool layout_fits(const Picture& picture, const PictureAids& aids, Faults& faults) {
    const auto refuse = [&](const std::string& other, const char* what) {
        faults.add({.code = "P107",
                    .file = picture.file,
                    .message = fmt::format("the {} {} has another size or mosaic", what, other),
                    .suggestion = "take both with the same camera and mode, as raw files"});
    };
    if (aids.dark != nullptr && !same_layout(picture, *aids.dark)) {
        refuse(aids.dark->file, "dark frame");
        return false;
    }
    if (aids.flat != nullptr && !same_layout(picture, aids.flat->layout())) {
        refuse(aids.flat->file(), "flat frame");
        return false;
    }
    return true;
}

/// The light's means over its photographs.
std::array<PatchMeasure, kChartPatches> averaged(const std::vector<CapturedPicture>& pictures) {
    std::array<PatchMeasure, kChartPatches> out = pictures.front().patches;
    const auto count = static_cast<double>(pictures.size());
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        PatchMeasure& patch = out[i];
        for (std::size_t n = 1; n < pictures.size(); ++n) {
            const PatchMeasure& other = pictures[n].patches[i];
            for (std::size_t k = 0; k < 3; ++k) patch.mean[k] += other.mean[k];
            if (patch.noise && other.noise) {
                for (std::size_t k = 0; k < 3; ++k) (*patch.noise)[k] += (*other.noise)[k];
            } else {
                patch.noise.reset();
            }
            const auto add = [](std::optional<std::size_t>& sum,
                                const std::optional<std::size_t>& more) {
                if (sum && more) {
                    *sum += *more;
                } else {
                    sum.reset();
                }
            };
            add(patch.samples, other.samples);
            add(patch.clipped, other.clipped);
            if (patch.spread && other.spread) {
                patch.spread = std::max(*patch.spread, *other.spread);
            } else {
                patch.spread.reset();
            }
        }
        for (double& mean : patch.mean) mean /= count;
        if (patch.noise) {
            for (double& noise : *patch.noise) noise /= count;
        }
    }
    return out;
}

/// Photographs of one light that show different charts or lights.
void tell_disagreement(const LightStudy& light, Faults& faults) {
    const auto sum_of = [](const std::array<PatchMeasure, kChartPatches>& patches) {
        double sum = 0.0;
        for (const PatchMeasure& patch : patches) {
            for (const double mean : patch.mean) sum += mean;
        }
        return sum;
    };
    const double all = sum_of(light.patches);
    for (const CapturedPicture& picture : light.pictures) {
        const double own = sum_of(picture.patches);
        double largest = 0.0;
        std::size_t where = 0;
        for (std::size_t i = kFirstGrey; i < kBlackPatch; ++i) {
            if (light.weights[i] == 0.0) continue;
            for (std::size_t k = 0; k < 3; ++k) {
                const double ratio =
                    picture.patches[i].mean[k] / own / (light.patches[i].mean[k] / all);
                if (std::abs(ratio - 1.0) > largest) {
                    largest = std::abs(ratio - 1.0);
                    where = i;
                }
            }
        }
        if (largest <= kDisagreeingPictures) continue;
        faults.add(
            {.code = "P119",
             .file = picture.file,
             .path = patch_name(where),
             .message = fmt::format("differs by {:.1f} % from the mean of the {} of its "
                                    "light",
                                    100.0 * largest, counted(light.pictures.size(), "photograph")),
             .suggestion = "leave out the one that was taken otherwise"});
    }
}

/// What a matrix turns into `wanted`, by Cramer's rule; none: it has no inverse.
std::optional<Rgb> before_matrix(const RealMatrix& m, const Rgb& wanted) {
    const auto determinant = [](const RealMatrix& a) {
        return a[0] * (a[4] * a[8] - a[5] * a[7]) - a[1] * (a[3] * a[8] - a[5] * a[6]) +
               a[2] * (a[3] * a[7] - a[4] * a[6]);
    };
    const double whole = determinant(m);
    if (std::abs(whole) < 1e-6) return std::nullopt;
    Rgb out{};
    for (std::size_t column = 0; column < 3; ++column) {
        RealMatrix replaced = m;
        for (std::size_t row = 0; row < 3; ++row) replaced[3 * row + column] = wanted[row];
        out[column] = determinant(replaced) / whole;
    }
    return out;
}

/// The reference as the camera sees it: greys that are not quite neutral are less so there.
PatchColors seen_reference(const PatchColors& colors, const PatchColors& reference,
                           const PatchWeights& weights) {
    constexpr int kNeutralRounds = 6;  // each leaves about a third of the step before
    PatchColors seen = reference;
    for (int round = 0; round < kNeutralRounds; ++round) {
        const PatchColors even = balanced(colors, white_balance(colors, seen, weights));
        const RealMatrix matrix = fit_linear(even, reference, weights).matrix;
        if (!has_dominant_diagonal(matrix)) return reference;
        for (std::size_t i = kFirstGrey; i < kChartPatches; ++i) {
            const auto before = before_matrix(matrix, reference[i]);
            if (!before || !(*std::min_element(before->begin(), before->end()) > 0.0)) {
                return reference;
            }
            seen[i] = *before;
        }
    }
    return seen;
}

void fit_light(LightStudy& light, const CaptureChoices& choices) {
    const PatchColors colors = means_of(light.patches);
    const WhiteBalance gains = white_balance(
        colors, seen_reference(colors, choices.reference.rgb, light.weights), light.weights);
    light.red_gain = gains.red;
    light.blue_gain = gains.blue;
    const PatchColors even = balanced(colors, gains);
    const MatrixFit start = fit_linear(even, choices.reference.rgb, light.weights);
    const MatrixFit fit = fit_visible(start, even, choices.reference.rgb, light.weights);
    light.exposure = fit.exposure;
    light.matrix = fit.matrix;
    light.fitted = fit.fitted;
    light.residual = fit.residual;
    light.mean_residual = fit.mean;
    light.linear_mean_residual = start.mean;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        if (light.weights[i] == 0.0 || fit.residual[i] <= light.worst_residual) continue;
        light.worst_residual = fit.residual[i];
        light.worst_patch = i;
    }
    if (!choices.other_edition) return;
    const PatchColors& other = choices.other_edition->rgb;
    const PatchColors other_even = balanced(
        colors, white_balance(colors, seen_reference(colors, other, light.weights), light.weights));
    light.other_edition_residual =
        fit_visible(fit_linear(other_even, other, light.weights), other_even, other, light.weights)
            .mean;
}

}  // namespace

bool weights_fit(const PatchWeights& weights, Faults& faults) {
    std::size_t patches = 0;
    std::size_t greys = 0;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        if (weights[i] == 0.0) continue;
        ++patches;
        if (i >= kFirstGrey && i < kBlackPatch) ++greys;
    }
    if (patches >= kFewestPatches && greys >= kFewestGreys) return true;
    faults.add(
        {.code = "P106",
         .file = "weights",
         .message = fmt::format("weights of 0 leave {} patches, {} of them greys", patches, greys),
         .suggestion = fmt::format("leave {} or more, and {} of patches 19 to 23", kFewestPatches,
                                   kFewestGreys)});
    return false;
}

std::optional<CapturedPicture> measure_picture(const Picture& picture, const PictureAids& aids,
                                               const Quad& corners, const CaptureChoices& choices,
                                               Faults& faults) {
    if (!layout_fits(picture, aids, faults)) return std::nullopt;
    const FoundWhite white = find_white(picture);
    tell_white(picture, white.found, faults);
    CapturedPicture out;

    const auto refuse = [&](const char* code, std::string message, std::string advice) {
        faults.add({.code = code,
                    .file = picture.file,
                    .message = std::move(message),
                    .suggestion = std::move(advice)});
        return std::nullopt;
    };
    constexpr const char* kCornerAdvice =
        "give the outer corners of patches 1, 6, 24 and 19 in pixels of the full "
        "mosaic";
    if (!ChartGrid::through(corners)) {
        return refuse("P101", "the four corners are no quadrilateral that a chart can look like",
                      kCornerAdvice);
    }
    for (const PicturePoint& corner : corners) {
        if (corner.x < -0.5 || corner.y < -0.5 ||
            corner.x > static_cast<double>(picture.width) - 0.5 ||
            corner.y > static_cast<double>(picture.height) - 0.5) {
            return refuse("P101",
                          fmt::format("the corner {:g},{:g} lies outside the picture of {} x {}",
                                      corner.x, corner.y, picture.width, picture.height),
                          kCornerAdvice);
        }
    }
    const auto pose = best_pose(picture, aids, corners, white.levels, choices);
    if (!pose) {
        return refuse("P102",
                      "no chart can be measured at the corners: patches leave what "
                      "is lit, are a "
                      "few pixels small, or their greys are black or clipped",
                      "photograph the whole chart, larger, with the white patch "
                      "below clipping");
    }
    if (pose->turn != 0) {
        faults.add({.code = "P103",
                    .file = picture.file,
                    .message = "the corners fit the chart in another order",
                    .suggestion = "taken so; name those of patches 1, 6, 24 and 19 in this order"});
    }
    out.file = picture.file;
    out.form = form_of(picture);
    out.width = picture.width;
    out.height = picture.height;
    for (std::size_t i = 0; i < 4; ++i) {
        out.black[i] = picture.black.at(i % 2, i / 2);
    }
    out.white_found = white.found.has_value();
    if (out.white_found) {
        out.white = white.found;
    } else {
        out.white = picture.white;
    }
    if (aids.flat != nullptr) out.flat = aids.flat->file();
    if (aids.dark != nullptr) out.dark = aids.dark->file;
    out.corners = turned(corners, pose->turn);
    out.corners_turned = pose->turn != 0;
    const auto grid = ChartGrid::through(out.corners);
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        out.outlines[i] = grid->patch(i, 1.0);
        out.sampled[i] = grid->patch(i, kSampledShare);
    }
    out.patches = pose->patches;
    out.crop = chart_thumbnail(picture, aids, corners);
    return out;
}

CapturedPicture measured_table(const std::string& file,
                               const std::array<PatchMeasure, kChartPatches>& patches) {
    CapturedPicture out;
    out.file = file;
    out.form = "table of means";
    out.patches = patches;
    return out;
}

CaptureStudy study_captures(std::vector<LightInput> lights, const CaptureChoices& choices,
                            Faults& faults) {
    CaptureStudy study;
    study.reference = choices.reference;
    study.weights = choices.weights;
    if (choices.other_edition) study.other_edition = choices.other_edition->name;
    std::stable_sort(lights.begin(), lights.end(),
                     [](const LightInput& a, const LightInput& b) { return a.kelvin < b.kelvin; });
    for (LightInput& input : lights) {
        LightStudy& light = study.lights.emplace_back();
        light.name = std::move(input.name);
        light.kelvin = input.kelvin;
        light.pictures = std::move(input.pictures);
        light.patches = averaged(light.pictures);
        light.weights = usable(choices.weights, light.patches);
        tell_clipped(light, choices.weights, faults);
        if (!has_greys(means_of(light.patches), light.weights)) {
            faults.add({.code = "P106",
                        .file = light.pictures.front().file,
                        .message = "fewer than three greys can be used: they are clipped, or not "
                                   "above black",
                        .suggestion = "take the photograph again with another exposure, and look "
                                      "at the black level"});
            continue;
        }
        fit_light(light, choices);
        tell_disagreement(light, faults);
        judge_light(light, choices, faults);
    }
    return study;
}

Calibration calibration_of(const CaptureStudy& study) {
    Calibration calibration;
    calibration.form = "photographs of a chart";
    for (const LightStudy& light : study.lights) {
        calibration.locus.push_back({light.kelvin, 1.0 / light.red_gain, 1.0 / light.blue_gain, 0});
        CalibratedMatrix& matrix = calibration.matrices.emplace_back();
        matrix.kelvin = light.kelvin;
        matrix.coefficients = light.matrix;
    }
    calibration.locus_line = calibration.matrices_line = 0;
    return calibration;
}

}  // namespace imgtune::workbench
