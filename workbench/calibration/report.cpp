#include "workbench/calibration/report.h"

#include <algorithm>
#include <cmath>

#include "workbench/calibration/conversion.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kAlongLights = 41;
constexpr std::size_t kMostLeftOut = 40;  // calibrated lights, of which each is left out once
constexpr std::size_t kMostForSets =
    10;  // calibrated lights, of which all pairs and triples are tried

ChartDifference difference_at(Bench& bench, const AWB_GAIN_T& gain, const RealMatrix& wanted) {
    return chart_difference(ChartView(wanted), ChartView(to_real(bench.matrix_at(gain))), 0);
}

Tuning row_alone(const Tuning& tuning) {
    Tuning empty = tuning;
    empty.ccm = {};
    return empty;
}

class Reporter {
  public:
    Reporter(const Sensor& sensor, const ImportChoices& choices, const Import& import)
        : sensor_(sensor),
          stretch_(choices.stretch),
          import_(import),
          chosen_(import.candidates[import.chosen]),
          empty_(row_alone(import.tuning)) {}

    CalibrationReport report() {
        CalibrationReport report;
        for (std::size_t i = 0; i < sensor_.points().size(); ++i) {
            report.lights.push_back(light(i));
        }
        report.few.push_back(best_few(2, CcmMethod::polynomial));
        report.few.push_back(best_few(3, CcmMethod::blend));
        report.along = along();
        return report;
    }

  private:
    ReportedLight light(std::size_t index) {
        const std::vector<TunedPoint>& points = sensor_.points();
        const TunedPoint& point = points[index];
        ReportedLight light;
        light.kelvin = point.kelvin;
        light.gain = stretched(point.gain, stretch_);
        light.at_end = index == 0 || index + 1 == points.size();
        light.tuned = std::count(chosen_.kelvins.begin(), chosen_.kelvins.end(), point.kelvin) != 0;
        Bench bench(import_.tuning);
        light.calibrated = point.matrix;
        light.made = to_real(bench.matrix_at(light.gain));
        light.error = chart_difference(ChartView(point.matrix), ChartView(light.made), 0);
        light.left_out = without(index, light);
        return light;
    }

    /// The error in a light that the tuning was made without.
    std::optional<ChartDifference> without(std::size_t index, const ReportedLight& light) {
        std::vector<TunedPoint> points = sensor_.points();
        if (points.size() < 4 || points.size() > kMostLeftOut) return std::nullopt;
        points.erase(points.begin() + static_cast<std::ptrdiff_t>(index));
        const Sensor rest(points);
        TrialChoices trial;
        trial.method = chosen_.method;
        trial.fit = chosen_.fit;
        trial.most = std::min(chosen_.kelvins.size(), points.size());
        trial.stretch = stretch_;
        const Trials trials = try_all(rest, trial, empty_);
        Tuning tuning = empty_;
        tuning.ccm.i4Method = static_cast<std::int32_t>(chosen_.method);
        fill_normal_row(tuning, trials.points);
        tuning.ccm.rCCMPoly22 = trials.polynomial;
        Bench bench(tuning);
        return difference_at(bench, light.gain, light.calibrated);
    }

    /// The best of all sets of so many calibrated lights (where these are many, of evenly spread
    /// ones), between which the others are guessed.
    FewLights best_few(std::size_t count, CcmMethod method) {
        const std::vector<TunedPoint> points = thinned(sensor_.points(), kMostForSets);
        const std::vector<JudgedLight> lights =
            judged_lights(sensor_, kAlongLights / 2 + 1, 1, stretch_);
        FewLights best;
        best.method = method;
        double least = INFINITY;
        std::vector<std::size_t> set(count);
        for (std::size_t i = 0; i < count; ++i) set[i] = i;
        while (true) {
            std::vector<TunedPoint> few;
            few.reserve(set.size());
            for (const std::size_t i : set) few.push_back(points[i]);
            const LightsError error = error_of(few, method, lights);
            ++best.sets;
            const double score = error.mean + error.worst / Candidate::kWorstCounts;
            if (score < least) {
                least = score;
                best.error = error;
                best.kelvins.clear();
                for (const TunedPoint& point : few) best.kelvins.push_back(point.kelvin);
            }
            std::size_t at = count;
            while (at > 0 && set[at - 1] == points.size() - count + at - 1) --at;
            if (at == 0) return best;
            ++set[at - 1];
            for (std::size_t i = at; i < count; ++i) set[i] = set[i - 1] + 1;
        }
    }

    LightsError error_of(const std::vector<TunedPoint>& few, CcmMethod method,
                         const std::vector<JudgedLight>& lights) {
        const Sensor sensor(few);
        std::vector<TunedPoint> tuned = few;
        if (tuned.size() == 2) {
            const auto kelvins = even_kelvins(few.front().kelvin, few.back().kelvin, 3);
            tuned.insert(tuned.begin() + 1, sensor.at(kelvins[1]));
        }
        for (TunedPoint& point : tuned) point.gain = stretched(point.gain, stretch_);
        return lights_error(tune_points(sensor, tuned, method, CcmFit::lights, stretch_, empty_),
                            lights);
    }

    std::vector<LocusError> along() {
        std::vector<TunedPoint> usual;
        const Candidate* const most = point_by_point(import_.candidates);
        if (most != nullptr) {
            for (const double kelvin : most->kelvins) usual.push_back(sensor_.at(kelvin));
            for (TunedPoint& point : usual) point.gain = stretched(point.gain, stretch_);
        }
        Bench chosen(import_.tuning);
        Bench other(most == nullptr ? import_.tuning
                                    : tune_points(sensor_, usual, CcmMethod::blend, CcmFit::points,
                                                  stretch_, empty_));
        std::vector<LocusError> errors;
        for (const JudgedLight& light : judged_lights(sensor_, kAlongLights, 0, stretch_)) {
            errors.push_back({light.kelvin, light.gain,
                              difference_at(chosen, light.gain, light.matrix),
                              difference_at(other, light.gain, light.matrix)});
        }
        return errors;
    }

    const Sensor& sensor_;
    double stretch_;
    const Import& import_;
    const Candidate& chosen_;
    Tuning empty_;
};

}  // namespace

CalibrationReport report_on(const Calibration& calibration, const ImportChoices& choices,
                            const Import& import) {
    Faults told_already;
    const Sensor sensor(calibration, choices.points, told_already);
    return Reporter(sensor, choices, import).report();
}

}  // namespace imgtune::workbench
