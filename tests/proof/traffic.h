#ifndef IMGTUNE_TESTS_PROOF_TRAFFIC_H
#define IMGTUNE_TESTS_PROOF_TRAFFIC_H

#include <imgtune/imgtune.h>

#include <cstdint>
#include <cstring>

// Camera traffic for the long runs: the same on every machine, realistic or of arbitrary bits.

namespace imgtune::traffic {

/// Sixty-four mixed bits a step.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint32_t bits() {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return static_cast<std::uint32_t>(z >> 32);
    }

    std::uint32_t below(std::uint32_t end) { return bits() % end; }
    int between(int least, int most) {
        return least + static_cast<int>(below(static_cast<std::uint32_t>(most - least + 1)));
    }

    /// Every word of a record of 32-bit words gets arbitrary bits.
    template <class Record>
    void fill(Record& record) {
        static_assert(sizeof(Record) % 4 == 0);
        auto* to = reinterpret_cast<unsigned char*>(&record);
        for (std::size_t at = 0; at < sizeof(Record); at += 4) {
            const std::uint32_t word = bits();
            std::memcpy(to + at, &word, 4);
        }
    }

  private:
    std::uint64_t state_;
};

/// Both tunings and what a camera stack carries from frame to frame.
struct Camera {
    ISP_NVRAM_MULTI_CCM_STRUCT ccm_tuning{};
    NSIspTuning::ISP_NVRAM_COLOR_T table[4][5];
    ISP_NVRAM_PCA_PARAM_T color_tuning[4];

    NSIspTuning::ISP_NVRAM_CCM_T output{}, ring[2] = {};
    unsigned int index = 0, weights[3] = {5, 3, 2};
    NSIspTuning::ISP_NVRAM_COLOR_T result{}, working{};
    int boot = 1, int_bits = 3, frac_bits = 9;
    unsigned short version = 0;

    explicit Camera(Random& random) {
        static const struct {
            int red, blue;
        } kLocus[5] = {{620, 1500}, {760, 1210}, {930, 1010}, {1060, 850}, {1290, 700}};
        ccm_tuning.i4Method = 2;
        ccm_tuning.i4PQType = random.between(0, 2);
        ccm_tuning.i4NumLV = 2;
        ccm_tuning.i4NumCT = 5;
        for (auto* poly : {&ccm_tuning.rCCMPoly22, &ccm_tuning.rCCMPoly22Flash}) {
            *poly = {.i4R_AVG = 93000,
                     .i4R_STD = 21000,
                     .i4B_AVG = 105000,
                     .i4B_STD = 27000,
                     .i4Reserved = {},
                     .i4P00 = {},
                     .i4P10 = {},
                     .i4P01 = {}};
            for (auto& v : poly->i4P00) v = random.between(-3000000, 1500000);
            for (auto& v : poly->i4P10) v = random.between(-400000, 400000);
            for (auto& v : poly->i4P01) v = random.between(-400000, 400000);
        }
        for (int row = 0; row < 8; ++row) {
            for (int ct = 0; ct < 5; ++ct) {
                ccm_tuning.rCTAWBGain[row][ct] = {kLocus[ct].red + random.between(-9, 9), 512,
                                                  kLocus[ct].blue + random.between(-9, 9)};
                random.fill(ccm_tuning.rCCM_Nvram[row][ct]);
            }
        }
        random.fill(table);
        for (auto& t : color_tuning) {
            t = {20, 16, 10, 30, 60, 90, 120, 4, 2, 3, 1, 140, random.below(2), 100, 130, 0, 64};
        }
    }

    void run_ccm(const NSIspTuning::RAWIspCamInfo& state, int full_gain) {
        SmoothCCM(full_gain, int_bits, frac_bits, ccm_tuning, output, version, state, ring, index,
                  weights);
    }

    void run_color(const NSIspTuning::RAWIspCamInfo& state, int capture) {
        // The grid that the caller interpolates on, kelvin.
        static const unsigned kGrid[5] = {2300, 2850, 4000, 5000, 6500};
        int lower = 0;
        while (lower < 3 && state.u4CCT >= kGrid[lower + 1]) ++lower;
        run_color(state, capture, lower + 1, lower, kGrid[lower + 1], kGrid[lower]);
    }

    void run_color(const NSIspTuning::RAWIspCamInfo& state, int capture, int upper, int lower,
                   unsigned upper_kelvin, unsigned lower_kelvin) {
        using Index = NSIspTuning::EIndex_PCA_LUT_CT;
        SmoothCOLOR(capture, upper_kelvin, lower_kelvin, static_cast<Index>(upper),
                    static_cast<Index>(lower), table, color_tuning, state, result, version, boot,
                    working);
    }
};

/// A frame somewhere in a day: light, gains near the locus, now and then flash or a scene.
inline NSIspTuning::RAWIspCamInfo day_frame(Random& random) {
    const int red = random.between(560, 1350);
    const AWB_GAIN_T gain = {red, 512, 2150 - red - red / 8 + random.between(-60, 60)};
    return {.profile = random.between(0, 9),
            .rAWBFullGain = {gain.i4R + random.between(-20, 20), 512, gain.i4B},
            .rAWBGain = gain,
            .u4CCT = 2000 + random.below(6000),
            .u4RealLV = random.below(160),
            .u4FlashMode = random.below(8) == 0,
            .u4SceneFlag = random.below(8) == 0};
}

}  // namespace imgtune::traffic

#endif
