#include "workbench/trace/trace_comparison.h"

#include <algorithm>
#include <map>

namespace imgtune::workbench {

namespace {

/// "[InterParamGlobal()]" in front of a label; empty for those of SmoothCCM.
std::string_view function_of(std::string_view label) {
    return label.starts_with('[') ? label.substr(0, label.find(']') + 1) : std::string_view();
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

std::vector<LineDifference> differences_of(std::size_t line, std::string_view phone,
                                           std::string_view desk) {
    const TraceLine a = parse_trace_line(phone);
    const TraceLine b = parse_trace_line(desk);
    std::vector<LineDifference> found;
    for (std::size_t i = 0; a.values.size() == b.values.size() && i < a.values.size(); ++i) {
        const std::string_view of_phone = a.values[i].text;
        const std::string_view of_desk = b.values[i].text;
        if (of_phone == of_desk) continue;
        found.push_back({line, i, a.name_of(i), std::string(of_phone), std::string(of_desk)});
    }
    if (found.empty()) {
        found.push_back(
            {line, 0, a.name_of(a.values.size()), std::string(phone), std::string(desk)});
    }
    return found;
}

LinesComparison compare_traces(std::span<const std::string> phone,
                               std::span<const std::string> desk,
                               const std::function<bool(const TraceLine&)>& left_out) {
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
            result.differing.emplace_back(i, std::nullopt);
            continue;
        }
        for (; next < at; ++next) result.missing += expected(desk[next]) ? 1U : 0U;
        ++next;
        // A block's two blends trace alike: with one lost, the other cannot be told from it.
        const bool unsure = count_in(of_desk, label) != count_in(of_phone, label);
        if (unsure || left_out(parse_trace_line(phone[i]))) continue;
        ++result.compared;
        if (phone[i] != desk[at]) result.differing.emplace_back(i, at);
    }
    for (; next < desk.size(); ++next) result.missing += expected(desk[next]) ? 1U : 0U;
    return result;
}

}  // namespace imgtune::workbench
