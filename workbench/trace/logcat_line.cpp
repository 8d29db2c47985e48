#include "workbench/trace/logcat_line.h"

#include <charconv>

#include "workbench/text/characters.h"

namespace imgtune::workbench {

namespace {

void skip_blanks(std::string_view& rest) {
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
}

/// The next run of characters other than blanks; empty at the end.
std::string_view take_word(std::string_view& rest) {
    skip_blanks(rest);
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(word.size());
    return word;
}

bool parse_number(std::string_view text, std::int32_t& value) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return !text.empty() && is_digit(text.front()) && result.ec == std::errc() && result.ptr == end;
}

bool is_priority(char c) {
    return std::string_view("VDIWEFSA").find(c) != std::string_view::npos;
}

/// Digits and the given separators alone, with at least one of each.
bool is_made_of(std::string_view word, std::string_view separators) {
    bool digits = false;
    bool separated = false;
    for (const char c : word) {
        digits |= is_digit(c);
        separated |= separators.find(c) != std::string_view::npos;
        if (!is_digit(c) && separators.find(c) == std::string_view::npos) return false;
    }
    return digits && separated;
}

/// Takes "06-01 12:00:00.000", "2024-06-01 12:00:00.000", "1717236000.123", each with or without a
/// zone behind it; an empty text when there is no time.
std::string_view take_time(std::string_view& rest) {
    std::string_view after = rest;
    const std::string_view first = take_word(after);
    if (is_made_of(first, "-")) {
        if (!is_made_of(take_word(after), ":.")) return {};
    } else if (!is_made_of(first, ".")) {
        return {};
    }
    std::string_view zone = after;
    const std::string_view word = take_word(zone);
    if (word.size() == 5 && (is_made_of(word, "+") || is_made_of(word, "-"))) after = zone;
    const std::string_view time = rest.substr(0, rest.size() - after.size());
    rest = after;
    return trimmed(time);
}

/// "D/tag  ( 1234): message", "D/tag  ( uid: 1234): message" or "D/tag: message", from the tag on.
bool parse_after_slash(std::string_view rest, LogcatLine& line) {
    const std::size_t end = rest.find_first_of("(:");
    if (end == std::string_view::npos) return false;
    line.tag = trimmed(rest.substr(0, end));
    line.writer = {};
    if (rest[end] == '(') {
        const std::size_t close = rest.find("):", end);
        if (close == std::string_view::npos) return false;
        std::string_view process = rest.substr(end + 1, close - end - 1);
        process.remove_prefix(process.rfind(':') + 1);  // 0 without a uid
        if (!parse_number(trimmed(process), line.writer.process)) return false;
        rest.remove_prefix(close + 2);
    } else {
        rest.remove_prefix(end + 1);
    }
    line.message = rest.substr(rest.starts_with(' ') ? 1 : 0);
    return true;
}

/// "[uid] 1234  5678 D tag: message".
bool parse_threadtime(std::string_view rest, LogcatLine& line) {
    constexpr int kMostWords = 4;  // uid, process, thread, priority
    std::string_view before_last;
    std::string_view last;
    for (int i = 0; i < kMostWords; ++i) {
        const std::string_view word = take_word(rest);
        if (word.size() == 1 && is_priority(word.front())) {
            const std::size_t colon = rest.find(':');
            if (colon == std::string_view::npos ||
                !parse_number(before_last, line.writer.process) ||
                !parse_number(last, line.writer.thread)) {
                return false;
            }
            line.tag = trimmed(rest.substr(0, colon));
            rest.remove_prefix(colon + 1);
            line.message = rest.substr(rest.starts_with(' ') ? 1 : 0);
            return true;
        }
        before_last = last;
        last = word;
    }
    return false;
}

}  // namespace

std::string_view without_color(std::string_view text) {
    while (text.starts_with("\x1b[")) {
        const std::size_t end = text.find('m');
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    while (text.ends_with('m')) {
        const std::size_t escape = text.rfind("\x1b[");
        if (escape == std::string_view::npos ||
            text.find_first_not_of("0123456789;", escape + 2) != text.size() - 1) {
            break;
        }
        text = text.substr(0, escape);
    }
    return text;
}

bool parse_logcat_line(std::string_view text, LogcatLine& line) {
    text = without_color(text);
    line.time = take_time(text);
    std::string_view rest = text;
    skip_blanks(rest);
    if (rest.size() > 2 && is_priority(rest[0]) && rest[1] == '/') {
        return parse_after_slash(rest.substr(2), line);
    }
    return !line.time.empty() && parse_threadtime(rest, line);
}

bool parse_long_header(std::string_view text, LogcatLine& line) {
    text = without_color(text);
    if (!text.starts_with("[ ") || !text.ends_with(" ]")) return false;
    text = text.substr(2, text.size() - 4);
    line.time = take_time(text);
    const std::size_t slash = text.find('/');
    if (line.time.empty() || slash == std::string_view::npos || slash < 2) return false;
    line.tag = trimmed(text.substr(slash + 1));
    line.message = {};
    // "[uid:] 1234: 5678 D"
    const std::string_view numbers = trimmed(text.substr(0, slash - 1));
    const std::size_t colon = numbers.rfind(':');
    if (colon == std::string_view::npos) return false;
    std::string_view process = trimmed(numbers.substr(0, colon));
    process.remove_prefix(process.find_last_of(": ") + 1);
    return parse_number(process, line.writer.process) &&
           parse_number(trimmed(numbers.substr(colon + 1)), line.writer.thread);
}

}  // namespace imgtune::workbench
