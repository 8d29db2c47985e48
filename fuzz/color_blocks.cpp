#include "color_fields.h"

using namespace imgtune::fuzz;

namespace {

using Param = ISP_SMOOTH_COLOR_PARAM_T;

/// A block function and the words that are its own; `steps` tells its temporal step, if it has one
/// that bounds every byte of words first..stepped.
const struct Block {
    void (*function)(Param&, const Image&, const Image&, Image&);
    unsigned first, last;
    std::uint32_t Param::*speed;
    unsigned stepped;
} kBlocks[] = {
    {InterParamByLVGlobal, 4, 5, nullptr, 0},
    {InterParamGlobal, 4, 5, nullptr, 0},
    {InterParamByLVPartialY, 6, 13, nullptr, 0},
    {InterParamPartialY, 6, 13, &Param::lum_speed, 13},
    {InterParamByLVPartialH, 14, 18, nullptr, 0},
    {InterParamPartialH, 14, 18, &Param::hue_speed, 18},
    {InterParamByLVPartialS, 19, 43, nullptr, 0},
    {InterParamPartialS, 19, 43, &Param::sat_speed, 33},
    {InterParamByLVSGainByY, 44, 68, nullptr, 0},
    {InterParamSGainByY, 44, 68, nullptr, 0},
    {InterParamByLVLSP, 69, 70, nullptr, 0},
    {InterParamLSP, 69, 70, nullptr, 0},
    {InterParam3DLUT, 71, 116, nullptr, 0},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    set_switches(in.word());
    const auto param = in.record<Param>();
    const auto upper = in.record<Image>(), lower = in.record<Image>(), start = in.record<Image>();
    const Param param_before = *param;
    const Image upper_before = *upper, lower_before = *lower;
    for (const Block& block : kBlocks) {
        auto working = std::make_unique<Image>(*start);
        block.function(*param, *upper, *lower, *working);
        const auto lines = take_log_digest();
        for (unsigned w = 0; w < 117; ++w) {
            std::uint32_t own = w >= block.first && w <= block.last ? field_bits(w) : 0;
            if (w == 0 && block.function == InterParamLSP) own = 1U << 20;
            require(((working->u4Word[w] ^ start->u4Word[w]) & ~own) == 0,
                    "bits of other blocks are kept");
        }
        if (block.speed != nullptr && (param->IsBoot | param->IsCapture) != 1) {
            require_small_moves(*working, *start, block.first, block.stepped,
                                (*param).*block.speed);
        }
        require(
            same(*param, param_before) && same(*upper, upper_before) && same(*lower, lower_before),
            "inputs are only read");

        Image again = *start;
        block.function(*param, *upper, *lower, again);
        require(take_log_digest() == lines && same(again, *working),
                "the same call gives the same results");
    }
    return 0;
}
