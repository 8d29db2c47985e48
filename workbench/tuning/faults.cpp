#include "workbench/tuning/faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLongestValue = 80;

/// What may come from a damaged file, fit for a terminal.
std::string printable(std::string_view text) {
    std::string out;
    for (const char c : text.substr(0, kLongestValue)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            out += fmt::format("\\x{:02x}", byte);
        } else {
            out += c;
        }
    }
    if (text.size() > kLongestValue) out += "...";
    return out;
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t above = row[j + 1];
            row[j + 1] = std::min({above + 1, row[j] + 1, diagonal + (a[i] == b[j] ? 0U : 1U)});
            diagonal = above;
        }
    }
    return row.back();
}

std::string lower_case(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

}  // namespace

void Faults::set_place(const std::string& path, const std::string& file, int line) {
    places_.insert_or_assign(path, Place{file, line});
}

void Faults::add(Fault fault) {
    fault.value = printable(fault.value);
    fault.path = printable(fault.path);
    if (fault.file.empty()) {
        // The field's own place, or that of what holds it.
        std::string path = fault.path;
        for (;;) {
            if (const auto found = places_.find(path); found != places_.end()) {
                fault.file = found->second.file;
                fault.line = found->second.line;
                break;
            }
            if (path.empty()) break;
            const std::size_t end = path.find_last_of(".[");
            path.resize(end == path.npos ? 0 : end);
        }
    }
    list_.push_back(std::move(fault));
}

bool Faults::has_errors() const {
    return std::ranges::any_of(list_, [](const Fault& f) { return f.severity == Severity::error; });
}

void Faults::sort() {
    std::ranges::stable_sort(list_, [](const Fault& a, const Fault& b) {
        return std::tie(a.file, a.line, b.severity) < std::tie(b.file, b.line, a.severity);
    });
}

std::string Faults::text(bool color) const {
    std::string out;
    for (const Fault& f : list_) {
        const bool error = f.severity == Severity::error;
        const std::string place = f.line > 0 ? fmt::format("{}:{}", f.file, f.line) : f.file;
        const char* on = !color ? "" : error ? "\033[1;31m" : "\033[1;35m";
        out += fmt::format("{}: {}{}:{} {}{}", place, on, error ? "error" : "warning",
                           color ? "\033[0m" : "", f.path.empty() ? "" : f.path + ": ", f.message);
        if (!f.value.empty()) out += ": " + f.value;
        out += fmt::format(" [{}]\n", f.code);
        if (!f.allowed.empty()) out += "    allowed: " + f.allowed + '\n';
        if (!f.effect.empty()) out += "    on the camera: " + f.effect + '\n';
        if (!f.suggestion.empty()) out += "    try: " + f.suggestion + '\n';
    }
    return out;
}

std::string Faults::json() const {
    nlohmann::ordered_json findings = nlohmann::ordered_json::array();
    for (const Fault& f : list_) {
        findings.push_back({{"severity", f.severity == Severity::error ? "error" : "warning"},
                            {"code", f.code},
                            {"file", f.file},
                            {"line", f.line},
                            {"path", f.path},
                            {"message", f.message},
                            {"value", f.value},
                            {"allowed", f.allowed},
                            {"effect", f.effect},
                            {"suggestion", f.suggestion}});
    }
    const nlohmann::ordered_json report{{"findings", findings}};
    return report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string nearest_name(std::string_view name, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t best_distance =
        std::max<std::size_t>(2, std::min<std::size_t>(name.size(), 20) / 3) + 1;
    if (name.size() > 64) return best;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = edit_distance(lower_case(name), lower_case(candidate));
        if (distance < best_distance && distance < candidate.size()) {
            best = candidate;
            best_distance = distance;
        }
    }
    return best;
}

}  // namespace imgtune::workbench
