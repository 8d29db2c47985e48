#ifndef IMGTUNE_WORKBENCH_STUDIES_EXPLANATION_H
#define IMGTUNE_WORKBENCH_STUDIES_EXPLANATION_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/resting.h"

// What the library did with one frame, step by step. Every number comes from its traces, its
// exported functions or its results.

namespace imgtune::workbench {

using GainValues = std::array<std::int64_t, 3>;    ///< red, green, blue; 512 = 1.0
using MatrixValues = std::array<std::int64_t, 9>;  ///< row by row, 512 = 1.0

/// Where a gain lies among the tuned ones, by distances in gain units.
struct CtBlend {
    std::array<double, 4> distances{};  ///< locus to the CT before, gain to CT, locus to the CT
                                        ///< after, gain to locus
    double coarse_weight = 0.0;         ///< of the CT before, against the one after
    double fine_weight = 0.0;           ///< of the CT itself, against that mix
};

/// Mean and deviation about which the polynomial is normalised.
struct PolynomialScale {
    double red_mean = 0.0;
    double red_deviation = 0.0;
    double blue_mean = 0.0;
    double blue_deviation = 0.0;
};

/// The matrix that one LV row of the tuning gives.
struct MatrixPass {
    std::optional<GainValues> projected_gain;
    std::optional<std::int64_t> ct_position;  ///< -1: lowest CT alone; 10 or more: highest alone
    std::optional<CtBlend> blend;             ///< between the ends
    std::optional<PolynomialScale> polynomial;
    MatrixValues matrix{};
};

/// A field that did not take the value computed for it.
struct WrappedValue {
    std::string field;
    std::int64_t computed = 0;
    std::int64_t written = 0;
};

struct LowLightBlend {
    MatrixPass pass;
    double weight = 0.0;
    MatrixValues result{};
};

struct MatrixExplanation {
    std::int64_t method = 0;  ///< 1: polynomial, 2: blend by CT, other: identity
    std::int64_t ct_count = 0;
    bool full_gain = false;
    GainValues gain{};
    bool clipped_low = false;
    bool clipped_high = false;
    GainValues clipped_gain{};
    std::int64_t lv_row = 0;
    MatrixPass pass;
    std::optional<LowLightBlend> low_light;
    std::vector<std::int64_t> weights;  ///< of the average: new, ring 0, ring 1
    std::array<MatrixValues, 2> ring{};
    MatrixValues average{};
    std::int64_t gamut = 0;  ///< 1, 2: output gamut matrix; other: none
    MatrixValues written{};
    std::vector<WrappedValue> wrapped;  ///< with a gamut, the sums of the rows
};

/// A block's values on their way: empty where the block has no such stage.
struct ColorRow {
    std::string field;  ///< "Global.B", "Luma.PY"
    std::vector<std::int64_t> lower;
    std::vector<std::int64_t> upper;
    std::vector<std::int64_t> target;
    std::vector<std::int64_t> written;
};

/// A target that lay outside the two tuned values.
struct ClampedTarget {
    std::string field;
    std::int64_t target = 0;
    std::int64_t clamped = 0;
};

/// A target that its field's bits cannot hold: never reached.
struct UnreachableTarget {
    std::string field;
    std::int64_t target = 0;
    unsigned bits = 0;
};

struct ColorExplanation {
    std::int64_t slot = 0;  ///< 0: normal, 1: scene, 2: flash
    std::int64_t upper_index = 0;
    std::int64_t upper_kelvin = 0;
    std::int64_t lower_index = 0;
    std::int64_t lower_kelvin = 0;

    std::int64_t real_mired = 0;
    std::int64_t upper_mired = 0;
    std::int64_t lower_mired = 0;
    double upper_share = 0.0;        ///< of the upper-CT image
    std::int64_t outdoor_ratio = 0;  ///< of outdoor_base: weight of the outdoor images
    std::int64_t outdoor_base = 0;
    std::int64_t saturation_ratio = 0;  ///< 16: 1.0
    std::int64_t luma_step = 0;         ///< a frame, as are the next two
    std::int64_t hue_step = 0;
    std::int64_t saturation_step = 0;

    bool locked = false;       ///< only the bracket is known: no block is computed
    bool lower_alone = false;  ///< no bracket: the lower-CT image alone
    bool outdoor = false;
    bool lsp_light = false;    ///< light value within u4LSPMaxLV
    bool lsp_enabled = false;  ///< in the image
    bool at_once = false;      ///< no temporal step
    bool color_map_from_upper = false;

    std::vector<ColorRow> rows;
    std::vector<WrappedValue> wrapped;
    std::vector<UnreachableTarget> unreachable;
    std::vector<ClampedTarget> clamped;
};

struct Explanation {
    Frame frame;
    std::optional<MatrixExplanation> ccm;
    std::optional<ColorExplanation> color;
    Registers registers;  ///< of this frame
    CallerSettings caller;
    bool at_rest = false;  ///< the frame was repeated until nothing moved, then told
    RestingStudy
        resting;  ///< if the light holds, counted from the state before the first such frame
};

/// Runs the frame on the camera and tells what the library did with it.
Explanation explain_frame(Camera& camera, const Frame& frame);

/// Runs the frame on the camera until nothing moves, and tells the frame after that.
Explanation explain_at_rest(Camera& camera, const Frame& frame);

}  // namespace imgtune::workbench

#endif
