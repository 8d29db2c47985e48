#include <imgtune/ccm.h>

#include "ccm_fields.h"

using namespace imgtune::fuzz;

namespace {

struct Carried {
    NSIspTuning::ISP_NVRAM_CCM_T output, ring[2];
    unsigned index;
};

struct Weights {
    unsigned w[3];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    set_switches(in.byte() % 4);
    const int full_gain = in.number(), int_bits = in.number(), frac_bits = in.number();
    const auto tuning = in.record<ISP_NVRAM_MULTI_CCM_STRUCT>();
    tuning->i4Method = static_cast<int>(in.byte() % 4);
    tuning->i4PQType = static_cast<int>(in.byte() % 4);
    if (in.byte() % 2 == 0) tuning->i4NumCT = static_cast<int>(in.byte() % 12) - 1;
    const auto tuning_before = std::make_unique<ISP_NVRAM_MULTI_CCM_STRUCT>(*tuning);
    Carried now;
    in.fill(now);
    if (in.byte() % 4 != 0) now.index %= 2;

    for (int frame = 0; frame < 5; ++frame) {
        const auto state = in.record<NSIspTuning::RAWIspCamInfo>();
        const auto state_before = *state;
        const auto weights = in.record<Weights>();
        const Weights weights_before = *weights;
        const Carried before = now;
        Carried again = now;
        const auto run = [&](Carried& c) {
            unsigned short version = 0;
            const auto ring = std::make_unique<NSIspTuning::ISP_NVRAM_CCM_T[]>(2);
            std::memcpy(ring.get(), c.ring, sizeof(c.ring));
            SmoothCCM(full_gain, int_bits, frac_bits, *tuning, c.output, version, *state,
                      ring.get(), c.index, weights->w);
            std::memcpy(c.ring, ring.get(), sizeof(c.ring));
            require(version == 200, "the version is given");
            return take_log_digest();
        };
        const auto lines = run(now);
        require(run(again) == lines && same(again, now), "the same frame gives the same results");

        require(same(*tuning, *tuning_before) && same(*state, state_before) &&
                    same(*weights, weights_before),
                "inputs are only read");
        require_other_bits_kept(now.output, before.output);
        require_closed_rows(now.output, int_bits, frac_bits, 512);
        for (const unsigned i : {0U, 1U}) require_other_bits_kept(now.ring[i], before.ring[i]);
        if (before.index < 2) {
            require(now.index == 1 - before.index, "the index flips");
            require_closed_rows(now.ring[before.index], int_bits, frac_bits, 512);
        } else {
            require(now.index == before.index, "an index outside the ring stays");
        }
    }
    return 0;
}
