#ifndef IMGTUNE_CLI_SUMMARY_TEXT_H
#define IMGTUNE_CLI_SUMMARY_TEXT_H

#include <string>

#include "workbench/studies/summary.h"

namespace imgtune::cli {

/// A summary for a terminal.
std::string summary_text(const workbench::SummaryRecord& record);

}  // namespace imgtune::cli

#endif
