#ifndef IMGTUNE_WORKBENCH_JUDGING_JUNIT_H
#define IMGTUNE_WORKBENCH_JUDGING_JUNIT_H

#include <functional>
#include <string>

#include "workbench/judging/judgement.h"

namespace imgtune::workbench {

/// "3.41 CIEDE2000 at frame 212, blue sky; allowed is 2"
std::string sentence_of(const LimitVerdict& verdict);

/// A command that shows what broke a limit; empty: there is none.
using Command = std::function<std::string(const Verdict&, const LimitVerdict&)>;

/// JUnit XML, as test servers read it: a suite for the tuning and for each log, a case a limit.
std::string junit_of(const Judgement& judgement, const std::string& tuning, const Command& command);

}  // namespace imgtune::workbench

#endif
