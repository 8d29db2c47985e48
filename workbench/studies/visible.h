#ifndef IMGTUNE_WORKBENCH_STUDIES_VISIBLE_H
#define IMGTUNE_WORKBENCH_STUDIES_VISIBLE_H

#include <array>
#include <cstdint>
#include <optional>

#include "workbench/appearance/chart_view.h"
#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/light_watch.h"

namespace imgtune::workbench {

/// What a viewer sees of one frame: CIEDE2000 of the chart's patches. Without a value: not
/// measured, because there is no frame before, or the light has not held for half a second.
///
/// White balance counts as perfect, which leaves the matrix; `with_gains` counts what the AWB gains
/// are off as well.
struct VisibleFrame {
    std::optional<ChartDifference> step;       ///< against the frame before
    std::optional<ChartDifference> from_rest;  ///< against where the camera rests in the light held
    std::optional<ChartDifference> step_with_gains;       ///< as if the light were that of before
    std::optional<ChartDifference> from_rest_with_gains;  ///< against the mean gains of the hold
};

struct VisibleOptions {
    std::size_t patch = kLightSkin;  ///< the one that ChartDifference::chosen tells
    double frames_per_second = 30.0;
    double noise_percent = 5.0;  ///< noise that is no change of light, see LightWatch
};

/// The matrix that a frame's registers hold, 1.0 = unity.
RealMatrix shown_matrix(const Registers& registers, const CallerSettings& caller);

/// Measures frame after frame, in memory that does not grow. A frame whose registers and gains are
/// those of the frame before costs next to nothing. A camera that runs no matrix is not measured.
class VisibleWatch {
  public:
    /// `camera` as before the first frame.
    explicit VisibleWatch(const Camera& camera, const VisibleOptions& options = {});

    /// The camera has run this frame.
    VisibleFrame next(const Frame& frame, const Camera& camera);

    /// Where the camera rests in the light held, once that is known.
    const std::optional<ChartView>& rest() const { return rest_; }

  private:
    void judge_hold(const CameraState& state);

    Camera probe_;
    VisibleOptions options_;
    std::uint64_t hold_frames_;
    LightWatch light_;
    std::array<double, 3> mean_gains_{};     ///< AWB gains of the hold, until it is judged
    std::uint64_t gains_taken_ = 0;          ///< frames of it
    bool was_in_doubt_ = false;              ///< the frame before, by the light
    std::optional<ChartView> rest_;          ///< in the light held
    std::array<double, 3> settled_gains_{};  ///< of that light

    bool started_ = false;
    NSIspTuning::ISP_NVRAM_CCM_T image_{};  ///< of the frame before
    AWB_GAIN_T gains_{};
    ChartView view_;
    VisibleFrame last_;  ///< what is told while nothing moves
};

}  // namespace imgtune::workbench

#endif
