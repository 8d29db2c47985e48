#ifndef IMGTUNE_TESTS_WORKBENCH_MODEL_LOGS_H
#define IMGTUNE_TESTS_WORKBENCH_MODEL_LOGS_H

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "workbench/camera/locus.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// Frames of light whose course is known from how they are made, 30 a second, on a tuning's own
/// locus. One seed gives one log, everywhere.
class ModelLog {
  public:
    ModelLog(const LightLocus& locus, std::uint32_t seed) : locus_(locus), random_(seed) {}

    /// What is drawn at random of a log, a whole number from `least` to `most`.
    int draw(int least, int most) {
        return least + static_cast<int>(random_() % static_cast<unsigned>(most - least + 1));
    }

    /// Between 0 and 1.
    double draw() { return static_cast<double>(random_() >> 5U) / 134217728.0; }

    /// Bell-shaped, mean 0, standard deviation 1, no farther out than 6.
    double bell() {
        double sum = -6.0;
        for (int n = 0; n < 12; ++n) sum += draw();
        return sum;
    }

    /// From here on gains and colour temperature jitter by so much: standard deviation, per cent.
    void jitter(double percent) { jitter_ = percent; }

    /// One frame of white light of so many kelvin; `red` is what the red gain is off, blue the
    /// other way round.
    void show(double kelvin, std::uint32_t lv, double red = 1.0) {
        const auto cct = static_cast<std::uint32_t>(kelvin);
        const AWB_GAIN_T gain = locus_.at(cct);
        Frame frame;
        frame.state.u4RealLV = lv;
        frame.state.u4CCT = noisy(kelvin);
        const auto r = static_cast<std::int32_t>(noisy(gain.i4R * red));
        const auto b = static_cast<std::int32_t>(noisy(gain.i4B / red));
        frame.state.rAWBGain = frame.state.rAWBFullGain = {r, gain.i4G, b};
        frames_.push_back(frame);
    }

    const std::vector<Frame>& frames() const { return frames_; }
    std::uint64_t count() const { return frames_.size(); }

  private:
    std::uint32_t noisy(double value) {
        const double off = jitter_ > 0.0 ? 1.0 + jitter_ / 100.0 * bell() : 1.0;
        return static_cast<std::uint32_t>(value * off + 0.5);
    }

    LightLocus locus_;
    std::mt19937 random_;
    double jitter_ = 0.0;
    std::vector<Frame> frames_;
};

}  // namespace imgtune::workbench

#endif
