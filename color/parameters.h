#ifndef IMGTUNE_COLOR_PARAMETERS_H
#define IMGTUNE_COLOR_PARAMETERS_H

#include <imgtune/color_types.h>

namespace imgtune {

/// What a frame asks for, beside the tuning record of its slot.
struct FrameLight {
    std::uint32_t boot;
    std::uint32_t capture;
    std::uint32_t real_kelvin;
    std::uint32_t upper_kelvin;
    std::uint32_t lower_kelvin;
    std::uint32_t lv;
};

/// 1,000,000 / kelvin, truncated; 0 for 0 kelvin.
std::uint32_t to_mired(std::uint32_t kelvin);

/// Saturation ratio: low, rising to middle, rising to high, by the low byte of the light value.
std::uint32_t saturation_ratio(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv);

/// True up to the highest light value at which LSP may be on.
inline bool lsp_allowed(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv) {
    return lv <= tuning.u4LSPMaxLV;
}

/// Outdoor weight by the low byte of the light value: 0..u4OutdoorBase.
std::uint32_t outdoor_ratio(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv);

/// Whether the colour map is the outdoor one: past the ramp's midpoint.
bool takes_outdoor_map(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv);

/// Every field of the parameter record. `lsp_tuned`: LSP enable bit of the image in force.
ISP_SMOOTH_COLOR_PARAM_T derive_parameters(const ISP_NVRAM_PCA_PARAM_T& tuning,
                                           const FrameLight& light, bool lsp_tuned);

}  // namespace imgtune

#endif
