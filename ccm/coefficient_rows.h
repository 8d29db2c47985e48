#ifndef IMGTUNE_CCM_COEFFICIENT_ROWS_H
#define IMGTUNE_CCM_COEFFICIENT_ROWS_H

#include <cstddef>

#include "ccm/matrix_rows.h"

namespace imgtune {

/// A 3x3 matrix on its way through a frame, its rows four values apart as in a register image:
/// coefficient c of row r in lane 4 r + c. What the fourth lane of a row holds has no meaning.
///
/// A frame's steps work on the coefficients off the diagonal; what stands on the diagonal counts
/// only once `closed` has set it.
struct CoefficientRows {
    static constexpr std::size_t kLanes = 12;
    static constexpr std::size_t kOffDiagonal[6] = {1, 2, 4, 6, 8, 9};

    alignas(16) std::int32_t v[kLanes];

    static constexpr std::size_t lane(std::size_t coefficient) {
        return 4 * (coefficient / 3) + coefficient % 3;
    }

    static constexpr CoefficientRows of(const NSIspTuning::ISP_CCM_T& matrix) {
        const auto& c = matrix.i4Coef;
        return {{c[0], c[1], c[2], 0, c[3], c[4], c[5], 0, c[6], c[7], c[8], 0}};
    }

    constexpr NSIspTuning::ISP_CCM_T record() const {
        return {{v[0], v[1], v[2], v[4], v[5], v[6], v[8], v[9], v[10]}};
    }

    /// With diagonals such that each row sums to `unity`.
    constexpr CoefficientRows closed(std::int32_t unity) const {
        NSIspTuning::ISP_CCM_T matrix = record();
        close_rows(matrix, unity);
        return of(matrix);
    }
};

/// `mix` of every coefficient.
constexpr CoefficientRows mix(const CoefficientRows& a, float share_a, const CoefficientRows& b,
                              float share_b) {
    CoefficientRows out{};
    for (std::size_t j = 0; j < CoefficientRows::kLanes; ++j) {
        out.v[j] = mix(a.v[j], share_a, b.v[j], share_b);
    }
    return out;
}

}  // namespace imgtune

#endif
