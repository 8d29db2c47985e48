#ifndef IMGTUNE_WORKBENCH_FILES_JUDGE_FILES_H
#define IMGTUNE_WORKBENCH_FILES_JUDGE_FILES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "workbench/judging/judgement.h"
#include "workbench/judging/limits.h"

namespace imgtune::workbench {

/// The limits of a file. Throws BadInput with every fault of it.
Limits require_limits(const std::string& path);

/// What is judged, and what it is compared with; an old tuning may be null.
struct JudgeRequest {
    const Tuning& tuning;
    const Tuning* old = nullptr;
    const Limits& limits;
};

/// What is measured of a tuning without any log, for the limits that there are. `limits_path` is
/// where they came from: a calibration stands beside it. Throws BadInput when it cannot be used.
Measures tuning_measures(const Tuning& tuning, const Limits& limits,
                         const std::string& limits_path);

/// The tuning under the limits that need no log; `old` may be null.
Verdict judge_tuning(const Tuning& tuning, const Tuning* old, const Limits& limits,
                     const std::string& limits_path);

/// A log under its limits, run from power-on. What is wrong with it is its verdict's error.
Verdict judge_log(const JudgeRequest& request, const std::string& log);

/// Told whenever another log is done: how many, and the frames of all of them. Called by one thread
/// at a time.
using LogsDone = std::function<void(std::size_t logs, std::uint64_t frames)>;

/// Several logs at a time (0 workers: one a core), in the order of `logs`. Of a log nothing stays
/// in memory but its verdict.
std::vector<Verdict> judge_logs(const JudgeRequest& request, const std::vector<std::string>& logs,
                                unsigned workers, const LogsDone& done);

}  // namespace imgtune::workbench

#endif
