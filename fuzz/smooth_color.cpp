#include "color_fields.h"

using namespace imgtune::fuzz;
using NSIspTuning::EIndex_PCA_LUT_CT;

namespace {

struct Inputs {
    Image table[4][5];
    ISP_NVRAM_PCA_PARAM_T tuning[4];
};

struct Carried {
    Image result, working;
    int boot;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    set_switches(in.word());
    const auto inputs = in.record<Inputs>();
    for (auto& tuning : inputs->tuning) {
        in.fill(tuning);
        if (in.byte() % 2) tuning.u4OutdoorLV_End = 64 + (tuning.u4OutdoorLV_Start &= 0x3f);
    }
    const auto inputs_before = std::make_unique<Inputs>(*inputs);
    Carried now;
    in.fill(now);
    for (int frame = 0; frame < 5; ++frame) {
        auto state = in.record<NSIspTuning::RAWIspCamInfo>();
        if (in.byte() % 2) state->u4FlashMode = state->u4SceneFlag = 0;
        if (in.byte() % 2) state->u4RealLV &= 0xff;
        const auto state_before = *state;
        const int capture = in.byte() % 4 ? 0 : in.number();
        const unsigned upper_kelvin = in.value(), lower_kelvin = in.value();
        const auto upper = static_cast<EIndex_PCA_LUT_CT>(in.byte() % 4 ? 3 : in.number());
        const auto lower = static_cast<EIndex_PCA_LUT_CT>(in.byte() % 4 ? 2 : in.number());
        const Carried before = now;
        Carried again = now;
        const auto run = [&](Carried& c) {
            unsigned short version = 0;
            const auto working = std::make_unique<Image>(c.working);
            SmoothCOLOR(capture, upper_kelvin, lower_kelvin, upper, lower, inputs->table,
                        inputs->tuning, *state, c.result, version, c.boot, *working);
            c.working = *working;
            require(version == 100, "the version is given");
            return take_log_digest();
        };
        const auto lines = run(now);
        require(run(again) == lines && same(again, now), "the same frame gives the same results");

        require(same(*inputs, *inputs_before) && same(*state, state_before),
                "inputs are only read");
        require(now.boot == 0, "the boot flag is cleared");
        require(same(now.result, now.working), "the result is the working image");

        const unsigned slot = state->u4FlashMode != 0 ? 2 : state->u4SceneFlag == 1 ? 1 : 0;
        const bool locked = switch_value("debug.smooth_color.lock") == 1;
        for (unsigned w = 0; w < 117; ++w) {
            const std::uint32_t changed = now.working.u4Word[w] ^ before.working.u4Word[w];
            const std::uint32_t control = now.working.u4Word[w] ^ inputs->table[slot][0].u4Word[w];
            if (w < 4) {
                require((control & (w == 0 ? ~0x0010001cU : ~0U)) == 0,
                        "control words come from the slot's first image");
            } else if (locked) {
                require((changed & (w == 71 ? ~1U : ~0U)) == 0, "locked: nothing moves");
            } else {
                require((changed & ~field_bits(w)) == 0, "bits outside the fields are kept");
            }
        }
        if ((static_cast<unsigned>(before.boot) | static_cast<unsigned>(capture)) == 1) continue;
        const ISP_NVRAM_PCA_PARAM_T& t = inputs->tuning[slot];
        require_small_moves(now.working, before.working, 6, 13, t.lum_speed);
        require_small_moves(now.working, before.working, 14, 18, t.hue_speed);
        require_small_moves(now.working, before.working, 19, 33, t.sat_speed);
    }
    return 0;
}
