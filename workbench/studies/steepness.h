#ifndef IMGTUNE_WORKBENCH_STUDIES_STEEPNESS_H
#define IMGTUNE_WORKBENCH_STUDIES_STEEPNESS_H

#include <imgtune/awb_gain.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/appearance/chart_view.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// How far beside the tuned gains lights are looked at: red and blue alike are off by this share,
/// towards green and towards magenta. Twice the standard deviation of an AWB that jitters by 1 %.
/// Off against each other they are the gains of another CT, nearly.
inline constexpr double kBesideLocus = 0.02;

/// Two lights next to each other, and how differently the chart looks through their matrices.
struct SteepPlace {
    struct Light {
        double kelvin = 0.0;
        AWB_GAIN_T gain{};
        std::uint32_t lv = 0;
    };

    std::size_t row = 0;  ///< LV row whose matrices it is about
    std::array<Light, 2> lights{};
    ChartDifference step{};  ///< CIEDE2000
    double beside = 0.0;     ///< the gains over those of the locus, less 1; 0: on it
    bool is_jump = false;    ///< most of it lies between two gains with none between them

    /// 1: just seen, in the mean or in one patch.
    double strength() const;
};

/// The steepest places of a tuning's matrices over light, without average. Over colour temperature
/// lights stand one mired apart or less; over light values, 1 apart.
struct Steepness {
    struct Row {
        std::size_t row = 0;
        std::optional<SteepPlace> on_locus;  ///< nullopt: one matrix for all
        std::optional<SteepPlace> beside;    ///< by kBesideLocus
    };
    std::vector<Row> rows;              ///< normal; low light and flash where they are used
    std::optional<SteepPlace> over_lv;  ///< from low light to normal light
};

/// Of a tuning with matrices. Runs the library some thousand times.
Steepness find_steepest(const Tuning& tuning);

/// A change of the tuning, and what it makes of the steepest place on the locus.
struct Remedy {
    std::string change;                  ///< "i4Method: polynomial"; empty: as it is
    std::optional<SteepPlace> steepest;  ///< of all rows; nullopt: no step is left
    /// CIEDE2000, mean of the chart: how far the library's matrices at the normal row's tuned
    /// gains are from the tuned ones, the mean over the points. nullopt: no matrix is tuned.
    std::optional<double> off_points;

    double strength() const { return steepest ? steepest->strength() : 0.0; }
};

/// The tuning as it is, and what can be done to it without tuning anew: the other method, three
/// points alone.
std::vector<Remedy> try_remedies(const Tuning& tuning);

}  // namespace imgtune::workbench

#endif
