#include "workbench/studies/demo_walk.h"

#include <algorithm>
#include <cmath>

namespace imgtune::workbench {

namespace {

/// From here the light goes straight to the next one, in tenths of an EV and in mired.
struct Place {
    double second;
    double lv;
    double kelvin;
    bool flash;
};

constexpr Place kPlaces[] = {
    {0, 138, 5500, false},   // sun
    {9, 138, 5500, false},   //
    {10, 110, 6900, false},  // shade
    {18, 110, 6900, false},  //
    {19, 78, 4100, false},   // an office
    {27, 78, 4100, false},   //
    {30, 62, 3500, false},   // a corridor, ever darker
    {36, 52, 3000, false},   //
    {37, 44, 2750, false},   // a living room
    {44, 44, 2750, false},   //
    {45, 22, 2350, false},   // candle light
    {53, 22, 2350, false},   //
    {53, 22, 5600, true},    // the flash
    {54, 22, 5600, true},    //
    {54, 22, 2350, false},   //
    {60, 22, 2350, false},
};

constexpr double kNoise = 0.006;  // of a gain and of a colour temperature, either way

}  // namespace

DemoWalk::DemoWalk(const Tuning& tuning, double frames_per_second)
    : locus_(tuned_locus(tuning)), frames_per_second_(frames_per_second) {}

/// -1 to 1.
double DemoWalk::noise() {
    random_ = random_ * 1664525U + 1013904223U;
    return static_cast<double>(random_ >> 8U) / static_cast<double>(1U << 23U) - 1.0;
}

bool DemoWalk::next(Frame& frame) {
    const double second = static_cast<double>(frame_++) / frames_per_second_;
    const auto after = std::find_if(std::begin(kPlaces), std::end(kPlaces),
                                    [&](const Place& place) { return place.second > second; });
    if (after == std::end(kPlaces)) return false;
    const Place& from = *(after - 1);
    const double share = (second - from.second) / (after->second - from.second);
    const double mired = std::lerp(1e6 / from.kelvin, 1e6 / after->kelvin, share);
    const double kelvin = 1e6 / mired * (1.0 + kNoise * noise());
    FrameValues values{};
    values[kLv] = std::lround(std::lerp(from.lv, after->lv, share) + 0.7 * noise());
    values[kCct] = std::lround(kelvin);
    values[kFlash] = from.flash ? 1 : 0;
    const AWB_GAIN_T gain = locus_.at(static_cast<std::uint32_t>(values[kCct]));
    const std::int64_t gains[] = {std::lround(gain.i4R * (1.0 + kNoise * noise())), gain.i4G,
                                  std::lround(gain.i4B * (1.0 + kNoise * noise()))};
    std::copy(std::begin(gains), std::end(gains), values.begin() + kFullGain);
    std::copy(std::begin(gains), std::end(gains), values.begin() + kAwbGain);
    frame = to_frame(values);
    return true;
}

}  // namespace imgtune::workbench
