#include <cstddef>

#include "workbench/calibration/reader.h"

namespace imgtune::workbench {

namespace {

/// The end of a string that starts at `at`: behind its quote, or at the end of its line.
std::size_t string_end(const std::string& text, std::size_t at) {
    for (++at; at < text.size() && text[at] != '\n'; ++at) {
        if (text[at] == '"') return at + 1;
        if (text[at] == '\\') ++at;
    }
    return at;
}

std::size_t comment_end(const std::string& text, std::size_t at) {
    if (text.compare(at, 2, "//") == 0) return text.find('\n', at);
    if (text.compare(at, 2, "/*") != 0) return at;
    const std::size_t end = text.find("*/", at + 2);
    return end == text.npos ? end : end + 2;
}

}  // namespace

std::string blank_json_comments(std::string text) {
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '"') {
            at = string_end(text, at);
            continue;
        }
        if (text[at] == '\t') text[at] = ' ';
        const std::size_t end = comment_end(text, at);
        if (end == at) {
            ++at;
            continue;
        }
        for (; at < end && at < text.size(); ++at) {
            if (text[at] != '\n' && text[at] != '\r') text[at] = ' ';
        }
    }
    return text;
}

}  // namespace imgtune::workbench
