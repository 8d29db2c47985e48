#include "workbench/tuning/yaml_io.h"

#include <fmt/format.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <optional>
#include <sstream>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

/// Takes a document's events and keeps none.
class IgnoreEvents : public YAML::EventHandler {
  public:
    void OnDocumentStart(const YAML::Mark&) override {}
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
    void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
    void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t,
                  const std::string&) override {}
    void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                         YAML::EmitterStyle::value) override {}
    void OnSequenceEnd() override {}
    void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                    YAML::EmitterStyle::value) override {}
    void OnMapEnd() override {}
};

/// Null for one document. Looks for a second and no further: on some malformed text the parser
/// finds documents without end.
const char* documents_if_not_one(const std::string& text) {
    std::istringstream in(text);
    YAML::Parser parser(in);
    IgnoreEvents ignore;
    if (!parser.HandleNextDocument(ignore)) return "0";
    return parser.HandleNextDocument(ignore) ? "2 or more" : nullptr;
}

using Kind = FormatNode::Kind;

constexpr const char* kFormat = "imgtune-tuning/1";
constexpr int kDeepestMerge = 16;
constexpr std::size_t kMostMerged = 200000;

int line_of(const YAML::Node& node) {
    return node.Mark().line + 1;
}

std::string joined(const std::string& path, const std::string& key) {
    return path.empty() ? key : fmt::format("{}.{}", path, key);
}

/// What a node is, for a message.
std::string shown(const YAML::Node& node) {
    if (node.IsScalar()) return node.Scalar();
    if (node.IsSequence()) return fmt::format("a list of {}", node.size());
    if (node.IsMap()) return "a map";
    return "nothing";
}

/// Decimal or 0x hex; nothing else.
std::optional<std::int64_t> parse_integer(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    if (hex) text.remove_prefix(2);
    if (text.empty() || text[0] == '-' || text[0] == '+') return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), value, hex ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return negative ? -value : value;
}

bool is_hex(std::string_view text) {
    return text.starts_with("0x") || text.starts_with("0X");
}

const OpaqueWord* opaque_word(const std::string& path) {
    static const auto index = [] {
        std::map<std::string, const OpaqueWord*, std::less<>> by_path;
        for (const OpaqueWord& word : opaque_words()) by_path.emplace(word.path, &word);
        return by_path;
    }();
    const auto found = index.find(path);
    return found == index.end() ? nullptr : found->second;
}

struct Entry {
    std::string key;
    int line = 0;
    YAML::Node value;
    bool merged = false;
};

struct Entries {
    std::vector<Entry> list;
    std::map<std::string, std::size_t, std::less<>> index;  ///< into the list
};

class Reader {
  public:
    Reader(std::string file, Faults& faults, Tuning& tuning)
        : file_(std::move(file)), faults_(faults), tuning_(tuning) {}

    void read(const std::string& text, bool caller_only) {
        if (text.size() > kLargestTuningText) {
            add("T010", 0, "", "file too large for a tuning", "", "at most 16 MiB", "");
            return;
        }
        faults_.set_place("", file_, 1);
        try {
            if (const char* count = documents_if_not_one(text)) {
                add("T001", 1, "", "number of YAML documents", count, "1", "");
                return;
            }
            read_root(YAML::Load(text), caller_only);
        } catch (const YAML::Exception& error) {
            add("T001", error.mark.is_null() ? 0 : error.mark.line + 1, "",
                "not readable as YAML: " + error.msg, "", "", "");
        }
    }

  private:
    void add(const char* code, int line, const std::string& path, std::string message,
             std::string value, std::string allowed, std::string suggestion) {
        Fault fault;
        fault.code = code;
        fault.file = file_;
        fault.line = line;
        fault.path = path;
        fault.message = std::move(message);
        fault.value = std::move(value);
        fault.allowed = std::move(allowed);
        fault.suggestion = std::move(suggestion);
        faults_.add(std::move(fault));
    }

    static const FormatNode& child_of(const FormatNode& node, std::string_view name) {
        return *std::ranges::find(node.children, name, &FormatNode::name);
    }

