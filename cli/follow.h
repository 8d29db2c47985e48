#ifndef IMGTUNE_CLI_FOLLOW_H
#define IMGTUNE_CLI_FOLLOW_H

#include <string>

#include "cli/live_input.h"

// The page that follows a phone's log.

namespace imgtune::cli {

struct FollowOptions {
    std::string tuning;
    std::string against;  ///< empty: none
    std::string page;     ///< empty: the installed one
    LiveInputOptions input;
    int port = 0;
    bool no_browser = false;
};

/// Whether an input is a phone's log and no frame log. Standard input is read as far as that takes,
/// into `ahead`. Throws BadInput where there is none.
bool is_live(const std::string& path, std::string& ahead);

/// Serves the page until the log ends.
int run_follow(const FollowOptions& options, std::string ahead);

}  // namespace imgtune::cli

#endif
