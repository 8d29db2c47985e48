#ifndef IMGTUNE_WORKBENCH_TEXT_SHOWN_TEXT_H
#define IMGTUNE_WORKBENCH_TEXT_SHOWN_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// Foreign text (a name, a value, a path) fit for a terminal and for JSON: valid UTF-8 without
/// control characters. Every byte that is neither becomes \xNN, also of the invisible characters
/// that turn the direction of writing. What is longer than `longest` bytes is cut between two
/// characters and ends in "...".
std::string shown_text(std::string_view text, std::size_t longest = std::string_view::npos);

/// The same for a text of several lines, whose ends stay.
std::string shown_lines(std::string_view text);

/// The same for JSON: what shown_text would turn into \xNN becomes \uNNNN, which JSON reads back.
std::string shown_json(std::string_view json);

}  // namespace imgtune::workbench

#endif
