#include "workbench/trace/trace_grammar.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>

#include "workbench/text/characters.h"

namespace imgtune::workbench {

namespace {

constexpr std::string_view kBlockName = "InterParam";
constexpr std::string_view kByLv = "ByLV";

std::string_view without(std::string_view text, std::string_view beginning) {
    return text.starts_with(beginning) ? text.substr(beginning.size()) : text;
}

/// Where the function's name "[InterParamGlobal()]" ends; 0 without one.
std::size_t function_end(std::string_view text) {
    if (!text.starts_with('[')) return 0;
    const std::size_t end = text.find(']');
    return end == std::string_view::npos ? 0 : end + 1;
}

std::size_t label_end(std::string_view text) {
    return std::min(text.find_first_of("=:", function_end(text)), text.size());
}

Stage stage_of(std::string_view word) {
    if (word == "Low") return Stage::low;
    if (word == "High") return Stage::high;
    if (word == "Tgt") return Stage::target;
    return word == "Out" ? Stage::written : Stage::none;
}

/// Takes the stage off what a block calls a row, "PY_Out" or "(Out)  B".
Stage take_stage(std::string_view& row) {
    if (row.starts_with('(')) {
        const Stage stage = stage_of(row.substr(1, row.find(')') - 1));
        row = {};
        return stage;
    }
    const std::size_t underline = row.rfind('_');
    if (underline == std::string_view::npos) return Stage::none;
    const Stage stage = stage_of(row.substr(underline + 1));
    if (stage != Stage::none) row = row.substr(0, underline);
    return stage;
}

void find_color_line(TraceLine& line) {
    std::string_view block = without(line.function, kBlockName);
    line.by_lv = block.starts_with(kByLv);
    block = without(block, kByLv);
    std::string_view row = trimmed(line.label.substr(function_end(line.label)));
    line.stage = take_stage(row);
    for (const ColorLine& known : kColorLines) {
        if (known.block != block || known.row != row) continue;
        if (row.empty() && line.stage == Stage::none) continue;
        line.color = &known;
        return;
    }
}

/// The last word of a text: what a value's '=' or ':' stands behind.
std::string_view last_word(std::string_view text) {
    const std::size_t last = text.find_last_of(" ,()]");
    return last == std::string_view::npos ? text : text.substr(last + 1);
}

/// What follows the label: values between commas and brackets, each with or without its key.
void read_values(std::string_view rest, TraceLine& line) {
    std::string_view key = last_word(line.label);
    for (std::size_t at = rest.find_first_not_of(" =:,()"); at < rest.size();) {
        const std::size_t end = std::min(rest.find_first_of(" =:,()", at), rest.size());
        const std::string_view word = rest.substr(at, end - at);
        const std::size_t next = rest.find_first_not_of(' ', end);
        const bool is_key =
            next != std::string_view::npos && (rest[next] == '=' || rest[next] == ':');
        if (!is_key) line.values.push_back({key, word});
        key = is_key ? word : std::string_view();
        at = std::min(rest.find_first_not_of(" =:,()", end), rest.size());
    }
}

/// A line without its values.
TraceLine parse_label(std::string_view text) {
    TraceLine line;
    line.text = text;
    line.label = trace_label(text);
    if (const std::size_t end = function_end(text); end > 3) {
        line.function = text.substr(1, end - 2);
        if (line.function.ends_with("()")) line.function.remove_suffix(2);
        find_color_line(line);
    }
    return line;
}

}  // namespace

std::optional<std::int64_t> TraceValue::integer() const {
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return value;
}

double TraceValue::real() const {
    const bool minus = text.starts_with('-');
    const std::string_view size = without(text, "-");
    if (size == "inf") {
        return (minus ? -1.0 : 1.0) * std::numeric_limits<double>::infinity();
    }
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double value = 0.0;
    stream >> value;
    return stream ? value : std::numeric_limits<double>::quiet_NaN();
}

std::string_view trace_label(std::string_view text) {
    return trimmed(text.substr(0, label_end(text)));
}

TraceLine parse_trace_line(std::string_view text) {
    TraceLine line = parse_label(text);
    read_values(text.substr(label_end(text)), line);
    return line;
}

std::string TraceLine::name_of(std::size_t value) const {
    std::string name(function);
    for (std::string_view rest = label.substr(function_end(label)); !rest.empty();) {
        rest = trimmed(rest);
        const std::string_view word = rest.substr(0, rest.find(' '));
        if (!name.empty()) name += ' ';
        name += word;
        rest.remove_prefix(word.size());
    }
    if (value >= values.size() || values.size() == 1) return name;
    if (!has_keys()) return name + "[" + std::to_string(value) + "]";
    if (std::string_view(name).ends_with(values[0].key)) {
        name.resize(name.size() - values[0].key.size());
    } else {
        name += ' ';
    }
    return name.append(values[value].key);
}

std::string TraceLine::field_of(std::size_t value) const {
    const std::string field(color->field);
    if (has_keys()) return field + "." + std::string(values[value].key);
    return field + "[" + std::to_string(value) + "]";
}

std::vector<std::int64_t> TraceLine::integers() const {
    std::vector<std::int64_t> numbers;
    for (const TraceValue& value : values) {
        if (const auto number = value.integer()) numbers.push_back(*number);
    }
    return numbers;
}

std::optional<std::int64_t> TraceLine::integer(std::string_view key) const {
    for (const TraceValue& value : values) {
        if (value.key == key) return value.integer();
    }
    return std::nullopt;
}

bool is_label(std::string_view label, std::string_view kind,
              std::array<std::string_view, 2>* parts) {
    std::size_t part = 0;
    const auto keep = [&](std::string_view text) {
        if (parts != nullptr && part < parts->size()) (*parts)[part++] = text;
    };
    for (; !kind.empty(); kind.remove_prefix(1)) {
        if (kind.front() == '*') {
            keep(label);
            return !label.empty();
        }
        if (kind.front() == '#') {
            std::size_t size = label.starts_with('-') ? 1 : 0;
            while (size < label.size() && is_digit(label[size])) ++size;
            if (size == 0) return false;
            keep(label.substr(0, size));
            label.remove_prefix(size);
        } else {
            if (!label.starts_with(kind.front())) return false;
            label.remove_prefix(1);
        }
    }
    return label.empty();
}

const CcmLine* find_ccm_line(std::string_view label, std::array<std::string_view, 2>* parts) {
    const auto* const found =
        std::find_if(std::begin(kCcmLines), std::end(kCcmLines),
                     [&](const CcmLine& line) { return is_label(label, line.label, parts); });
    return found == std::end(kCcmLines) ? nullptr : found;
}

std::size_t Trace::index_of(std::string_view kind) const {
    std::size_t i = 0;
    while (i < lines_.size() && !is_label(trace_label(lines_[i]), kind)) ++i;
    return i;
}

std::optional<TraceLine> Trace::find(std::string_view kind) const {
    const std::size_t i = index_of(kind);
    if (i == lines_.size()) return std::nullopt;
    return parse_trace_line(lines_[i]);
}

std::optional<TraceLine> Trace::find(const ColorLine& row, Stage stage) const {
    for (const std::string& text : lines_) {
        // A call has some 200 lines, and is asked for each of them.
        if (!text.starts_with('[') || text.find(row.block) == std::string::npos) continue;
        const TraceLine line = parse_label(text);
        if (line.color == &row && line.stage == stage && !line.by_lv) return parse_trace_line(text);
    }
    return std::nullopt;
}

Trace Trace::before(std::string_view kind) const {
    return Trace(lines_.first(std::min(index_of(kind) + 1, lines_.size())));
}

Trace Trace::after(std::string_view kind) const {
    return Trace(lines_.subspan(std::min(index_of(kind) + 1, lines_.size())));
}

std::vector<std::int64_t> Trace::integers(std::string_view kind) const {
    const std::optional<TraceLine> line = find(kind);
    return line ? line->integers() : std::vector<std::int64_t>();
}

std::int64_t Trace::integer(std::string_view kind) const {
    const std::optional<TraceLine> line = find(kind);
    return line && !line->values.empty() ? line->values[0].integer().value_or(0) : 0;
}

double Trace::real(std::string_view kind) const {
    const std::optional<TraceLine> line = find(kind);
    return line && !line->values.empty() ? line->values[0].real() : 0.0;
}

std::int64_t Trace::named(std::string_view function, std::string_view key) const {
    for (const std::string& text : lines_) {
        if (!text.starts_with('[') || parse_label(text).function != function) continue;
        if (const auto number = parse_trace_line(text).integer(key)) return *number;
    }
    return 0;
}

}  // namespace imgtune::workbench
