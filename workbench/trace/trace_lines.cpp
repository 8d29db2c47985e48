#include "workbench/trace/trace_lines.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>

#include "workbench/text/characters.h"

namespace imgtune::workbench {

namespace {

/// A number in the plain form that the library traces: sign, digits, point, digits.
double real_of(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double value = 0.0;
    stream >> value;
    return value;
}

}  // namespace

std::vector<std::int64_t> integers_of(std::string_view text) {
    std::vector<std::int64_t> numbers;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        std::int64_t value = 0;
        const auto result = std::from_chars(at, end, value);
        if (result.ec == std::errc()) numbers.push_back(value);
        at = result.ec == std::errc::invalid_argument ? at + 1 : result.ptr;
    }
    return numbers;
}

std::vector<double> reals_of(std::string_view text) {
    std::vector<double> numbers;
    for (std::size_t at = 0; at < text.size();) {
        const bool minus = text[at] == '-';
        const std::size_t first = at + (minus ? 1 : 0);
        const std::string_view word = text.substr(std::min(first, text.size()), 3);
        if (word == "nan" || word == "inf") {
            const double value = word == "nan" ? std::numeric_limits<double>::quiet_NaN()
                                               : std::numeric_limits<double>::infinity();
            numbers.push_back(minus ? -value : value);
            at = first + 3;
            continue;
        }
        std::size_t end = first;
        while (end < text.size() && (is_digit(text[end]) || text[end] == '.')) ++end;
        if (end == first || !is_digit(text[first])) {
            ++at;
            continue;
        }
        numbers.push_back(real_of(std::string(text.substr(at, end - at))));
        at = end;
    }
    return numbers;
}

std::optional<std::string_view> TraceLines::rest(std::string_view beginning) const {
    for (const std::string& line : lines_) {
        if (line.starts_with(beginning)) return std::string_view(line).substr(beginning.size());
    }
    return std::nullopt;
}

std::vector<std::int64_t> TraceLines::integers(std::string_view beginning) const {
    return integers_of(rest(beginning).value_or(""));
}

std::vector<double> TraceLines::reals(std::string_view beginning) const {
    return reals_of(rest(beginning).value_or(""));
}

std::int64_t TraceLines::integer(std::string_view beginning) const {
    const auto found = integers(beginning);
    return found.empty() ? 0 : found.front();
}

double TraceLines::real(std::string_view beginning) const {
    const auto found = reals(beginning);
    return found.empty() ? 0.0 : found.front();
}

std::int64_t TraceLines::named(std::string_view beginning, std::string_view name) const {
    const std::string wanted = fmt::format(" {} =", name);
    for (const std::string& line : lines_) {
        const std::size_t at = line.find(wanted);
        if (!line.starts_with(beginning) || at == std::string::npos) continue;
        const auto found = integers_of(std::string_view(line).substr(at + wanted.size()));
        if (!found.empty()) return found.front();
    }
    return 0;
}

std::pair<TraceLines, TraceLines> TraceLines::split_after(std::string_view beginning) const {
    auto at = std::find_if(lines_.begin(), lines_.end(),
                           [&](const std::string& line) { return line.starts_with(beginning); });
    if (at != lines_.end()) ++at;
    return {TraceLines({lines_.begin(), at}), TraceLines({at, lines_.end()})};
}

}  // namespace imgtune::workbench
