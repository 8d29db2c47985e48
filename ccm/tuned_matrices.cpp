#include "ccm/tuned_matrices.h"

#include "ccm/trace.h"
#include "ccm/tuned_rows.h"

namespace imgtune {

namespace {

#define IMGTUNE_TUNED_MATRIX(place) place "_rCCM_Nvram = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n"

struct TracedRow {
    std::int32_t lv_row;
    const char* formats[kCtIndices];
};

constexpr TracedRow kTracedRows[] = {
    {kNormalRow,
     {IMGTUNE_TUNED_MATRIX("LV_00_CT0"), IMGTUNE_TUNED_MATRIX("LV_00_CT1"),
      IMGTUNE_TUNED_MATRIX("LV_00_CT2"), IMGTUNE_TUNED_MATRIX("LV_00_CT3"),
      IMGTUNE_TUNED_MATRIX("LV_00_CT4"), IMGTUNE_TUNED_MATRIX("LV_00_CT5"),
      IMGTUNE_TUNED_MATRIX("LV_00_CT6"), IMGTUNE_TUNED_MATRIX("LV_00_CT7")}},
    {kLowLightRow,
     {IMGTUNE_TUNED_MATRIX("LV_01_CT0"), IMGTUNE_TUNED_MATRIX("LV_01_CT1"),
      IMGTUNE_TUNED_MATRIX("LV_01_CT2"), IMGTUNE_TUNED_MATRIX("LV_01_CT3"),
      IMGTUNE_TUNED_MATRIX("LV_01_CT4"), IMGTUNE_TUNED_MATRIX("LV_01_CT5"),
      IMGTUNE_TUNED_MATRIX("LV_01_CT6"), IMGTUNE_TUNED_MATRIX("LV_01_CT7")}},
    {kFlashRow,
     {IMGTUNE_TUNED_MATRIX("LV_06_CT0"), IMGTUNE_TUNED_MATRIX("LV_06_CT1"),
      IMGTUNE_TUNED_MATRIX("LV_06_CT2"), IMGTUNE_TUNED_MATRIX("LV_06_CT3"),
      IMGTUNE_TUNED_MATRIX("LV_06_CT4"), IMGTUNE_TUNED_MATRIX("LV_06_CT5"),
      IMGTUNE_TUNED_MATRIX("LV_06_CT6"), IMGTUNE_TUNED_MATRIX("LV_06_CT7")}},
};

}  // namespace

void trace_tuned_matrices(const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, const CoefficientCodec& codec) {
    for (const TracedRow& row : kTracedRows) {
        for (std::int32_t ct = 0; ct < kCtIndices; ++ct) {
            ccm_trace_nine(row.formats[ct], codec.decode(tuning.rCCM_Nvram[row.lv_row][ct]).i4Coef);
        }
    }
}

}  // namespace imgtune
