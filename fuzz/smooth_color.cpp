#include <imgtune/color.h>

#include "input.h"

using namespace imgtune::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Image = NSIspTuning::ISP_NVRAM_COLOR_T;
    using NSIspTuning::EIndex_PCA_LUT_CT;
    struct Table {
        Image image[4][5];
    };
    struct Tuning {
        ISP_NVRAM_PCA_PARAM_T slot[4];
    };
    Input in(data, size);
    set_switches(in.byte() % 16 == 0 ? in.word() : 0U);
    const auto table = in.record<Table>();
    const auto tuning = in.record<Tuning>();
    for (auto& slot : tuning->slot) {
        if (in.byte() % 2 == 0) slot.u4OutdoorLV_End = 64 + (slot.u4OutdoorLV_Start &= 0x3f);
        if (in.byte() % 2 == 0) slot.u4OutdoorBase &= 0x3fff;
    }
    const auto result = in.record<Image>();
    const auto working = in.record<Image>();
    int boot = in.number();
    for (int frame = 0; frame < 2; ++frame) {
        const auto state = in.record<NSIspTuning::RAWIspCamInfo>();
        if (in.byte() % 2 == 0) state->u4FlashMode = state->u4SceneFlag = 0;
        const auto upper = static_cast<EIndex_PCA_LUT_CT>(in.byte() % 4 ? 3 : in.number());
        const auto lower = static_cast<EIndex_PCA_LUT_CT>(in.byte() % 4 ? 2 : in.number());
        const unsigned upper_kelvin = in.value(), lower_kelvin = in.value();
        unsigned short version = 0;
        SmoothCOLOR(in.number(), upper_kelvin, lower_kelvin, upper, lower, table->image,
                    tuning->slot, *state, *result, version, boot, *working);
        require(boot == 0 && same(*result, *working), "the result is the working image");
    }
    return 0;
}
