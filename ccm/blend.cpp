#include "ccm/blend.h"

#include <imgtune/ccm.h>

void BlendCCM(float* fBlendRatio, NSIspTuning::ISP_CCM_T_2D& table, NSIspTuning::ISP_CCM_T& output,
              int ctPos, int lvRow, int numCT) {
    const std::int32_t row = imgtune::lv_row_in_record(lvRow);
    const auto matrix_at = [&](std::int32_t ct) {
        return imgtune::matrix_in_table(table, row, ct);
    };
    output = imgtune::blend_by_place({ctPos, fBlendRatio[0], fBlendRatio[1]}, matrix_at, numCT)
                 .closed(imgtune::kUnity)
                 .record();
}
