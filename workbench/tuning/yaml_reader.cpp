#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "workbench/text/yaml_document.h"
#include "workbench/tuning/layout.h"
#include "workbench/tuning/yaml_io.h"
#include "workbench/tuning/yaml_nodes.h"
#include "workbench/tuning/yaml_value_reader.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kFormat = "imgtune-tuning/2";
constexpr const char* kFirstFormat = "imgtune-tuning/1";

const OpaqueWord* opaque_word(const Record* record, std::int64_t index) {
    for (const OpaqueWord& word : opaque_words()) {
        if (word.record == record &&
            static_cast<std::int64_t>(word.word - record->first_word) == index) {
            return &word;
        }
    }
    return nullptr;
}

/// A whole number from 0 on, or -1.
std::int64_t count_of(const YAML::Node& node) {
    return node.IsScalar() ? parse_integer(node.Scalar()).value_or(-1) : -1;
}

const Record* record_at(const std::string& path) {
    for (const Record& record : records()) {
        if (record.path == path) return &record;
    }
    return nullptr;
}

class Reader {
  public:
    Reader(const std::string& file, Faults& faults, Tuning& tuning)
        : faults_(file, faults), tuning_(tuning), maps_(faults_), values_(faults_, tuning) {}

    void read(const std::string& text, bool settings_only) {
        faults_.set_place("", 1);
        if (text.size() > kLargestTuningText) {
            faults_.add(
                1, {.code = "T010", .message = "file too large for a tuning; allowed are 16 MiB"});
            return;
        }
        // A scanner would take it for the end of something, or read over it.
        if (const std::size_t nul = text.find('\0'); nul != text.npos) {
            const auto before = text.begin() + static_cast<std::ptrdiff_t>(nul);
            faults_.add(1 + static_cast<int>(std::count(text.begin(), before, '\n')),
                        {.code = "T001",
                         .message = "not readable as YAML: holds a NUL byte",
                         .suggestion = "remove it, or save the file as UTF-8"});
            return;
        }
        try {
            if (const char* const count = documents_if_not_one(text)) {
                faults_.add(
                    1, {.code = "T001", .message = fmt::format("holds {}; it must be one", count)});
                return;
            }
            read_root(YAML::Load(text), settings_only);
        } catch (const YAML::Exception& error) {
            faults_.add(error.mark.is_null() ? 1 : error.mark.line + 1,
                        {.code = "T001", .message = "not readable as YAML: " + error.msg});
        }
    }

  private:
    /// A map that waits for the one that it is like.
    struct Waiting {
        const LayoutNode* node;
        int line;
        std::vector<Entry> entries;
        const Record* base;
        bool done = false;
    };

    void read_root(const YAML::Node& root, bool settings_only) {
        if (!root.IsMap()) {
            faults_.add(line_of(root),
                        {.code = "T005",
                         .message = fmt::format(
                             "expected a tuning, found {}; a tuning is a map with the keys "
                             "format, name, caller, ccm, color",
                             shown(root)),
                         .value = shown(root),
                         .suggestion = "imgtune new writes a tuning to start from"});
            return;
        }
        const std::vector<Entry> entries =
            settings_only ? maps_.open(root, "", {"format", "name", "caller", "kelvin"})
                          : maps_.open(root, "", {"format", "name", "caller", "ccm", "color"});
        read_name(find_entry(entries, "name"));
        const bool first = read_format(find_entry(entries, "format"));
        const LayoutNode& tree = layout_tree(settings_only ? Layout::settings
                                             : first       ? Layout::first
                                                           : Layout::current);
        // The caller's settings come first: the codec of the coefficients is among them.
        for (const LayoutNode& part : tree.children) {
            const Entry* const entry = find_entry(entries, part.name);
            if (entry == nullptr) continue;
            if (part.name == "ccm") tuning_.has_ccm = true;
            if (part.name == "color") tuning_.has_color = true;
            read_node(part, entry->value);
        }
        read_waiting();
        values_.finish();
        if (!settings_only && !tuning_.has_ccm && !tuning_.has_color) {
            faults_.add(1, {.code = "T004",
                            .message = "neither ccm nor color; a tuning has one "
                                       "of them or both"});
        }
    }

    void read_name(const Entry* entry) {
        if (entry == nullptr) return;
        if (entry->value.IsScalar()) {
            tuning_.name = entry->value.Scalar();
            return;
        }
        faults_.add(entry->line,
                    {.code = "T005",
                     .path = "name",
                     .message = fmt::format("is {}; it must be a text", shown(entry->value)),
                     .value = shown(entry->value)});
    }

    /// Whether it is the first version.
    bool read_format(const Entry* entry) {
        if (entry == nullptr) {
            faults_.add(1, {.code = "T002",
                            .path = "format",
                            .message = "is missing",
                            .allowed = kFormat,
                            .suggestion = fmt::format("add 'format: {}'", kFormat)});
            return false;
        }
        const std::string text = shown(entry->value);
        if (text != kFormat && text != kFirstFormat) {
            faults_.add(entry->line, {.code = "T002",
                                      .path = "format",
                                      .message = fmt::format("is {}; allowed are {} and {}", text,
                                                             kFormat, kFirstFormat),
                                      .value = text,
                                      .allowed = fmt::format("{}, {}", kFormat, kFirstFormat)});
        }
        return text == kFirstFormat;
    }

