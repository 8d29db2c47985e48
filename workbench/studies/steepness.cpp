#include "workbench/studies/steepness.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "ccm/low_light_range.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/locus.h"
#include "workbench/camera/mired.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/visible.h"

namespace imgtune::workbench {

namespace {

constexpr double kMiredStep = 1.0;
constexpr double kMostSteps = 1000.0;  // of one line; kelvin that make no sense could make it long
constexpr int kMostHalvings = 40;
constexpr double kShareOfJump = 0.5;  // of a step, from which it counts as a jump
constexpr std::int32_t kPolynomial = 1;
constexpr std::int32_t kBlend = 2;

using SteepLight = SteepPlace::Light;

/// A light, and the chart through its matrix without average.
struct SeenLight {
    SteepLight light;
    ChartView view;
};

/// The rows that the library takes matrices from.
std::vector<std::size_t> used_rows(const Tuning& tuning) {
    std::vector<std::size_t> rows{kRowNormal};
    if (tuning.ccm.i4NumLV >= 2) rows.push_back(kRowLowLight);
    if (tuning.ccm.i4NumFlash != 0) rows.push_back(kRowFlash);
    return rows;
}

SteepPlace between(std::size_t row, const SeenLight& a, const SeenLight& b) {
    SteepPlace place;
    place.row = row;
    place.lights = {a.light, b.light};
    place.step = chart_difference(a.view, b.view, kLightSkin);
    return place;
}

void keep_steeper(std::optional<SteepPlace>& kept, const std::optional<SteepPlace>& other) {
    if (other && (!kept || other->strength() > kept->strength())) kept = other;
}

/// Shows the library one light after the other.
class Shown {
  public:
    explicit Shown(const Tuning& tuning) : camera_(tuning, {.ccm = true, .color = false}) {}

    const Tuning& tuning() const { return camera_.tuning(); }

    SeenLight see(std::size_t row, const SteepLight& light) {
        Frame frame;
        frame.state.u4RealLV = light.lv;
        frame.state.rAWBGain = frame.state.rAWBFullGain = light.gain;
        frame.state.u4FlashMode = row == kRowFlash ? 1 : 0;
        aim(camera_, frame);
        return {light, ChartView(shown_matrix(camera_.registers(), tuning().caller))};
    }

  private:
    Camera camera_;
};

/// Lights along the tuned gains, or beside them, from the lowest CT to the highest.
class LightLine {
  public:
    LightLine(Shown& shown, std::size_t row, double beside)
        : shown_(shown),
          locus_(tuned_locus(shown.tuning(), row == kRowFlash ? kRowFlash : kRowNormal)),
          row_(row),
          beside_(beside) {}

    std::optional<SteepPlace> steepest() const {
        const double first = to_mired(locus_.points().front().kelvin);
        const double last = to_mired(locus_.points().back().kelvin);
        const auto steps =
            static_cast<int>(std::clamp(std::ceil((first - last) / kMiredStep), 1.0, kMostSteps));
        std::optional<SteepPlace> steepest;
        SeenLight before = see(first);
        for (int step = 1; step <= steps; ++step) {
            const SeenLight here = see(first + (last - first) * step / steps);
            if (here.view.matrix() != before.view.matrix()) {
                keep_steeper(steepest, between(row_, before, here));
            }
            before = here;
        }
        if (steepest) finish(*steepest);
        return steepest;
    }

  private:
    SeenLight see(double mired) const {
        const double kelvin = to_mired(mired);
        AWB_GAIN_T gain = locus_.at(kelvin);
        for (std::int32_t* const value : {&gain.i4R, &gain.i4B}) {
            *value = static_cast<std::int32_t>(
                std::clamp(std::round(*value * (1.0 + beside_)), -2147483648.0, 2147483647.0));
        }
        return shown_.see(row_,
                          {kelvin, gain, row_ == kRowLowLight ? kLowLightFull : kLowLightEnd});
    }

    static bool are_neighbours(const SteepPlace& place) {
        const auto& [a, b] = place.lights;
        return std::abs(std::int64_t{a.gain.i4R} - b.gain.i4R) <= 1 &&
               std::abs(std::int64_t{a.gain.i4B} - b.gain.i4B) <= 1;
    }

    /// Halves the step as long as gains lie between; where most of it is left between two that are
    /// neighbours, it is a jump there.
    void finish(SteepPlace& place) const {
        SteepPlace closest = place;
        for (int i = 0; i < kMostHalvings && !are_neighbours(closest); ++i) {
            const auto& [a, b] = closest.lights;
            const SeenLight middle = see((to_mired(a.kelvin) + to_mired(b.kelvin)) / 2.0);
            const SteepPlace first = between(row_, shown_.see(row_, a), middle);
            const SteepPlace second = between(row_, middle, shown_.see(row_, b));
            closest = first.strength() >= second.strength() ? first : second;
        }
        if (are_neighbours(closest) && closest.strength() >= kShareOfJump * place.strength()) {
            place = closest;
            place.is_jump = true;
        }
        place.beside = beside_;
    }

