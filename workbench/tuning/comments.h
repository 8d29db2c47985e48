#ifndef IMGTUNE_WORKBENCH_TUNING_COMMENTS_H
#define IMGTUNE_WORKBENCH_TUNING_COMMENTS_H

#include <string>
#include <string_view>
#include <vector>

// The comments of a YAML text, which reading leaves out and writing cannot bring back.

namespace imgtune::workbench {

struct Comment {
    int line = 0;      ///< from 1
    std::string text;  ///< from its #, without blanks at the end
};

std::vector<Comment> comments_of(std::string_view yaml);

/// The lines of comments, and empty ones, before anything else.
std::string head_comments(std::string_view yaml);

/// The comments of a text that another one does not hold, wherever they stand.
std::vector<Comment> lost_comments(std::string_view from, std::string_view to);

}  // namespace imgtune::workbench

#endif
