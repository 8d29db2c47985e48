#ifndef IMGTUNE_WORKBENCH_STUDIES_IMAGE_SWITCHES_H
#define IMGTUNE_WORKBENCH_STUDIES_IMAGE_SWITCHES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/studies/field_motion.h"

namespace imgtune::workbench {

/// Why the colour map is taken from another image than in the frame before. It is never blended.
enum class SwitchCause : std::uint8_t {
    slot,      ///< scene or flash
    grid_ct,   ///< the light crosses a CT of the grid, and with it the pair of images around it
    midpoint,  ///< it crosses the middle, in mired, between two CTs of the grid
    outdoor,   ///< none of these: the light value crosses into the outdoor images or back
};

/// All switches of one cause.
struct ImageSwitches {
    SwitchCause cause = SwitchCause::slot;
    std::uint32_t kelvin = 0;  ///< of the grid CT, or of the middle; else 0
    std::uint64_t count = 0;
    FrameSpan frames;  ///< of the first and the last one
    /// Of them, those that follow one of the same kind within half a second: the light sits there.
    std::uint64_t back_and_forth = 0;
    std::uint64_t frames_between = 0;  ///< sum of the frames from these to the ones they follow
};

/// How often a second it switches while it does so back and forth; 0: it does not.
double per_second(const ImageSwitches& switches, double frames_per_second);

/// Watches from which images the colour registers come.
class SwitchWatch {
  public:
    explicit SwitchWatch(double frames_per_second);

    /// Why the colour registers step in this frame if they do; `counts` where no cold start is on.
    StepCause next(std::uint64_t number, const Frame& frame, const Camera& camera, bool counts);

    /// By cause and kelvin, most switches first.
    std::vector<ImageSwitches> switches() const;

  private:
    struct Source {
        int slot = 0;
        CtBracket bracket{};
        bool is_upper = false;  ///< the upper-CT image is nearer than the middle
    };
    Source source_of(const Frame& frame, const Camera& camera) const;
    void count(std::uint64_t number, SwitchCause cause, std::uint32_t kelvin);

    std::uint64_t hold_frames_;
    std::optional<Source> last_;
    NSIspTuning::ISP_NVRAM_COLOR_T image_{};
    std::vector<ImageSwitches> found_;
};

}  // namespace imgtune::workbench

#endif
