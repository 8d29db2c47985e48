#ifndef IMGTUNE_WORKBENCH_TEXT_CHARACTERS_H
#define IMGTUNE_WORKBENCH_TEXT_CHARACTERS_H

#include <string_view>

namespace imgtune::workbench {

/// Of ASCII, whatever the locale.
constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// Without blanks and tabs around it.
constexpr std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace imgtune::workbench

#endif
