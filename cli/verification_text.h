#ifndef IMGTUNE_CLI_VERIFICATION_TEXT_H
#define IMGTUNE_CLI_VERIFICATION_TEXT_H

#include <string>

#include "workbench/studies/verify.h"

namespace imgtune::cli {

/// How a phone and the desk agree, for a terminal.
std::string verification_text(const workbench::Verification& result);

/// "the phone has another tuning (ccm.rows.normal.0.gain)".
std::string cause_text(const workbench::LikelyCause& cause);

}  // namespace imgtune::cli

#endif
