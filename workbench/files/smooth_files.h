#ifndef IMGTUNE_WORKBENCH_FILES_SMOOTH_FILES_H
#define IMGTUNE_WORKBENCH_FILES_SMOOTH_FILES_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "workbench/judging/smoothing.h"

namespace imgtune::workbench {

/// All frames of a log. Throws BadInput, also for a log without frames.
std::vector<Frame> read_log(const std::string& path);

/// Told of each choice that was tried, by one thread at a time: how many, of how many at most.
using ChoicesTried = std::function<void(std::size_t tried, std::size_t all)>;

/// What one may ask for beside the wish.
struct SmoothRequest {
    SmoothWish wish;         ///< its flicker is worked out: that of the tuning as it is
    SummaryOptions options;  ///< rate and noise of the logs
    Jobs jobs;
    unsigned workers = 0;  ///< 0: one a core
};

/// Tries every choice on every log, several at a time; the answer does not depend on how many. A
/// `tried` that throws ends the search with what it threw.
Smoothing find_smoothing(const Tuning& tuning, const std::vector<std::vector<Frame>>& logs,
                         const SmoothRequest& request, const ChoicesTried& tried);

}  // namespace imgtune::workbench

#endif
