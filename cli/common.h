#ifndef IMGTUNE_CLI_COMMON_H
#define IMGTUNE_CLI_COMMON_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

// What several verbs say and ask alike.

namespace imgtune::cli {

inline constexpr const char* kTuningHelp = "tuning: YAML file, '-', or folder of stored images";
inline constexpr const char* kFramesHelp = "frame log: CSV file or '-'";

/// A tuning to run. Throws BadInput when it cannot be read; what `check` calls an error is told
/// once on standard error, and the run goes on.
workbench::Tuning tuning_to_run(const std::string& path);

/// The jobs that a tuning has and --only leaves. Throws BadInput when none is left.
workbench::Jobs jobs_to_run(const std::string& path, const workbench::Tuning& tuning,
                            const std::string& only);

/// Text for the user, on standard error. Like print_report it makes every control character of a
/// name visible.
void say(const std::string& text);

/// Findings about an input, on standard error.
void tell(const workbench::Faults& faults);

/// JSON as it goes to a file: indented, with bytes that are no UTF-8 replaced.
std::string dumped(const nlohmann::ordered_json& json);

/// Standard output; standard error when the rows of a run have that.
void print_report(const std::string& text, const std::string& rows_output);

}  // namespace imgtune::cli

#endif
