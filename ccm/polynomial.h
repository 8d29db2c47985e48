#ifndef IMGTUNE_CCM_POLYNOMIAL_H
#define IMGTUNE_CCM_POLYNOMIAL_H

#include <imgtune/ccm_types.h>

#include "ccm/coefficient_rows.h"

namespace imgtune {

/// A gain as polynomials take it: red / green and blue / green, 512 times, as distances from their
/// means in standard deviations.
struct NormalGain {
    float red;
    float blue;

    NormalGain(const AWB_GAIN_T& gain, float red_avg, float blue_avg, float red_std, float blue_std)
        : red((ratio(gain.i4R, gain.i4G) * 512.0f - red_avg) / red_std),
          blue((ratio(gain.i4B, gain.i4G) * 512.0f - blue_avg) / blue_std) {}

    /// Of one polynomial, or of four at a time.
    template <class Terms>
    Terms first_degree(Terms p00, Terms p10, Terms p01) const {
        return (p00 + p10 * red) + p01 * blue;
    }

  private:
    static float ratio(std::int32_t part, std::int32_t whole) {
        return static_cast<float>(part) / static_cast<float>(whole);
    }
};

/// Evaluates a stored polynomial block at the projected gain; the diagonals are left open.
CoefficientRows evaluate_polynomial(const ISP_CCM_POLY22_T& block, const AWB_GAIN_T& projected);

}  // namespace imgtune

#endif
