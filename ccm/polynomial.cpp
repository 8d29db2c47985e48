#include <imgtune/ccm.h>

#include "ccm/matrix_rows.h"
#include "common/arithmetic.h"

void GenCCM(AWB_GAIN_T const& gain, int, int, int unity, float redAvg, float blueAvg, float redStd,
            float blueStd, float* P00, float* P10, float* P01, float* P20, float* P11, float* P02,
            NSIspTuning::ISP_CCM_T& output) {
    constexpr float kNormalUnity = 512.0f;
    const float red = static_cast<float>(gain.i4R) / static_cast<float>(gain.i4G);
    const float blue = static_cast<float>(gain.i4B) / static_cast<float>(gain.i4G);
    const float nr = (red * kNormalUnity - redAvg) / redStd;
    const float nb = (blue * kNormalUnity - blueAvg) / blueStd;
    for (int k = 0; k < 8; ++k) {
        const float value =
            ((((P00[k] + P10[k] * nr) + P01[k] * nb) + nr * (nr * P20[k])) + nb * (nr * P11[k])) +
            nb * (nb * P02[k]);
        output.i4Coef[k] = imgtune::truncate_to_int32(value);
    }
    imgtune::close_rows(output, unity);
}
