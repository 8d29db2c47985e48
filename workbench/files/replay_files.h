#ifndef IMGTUNE_WORKBENCH_FILES_REPLAY_FILES_H
#define IMGTUNE_WORKBENCH_FILES_REPLAY_FILES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "workbench/camera/row_text.h"
#include "workbench/files/row_writer.h"
#include "workbench/findings/faults.h"
#include "workbench/frames/frame_log.h"

namespace imgtune::workbench {

/// One log to run, and where its rows go.
struct ReplayRequest {
    std::string log;     ///< path, or "-"
    std::string output;  ///< path, "-", or empty for no rows
    RowColumns columns;
    Jobs jobs = columns.jobs;  ///< that run; fewer where nobody asks for the registers of one
    std::uint64_t every = 1;   ///< every Nth frame is written; all of them are run
    RowThread row_thread = RowThread::own;
};

/// Told of every frame: the log, the frame's number from 1, the frame, and the camera that ran it.
using FrameSeen = std::function<void(const FrameLog&, std::uint64_t, const Frame&, const Camera&)>;

/// Runs a log from power-on. The rows are written whole or not at all. Returns what is odd about
/// the log; throws BadInput for what cannot be read or written.
Faults run_replay(const Tuning& tuning, const ReplayRequest& request, const FrameSeen& seen);

/// The results that several logs have in a folder: the log's name with .csv in place of its own
/// ending. Throws BadInput for two logs of one name, and for a log that is its own result.
std::vector<std::string> results_in_folder(const std::string& folder,
                                           const std::vector<std::string>& logs, bool force);

/// How many of `count` run at a time with so many workers (0: one a core).
unsigned at_a_time(std::size_t count, unsigned workers);

/// Does work(0) .. work(count - 1), as many at a time as there are workers (0: one a core).
void in_parallel(std::size_t count, unsigned workers, const std::function<void(std::size_t)>& work);

}  // namespace imgtune::workbench

#endif