    void read_root(const YAML::Node& root, bool caller_only) {
        if (!root.IsMap()) {
            add("T005", line_of(root), "", "not a tuning", shown(root),
                "a map with the keys format, name, caller, ccm, color",
                "imgtune new writes a tuning to start from");
            return;
        }
        std::vector<std::string> known{"format", "name", "caller"};
        if (!caller_only) known.insert(known.end(), {"ccm", "color"});
        std::optional<YAML::Node> format, caller, ccm, color;
        for (const Entry& entry : open_map(root, "", known)) {
            if (entry.key == "format") format = entry.value;
            if (entry.key == "caller") caller = entry.value;
            if (entry.key == "ccm") ccm = entry.value;
            if (entry.key == "color") color = entry.value;
            if (entry.key == "name") {
                if (entry.value.IsScalar()) {
                    tuning_.name = entry.value.Scalar();
                } else {
                    add("T005", entry.line, "name", "not a text", shown(entry.value), "a text", "");
                }
            }
        }
        if (!format) {
            add("T002", 1, "format", "missing key", "", kFormat,
                fmt::format("add 'format: {}'", kFormat));
        } else if (!format->IsScalar() || format->Scalar() != kFormat) {
            add("T002", line_of(*format), "format", "unknown format", shown(*format), kFormat, "");
        }
        const FormatNode& tree = format_tree();
        // The caller's settings first: the codec of the coefficients is among them.
        if (caller) read_node(child_of(tree, "caller"), *caller);
        if (caller_only) return;
        if (ccm) {
            tuning_.has_ccm = true;
            read_node(child_of(tree, "ccm"), *ccm);
        }
        if (color) {
            tuning_.has_color = true;
            read_node(child_of(tree, "color"), *color);
        }
        if (!ccm && !color) {
            add("T004", 1, "", "neither ccm nor color", "", "one of them or both", "");
        }
    }

    /// The entries of a map, its own before merged ones; faulty keys are reported and left out.
    std::vector<Entry> open_map(const YAML::Node& node, const std::string& path,
                                const std::vector<std::string>& known) {
        Entries collected;
        collect(node, path, false, 0, collected);
        // Copied, never assigned: assigning a YAML::Node changes the document behind it.
        std::vector<Entry> entries;
        for (const Entry& entry : collected.list) {
            if (std::ranges::find(known, entry.key) != known.end()) {
                entries.push_back(entry);
            } else if (!entry.merged) {  // merged maps may serve several places
                const std::string near = nearest_name(entry.key, known);
                add("T003", entry.line, joined(path, entry.key), "unknown key", "", "",
                    near.empty() ? fmt::format("remove it; known here: {}", fmt::join(known, ", "))
                                 : "did you mean '" + near + "'?");
            }
        }
        return entries;
    }

    void collect(const YAML::Node& node, const std::string& path, bool merged, int depth,
                 Entries& entries) {
        std::vector<std::pair<int, YAML::Node>> bases;  // with the line of their key
        const std::size_t own = entries.list.size();
        for (const auto& pair : node) {
            const int line = line_of(pair.first);
            if (!pair.first.IsScalar()) {
                add("T005", line, path, "key is not a text", shown(pair.first), "a name", "");
                continue;
            }
            const std::string& key = pair.first.Scalar();
            if (key == "<<") {
                bases.emplace_back(line, pair.second);
                continue;
            }
            const auto [found, made] = entries.index.try_emplace(key, entries.list.size());
            if (made) {
                entries.list.push_back({key, line, pair.second, merged});
            } else if (found->second >= own) {
                add("T009", line, joined(path, key), "key stands twice", "", "",
                    fmt::format("the first is in line {}", entries.list[found->second].line));
            }
        }
        for (const auto& [line, base] : bases) {
            if (base.IsSequence()) {
                for (const auto& each : base) merge(each, line, path, depth, entries);
            } else {
                merge(base, line, path, depth, entries);
            }
        }
    }

    void merge(const YAML::Node& base, int line, const std::string& path, int depth,
               Entries& entries) {
        if (merged_ > kMostMerged) return;
        if (!base.IsMap()) {
            add("T013", line, path, "merge key", shown(base), "an anchored map (*name)", "");
            return;
        }
        merged_ += 1 + base.size();
        if (depth >= kDeepestMerge || merged_ > kMostMerged) {
            merged_ = kMostMerged + 1;
            add("T013", line, path, "merge keys nested too deep or too many", "",
                fmt::format("{} levels", kDeepestMerge), "");
            return;
        }
        collect(base, path, true, depth + 1, entries);
    }