    void read_node(const LayoutNode& node, const YAML::Node& yaml) {
        faults_.set_place(node.path, line_of(yaml));
        switch (node.kind) {
            case LayoutKind::map:
                read_map(node, yaml);
                break;
            case LayoutKind::list:
                read_list(node, yaml);
                break;
            case LayoutKind::values:
                read_values(node, yaml);
                break;
            case LayoutKind::field:
                values_.read_field(*node.record, *node.definition, node.path, yaml);
                break;
        }
    }

    void read_map(const LayoutNode& node, const YAML::Node& yaml) {
        std::vector<std::string> known;
        for (const LayoutNode& child : node.children) known.push_back(child.name);
        if (node.has_other_bits) known.emplace_back("other_bits");
        if (!node.likes.empty()) known.emplace_back("like");
        if (!yaml.IsMap()) {
            faults_.add(line_of(yaml), {.code = "T005",
                                        .path = node.path,
                                        .message = fmt::format("is {}; it must be a map of {}",
                                                               shown(yaml), fmt::join(known, ", ")),
                                        .value = shown(yaml)});
            return;
        }
        const std::vector<Entry> entries = maps_.open(yaml, node.path, known);
        const Entry* const like = find_entry(entries, "like");
        if (like == nullptr) {
            read_entries(node, line_of(yaml), entries, false);
        } else if (const Record* const base = base_of(node, *like)) {
            waiting_.push_back({&node, line_of(yaml), entries, base});
        }
    }

    /// Only the keys that a map without a base must have are missing.
    void read_entries(const LayoutNode& node, int line, const std::vector<Entry>& entries,
                      bool has_base) {
        for (const LayoutNode& child : node.children) {
            const Entry* const found = find_entry(entries, child.name);
            if (found != nullptr) {
                read_child(child, *found, has_base);
            } else if (!child.optional && !has_base) {
                report_missing(node, child, line);
            }
        }
        if (const Entry* const other = find_entry(entries, "other_bits")) {
            read_other_bits(node, other->value);
        }
        if (node.record != nullptr) complete_.insert(node.record);
    }

    void read_child(const LayoutNode& child, const Entry& entry, bool has_base) {
        // Below a map with a base, groups too name only what differs.
        if (has_base && child.kind == LayoutKind::map && entry.value.IsMap()) {
            std::vector<std::string> known;
            for (const LayoutNode& each : child.children) known.push_back(each.name);
            const std::vector<Entry> entries = maps_.open(entry.value, child.path, known);
            for (const LayoutNode& each : child.children) {
                const Entry* const found = find_entry(entries, each.name);
                if (found != nullptr) read_child(each, *found, true);
            }
        } else {
            read_node(child, entry.value);
        }
        faults_.set_place(child.path, entry.line);
    }

    void report_missing(const LayoutNode& node, const LayoutNode& child, int line) {
        const bool single = child.kind == LayoutKind::field && child.definition->count == 0;
        const std::string allowed = single ? child.definition->allowed_text() : std::string();
        faults_.add(line, {.code = "T004",
                           .path = child.path,
                           .message = single ? "is missing; allowed are " + allowed : "is missing",
                           .allowed = allowed,
                           .suggestion = fmt::format("add '{}' to '{}'", child.name, node.path)});
    }

    void read_list(const LayoutNode& node, const YAML::Node& yaml) {
        const std::size_t most = node.children.size();
        const std::size_t least = node.children[0].optional ? 0 : most;
        if (!yaml.IsSequence() || yaml.size() < least || yaml.size() > most) {
            const std::string allowed = least == most ? fmt::format("a list of {}", most)
                                                      : fmt::format("a list of up to {}", most);
            faults_.add(line_of(yaml),
                        {.code = yaml.IsSequence() ? "T006" : "T005",
                         .path = node.path,
                         .message = fmt::format("is {}; it must be {}", shown(yaml), allowed),
                         .value = shown(yaml),
                         .allowed = allowed});
            if (!yaml.IsSequence()) return;
        }
        std::size_t i = 0;
        for (const auto& each : yaml) {
            if (i < most) read_node(node.children[i++], each);
        }
    }

    void read_values(const LayoutNode& node, const YAML::Node& yaml) {
        const std::vector<FieldDefinition>& definitions = node.record->definition->fields;
        if (definitions.size() == 1) {
            values_.read_field(*node.record, definitions[0], node.path, yaml);
            return;
        }
        if (!values_.is_list_of(definitions.size(), node.path, yaml)) return;
        std::size_t i = 0;
        for (const auto& each : yaml) {
            values_.read_value({node.record, &definitions[i], 0},
                               node.path + '.' + definitions[i].name, each);
            ++i;
        }
    }

