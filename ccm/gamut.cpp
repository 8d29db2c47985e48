#include "ccm/gamut.h"

#include "common/arithmetic.h"

namespace imgtune {

namespace {

/// Row-major, for i4PQType 1 and 2.
constexpr float kGamut[2][3][3] = {
    {{0.8225f, 0.1775f, 0.0f}, {0.0331f, 0.9669f, 0.0f}, {0.017f, 0.0724f, 0.9106f}},
    {{0.7312f, 0.2688f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0995f, 0.9005f}},
};

}  // namespace

NSIspTuning::ISP_CCM_T apply_gamut(NSIspTuning::ISP_CCM_T matrix, std::int32_t type) {
    const float(&m)[3][3] = kGamut[type - 1];
    for (std::size_t row = 0; row < 3; ++row) {
        // A coefficient just computed serves the next one.
        std::int32_t* x = &matrix.i4Coef[3 * row];
        const auto x1 = static_cast<float>(x[1]);
        const auto x2 = static_cast<float>(x[2]);
        x[0] =
            truncate_to_int32((static_cast<float>(x[0]) * m[0][0] + x1 * m[1][0]) + x2 * m[2][0]);
        const auto new_x0 = static_cast<float>(x[0]);
        x[1] = truncate_to_int32(x2 * m[2][1] + (x1 * m[1][1] + new_x0 * m[0][1]));
        x[2] = truncate_to_int32(x2 * m[2][2] +
                                 (new_x0 * m[0][2] + static_cast<float>(x[1]) * m[1][2]));
    }
    return matrix;
}

}  // namespace imgtune
