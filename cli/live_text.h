#ifndef IMGTUNE_CLI_LIVE_TEXT_H
#define IMGTUNE_CLI_LIVE_TEXT_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "cli/screen.h"
#include "workbench/studies/live.h"

namespace imgtune::cli {

/// What the clock tells of a live log beside its frames.
struct LiveClock {
    std::chrono::milliseconds since_start{0};
    std::optional<std::chrono::milliseconds> since_frame;  ///< none: no frame yet
    std::optional<double> frames_per_second;
    std::uint64_t lines = 0;        ///< of the log
    std::uint64_t trace_lines = 0;  ///< of the library
    std::uint64_t lost_lines = 0;   ///< that the log reports
    std::uint64_t unusable_calls = 0;
    std::string others;  ///< other cameras in the log
};

/// The newest frame and what was found so far, for a whole terminal.
std::vector<std::string> live_screen(const Screen& screen, const std::string& tuning,
                                     workbench::LiveStudy& study, const LiveClock& clock);

/// The newest frame as one line.
std::string live_line(workbench::LiveStudy& study);

}  // namespace imgtune::cli

#endif
