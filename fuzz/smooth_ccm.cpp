#include <imgtune/ccm.h>

#include "input.h"

using namespace imgtune::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    set_switches(in.byte() % 8 == 0 ? ~0U : 0U);
    const int full_gain = in.number(), int_bits = in.number(), frac_bits = in.number();
    const auto tuning = in.record<ISP_NVRAM_MULTI_CCM_STRUCT>();
    tuning->i4Method = static_cast<int>(in.byte() % 4);
    tuning->i4PQType = static_cast<int>(in.byte() % 4);
    if (in.byte() % 2 == 0) tuning->i4NumCT = static_cast<int>(in.byte() % 12) - 1;
    const auto ring = in.records<NSIspTuning::ISP_NVRAM_CCM_T>(2);
    const auto output = in.record<NSIspTuning::ISP_NVRAM_CCM_T>();
    unsigned index = in.byte() % 4 == 0 ? in.value() : 0;
    for (int frame = 0; frame < 3; ++frame) {
        const auto state = in.record<NSIspTuning::RAWIspCamInfo>();
        const auto weights = in.records<unsigned>(3);
        unsigned short version = 0;
        SmoothCCM(full_gain, int_bits, frac_bits, *tuning, *output, version, *state, ring.get(),
                  index, weights.get());
    }
    return 0;
}