    void read_other_bits(const LayoutNode& node, const YAML::Node& yaml) {
        const std::string path = node.path + ".other_bits";
        if (!yaml.IsMap()) {
            faults_.add(line_of(yaml), {.code = "T005",
                                        .path = path,
                                        .message = fmt::format("is {}; it must be a map of words "
                                                               "and their bits in hex",
                                                               shown(yaml)),
                                        .value = shown(yaml)});
            return;
        }
        for (const auto& pair : yaml) {
            const int line = line_of(pair.first);
            const std::int64_t word = count_of(pair.first);
            const std::int64_t bits = count_of(pair.second);
            if (word < 0 || bits < 0) {
                faults_.add(line, {.code = "T005",
                                   .path = path,
                                   .message = fmt::format("holds {}: {}; it must be a word and its "
                                                          "bits in hex",
                                                          shown(pair.first), shown(pair.second)),
                                   .value = shown(pair.second)});
                continue;
            }
            const OpaqueWord* const found = opaque_word(node.record, word);
            const std::uint32_t mask = found == nullptr ? 0 : found->mask;
            if (found == nullptr || bits > 0xffffffff ||
                (static_cast<std::uint32_t>(bits) & ~mask) != 0) {
                faults_.add(line, {.code = "T011",
                                   .path = fmt::format("{}.{}", path, word),
                                   .message = fmt::format(
                                       "is {}: bits of a named field, or beyond the record; "
                                       "allowed are bits of 0x{:08x}",
                                       shown(pair.second), mask),
                                   .value = shown(pair.second),
                                   .allowed = fmt::format("bits of 0x{:08x}", mask),
                                   .suggestion = "set fields by their names"});
                continue;
            }
            const std::uint32_t kept = load_word(tuning_, found->part, found->word) & ~mask;
            store_word(tuning_, found->part, found->word, kept | static_cast<std::uint32_t>(bits));
        }
    }

    // ---- maps that are like another

    /// The record that `like` names, or null and a fault.
    const Record* base_of(const LayoutNode& node, const Entry& like) {
        const std::string name = shown(like.value);
        const Record* const base = record_at(node.likes + name);
        if (base != nullptr && base->definition == node.record->definition) return base;
        std::vector<std::string> names;
        for (const Record& record : records()) {
            if (record.definition == node.record->definition) {
                names.push_back(record.path.substr(node.likes.size()));
            }
        }
        const std::string near = nearest_name(name, names);
        report_like(node, like.line,
                    fmt::format("is like {}, which there is not; allowed are {} .. {}", name,
                                names.front(), names.back()),
                    near.empty() ? "" : "did you mean '" + near + "'?");
        return nullptr;
    }

    void report_like(const LayoutNode& node, int line, std::string message,
                     std::string suggestion = "") {
        faults_.add(line, {.code = "T014",
                           .path = node.path,
                           .message = std::move(message),
                           .suggestion = std::move(suggestion)});
    }

    /// Fills in the maps whose base is complete, until nothing moves.
    void read_waiting() {
        for (bool moved = true; moved;) {
            moved = false;
            for (Waiting& map : waiting_) {
                if (map.done || complete_.count(map.base) == 0) continue;
                map.done = moved = true;
                for (std::size_t w = 0; w < map.base->definition->words; ++w) {
                    store_word(tuning_, map.base->part, map.node->record->first_word + w,
                               load_word(tuning_, map.base->part, map.base->first_word + w));
                }
                read_entries(*map.node, map.line, map.entries, true);
            }
        }
        report_stuck();
    }

    /// What still waits does so for a map with a fault of its own, or in a circle.
    void report_stuck() {
        const auto waits = [&](const Record* record) {
            return std::any_of(waiting_.begin(), waiting_.end(), [&](const Waiting& map) {
                return !map.done && map.node->record == record;
            });
        };
        const Waiting* first = nullptr;
        bool circle = true;
        for (const Waiting& map : waiting_) {
            if (map.done) continue;
            if (first == nullptr) first = &map;
            circle = circle && waits(map.base);
            faults_.suppress(map.node->path);
        }
        if (first == nullptr || !circle) return;
        report_like(*first->node, first->line,
                    fmt::format("is like {}, and that is like it in turn", first->base->path),
                    "write one of them out");
    }

    TextFaults faults_;
    Tuning& tuning_;
    MapOpener maps_;
    ValueReader values_;
    std::set<const Record*> complete_;
    std::vector<Waiting> waiting_;
};

}  // namespace

Tuning read_yaml(const std::string& text, const std::string& file, Faults& faults) {
    Tuning tuning;
    Reader(file, faults, tuning).read(text, false);
    return tuning;
}

void read_settings(const std::string& text, const std::string& file, Faults& faults,
                   Tuning& tuning) {
    Reader(file, faults, tuning).read(text, true);
}

}  // namespace imgtune::workbench
