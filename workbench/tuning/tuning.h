#ifndef IMGTUNE_WORKBENCH_TUNING_TUNING_H
#define IMGTUNE_WORKBENCH_TUNING_TUNING_H

#include <imgtune/imgtune.h>

#include <array>
#include <cstdint>
#include <string>

namespace imgtune::workbench {

/// What the camera stack hands to the library beside the stored tables.
struct CallerSettings {
    std::int32_t full_gain = 0;  ///< 1: SmoothCCM uses the full AWB gain
    std::int32_t int_bits = 3;   ///< coefficient codec
    std::int32_t frac_bits = 9;
    std::array<std::uint32_t, 3> weights{2, 1, 1};  ///< new matrix, ring entry 0, ring entry 1
    std::array<std::uint32_t, 5> ct_grid{2300, 2850, 4000, 5000, 6500};  ///< kelvin per CT index
};

/// One tuning: the stored records, bit for bit, and the caller's settings.
struct Tuning {
    std::string name;
    CallerSettings caller;
    bool has_ccm = false;
    bool has_color = false;
    ISP_NVRAM_MULTI_CCM_STRUCT ccm{};
    /// [LV row][CT index]: the colour temperature at which a point was tuned; 0: unknown. The
    /// library does not read it, and the stored tables have no place for it.
    std::uint32_t kelvin[8][8]{};
    NSIspTuning::ISP_NVRAM_COLOR_T color[4][5]{};  ///< [slot][CT index]
    ISP_NVRAM_PCA_PARAM_T pca[4]{};                ///< one a slot
};

}  // namespace imgtune::workbench

#endif
