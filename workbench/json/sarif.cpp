#include "workbench/json/sarif.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/text/characters.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSarifSchema =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
constexpr std::string_view kSpaces = " \t\r";

/// Of UTF-8: the bytes that begin a character.
std::size_t characters_in(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U;
    }));
}

/// Where `key:` stands in a line; npos: nowhere.
std::size_t find_key(std::string_view line, std::string_view key) {
    constexpr std::string_view kBeforeKey = " \t{,-\"'";
    for (std::size_t at = line.find(key); at != line.npos; at = line.find(key, at + 1)) {
        if (at > 0 && kBeforeKey.find(line[at - 1]) == kBeforeKey.npos) continue;
        const std::size_t after = line.find_first_not_of(" \t\"'", at + key.size());
        if (after != line.npos && line[after] == ':') return at;
    }
    return line.npos;
}

/// The end of the value behind the colon at `colon`: of a list or map the bracket that closes it.
std::size_t value_end(std::string_view line, std::size_t colon) {
    int depth = 0;
    for (std::size_t at = colon + 1; at < line.size(); ++at) {
        const char c = line[at];
        const bool ends_here = c == ',' || c == ']' || c == '}';
        if (depth == 0 && (ends_here || (c == '#' && kSpaces.find(line[at - 1]) != line.npos)))
            return at;
        if (c == '[' || c == '{') ++depth;
        if ((c == ']' || c == '}') && --depth == 0) return at + 1;
    }
    return line.size();
}

/// A path as a URI reference: bytes that may not stand in one are escaped.
std::string uri_of(const std::string& path) {
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path.starts_with("./") ? path.substr(2) : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || is_digit(c) ||
                           std::string_view("/-._~").find(c) != std::string_view::npos;
        const auto byte = static_cast<unsigned>(static_cast<unsigned char>(c));
        uri += plain ? std::string(1, c) : fmt::format("%{:02X}", byte);
    }
    return uri;
}

Json places_of(const Fault& fault, const SourceLine& source_line) {
    Json place = {{"artifactLocation", {{"uri", uri_of(fault.file)}}}};
    if (fault.line > 0) {
        Json region = {{"startLine", fault.line}};
        const std::string line = source_line(fault.file, fault.line);
        if (!line.empty()) {
            const Columns columns = columns_of(line, fault.path);
            region["startColumn"] = columns.begin;
            region["endColumn"] = columns.end;
        }
        place["region"] = region;
    }
    return Json::array({{{"physicalLocation", place}}});
}

std::string message_of(const Fault& fault) {
    std::string text = fault.sentence();
    if (!fault.effect.empty()) text += "; on the camera: " + fault.effect;
    if (!fault.suggestion.empty()) text += "; try: " + fault.suggestion;
    return text;
}

}  // namespace

Columns columns_of(std::string_view line, std::string_view path) {
    std::size_t begin = std::min(line.find_first_not_of(kSpaces), line.size());
    std::size_t end = line.size();
    // The innermost part of the path that the line names: a value of a list has no key of its own.
    for (std::string_view rest = path; !rest.empty();) {
        const std::size_t dot = rest.find_last_of('.');
        std::string_view key = dot == rest.npos ? rest : rest.substr(dot + 1);
        key = key.substr(0, key.find('['));
        if (const std::size_t at = key.empty() ? line.npos : find_key(line, key); at != line.npos) {
            begin = at;
            end = value_end(line, line.find(':', at + key.size()));
            break;
        }
        rest = rest.substr(0, dot == rest.npos ? 0 : dot);
    }
    const std::size_t last = line.substr(0, end).find_last_not_of(kSpaces);
    end = std::max(last == line.npos ? 0 : last + 1, begin);
    return {1 + characters_in(line.substr(0, begin)), 1 + characters_in(line.substr(0, end))};
}

Json sarif_of(const Faults& faults, const SourceLine& source_line) {
    Json known = Json::array();
    for (const Rule& rule : rules()) {
        known.push_back({{"id", rule.code},
                         {"shortDescription", {{"text", rule.title}}},
                         {"defaultConfiguration", {{"level", severity_name(rule.severity)}}}});
    }
    Json results = Json::array();
    for (const Fault& fault : faults.list()) {
        Json result = {{"ruleId", fault.code}};
        if (const Rule* const rule = find_rule(fault.code))
            result["ruleIndex"] = rule - rules().data();
        result["level"] = severity_name(fault.severity);
        result["message"] = {{"text", message_of(fault)}};
        if (!fault.file.empty()) result["locations"] = places_of(fault, source_line);
        results.push_back(std::move(result));
    }
    const Json driver = {{"name", "imgtune"}, {"rules", known}};
    const Json run = {
        {"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}};
    return {{"$schema", kSarifSchema}, {"version", "2.1.0"}, {"runs", Json::array({run})}};
}

}  // namespace imgtune::workbench