    Shown& shown_;
    LightLocus locus_;
    std::size_t row_;
    double beside_;
};

/// From low light to normal light, at each tuned gain.
std::optional<SteepPlace> steepest_over_lv(Shown& shown) {
    std::optional<SteepPlace> steepest;
    const LightLocus locus = tuned_locus(shown.tuning());
    for (const LightLocus::Point& point : locus.points()) {
        SteepLight light{point.kelvin, point.gain, kLowLightFull};
        SeenLight before = shown.see(kRowNormal, light);
        while (light.lv < kLowLightEnd) {
            ++light.lv;
            const SeenLight here = shown.see(kRowNormal, light);
            keep_steeper(steepest, between(kRowNormal, before, here));
            before = here;
        }
    }
    return steepest;
}

/// The tuning with these points of each row alone.
Tuning with_points(Tuning tuning, const std::vector<std::size_t>& points) {
    for (std::size_t row = 0; row < 8; ++row) {
        for (std::size_t i = 0; i < points.size(); ++i) {
            tuning.ccm.rCTAWBGain[row][i] = tuning.ccm.rCTAWBGain[row][points[i]];
            tuning.ccm.rCCM_Nvram[row][i] = tuning.ccm.rCCM_Nvram[row][points[i]];
            tuning.kelvin[row][i] = tuning.kelvin[row][points[i]];
        }
    }
    tuning.ccm.i4NumCT = static_cast<std::int32_t>(points.size());
    return tuning;
}

bool has_polynomials(const Tuning& tuning) {
    const auto usable = [](const ISP_CCM_POLY22_T& p) { return p.i4R_STD > 0 && p.i4B_STD > 0; };
    return usable(tuning.ccm.rCCMPoly22) &&
           (tuning.ccm.i4NumFlash == 0 || usable(tuning.ccm.rCCMPoly22Flash));
}

RealMatrix tuned_matrix(const Tuning& tuning, std::size_t row, std::size_t point) {
    Registers registers;
    registers.ccm = tuning.ccm.rCCM_Nvram[row][point];
    return shown_matrix(registers, tuning.caller);
}

bool has_matrices(const Tuning& tuning) {
    for (const std::size_t row : used_rows(tuning)) {
        for (std::size_t point = 0; point < tuned_count(tuning); ++point) {
            if (tuned_matrix(tuning, row, point) == RealMatrix{}) return false;
        }
    }
    return true;
}

/// How far a tuning's matrices are from those that `wanted` has at its points.
std::optional<double> off_points(Shown& shown, const Tuning& wanted) {
    double sum = 0.0;
    std::size_t count = 0;
    const std::vector<LightLocus::Point> points = tuned_locus(wanted).points();
    for (std::size_t i = 0; i < points.size(); ++i) {
        const RealMatrix matrix = tuned_matrix(wanted, kRowNormal, i);
        if (matrix == RealMatrix{}) continue;
        const SeenLight here =
            shown.see(kRowNormal, {points[i].kelvin, points[i].gain, kLowLightEnd});
        sum += chart_difference(ChartView(matrix), here.view, kLightSkin).mean;
        ++count;
    }
    if (count == 0) return std::nullopt;
    return sum / static_cast<double>(count);
}

Remedy tried(std::string change, const Tuning& changed, const Tuning& wanted) {
    Remedy remedy{std::move(change), std::nullopt, std::nullopt};
    Shown shown(changed);
    for (const std::size_t row : used_rows(changed)) {
        keep_steeper(remedy.steepest, LightLine(shown, row, 0.0).steepest());
    }
    remedy.off_points = off_points(shown, wanted);
    return remedy;
}

}  // namespace

double SteepPlace::strength() const {
    return std::max(step.mean / kVisibleMean, step.worst / kVisibleWorst);
}

Steepness find_steepest(const Tuning& tuning) {
    Shown shown(tuning);
    Steepness steepness;
    for (const std::size_t row : used_rows(tuning)) {
        Steepness::Row found{row, LightLine(shown, row, 0.0).steepest(), std::nullopt};
        for (const double beside : {-kBesideLocus, kBesideLocus}) {
            keep_steeper(found.beside, LightLine(shown, row, beside).steepest());
        }
        steepness.rows.push_back(found);
    }
    if (tuning.ccm.i4NumLV >= 2) steepness.over_lv = steepest_over_lv(shown);
    return steepness;
}

std::vector<Remedy> try_remedies(const Tuning& tuning) {
    std::vector<Remedy> remedies{tried("", tuning, tuning)};
    const std::size_t count = tuned_count(tuning);
    if (tuning.ccm.i4Method == kBlend && has_polynomials(tuning)) {
        Tuning changed = tuning;
        changed.ccm.i4Method = kPolynomial;
        remedies.push_back(tried("i4Method: polynomial", changed, tuning));
    }
    if (!has_matrices(tuning)) return remedies;
    if (tuning.ccm.i4Method == kPolynomial && count >= 3) {
        Tuning changed = tuning;
        changed.ccm.i4Method = kBlend;
        remedies.push_back(tried("i4Method: blend", changed, tuning));
    }
    for (std::size_t middle = 1; count > 3 && middle + 1 < count; ++middle) {
        Tuning changed = with_points(tuning, {0, middle, count - 1});
        changed.ccm.i4Method = kBlend;
        remedies.push_back(
            tried(fmt::format("{}the points 0, {} and {} of each row alone, i4NumCT: 3",
                              tuning.ccm.i4Method == kBlend ? "" : "i4Method: blend with ", middle,
                              count - 1),
                  changed, tuning));
    }
    return remedies;
}

}  // namespace imgtune::workbench
