#ifndef IMGTUNE_CCM_COEFFICIENT_ROWS_H
#define IMGTUNE_CCM_COEFFICIENT_ROWS_H

#include <cstddef>
#include <cstdint>

#include "ccm/matrix_rows.h"
#include "common/vector.h"

namespace imgtune {

/// A 3x3 matrix on its way through a frame, a row in a vector. What the fourth lane of a row holds
/// has no meaning.
///
/// A frame's steps work on the coefficients off the diagonal; what stands on the diagonal counts
/// only once `closed` has set it.
struct CoefficientRows {
    vector::Quad row[3];

    static CoefficientRows of(const NSIspTuning::ISP_CCM_T& matrix) {
        const std::int32_t* c = matrix.i4Coef;
        const vector::Quad last = vector::load(c + 5);
        return {{vector::load(c), vector::load(c + 3), vector::lanes_from<1>(last, last)}};
    }

    NSIspTuning::ISP_CCM_T record() const {
        std::int32_t v[12];
        for (std::size_t r = 0; r < 3; ++r) vector::store(v + 4 * r, row[r]);
        return {{v[0], v[1], v[2], v[4], v[5], v[6], v[8], v[9], v[10]}};
    }

    /// With diagonals such that each row sums to `unity`.
    CoefficientRows closed(std::int32_t unity) const {
        CoefficientRows out{};
        for (std::size_t r = 0; r < 3; ++r) {
            const vector::Quad others = row[r] & vector::load(kOffDiagonal[r]);
            const vector::Quad diagonal = vector::splat(unity) - sum(others);
            out.row[r] = others | (diagonal & vector::load(kDiagonal[r]));
        }
        return out;
    }

  private:
    alignas(16) static constexpr std::int32_t kDiagonal[3][4] = {
        {-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}};
    alignas(16) static constexpr std::int32_t kOffDiagonal[3][4] = {
        {0, -1, -1, 0}, {-1, 0, -1, 0}, {-1, -1, 0, 0}};
};

/// share_a * a + share_b * b per coefficient, truncated, in single precision.
inline CoefficientRows mix(const CoefficientRows& a, float share_a, const CoefficientRows& b,
                           float share_b) {
    CoefficientRows out{};
    for (std::size_t r = 0; r < 3; ++r) {
        out.row[r] = truncate(to_reals(a.row[r]) * share_a + to_reals(b.row[r]) * share_b);
    }
    return out;
}

}  // namespace imgtune

#endif
