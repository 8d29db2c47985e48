#ifndef IMGTUNE_WORKBENCH_FRAMES_FRAME_CHECK_H
#define IMGTUNE_WORKBENCH_FRAMES_FRAME_CHECK_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "workbench/findings/faults.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// Looks over the frames of a log for values that the library takes otherwise than they look. Each
/// kind is told once, with the line of the first and how many frames have it.
class FrameCheck {
  public:
    /// The next frame, as it stands in `line` of the log.
    void add(const FrameValues& values, std::uint64_t line);

    /// After the last frame: what was found in the log of that name.
    void report(const std::string& log, Faults& faults) const;

    /// The same without a word about a log without frames: for one that was not read to its end.
    void report_odd(const std::string& log, Faults& faults) const;

  private:
    static constexpr std::size_t kKinds = 8;
    struct Seen {
        std::uint64_t count = 0;  ///< frames
        std::uint64_t last_frame = 0;
        std::uint64_t line = 0;  ///< of the first
        std::int64_t value = 0;
    };
    std::array<Seen, kKinds> seen_{};
    std::uint64_t frames_ = 0;
};

/// Reads a whole log and adds what is found; a line that cannot be read is the last finding.
void check_frames(const std::string& log, ByteSource& source, Faults& faults);

}  // namespace imgtune::workbench

#endif
