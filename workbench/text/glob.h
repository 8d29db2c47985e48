#ifndef IMGTUNE_WORKBENCH_TEXT_GLOB_H
#define IMGTUNE_WORKBENCH_TEXT_GLOB_H

#include <cstddef>
#include <string_view>

namespace imgtune::workbench {

/// Whether a whole name fits a pattern: * stands for any characters, ? for one. Brackets stand for
/// themselves, as in "Luma.PY[3]".
inline bool matches_glob(std::string_view pattern, std::string_view name) {
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t star = std::string_view::npos;  // the last one seen, and the name where it was
    std::size_t resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

}  // namespace imgtune::workbench

#endif