    void read_node(const FormatNode& node, const YAML::Node& yaml) {
        faults_.set_place(node.path, file_, line_of(yaml));
        switch (node.kind) {
            case Kind::map:
                read_map(node, yaml);
                break;
            case Kind::list:
                read_list(node, yaml);
                break;
            case Kind::values:
                read_values(node, yaml);
                break;
            case Kind::field:
                read_field(*node.record, *node.definition, node.path, yaml);
                break;
        }
    }

    void read_map(const FormatNode& node, const YAML::Node& yaml) {
        std::vector<std::string> known;
        for (const FormatNode& child : node.children) known.push_back(child.name);
        if (node.opaque != nullptr) known.emplace_back("other_bits");
        if (!yaml.IsMap()) {
            add("T005", line_of(yaml), node.path, "not a map", shown(yaml),
                "a map of " + fmt::format("{}", fmt::join(known, ", ")), "");
            return;
        }
        const std::vector<Entry> entries = open_map(yaml, node.path, known);
        for (const FormatNode& child : node.children) {
            const auto found = std::ranges::find(entries, child.name, &Entry::key);
            if (found != entries.end()) {
                read_node(child, found->value);
                faults_.set_place(child.path, file_, found->line);
            } else if (!child.optional) {
                add("T004", line_of(yaml), child.path, "missing key", "",
                    child.kind == Kind::field ? wanted(*child.definition) : "",
                    fmt::format("add '{}' to '{}'", child.name, node.path));
            }
        }
        const auto other = std::ranges::find(entries, "other_bits", &Entry::key);
        if (other != entries.end()) read_other_bits(node, other->value);
    }

    void read_list(const FormatNode& node, const YAML::Node& yaml) {
        const std::size_t most = node.children.size();
        const std::size_t least = node.children[0].optional ? 0 : most;
        const std::string allowed = least == most ? fmt::format("a list of {}", most)
                                                  : fmt::format("a list of up to {}", most);
        if (!yaml.IsSequence()) {
            add("T005", line_of(yaml), node.path, "not a list", shown(yaml), allowed, "");
            return;
        }
        if (yaml.size() < least || yaml.size() > most) {
            add("T006", line_of(yaml), node.path, "wrong number of entries",
                std::to_string(yaml.size()), allowed, "");
        }
        std::size_t i = 0;
        for (const auto& each : yaml) {
            if (i < most) read_node(node.children[i++], each);
        }
    }

    /// A list of exactly `count` values, or a fault.
    bool is_list_of(unsigned count, const std::string& path, const YAML::Node& yaml) {
        if (!yaml.IsSequence()) {
            add("T005", line_of(yaml), path, "not a list", shown(yaml),
                fmt::format("a list of {} integers", count), "");
            return false;
        }
        if (yaml.size() != count) {
            add("T006", line_of(yaml), path, "wrong number of values", std::to_string(yaml.size()),
                fmt::format("a list of {} integers", count), "");
            return false;
        }
        return true;
    }

    void read_values(const FormatNode& node, const YAML::Node& yaml) {
        const std::vector<FieldDefinition>& definitions = node.record->definition->fields;
        if (definitions.size() == 1) {
            read_field(*node.record, definitions[0], node.path, yaml);
            return;
        }
        if (!is_list_of(static_cast<unsigned>(definitions.size()), node.path, yaml)) return;
        std::size_t i = 0;
        for (const auto& each : yaml) {
            read_value({node.record, &definitions[i], 0}, node.path + '.' + definitions[i].name,
                       each);
            ++i;
        }
    }

    void read_field(const Record& record, const FieldDefinition& definition,
                    const std::string& path, const YAML::Node& yaml) {
        if (definition.count == 0) {
            read_value({&record, &definition, 0}, path, yaml);
            return;
        }
        if (!is_list_of(definition.count, path, yaml)) return;
        unsigned i = 0;
        for (const auto& each : yaml) {
            read_value({&record, &definition, i}, fmt::format("{}[{}]", path, i), each);
            ++i;
        }
    }

    static std::string wanted(const FieldDefinition& definition) {
        return definition.count == 0
                   ? fmt::format("{}..{}", definition.lowest(), definition.highest())
                   : fmt::format("a list of {} integers", definition.count);
    }

