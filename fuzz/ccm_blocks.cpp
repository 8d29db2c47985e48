#include <imgtune/ccm.h>

#include "ccm_fields.h"

using namespace imgtune::fuzz;
using NSIspTuning::ISP_CCM_T;

namespace {

void gain_projection(Input& in, ISP_NVRAM_MULTI_CCM_STRUCT& tuning) {
    AWB_GAIN_T gain;
    in.fill(gain);
    const int method = static_cast<int>(in.byte() % 4), row = in.number();
    const int count = in.byte() % 2 ? in.number() : static_cast<int>(in.byte() % 9);
    AWB_GAIN_T projected{1, 2, 3};
    const auto ratios = std::make_unique<float[]>(2);
    ratios[0] = ratios[1] = -1.0f;
    int position = -99;
    GainProjection(gain, tuning, projected, method, ratios.get(), count, row, &position);
    require((projected.i4G == 2) == (method != 1), "only method 1 projects");
    require((position == -99) == (method != 2), "only method 2 places");
    for (std::size_t i = 0; i < 2; ++i) {
        require(method == 2 ? ratios[i] >= 0.0f && ratios[i] <= 1.0f : ratios[i] == -1.0f,
                "ratios lie in 0..1");
    }
    const int n = std::clamp(count, 1, 8);
    require(method != 2 || position == -1 || position == n + 10 ||
                (position >= 0 && position <= std::max(n - 2, 1)),
            "the position lies on the locus");
}

void generate(Input& in, ISP_NVRAM_MULTI_CCM_STRUCT& tuning) {
    const auto table = in.record<NSIspTuning::ISP_CCM_T_2D>();
    const auto table_before = std::make_unique<NSIspTuning::ISP_CCM_T_2D>(*table);
    const auto ratios = std::make_unique<float[]>(2);
    for (std::size_t i = 0; i < 2; ++i) ratios[i] = in.real();
    AWB_GAIN_T gain;
    in.fill(gain);
    const int position = in.byte() % 2 ? in.number() : static_cast<int>(in.byte() % 20) - 2;
    const int row = in.number(), count = in.number(), flash = in.number();
    const int frac_bits = in.number(), method = static_cast<int>(in.byte() % 4);
    ISP_CCM_T blended, generated;
    in.fill(generated);
    BlendCCM(ratios.get(), *table, blended, position, row, count);
    require_closed_rows(blended, 512);
    Interpolation(gain, in.number(), frac_bits, tuning, *table, flash, generated, ratios.get(),
                  method, row, position, count);
    require_closed_rows(generated, 1U << (static_cast<unsigned>(frac_bits) & 31U));
    require(same(*table, *table_before), "the table is only read");

    std::unique_ptr<float[]> terms[6];
    for (auto& nine : terms) {
        nine = std::make_unique<float[]>(9);
        for (std::size_t k = 0; k < 9; ++k) nine[k] = in.real();
    }
    const int unity = in.number();
    const float mean_red = in.real(), mean_blue = in.real(), red = in.real(), blue = in.real();
    GenCCM(gain, in.number(), in.number(), unity, mean_red, mean_blue, red, blue, terms[0].get(),
           terms[1].get(), terms[2].get(), terms[3].get(), terms[4].get(), terms[5].get(),
           generated);
    require_closed_rows(generated, static_cast<std::uint32_t>(unity));
}

void separate(Input& in) {
    const auto image = in.record<NSIspTuning::ISP_NVRAM_CCM_T>();
    const auto before = *image;
    const float ratio = in.real();
    const int int_bits = in.number(), frac_bits = in.number();
    seperate_RWB_CCM_by_ratio(image.get(), ratio, int_bits, frac_bits);
    require_other_bits_kept(*image, before);
    const std::uint32_t bits =
        static_cast<std::uint32_t>(int_bits) + static_cast<std::uint32_t>(frac_bits);
    for (const std::uint32_t word : image->u4Word) {
        require((word & 0x1fff) < 1U << (bits & 31U), "fields stay below 2^(a + b)");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const auto tuning = in.record<ISP_NVRAM_MULTI_CCM_STRUCT>();
    const auto before = std::make_unique<ISP_NVRAM_MULTI_CCM_STRUCT>(*tuning);
    do {
        gain_projection(in, *tuning);
        generate(in, *tuning);
        separate(in);
        take_log_digest();
    } while (!in.ended());
    require(same(*tuning, *before), "the tuning is only read");
    return 0;
}
