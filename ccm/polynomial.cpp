#include "ccm/polynomial.h"

#include <imgtune/ccm.h>

#include <cmath>

#include "ccm/trace.h"
#include "common/arithmetic.h"

namespace imgtune {

namespace {

float hundredths(std::int32_t stored) {
    return static_cast<float>(stored) / 100.0f;
}
float ten_thousandths(std::int32_t stored) {
    return static_cast<float>(stored) / 10000.0f;
}
vector::Reals ten_thousandths(vector::Quad stored) {
    return to_reals(stored) / 10000.0f;
}

void trace_terms(const char* format, const std::int32_t (&stored)[9]) {
    double terms[9];
    for (int k = 0; k < 9; ++k) terms[k] = double{ten_thousandths(stored[k])};
    ccm_trace_nine(format, terms);
}

void trace_block(const ISP_CCM_POLY22_T& block) {
    ccm_trace("rCCMPoly22.i4R_AVG = %f\n", double{hundredths(block.i4R_AVG)});
    ccm_trace("rCCMPoly22.i4R_STD = %f\n", double{hundredths(block.i4R_STD)});
    ccm_trace("rCCMPoly22.i4B_AVG = %f\n", double{hundredths(block.i4B_AVG)});
    ccm_trace("rCCMPoly22.i4B_STD = %f\n", double{hundredths(block.i4B_STD)});
    trace_terms("rCCMPoly22.i4P00[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", block.i4P00);
    trace_terms("rCCMPoly22.i4P10[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", block.i4P10);
    trace_terms("rCCMPoly22.i4P01[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", block.i4P01);
}

}  // namespace

CoefficientRows evaluate_polynomial(const ISP_CCM_POLY22_T& block, const AWB_GAIN_T& projected) {
    if (ccm_trace_on()) trace_block(block);
    const NormalGain gain(projected, hundredths(block.i4R_AVG), hundredths(block.i4B_AVG),
                          hundredths(block.i4R_STD), hundredths(block.i4B_STD));
    // The second-degree terms are zeros, which add nothing but to a gain that is not finite: that
    // makes NaN of them, and 0 of every coefficient.
    if (!std::isfinite(gain.red) || !std::isfinite(gain.blue)) {
        return CoefficientRows::of({});
    }
    const auto four_from = [&](std::size_t k) {
        return truncate(gain.first_degree(ten_thousandths(vector::load(block.i4P00 + k)),
                                          ten_thousandths(vector::load(block.i4P10 + k)),
                                          ten_thousandths(vector::load(block.i4P01 + k))));
    };
    const vector::Quad first = four_from(0), last = four_from(4);
    return {{first, lanes_from<3>(first, last), lanes_from<2>(last, last)}};
}

}  // namespace imgtune

void GenCCM(AWB_GAIN_T const& gain, int, int, int unity, float redAvg, float blueAvg, float redStd,
            float blueStd, float* P00, float* P10, float* P01, float* P20, float* P11, float* P02,
            NSIspTuning::ISP_CCM_T& output) {
    const imgtune::NormalGain normal(gain, redAvg, blueAvg, redStd, blueStd);
    const float nr = normal.red;
    const float nb = normal.blue;
    for (int k = 0; k < 8; ++k) {
        const float value = ((normal.first_degree(P00[k], P10[k], P01[k]) + nr * (nr * P20[k])) +
                             nb * (nr * P11[k])) +
                            nb * (nb * P02[k]);
        output.i4Coef[k] = imgtune::truncate_to_int32(value);
    }
    imgtune::close_rows(output, unity);
}