    void read_value(const FieldRef& field, const std::string& path, const YAML::Node& yaml) {
        const FieldDefinition& definition = *field.definition;
        const BitField place = definition.place(field.element);
        const std::int64_t highest =
            definition.is_signed ? definition.highest() : (std::int64_t{1} << place.width) - 1;
        const auto value = yaml.IsScalar() ? parse_integer(yaml.Scalar()) : std::nullopt;
        if (!value) {
            add("T005", line_of(yaml), path, "not an integer", shown(yaml),
                definition.form == Form::coefficient
                    ? "a coefficient, or 0x0..0x1fff as stored"
                    : fmt::format("{}..{}", definition.lowest(), highest),
                "");
            return;
        }
        if (definition.form == Form::coefficient && !is_hex(yaml.Scalar())) {
            read_coefficient(field, path, *value, line_of(yaml));
            return;
        }
        if (*value < definition.lowest() || *value > highest) {
            Fault fault;
            fault.code = "T007";
            fault.file = file_;
            fault.line = line_of(yaml);
            fault.path = path;
            fault.message = "does not fit its field";
            fault.value = yaml.Scalar();
            fault.allowed = fmt::format("{}..{}", definition.lowest(), highest);
            fault.effect = fmt::format("only its low {} bits would be stored", place.width);
            faults_.add(std::move(fault));
            return;
        }
        field.write_bits(tuning_, static_cast<std::uint32_t>(*value));
    }

    void read_coefficient(const FieldRef& field, const std::string& path, std::int64_t value,
                          int line) {
        const CoefficientCodec codec(tuning_.caller.int_bits, tuning_.caller.frac_bits);
        const bool fits32 = value == static_cast<std::int32_t>(value);
        const std::uint32_t stored =
            fits32 ? codec.encode(static_cast<std::int32_t>(value)) & 0x1fffU : 0;
        if (fits32 && codec.decode(stored) == value) {
            field.write_bits(tuning_, stored);
            return;
        }
        const std::int64_t bits = std::int64_t{tuning_.caller.int_bits} + tuning_.caller.frac_bits;
        const std::int64_t largest = std::int64_t{1} << std::clamp<std::int64_t>(bits, 0, 12);
        Fault fault;
        fault.code = "T008";
        fault.file = file_;
        fault.line = line;
        fault.path = path;
        fault.message = "coefficient does not fit its 13-bit field";
        fault.value = std::to_string(value);
        fault.allowed = fmt::format("{}..{}", 1 - largest, largest);
        fault.effect = fits32
                           ? fmt::format("it wraps: the camera would read {}", codec.decode(stored))
                           : std::string("it wraps");
        faults_.add(std::move(fault));
    }

    void read_other_bits(const FormatNode& node, const YAML::Node& yaml) {
        const std::string path = node.path + ".other_bits";
        if (!yaml.IsMap()) {
            add("T005", line_of(yaml), path, "not a map", shown(yaml), "a map of word: hex", "");
            return;
        }
        for (const auto& pair : yaml) {
            const int line = line_of(pair.first);
            const auto word =
                pair.first.IsScalar() ? parse_integer(pair.first.Scalar()) : std::nullopt;
            const auto bits =
                pair.second.IsScalar() ? parse_integer(pair.second.Scalar()) : std::nullopt;
            if (!word || !bits) {
                add("T005", line, path, "not a word and its bits",
                    shown(pair.first) + ": " + shown(pair.second), "word: hex", "");
                continue;
            }
            const std::string word_path = fmt::format("{}.{}", path, *word);
            const OpaqueWord* found = opaque_word(word_path);
            const std::uint32_t mask = found == nullptr ? 0 : found->mask;
            if (*bits < 0 || *bits > 0xffffffff ||
                (static_cast<std::uint32_t>(*bits) & ~mask) != 0) {
                add("T011", line, word_path, "bits of a named field, or beyond the record",
                    pair.second.Scalar(), fmt::format("bits of 0x{:08x}", mask),
                    "set fields by their names");
                continue;
            }
            const std::uint32_t kept = load_word(tuning_, found->part, found->word) & ~mask;
            store_word(tuning_, found->part, found->word, kept | static_cast<std::uint32_t>(*bits));
        }
    }

    std::string file_;
    Faults& faults_;
    Tuning& tuning_;
    std::size_t merged_ = 0;
};

}  // namespace

Tuning read_yaml(const std::string& text, const std::string& file, Faults& faults) {
    Tuning tuning;
    Reader(file, faults, tuning).read(text, false);
    return tuning;
}

void read_caller_yaml(const std::string& text, const std::string& file, Faults& faults,
                      Tuning& tuning) {
    Reader(file, faults, tuning).read(text, true);
}

}  // namespace imgtune::workbench
