#include "ccm/interpolation.h"

namespace imgtune {

namespace {

using NineTerms = float[9];

void to_terms(const std::int32_t (&stored)[9], NineTerms& terms) {
    for (int k = 0; k < 9; ++k) terms[k] = static_cast<float>(stored[k]) / 10000.0f;
}

void trace_terms(const char* format, const NineTerms& terms) {
    if (!ccm_trace_on()) return;
    double values[9];
    for (int k = 0; k < 9; ++k) values[k] = double{terms[k]};
    ccm_trace_nine(format, values);
}

}  // namespace

void evaluate_polynomial(const ISP_CCM_POLY22_T& block, const AWB_GAIN_T& projected,
                         std::int32_t unity, NSIspTuning::ISP_CCM_T& output) {
    const float red_avg = static_cast<float>(block.i4R_AVG) / 100.0f;
    const float red_std = static_cast<float>(block.i4R_STD) / 100.0f;
    const float blue_avg = static_cast<float>(block.i4B_AVG) / 100.0f;
    const float blue_std = static_cast<float>(block.i4B_STD) / 100.0f;
    NineTerms p00;
    NineTerms p10;
    NineTerms p01;
    to_terms(block.i4P00, p00);
    to_terms(block.i4P10, p10);
    to_terms(block.i4P01, p01);

    ccm_trace("rCCMPoly22.i4R_AVG = %f\n", double{red_avg});
    ccm_trace("rCCMPoly22.i4R_STD = %f\n", double{red_std});
    ccm_trace("rCCMPoly22.i4B_AVG = %f\n", double{blue_avg});
    ccm_trace("rCCMPoly22.i4B_STD = %f\n", double{blue_std});
    trace_terms("rCCMPoly22.i4P00[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", p00);
    trace_terms("rCCMPoly22.i4P10[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", p10);
    trace_terms("rCCMPoly22.i4P01[9] = (%f, %f, %f, %f, %f, %f, %f, %f, %f)\n", p01);

    // The tuning has no second-degree terms. Zeros stand for them rather than a shorter formula:
    // an infinite normalised gain times zero is NaN, and must stay so.
    NineTerms zeros{};
    GenCCM(projected, 0, 0, unity, red_avg, blue_avg, red_std, blue_std, p00, p10, p01, zeros,
           zeros, zeros, output);
}

}  // namespace imgtune

void Interpolation(AWB_GAIN_T& projected, int, int i4FracBits, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                   NSIspTuning::ISP_CCM_T_2D& table, int flash, NSIspTuning::ISP_CCM_T& output,
                   float* fBlendRatio, int method, int lvRow, int ctPos, int numCT) {
    imgtune::interpolate(projected, i4FracBits, tuning, flash, output, method, lvRow,
                         [&] { BlendCCM(fBlendRatio, table, output, ctPos, lvRow, numCT); });
}
