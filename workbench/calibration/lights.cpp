#include "workbench/calibration/lights.h"

#include <algorithm>
#include <cmath>

#include "workbench/camera/mired.h"

namespace imgtune::workbench {

namespace {

constexpr double kTangentStep = 1.05;  // of the CT, to both sides
constexpr double kHighestGain = 32767.0;

/// A unit vector across the locus in (ln R, ln B), towards more of both.
struct Across {
    double red;
    double blue;
};

Across across_locus(const Sensor& sensor, double kelvin) {
    const AWB_GAIN_T below = sensor.at(kelvin / kTangentStep).gain;
    const AWB_GAIN_T above = sensor.at(kelvin * kTangentStep).gain;
    const double red = std::log(static_cast<double>(above.i4R) / below.i4R);
    const double blue = std::log(static_cast<double>(above.i4B) / below.i4B);
    const double length = std::hypot(red, blue);
    if (!(length > 0.0)) return {0.0, 0.0};
    return {-blue / length, red / length};
}

std::int32_t raised(std::int32_t gain, double by) {
    return static_cast<std::int32_t>(
        std::lround(std::clamp(gain * std::exp(by), 1.0, kHighestGain)));
}

}  // namespace

AWB_GAIN_T stretched(const AWB_GAIN_T& gain, double factor) {
    return {static_cast<std::int32_t>(std::lround(gain.i4R * factor)), gain.i4G,
            static_cast<std::int32_t>(std::lround(gain.i4B * factor))};
}

std::vector<double> even_kelvins(double lowest, double highest, std::size_t count) {
    std::vector<double> kelvins;
    const double from = to_mired(lowest);
    const double step = (to_mired(highest) - from) / static_cast<double>(count - 1);
    for (std::size_t i = 0; i < count; ++i) {
        kelvins.push_back(to_mired(from + step * static_cast<double>(i)));
    }
    kelvins.front() = lowest;
    kelvins.back() = highest;
    return kelvins;
}

std::vector<JudgedLight> judged_lights(const Sensor& sensor, std::size_t along, int deviations,
                                       double stretch) {
    const std::vector<TunedPoint>& points = sensor.points();
    std::vector<double> kelvins = even_kelvins(points.front().kelvin, points.back().kelvin, along);
    for (const TunedPoint& point : points) kelvins.push_back(point.kelvin);
    std::sort(kelvins.begin(), kelvins.end());
    kelvins.erase(std::unique(kelvins.begin(), kelvins.end()), kelvins.end());

    std::vector<JudgedLight> lights;
    for (const double kelvin : kelvins) {
        const TunedPoint point = sensor.at(kelvin);
        const Across across = across_locus(sensor, kelvin);
        for (int deviation = -deviations; deviation <= deviations; ++deviation) {
            const double beside = deviation * kLocusScatter;
            const AWB_GAIN_T gain{raised(point.gain.i4R, beside * across.red), point.gain.i4G,
                                  raised(point.gain.i4B, beside * across.blue)};
            lights.push_back({kelvin, beside, stretched(gain, stretch), point.matrix});
        }
    }
    return lights;
}

}  // namespace imgtune::workbench
