#include "cli/steepness_text.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>

#include "workbench/appearance/patches.h"
#include "workbench/tuning/fields.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

std::string light_text(const SteepPlace::Light& light) {
    return fmt::format("{:.0f} K {},{},{}", light.kelvin, light.gain.i4R, light.gain.i4G,
                       light.gain.i4B);
}

std::string step_text(const std::optional<SteepPlace>& place) {
    if (!place) return fmt::format("{:>6} {:>6}  {:<14}", "-", "-", "");
    return fmt::format("{:>6.2f} {:>6.2f}  {:<14}", place->step.mean, place->step.worst,
                       chart_patches()[place->step.worst_patch].name);
}

std::string place_line(const std::string& row, const std::string& where,
                       const std::optional<SteepPlace>& place) {
    std::string line = fmt::format("{:<10} {:<22} {}", row, where, step_text(place));
    if (!place) return line + "nowhere\n";
    const auto& [a, b] = place->lights;
    if (a.lv != b.lv) {
        return line + fmt::format("LV {} to {} at {}\n", a.lv, b.lv, light_text(a));
    }
    return line + fmt::format("{} to {}{}\n", light_text(a), light_text(b),
                              place->is_jump ? ", a jump" : "");
}

std::string beside_text(const std::optional<SteepPlace>& place) {
    if (!place) return "beside";
    return fmt::format("red and blue {} {:.0f} %", place->beside > 0.0 ? "over" : "under",
                       100.0 * std::abs(place->beside));
}

}  // namespace

std::string steepness_text(const Steepness& steepness, const std::vector<Remedy>& remedies) {
    std::string out = fmt::format(
        "Steepest step of the matrix over light, in CIEDE2000 of the chart's 24 patches; seen are\n"
        "{:.1f} on average and {:.1f} in one patch, side by side. Lights are one mired apart or "
        "less.\n\n",
        kVisibleMean, kVisibleWorst);
    out += fmt::format("{:<10} {:<22} {:>6} {:>6}  {:<14}{}\n", "row", "gains", "mean", "worst",
                       "patch", "from and to");
    for (const Steepness::Row& row : steepness.rows) {
        out += place_line(kRowNames[row.row], "as tuned", row.on_locus);
        out += place_line(kRowNames[row.row], beside_text(row.beside), row.beside);
    }
    if (steepness.over_lv) out += place_line("LV", "as tuned", steepness.over_lv);
    if (remedies.size() < 2) return out;
    out += fmt::format(
        "\nTried, with the steepest step of all rows at the tuned gains, and how far the normal "
        "row's\nmatrices are off the tuned ones at its points, on average:\n\n{:>6} {:>6}  "
        "{:<14}{:>6}  {}\n",
        "mean", "worst", "patch", "off", "change");
    for (const Remedy& remedy : remedies) {
        out += fmt::format("{}{:>6}  {}\n", step_text(remedy.steepest),
                           remedy.off_points ? fmt::format("{:.2f}", *remedy.off_points) : "-",
                           remedy.change.empty() ? "as it is" : remedy.change);
    }
    return out;
}

}  // namespace imgtune::cli
