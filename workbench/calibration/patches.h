#ifndef IMGTUNE_WORKBENCH_CALIBRATION_PATCHES_H
#define IMGTUNE_WORKBENCH_CALIBRATION_PATCHES_H

#include <array>
#include <cstdint>
#include <span>

namespace imgtune::workbench {

/// A patch of the usual chart with 24 of them, in six columns and four rows.
struct Patch {
    const char* name;
    std::array<std::uint8_t, 3> srgb;  ///< R, G, B, gamma-encoded, D65
};

/// From dark skin to black, row after row.
std::span<const Patch, 24> chart_patches();

/// Linear sRGB, 1.0 = white.
std::array<double, 3> linear(const Patch& patch);

/// Gamma-encoded sRGB of a linear colour; what lies outside 0..1 is cut off.
std::array<std::uint8_t, 3> encoded(const std::array<double, 3>& linear_srgb);

}  // namespace imgtune::workbench

#endif
