#include "workbench/findings/faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "workbench/text/shown_text.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLongestValue = 80;

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

std::string Fault::sentence() const {
    return path.empty() ? message : path + ' ' + message;
}

void Faults::add(Fault fault) {
    if (const Rule* const rule = find_rule(fault.code)) fault.severity = rule->severity;
    if (fault.file.empty()) {
        // The field's own place, or that of what holds it.
        std::string path = fault.path;
        for (;;) {
            if (const auto found = places_.find(path); found != places_.end()) {
                fault.file = found->second.file;
                if (fault.line == 0) fault.line = found->second.line;
                break;
            }
            if (path.empty()) break;
            const std::size_t end = path.find_last_of(".[");
            path.resize(end == path.npos ? 0 : end);
        }
    }
    fault.value = shown_text(fault.value, kLongestValue);
    for (std::string* const text :
         {&fault.file, &fault.path, &fault.message, &fault.effect, &fault.suggestion}) {
        *text = shown_text(*text);
    }
    list_.push_back(std::move(fault));
}

bool Faults::is_suppressed(std::string_view path) const {
    if (suppressed_.empty()) return false;
    // At the path or above it.
    for (std::string_view top = path;;) {
        if (suppressed_.find(top) != suppressed_.end()) return true;
        const std::size_t end = top.find_last_of(".[");
        if (end == top.npos) break;
        top = top.substr(0, end);
    }
    // Below it.
    const auto next = suppressed_.lower_bound(path);
    for (auto at = next; at != suppressed_.end() && at->starts_with(path); ++at) {
        const char after = (*at)[path.size()];
        if (after == '.' || after == '[') return true;
    }
    return false;
}

bool Faults::has_errors() const {
    return std::any_of(list_.begin(), list_.end(),
                       [](const Fault& f) { return f.severity == Severity::error; });
}

void Faults::allow(const std::set<std::string>& codes) {
    const auto is_allowed = [&](const Fault& f) { return codes.count(f.code) != 0; };
    list_.erase(std::remove_if(list_.begin(), list_.end(), is_allowed), list_.end());
}

void Faults::sort() {
    std::stable_sort(list_.begin(), list_.end(), [](const Fault& a, const Fault& b) {
        return std::tie(a.file, a.line, b.severity) < std::tie(b.file, b.line, a.severity);
    });
}

std::string Faults::text(bool color) const {
    std::string out;
    for (const Fault& f : list_) {
        const std::string place = f.line > 0 ? fmt::format("{}:{}", f.file, f.line) : f.file;
        const char* const on = !color                          ? ""
                               : f.severity == Severity::error ? "\033[1;31m"
                                                               : "\033[1;35m";
        out += fmt::format("{}: {}{}:{} {} [{}]\n", place, on, severity_name(f.severity),
                           color ? "\033[0m" : "", f.sentence(), f.code);
        if (!f.effect.empty()) out += "    on the camera: " + f.effect + '\n';
        if (!f.suggestion.empty()) out += "    try: " + f.suggestion + '\n';
    }
    return out;
}

const char* severity_name(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

std::string nearest_name(std::string_view name, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t best_distance =
        std::max<std::size_t>(2, std::min<std::size_t>(name.size(), 20) / 3) + 1;
    if (name.size() > 64) return best;
    const std::string wanted = lower_case(name);
    for (const std::string& candidate : candidates) {
        const std::size_t longer = std::max(wanted.size(), candidate.size());
        if (longer - std::min(wanted.size(), candidate.size()) >= best_distance) continue;
        const std::size_t distance = edit_distance(wanted, lower_case(candidate));
        if (distance < best_distance && distance < candidate.size()) {
            best = candidate;
            best_distance = distance;
        }
    }
    return best;
}

}  // namespace imgtune::workbench
