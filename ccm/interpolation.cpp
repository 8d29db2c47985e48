#include "ccm/interpolation.h"

#include "ccm/blend.h"

void Interpolation(AWB_GAIN_T& projected, int, int i4FracBits, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                   NSIspTuning::ISP_CCM_T_2D& table, int flash, NSIspTuning::ISP_CCM_T& output,
                   float* fBlendRatio, int method, int lvRow, int ctPos, int numCT) {
    using namespace imgtune;
    const std::int32_t unity = as_signed(shift_left(1, i4FracBits));
    const std::int32_t row = lv_row_in_record(lvRow);
    CoefficientRows matrix = CoefficientRows::of(output);
    interpolate(projected, unity, tuning, flash, matrix, method, lvRow, [&] {
        const auto matrix_at = [&](std::int32_t ct) { return matrix_in_table(table, row, ct); };
        return blend_by_place({ctPos, fBlendRatio[0], fBlendRatio[1]}, matrix_at, numCT);
    });
    output = matrix.closed(unity).record();
}
