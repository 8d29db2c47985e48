// Every exported building block, each record in a block of its own.

#include <imgtune/imgtune.h>

#include "input.h"

using namespace imgtune::fuzz;

namespace {

void ccm(Input& in) {
    const auto tuning = in.record<ISP_NVRAM_MULTI_CCM_STRUCT>();
    const auto table = in.record<NSIspTuning::ISP_CCM_T_2D>();
    const auto ratios = in.reals(2);
    const auto gain = in.record<AWB_GAIN_T>(), projected = in.record<AWB_GAIN_T>();
    const auto matrix = in.record<NSIspTuning::ISP_CCM_T>();
    const int method = static_cast<int>(in.byte() % 4), row = in.number();
    const int count = in.byte() % 2 ? in.number() : static_cast<int>(in.byte() % 9);
    int position = in.byte() % 2 ? in.number() : static_cast<int>(in.byte() % 20) - 2;
    BlendCCM(ratios.get(), *table, *matrix, position, row, count);
    Interpolation(*projected, in.number(), in.number(), *tuning, *table, in.number(), *matrix,
                  ratios.get(), method, row, position, count);
    GainProjection(*gain, *tuning, *projected, method, ratios.get(), count, row, &position);
    const auto terms = in.reals(9);
    GenCCM(*gain, 0, 0, in.number(), in.real(), in.real(), in.real(), in.real(), terms.get(),
           terms.get(), terms.get(), terms.get(), terms.get(), terms.get(), *matrix);
    const auto image = in.record<NSIspTuning::ISP_NVRAM_CCM_T>();
    seperate_RWB_CCM_by_ratio(image.get(), in.real(), in.number(), in.number());
}

void color(Input& in) {
    using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
    const auto param = in.record<ISP_SMOOTH_COLOR_PARAM_T>();
    const auto high = in.record<Image>(), low = in.record<Image>(), working = in.record<Image>();
    for (const auto block :
         {InterParamByLVGlobal, InterParamGlobal, InterParamByLVPartialY, InterParamPartialY,
          InterParamByLVPartialH, InterParamPartialH, InterParamByLVPartialS, InterParamPartialS,
          InterParamByLVSGainByY, InterParamSGainByY, InterParamByLVLSP, InterParamLSP,
          InterParam3DLUT}) {
        block(*param, *high, *low, *working);
    }
    const int x = in.number(), p = in.number(), q = in.number(), vp = in.number();
    InterParamByCT(x, p, q, vp, in.number());
    InterParam_PCA(x, p, q, vp, in.number());
    InterParamByLV(x, p, q, vp);
    IsCCTBoundary(x, p, q);
    IIR(in.value(), in.value(), in.value());
    Clip(in.value(), in.value(), in.value());
}

void matrix(Input& in) {
    const auto a = in.reals(9), b = in.reals(9), out = in.reals(9), v = in.reals(3);
    matmul3(out.get(), a.get(), b.get());
    aat3(out.get(), a.get());
    cross(v.get(), a.get(), b.get());
    matvec3(v.get(), a.get(), b.get());
    unit3(v.get());
    solvecubic(b.get());
    sort3(b.get());
    find_eigenvector(a.get(), v.get());
    pseudo_inverse(out.get(), a.get(), v.get(), b.get());
    cbrt_stats(in.real());
    round_stats(in.real());
    sign(in.real());
    sign_extension(in.number(), in.number());
    CLIP(in.value(), in.value(), in.value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    set_switches(in.byte() % 16 == 0 ? in.word() : 0U);
    const std::uint32_t subject = in.byte() % 3;
    if (subject == 0) ccm(in);
    if (subject == 1) color(in);
    if (subject == 2) matrix(in);
    return 0;
}
