#include "workbench/appearance/patches.h"

#include <algorithm>
#include <cmath>

namespace imgtune::workbench {

namespace {

// The chart maker's sRGB values of the ColorChecker Classic, as tabulated by D. Pascale, "RGB
// coordinates of the Macbeth ColorChecker", The BabelColor Company, 2006.
constexpr Patch kPatches[kPatchCount] = {
    {"dark skin", {115, 82, 68}},     {"light skin", {194, 150, 130}},
    {"blue sky", {98, 122, 157}},     {"foliage", {87, 108, 67}},
    {"blue flower", {133, 128, 177}}, {"bluish green", {103, 189, 170}},
    {"orange", {214, 126, 44}},       {"purplish blue", {80, 91, 166}},
    {"moderate red", {193, 90, 99}},  {"purple", {94, 60, 108}},
    {"yellow green", {157, 188, 64}}, {"orange yellow", {224, 163, 46}},
    {"blue", {56, 61, 150}},          {"green", {70, 148, 73}},
    {"red", {175, 54, 60}},           {"yellow", {231, 199, 31}},
    {"magenta", {187, 86, 149}},      {"cyan", {8, 133, 161}},
    {"white", {243, 243, 242}},       {"neutral 8", {200, 200, 200}},
    {"neutral 6.5", {160, 160, 160}}, {"neutral 5", {122, 122, 121}},
    {"neutral 3.5", {85, 85, 85}},    {"black", {52, 52, 52}},
};

}  // namespace

std::span<const Patch, kPatchCount> chart_patches() {
    return kPatches;
}

std::optional<std::size_t> find_patch(std::string_view name) {
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        if (kPatches[i].name == name) return i;
    }
    return std::nullopt;
}

std::array<double, 3> linear(const Patch& patch) {
    std::array<double, 3> out{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const double encoded = patch.srgb[channel] / 255.0;
        out[channel] =
            encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
    }
    return out;
}

std::array<std::uint8_t, 3> encoded(const std::array<double, 3>& linear_srgb) {
    std::array<std::uint8_t, 3> out{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const double value = std::clamp(linear_srgb[channel], 0.0, 1.0);
        const double gamma =
            value <= 0.0031308 ? value * 12.92 : 1.055 * std::pow(value, 1.0 / 2.4) - 0.055;
        out[channel] = static_cast<std::uint8_t>(std::lround(gamma * 255.0));
    }
    return out;
}

}  // namespace imgtune::workbench
