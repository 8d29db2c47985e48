#ifndef IMGTUNE_WORKBENCH_CAMERA_CAMERA_H
#define IMGTUNE_WORKBENCH_CAMERA_CAMERA_H

#include <imgtune/imgtune.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "workbench/frames/frame_log.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The two tuned CTs around the CT of a frame, as SmoothCOLOR takes them.
struct CtBracket {
    std::uint32_t upper_kelvin;
    std::uint32_t lower_kelvin;
    NSIspTuning::EIndex_PCA_LUT_CT upper;
    NSIspTuning::EIndex_PCA_LUT_CT lower;
};

/// A grid of tuned CTs, in any order.
class CtGrid {
  public:
    explicit CtGrid(const std::array<std::uint32_t, 5>& kelvin);

    /// lower <= cct < upper; at or beyond an end of the grid both are that end.
    CtBracket bracket(std::uint32_t cct) const;

  private:
    std::array<std::uint32_t, 5> kelvin_{};                     ///< ascending
    std::array<NSIspTuning::EIndex_PCA_LUT_CT, 5> ct_index_{};  ///< where each stands in the table
};

/// Which of the two jobs run.
struct Jobs {
    bool ccm = true;
    bool color = true;
};

/// Where each stands in what is kept of both.
enum JobIndex : std::size_t { kCcmJob, kColorJob };

constexpr bool runs(Jobs jobs, std::size_t job) {
    return job == kCcmJob ? jobs.ccm : jobs.color;
}

/// What the library makes of a frame.
struct Registers {
    NSIspTuning::ISP_NVRAM_CCM_T ccm{};
    NSIspTuning::ISP_NVRAM_COLOR_T color{};
};

/// What a camera carries from one frame to the next, as after power-on.
struct CameraState {
    std::array<NSIspTuning::ISP_NVRAM_CCM_T, 2> ring{};
    std::uint32_t ring_index = 0;  ///< ring entry that the next frame fills
    NSIspTuning::ISP_NVRAM_COLOR_T working{};
    std::int32_t boot = 1;  ///< 1: the next frame takes its colour targets at once

    friend bool operator==(const CameraState& a, const CameraState& b);
};

/// The camera stack's part: holds the temporal state and calls the two entry points of the library,
/// frame after frame.
class Camera {
  public:
    Camera(const Tuning& tuning, Jobs jobs);

    void run(const Frame& frame);

    /// With the camera stack's own choice of the two tuned CTs in place of the grid's.
    void run(const Frame& frame, const CtBracket& ct);

    /// Goes on from another camera's state, or from the start: {}. The registers stay those of the
    /// frame run last.
    void set_state(const CameraState& state) { state_ = state; }
    const CameraState& state() const { return state_; }

    /// Replaces the tuned weights of the matrix average; {1, 0, 0} switches it off.
    void set_weights(const std::array<std::uint32_t, 3>& weights);

    const Tuning& tuning() const { return *tuning_; }
    const CtGrid& grid() const { return grid_; }
    Jobs jobs() const { return jobs_; }
    const Registers& registers() const { return registers_; }
    const NSIspTuning::ISP_NVRAM_CCM_T& ccm() const { return registers_.ccm; }
    const NSIspTuning::ISP_NVRAM_COLOR_T& color() const { return registers_.color; }

  private:
    std::shared_ptr<Tuning> tuning_;  ///< never written to; copies of the camera share it
    CtGrid grid_;
    Jobs jobs_;
    std::array<unsigned int, 3> weights_{};
    Registers registers_;
    CameraState state_;
};

/// Runs frame after frame; registers[i] receives what the library makes of frames[i]. Both have the
/// same size.
void replay(Camera& camera, std::span<const Frame> frames, std::span<Registers> registers);

/// The nine coefficients of a register image with the tuning's codec.
std::array<std::int32_t, 9> decode(const NSIspTuning::ISP_NVRAM_CCM_T& image,
                                   const CallerSettings& caller);

}  // namespace imgtune::workbench

#endif
