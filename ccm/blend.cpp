#include "ccm/blend.h"

#include <imgtune/ccm.h>

void BlendCCM(float* fBlendRatio, NSIspTuning::ISP_CCM_T_2D& table, NSIspTuning::ISP_CCM_T& output,
              int ctPos, int lvRow, int numCT) {
    const std::int32_t row = imgtune::lv_row_in_record(lvRow);
    const auto matrix_at = [&table, row](std::int32_t ct) {
        NSIspTuning::ISP_CCM_T matrix;
        for (int k = 0; k < 9; ++k) matrix.i4Coef[k] = table.i4Plane[k][row][ct];
        return matrix;
    };
    output = imgtune::blend_by_position(fBlendRatio, matrix_at, ctPos, numCT);
}
