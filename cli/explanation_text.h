#ifndef IMGTUNE_CLI_EXPLANATION_TEXT_H
#define IMGTUNE_CLI_EXPLANATION_TEXT_H

#include <string>

#include "workbench/studies/explanation.h"

namespace imgtune::cli {

enum class Detail { screen, all };

/// An explanation for a terminal.
std::string explanation_text(const workbench::Explanation& told, Detail detail);

}  // namespace imgtune::cli

#endif
