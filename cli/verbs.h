#ifndef IMGTUNE_CLI_VERBS_H
#define IMGTUNE_CLI_VERBS_H

#include <functional>

namespace CLI {
class App;
}

namespace imgtune::workbench {}

namespace imgtune::cli {

using namespace workbench;

enum ExitStatus : int { kFine = 0, kFindings = 1, kBadInput = 2, kErrors = 3 };

/// Filled in by the chosen verb's CLI callback; main runs it after parsing, and reports a BadInput
/// that it throws with exit status 2.
struct Context {
    std::function<int()> run;
};

// Each adds its verb with options, help and an example.
void add_check(CLI::App& app, Context& context);
void add_convert(CLI::App& app, Context& context);
void add_pack(CLI::App& app, Context& context);
void add_unpack(CLI::App& app, Context& context);
void add_new(CLI::App& app, Context& context);
void add_replay(CLI::App& app, Context& context);
void add_explain(CLI::App& app, Context& context);
void add_export(CLI::App& app, Context& context);
void add_import(CLI::App& app, Context& context);
void add_sweep(CLI::App& app, Context& context);
void add_diff(CLI::App& app, Context& context);
void add_frames(CLI::App& app, Context& context);
void add_props(CLI::App& app, Context& context);
void add_verify(CLI::App& app, Context& context);

}  // namespace imgtune::cli

#endif
