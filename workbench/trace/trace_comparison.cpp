#include "workbench/trace/trace_comparison.h"

#include <algorithm>
#include <map>

namespace imgtune::workbench {

namespace {

bool is_word(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool ends_number(char c) {
    return c == ',' || c == ')' || c == ' ';
}

std::size_t label_end(std::string_view line) {
    const std::size_t start = line.starts_with('[') ? line.find(']') : 0;
    return std::min(line.find_first_of("=:", std::min(start, line.size())), line.size());
}

/// "[InterParamGlobal()] " in front of a line; empty for those of SmoothCCM.
std::string_view function_of(std::string_view line) {
    return line.starts_with('[') ? line.substr(0, line.find(']') + 1) : std::string_view();
}

std::string_view trimmed_end(std::string_view text) {
    while (text.ends_with(' ')) text.remove_suffix(1);
    return text;
}

/// The texts between commas and brackets behind the label that are values, "nan" and "inf" too.
std::vector<std::string_view> values_of(std::string_view line) {
    std::vector<std::string_view> values;
    std::size_t at = label_end(line);
    while (at < line.size()) {
        const std::size_t start = line.find_first_not_of(" =:,()", at);
        if (start == std::string_view::npos) break;
        std::size_t end = start;
        while (end < line.size() && !ends_number(line[end]) && line[end] != '=' &&
               line[end] != ':') {
            ++end;
        }
        const std::size_t next = line.find_first_not_of(' ', end);
        const bool key = next != std::string_view::npos && (line[next] == '=' || line[next] == ':');
        if (!key) values.push_back(line.substr(start, end - start));
        at = end;
    }
    return values;
}

/// The word before the '=' or ':' that stands directly before a value; empty without one.
std::string_view key_of(std::string_view line, std::string_view value) {
    std::string_view before =
        trimmed_end(line.substr(0, static_cast<std::size_t>(value.data() - line.data())));
    if (before.ends_with('(')) before = trimmed_end(before.substr(0, before.size() - 1));
    if (!before.ends_with('=') && !before.ends_with(':')) return {};
    before = trimmed_end(before.substr(0, before.size() - 1));
    std::size_t start = before.size();
    while (start > 0 && is_word(before[start - 1])) --start;
    return before.substr(start);
}

LineDifference describe(std::size_t index, std::string_view phone, std::string_view desk) {
    const auto of_phone = values_of(phone);
    const auto of_desk = values_of(desk);
    LineDifference difference{index, 0, "", std::string(phone), std::string(desk)};
    for (std::size_t i = 0; of_phone.size() == of_desk.size() && i < of_phone.size(); ++i) {
        if (of_phone[i] == of_desk[i]) continue;
        difference.value = i;
        difference.name = trace_value_name(phone, i);
        difference.phone = of_phone[i];
        difference.desk = of_desk[i];
        return difference;
    }
    difference.name = trace_label(phone);
    return difference;
}

using Counts = std::map<std::string_view, std::size_t>;

Counts count_labels(std::span<const std::string> lines) {
    Counts counts;
    for (const std::string& line : lines) ++counts[trace_label(line)];
    return counts;
}

/// What the phone's switches let through of each function: 1, its header; more, all of it.
Counts count_kinds_of_lines(const Counts& labels) {
    Counts counts;
    for (const auto& [label, count] : labels) ++counts[function_of(label)];
    return counts;
}

}  // namespace

std::string_view trace_label(std::string_view line) {
    return trimmed_end(line.substr(0, label_end(line)));
}

std::string trace_value_name(std::string_view line, std::size_t value) {
    std::string name(trace_label(line));
    name.erase(std::remove(name.begin(), name.end(), '['), name.end());
    if (const std::size_t end = name.find("()]"); end != std::string::npos) name.erase(end, 3);
    if (const std::size_t blanks = name.find("  "); blanks != std::string::npos) {
        name.erase(blanks, 1);
    }
    const auto values = values_of(line);
    if (value >= values.size()) return name;
    const std::string_view key = key_of(line, values[value]);
    const std::string_view first_key = key_of(line, values[0]);
    const bool keys = values.size() > 1 && !key_of(line, values[1]).empty();
    if (values.size() == 1) return name;
    if (!keys) return name + "[" + std::to_string(value) + "]";
    if (!std::string_view(name).ends_with(first_key)) return name + " " + std::string(key);
    return name.substr(0, name.size() - first_key.size()) + std::string(key);
}

LinesComparison compare_traces(std::span<const std::string> phone,
                               std::span<const std::string> desk,
                               const std::function<bool(std::string_view)>& left_out) {
    LinesComparison result;
    if (std::equal(phone.begin(), phone.end(), desk.begin(), desk.end())) {
        result.compared = phone.size();
        return result;
    }
    const Counts of_phone = count_labels(phone);
    const Counts of_desk = count_labels(desk);
    const Counts kinds = count_kinds_of_lines(of_phone);
    const auto count_in = [](const Counts& counts, std::string_view label) {
        const auto found = counts.find(label);
        return found == counts.end() ? 0 : found->second;
    };
    const auto expected = [&](std::string_view line) {
        return count_in(kinds, function_of(line)) > 1;
    };
    std::size_t next = 0;  // of the desk's lines
    for (std::size_t i = 0; i < phone.size(); ++i) {
        const std::string_view label = trace_label(phone[i]);
        std::size_t at = next;
        while (at < desk.size() && trace_label(desk[at]) != label) ++at;
        if (at == desk.size()) {
            if (!result.first) result.first = {i, 0, std::string(label), phone[i], ""};
            continue;
        }
        for (; next < at; ++next) result.missing += expected(desk[next]) ? 1U : 0U;
        ++next;
        // A block's two blends trace alike: with one lost, the other cannot be told from it.
        const bool unsure = count_in(of_desk, label) != count_in(of_phone, label);
        if (unsure || left_out(label)) continue;
        ++result.compared;
        if (!result.first && phone[i] != desk[at]) result.first = describe(i, phone[i], desk[at]);
    }
    for (; next < desk.size(); ++next) result.missing += expected(desk[next]) ? 1U : 0U;
    return result;
}

}  // namespace imgtune::workbench
