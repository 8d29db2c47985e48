#ifndef IMGTUNE_CLI_PROGRAM_H
#define IMGTUNE_CLI_PROGRAM_H

#include <functional>
#include <string>

namespace CLI {
class App;
}  // namespace CLI

namespace imgtune::cli {

/// Gives the program its name, all verbs and its closing words. A verb that is parsed leaves in
/// `chosen` what it does. Both must outlive the parsing.
void set_up(CLI::App& app, const std::string& version, std::function<int()>& chosen);

}  // namespace imgtune::cli

#endif
