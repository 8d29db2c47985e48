#ifndef IMGTUNE_CLI_STEEPNESS_TEXT_H
#define IMGTUNE_CLI_STEEPNESS_TEXT_H

#include <string>
#include <vector>

#include "workbench/studies/steepness.h"

namespace imgtune::cli {

/// Where the matrix changes most visibly with the light, and what could be done about it.
std::string steepness_text(const workbench::Steepness& steepness,
                           const std::vector<workbench::Remedy>& remedies);

}  // namespace imgtune::cli

#endif
