#include "workbench/tuning/yaml_nodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

namespace imgtune::workbench {

namespace {

constexpr int kDeepestMerge = 16;
constexpr std::size_t kMostMerged = 200000;

}  // namespace

void TextFaults::add(int line, Fault fault) {
    if (line > 0) {
        fault.file = file_;
        fault.line = line;
    }
    if (!fault.path.empty()) faults_.suppress(fault.path);
    faults_.add(std::move(fault));
}

std::string shown(const YAML::Node& node) {
    constexpr std::size_t kLongest = 80;
    if (node.IsScalar()) {
        const std::string& text = node.Scalar();
        return text.empty() ? "an empty text" : text.substr(0, kLongest);
    }
    if (node.IsSequence()) return fmt::format("a list of {}", node.size());
    if (node.IsMap()) return "a map";
    return "nothing";
}

std::string joined(const std::string& path, const std::string& key) {
    return path.empty() ? key : fmt::format("{}.{}", path, key);
}

struct MapOpener::Collected {
    std::vector<Entry> list;
    std::map<std::string, std::size_t, std::less<>> index;  ///< into the list
};

std::vector<Entry> MapOpener::open(const YAML::Node& map, const std::string& path,
                                   const std::vector<std::string>& known) {
    Collected collected;
    collect(map, path, 0, collected);
    // Copied, never assigned: assigning a YAML::Node changes the document behind it.
    std::vector<Entry> entries;
    for (const Entry& entry : collected.list) {
        if (std::find(known.begin(), known.end(), entry.key) != known.end()) {
            entries.push_back(entry);
        } else if (!entry.merged) {  // merged maps may serve several places
            const std::string near = nearest_name(entry.key, known);
            faults_.add(entry.line,
                        {.code = "T003",
                         .path = joined(path, entry.key),
                         .message = "is no known key",
                         .suggestion = near.empty() ? fmt::format("remove it; known here: {}",
                                                                  fmt::join(known, ", "))
                                                    : "did you mean '" + near + "'?"});
        }
    }
    return entries;
}

void MapOpener::collect(const YAML::Node& map, const std::string& path, int depth,
                        Collected& into) {
    std::vector<std::pair<int, YAML::Node>> bases;  // with the line of their key
    const std::size_t own = into.list.size();
    for (const auto& pair : map) {
        const int line = line_of(pair.first);
        if (!pair.first.IsScalar()) {
            faults_.add(line, {.code = "T005",
                               .path = path,
                               .message = fmt::format("has {} for a key; a key is a name",
                                                      shown(pair.first))});
            continue;
        }
        const std::string& key = pair.first.Scalar();
        if (key == "<<") {
            bases.emplace_back(line, pair.second);
            continue;
        }
        const auto [found, made] = into.index.try_emplace(key, into.list.size());
        if (made) {
            into.list.push_back({key, line, pair.second, depth > 0});
        } else if (found->second >= own) {
            faults_.add(line, {.code = "T009",
                               .path = joined(path, key),
                               .message = fmt::format("stands twice; the first is in line {}",
                                                      into.list[found->second].line)});
        }
    }
    for (const auto& [line, base] : bases) {
        if (base.IsSequence()) {
            for (const auto& each : base) merge(each, line, path, depth, into);
        } else {
            merge(base, line, path, depth, into);
        }
    }
}

void MapOpener::merge(const YAML::Node& base, int line, const std::string& path, int depth,
                      Collected& into) {
    if (merged_ > kMostMerged) return;
    if (!base.IsMap()) {
        faults_.add(
            line, {.code = "T013",
                   .path = joined(path, "<<"),
                   .message = fmt::format("is {}; it must be an anchored map (*name)", shown(base)),
                   .value = shown(base)});
        return;
    }
    merged_ += 1 + base.size();
    if (depth >= kDeepestMerge || merged_ > kMostMerged) {
        merged_ = kMostMerged + 1;
        faults_.add(line, {.code = "T013",
                           .path = joined(path, "<<"),
                           .message = fmt::format("takes over maps that are nested too deep or too "
                                                  "large; allowed are {} levels",
                                                  kDeepestMerge)});
        return;
    }
    collect(base, path, depth + 1, into);
}

const Entry* find_entry(const std::vector<Entry>& entries, std::string_view key) {
    for (const Entry& entry : entries) {
        if (entry.key == key) return &entry;
    }
    return nullptr;
}

}  // namespace imgtune::workbench
