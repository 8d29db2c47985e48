#include "workbench/studies/check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "workbench/appearance/patches.h"
#include "workbench/studies/steepness.h"
#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

constexpr double kMuchLess = 0.5;  // of a step: what is worth a change of the tuning

/// What the library makes of these matrices is not what was meant, for a reason told already.
bool has_matrix_errors(const Faults& faults) {
    return std::any_of(faults.list().begin(), faults.list().end(), [](const Fault& fault) {
        return fault.severity == Severity::error && !fault.path.starts_with("color.");
    });
}

std::string size_of(const SteepPlace& place) {
    return fmt::format("{:.1f} on average and {:.1f} in {}", place.step.mean, place.step.worst,
                       chart_patches()[place.step.worst_patch].name);
}

/// The best by what is seen: among changes after which no step is, the one that keeps closest to
/// the tuned matrices.
std::string suggestion_for(const Tuning& tuning) {
    const std::vector<Remedy> tried = try_remedies(tuning);
    const Remedy& now = tried.front();
    const Remedy* best = nullptr;
    const auto is_better = [](const Remedy& a, const Remedy& b) {
        const bool seen_a = a.strength() >= 1.0;
        const bool seen_b = b.strength() >= 1.0;
        if (seen_a != seen_b) return seen_b;
        if (seen_a) return a.strength() < b.strength();
        return a.off_points.value_or(0.0) < b.off_points.value_or(0.0);
    };
    for (auto remedy = tried.begin() + 1; remedy != tried.end(); ++remedy) {
        if (remedy->strength() > kMuchLess * now.strength()) continue;
        if (best == nullptr || is_better(*remedy, *best)) best = &*remedy;
    }
    if (best == nullptr) return "bring the matrices of the points around it closer to each other";
    std::string text =
        fmt::format("{}: the largest step is then {}", best->change,
                    best->steepest ? size_of(*best->steepest) : std::string("none at all"));
    if (best->off_points && now.off_points) {
        text += fmt::format(
            "; at the tuned gains the matrices are {:.1f} off the tuned ones, today "
            "{:.1f}",
            *best->off_points, *now.off_points);
    }
    return text;
}

std::string gain_text(const AWB_GAIN_T& gain) {
    return fmt::format("{},{},{}", gain.i4R, gain.i4G, gain.i4B);
}

std::string from_to(const SteepPlace& place) {
    const auto& [a, b] = place.lights;
    if (a.lv != b.lv) return fmt::format("from LV {} to {} at {:.0f} K", a.lv, b.lv, a.kelvin);
    std::string text = fmt::format("from gain {} to {} ({:.0f} to {:.0f} K", gain_text(a.gain),
                                   gain_text(b.gain), a.kelvin, b.kelvin);
    if (place.beside != 0.0) {
        text += fmt::format(", red and blue {:.0f} % {} than tuned", 100.0 * std::abs(place.beside),
                            place.beside > 0.0 ? "more" : "less");
    }
    return text + ')';
}

/// The tuned point of a place's row whose red gain is nearest to it.
std::size_t nearest_point(const Checked& checked, const SteepPlace& place) {
    const auto distance = [&](std::size_t point) {
        return std::abs(std::int64_t{checked.ccm().rCTAWBGain[place.row][point].i4R} -
                        place.lights[1].gain.i4R);
    };
    std::size_t nearest = 0;
    for (std::size_t point = 1; point < checked.points(place.row); ++point) {
        if (distance(point) < distance(nearest)) nearest = point;
    }
    return nearest;
}

void report_steep(Checked& checked, const SteepPlace& place, const std::string& also,
                  const std::string& suggestion) {
    checked.report(
        {.code = "T112",
         .path = point_path(place.row, nearest_point(checked, place)),
         .message = fmt::format("is where the matrix {}: {} the chart changes by CIEDE2000 {}{}; "
                                "seen are {:.1f} and {:.1f}",
                                place.is_jump ? "jumps" : "changes steeply", from_to(place),
                                size_of(place), also, kVisibleMean, kVisibleWorst),
         .value = fmt::format("{:.1f}", place.step.worst),
         .allowed = fmt::format("below {:.1f} on average and {:.1f} in each patch", kVisibleMean,
                                kVisibleWorst),
         .effect = place.lights[0].lv != place.lights[1].lv
                       ? "colours change in visible steps while the light fades"
                       : "colours flicker in a light that lies there, and step in one that passes",
         .suggestion = suggestion});
}

bool is_seen(const std::optional<SteepPlace>& place) {
    return place && place->strength() >= 1.0;
}

/// One finding for all rows: they jump at one gain, and what is done about it is done to all.
void check_over_ct(Checked& checked, const Steepness& steepness) {
    for (const auto part : {&Steepness::Row::on_locus, &Steepness::Row::beside}) {
        const SteepPlace* first = nullptr;
        std::string also;
        for (const Steepness::Row& row : steepness.rows) {
            if (!is_seen(row.*part)) continue;
            if (first == nullptr) {
                first = &*(row.*part);
            } else {
                also += fmt::format(", in row {} by {:.1f} and {:.1f}", kRowNames[row.row],
                                    (row.*part)->step.mean, (row.*part)->step.worst);
            }
        }
        if (first == nullptr) continue;
        report_steep(checked, *first, also, suggestion_for(checked.tuning()));
        return;
    }
}

void check_steepness(Checked& checked) {
    const Steepness steepness = find_steepest(checked.tuning());
    check_over_ct(checked, steepness);
    if (is_seen(steepness.over_lv)) {
        report_steep(checked, *steepness.over_lv, "",
                     "bring the matrices of rows normal and low_light closer to each other");
    }
}

}  // namespace

void check_tuning(const Tuning& tuning, Faults& faults) {
    check_tables(tuning, faults);
    if (has_matrix_errors(faults)) return;
    Checked checked(tuning, faults);
    if (checked.rows_matter() && checked.codec_fits()) check_steepness(checked);
}

}  // namespace imgtune::workbench
