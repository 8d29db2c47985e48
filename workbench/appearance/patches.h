#ifndef IMGTUNE_WORKBENCH_APPEARANCE_PATCHES_H
#define IMGTUNE_WORKBENCH_APPEARANCE_PATCHES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace imgtune::workbench {

/// A patch of the usual chart with 24 of them, in six columns and four rows.
struct Patch {
    const char* name;
    std::array<std::uint8_t, 3> srgb;  ///< R, G, B, gamma-encoded, D65
};

inline constexpr std::size_t kPatchCount = 24;

/// Where the patch stands that people judge most strictly: skin.
inline constexpr std::size_t kLightSkin = 1;

/// From dark skin to black, row after row.
std::span<const Patch, kPatchCount> chart_patches();

/// The place of the patch of this name, "light skin".
std::optional<std::size_t> find_patch(std::string_view name);

/// Linear sRGB, 1.0 = white.
std::array<double, 3> linear(const Patch& patch);

/// Gamma-encoded sRGB of a linear colour; what lies outside 0..1 is cut off.
std::array<std::uint8_t, 3> encoded(const std::array<double, 3>& linear_srgb);

}  // namespace imgtune::workbench

#endif
