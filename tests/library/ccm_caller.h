#ifndef IMGTUNE_TESTS_LIBRARY_CCM_CALLER_H
#define IMGTUNE_TESTS_LIBRARY_CCM_CALLER_H

// What the tests of the colour-correction matrix share: a tuning, and a caller of SmoothCCM.

#include <gtest/gtest.h>
#include <imgtune/imgtune.h>

#include "ccm/codec.h"
#include "ccm/matrix_rows.h"
#include "support/platform_fakes.h"

namespace imgtune::callers {

using NSIspTuning::ISP_CCM_T;
using NSIspTuning::ISP_NVRAM_CCM_T;
using NSIspTuning::RAWIspCamInfo;

inline constexpr CoefficientCodec kCodec(3, 9);

inline ISP_CCM_T matrix_of(int c1, int c2, int c3, int c5, int c6, int c7, int unity = 512) {
    ISP_CCM_T m{{0, c1, c2, c3, 0, c5, c6, c7, 0}};
    imgtune::close_rows(m, unity);
    return m;
}

inline void expect_matrix(const ISP_CCM_T& actual, const ISP_CCM_T& expected,
                          const char* what = "") {
    for (int k = 0; k < 9; ++k) {
        EXPECT_EQ(actual.i4Coef[k], expected.i4Coef[k]) << what << " coefficient " << k;
    }
}

/// Three CTs 300 gain units apart on a straight locus; each row and CT has a matrix of its own.
inline ISP_NVRAM_MULTI_CCM_STRUCT three_ct_tuning(int method) {
    ISP_NVRAM_MULTI_CCM_STRUCT t{};
    t.i4Method = method;
    t.i4NumLV = 2;
    t.i4NumFlash = 1;
    t.i4NumCT = 3;
    for (int row = 0; row < 8; ++row) {
        for (int ct = 0; ct < 3; ++ct) {
            t.rCTAWBGain[row][ct] = {600 + 300 * ct, 0, 1500 - 300 * ct};
            const int c1 = -100 - 10 * row - ct;
            kCodec.encode(matrix_of(c1, 20, -30, 40, -50, 60), t.rCCM_Nvram[row][ct]);
        }
    }
    return t;
}

/// One caller of SmoothCCM: unity weights for the new matrix, so that nothing is averaged.
struct CcmCaller {
    ISP_NVRAM_MULTI_CCM_STRUCT tuning;
    RAWIspCamInfo state{.profile = 0,
                        .rAWBFullGain = {1200, 512, 900},
                        .rAWBGain = {900, 512, 1200},
                        .u4CCT = 5000,
                        .u4RealLV = 100,
                        .u4FlashMode = 0,
                        .u4SceneFlag = 0};
    ISP_NVRAM_CCM_T output{};
    ISP_NVRAM_CCM_T ring[2] = {};
    unsigned index = 0;
    unsigned weights[3] = {1, 0, 0};
    unsigned short version = 0;

    explicit CcmCaller(int method) : tuning(three_ct_tuning(method)) {}

    ISP_CCM_T run(int full_gain = 0) {
        SmoothCCM(full_gain, 3, 9, tuning, output, version, state, ring, index, weights);
        return kCodec.decode(output);
    }
};

class Ccm : public testing::Test {
  protected:
    // One call of the entry point closes the trace gate that is open at load.
    Ccm() {
        fakes::reset();
        CcmCaller(0).run();
        fakes::reset();
    }
};
}  // namespace imgtune::callers

#endif
