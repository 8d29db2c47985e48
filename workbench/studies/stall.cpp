#include "workbench/studies/stall.h"

#include <imgtune/imgtune.h>

#include "ccm/codec.h"

namespace imgtune::workbench {

namespace {

constexpr std::int32_t kLargestCoefficient = 4095;
constexpr std::size_t kProbe = 1;  ///< c1, an off-diagonal coefficient

/// Whether an average that stands at 0 stays there while the light asks for `target`.
bool stays(ISP_NVRAM_MULTI_CCM_STRUCT& tuning, std::array<std::uint32_t, 3> weights,
           std::int32_t target) {
    constexpr CoefficientCodec kCodec(3, 9);
    NSIspTuning::ISP_CCM_T matrix{};
    matrix.i4Coef[kProbe] = target;
    kCodec.encode(matrix, tuning.rCCM_Nvram[0][0]);
    NSIspTuning::ISP_NVRAM_CCM_T ring[2] = {};
    NSIspTuning::ISP_NVRAM_CCM_T output{};
    unsigned int ring_index = 0;
    unsigned short version = 0;
    SmoothCCM(0, 3, 9, tuning, output, version, NSIspTuning::RAWIspCamInfo{}, ring, ring_index,
              weights.data());
    return kCodec.decode(output).i4Coef[kProbe] == 0;
}

}  // namespace

std::int32_t worst_stall(const std::array<std::uint32_t, 3>& weights) {
    ISP_NVRAM_MULTI_CCM_STRUCT tuning{};
    tuning.i4Method = 2;  // a gain at the lowest tuned one: its matrix alone
    tuning.i4NumCT = 3;
    std::int32_t distance = 0;
    while (distance < kLargestCoefficient && stays(tuning, weights, distance + 1)) ++distance;
    return distance;
}

}  // namespace imgtune::workbench
