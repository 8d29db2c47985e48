#include <imgtune/color.h>

#include "color/rules.h"

int InterParamByCT(int x, int p, int q, int valueP, int valueQ) {
    return imgtune::BlendRule::by_ct(x, p, q)(valueP, valueQ);
}

int IsCCTBoundary(int x, int p, int q) {
    return imgtune::is_degenerate_bracket(x, p, q) ? 1 : 0;
}

int InterParamByLV(int ratio, int base, int outdoor, int normal) {
    return imgtune::BlendRule::by_lv(ratio, base)(outdoor, normal);
}

unsigned int IIR(unsigned int previous, unsigned int target, unsigned int step) {
    return imgtune::step_toward(previous, target, step);
}

unsigned int Clip(unsigned int value, unsigned int boundA, unsigned int boundB) {
    return imgtune::clip(value, boundA, boundB);
}

int InterParam_PCA(int x, int p, int q, int valueP, int valueQ) {
    return imgtune::BlendRule::by_ct_unguarded(x, p, q)(valueP, valueQ);
}

void SmoothPCA_TBL(int, unsigned int, unsigned int, NSIspTuning::EIndex_PCA_LUT_CT,
                   NSIspTuning::EIndex_PCA_LUT_CT, NSIspTuning::ISP_NVRAM_PCA_LUT_T const (&)[4][5],
                   ISP_NVRAM_PCA_PARAM_T const (&)[4], NSIspTuning::RAWIspCamInfo const&,
                   NSIspTuning::ISP_NVRAM_PCA_LUT_T&, unsigned short&) {}
