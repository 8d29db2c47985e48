#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

namespace {

using Kind = FormatNode::Kind;

constexpr std::size_t kLineLength = 100;
constexpr std::size_t kCommentColumn = 32;

/// What stands above a map or list in a commented tuning.
constexpr std::pair<const char*, const char*> kSectionComments[] = {
    {"caller", "What the camera stack hands to the library beside the tables below."},
    {"ccm", "Colour-correction matrices."},
    {"ccm.rows", "normal: no flash; low_light: blended in below LV 50; flash: lit by the flash."},
    {"ccm.rCCMPoly22",
     "Method 1, without and with flash. Coefficient = P00 + P10 r + P01 b, with "
     "r and b the\n# gains as deviations from their means; the diagonal is what "
     "is left of the row."},
    {"color", "Colour engine."},
    {"color.tuning", "How each slot follows the light. The outdoor record is not read."},
    {"color.images",
     "Register images, five a slot, one per entry of caller.ct_grid. The outdoor "
     "images blend\n# with the normal ones while the normal record enables it."},
};

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte == 0x7f) {
            out += fmt::format("\\x{:02x}", byte);
        } else {
            out += c;
        }
    }
    return out + '"';
}

class Writer {
  public:
    Writer(std::ostream& out, const Tuning& tuning, bool comments)
        : out_(out), tuning_(tuning), comments_(comments) {}

    void write() {
        out_ << "format: imgtune-tuning/1\n";
        if (!tuning_.name.empty()) out_ << "name: " << quoted(tuning_.name) << '\n';
        for (const FormatNode& part : format_tree().children) {
            if (part.name == "ccm" && !tuning_.has_ccm) continue;
            if (part.name == "color" && !tuning_.has_color) continue;
            if (comments_) out_ << '\n';
            entry(part, 0);
        }
    }

  private:
    std::string value(const FieldRef& field) const {
        const std::int64_t value = field.read(tuning_);
        if (field.definition->form == Form::coefficient) {
            const std::uint32_t stored = field.read_bits(tuning_);
            const CoefficientCodec codec(tuning_.caller.int_bits, tuning_.caller.frac_bits);
            if ((codec.encode(static_cast<std::int32_t>(value)) & 0x1fffU) != stored) {
                return fmt::format("0x{:x}", stored);
            }
        }
        return std::to_string(value);
    }

    std::string field_text(const Record& record, const FieldDefinition& definition) const {
        if (definition.count == 0) return value({&record, &definition, 0});
        std::string text = "[";
        for (unsigned e = 0; e < definition.count; ++e) {
            if (e != 0) text += ", ";
            text += value({&record, &definition, e});
        }
        return text + ']';
    }

    /// The node on one line.
    std::string flow(const FormatNode& node) const {
        if (node.kind == Kind::field) return field_text(*node.record, *node.definition);
        if (node.kind == Kind::values) {
            const std::vector<FieldDefinition>& definitions = node.record->definition->fields;
            if (definitions.size() == 1) return field_text(*node.record, definitions[0]);
            std::string text;
            for (const FieldDefinition& definition : definitions) {
                text += (text.empty() ? "[" : ", ") + value({node.record, &definition, 0});
            }
            return text + ']';
        }
        std::string text;
        for (const FormatNode& child : node.children) {
            text += fmt::format("{}{}: {}", text.empty() ? "{" : ", ", child.name, flow(child));
        }
        return text + '}';
    }

    /// A flow map in lines, its keys below one another.
    static std::string wrapped(std::string_view text, std::size_t column) {
        std::string lines;
        while (column + text.size() > kLineLength) {
            const std::size_t end = text.rfind(", ", kLineLength - column) + 1;
            lines += fmt::format("{}\n{}", text.substr(0, end), std::string(column, ' '));
            text.remove_prefix(end + 1);
        }
        return lines + std::string(text);
    }

    bool is_zero(const FormatNode& node) const {
        if (node.kind == Kind::field || node.kind == Kind::values) {
            for (const FieldDefinition& definition : node.record->definition->fields) {
                if (node.kind == Kind::field && &definition != node.definition) continue;
                for (unsigned e = 0; e < definition.elements(); ++e) {
                    if (FieldRef{node.record, &definition, e}.read_bits(tuning_) != 0) return false;
                }
            }
            return true;
        }
        return std::ranges::all_of(node.children,
                                   [this](const FormatNode& child) { return is_zero(child); });
    }

    /// Whether the node has something to say that reading would not supply by itself.
    bool is_needed(const FormatNode& node) const {
        const bool defaults = node.record != nullptr && node.record->part == Part::caller;
        return !node.optional || defaults || !is_zero(node);
    }

    static std::string note(const FieldDefinition& definition) {
        const std::string unit =
            *definition.unit == '\0' ? "" : fmt::format(" [{}]", definition.unit);
        return definition.meaning + unit;
    }

    /// The field's explanation, once.
    std::string new_note(const FieldDefinition& definition) {
        return comments_ && noted_.insert(note(definition)).second ? note(definition)
                                                                   : std::string();
    }

    /// Whether something below still waits for its explanation.
    bool has_new_notes(const FormatNode& node) const {
        if (!comments_) return false;
        if (node.kind == Kind::field) return !noted_.contains(note(*node.definition));
        return std::ranges::any_of(
            node.children, [this](const FormatNode& child) { return has_new_notes(child); });
    }

    void entry(const FormatNode& node, std::size_t indent) {
        const std::string margin(indent, ' ');
        if (comments_) {
            for (const auto& [path, text] : kSectionComments) {
                std::string lines = text;
                if (const std::size_t end = lines.find('\n'); end != lines.npos) {
                    lines.insert(end + 1, margin);
                }
                if (node.path == path) out_ << margin << "# " << lines << '\n';
            }
            if (node.kind == Kind::list && node.children[0].kind == Kind::values) {
                for (const FieldDefinition& definition :
                     node.children[0].record->definition->fields) {
                    const std::string text = new_note(definition);
                    if (!text.empty())
                        out_ << margin << "# " << definition.name << ": " << text << '\n';
                }
            }
        }
        if (node.kind == Kind::field && has_new_notes(node)) {
            const std::size_t width =
                std::max(node.name.size() + 4 + flow(node).size(), kCommentColumn) + 2 +
                note(*node.definition).size();
            if (indent + width > kLineLength) {
                out_ << margin << "# " << new_note(*node.definition) << '\n';
            }
        }
        out_ << margin;
        body(node, indent, node.name + ':');
    }

    /// A key that is already indented, and what belongs to it.
    void body(const FormatNode& node, std::size_t indent, const std::string& key) {
        if (node.kind == Kind::field || node.kind == Kind::values) {
            std::string line = key + ' ' + flow(node);
            const std::string text = node.kind == Kind::field ? new_note(*node.definition) : "";
            if (!text.empty()) {
                line.resize(std::max(line.size() + 2, kCommentColumn), ' ');
                line += "# " + text;
            }
            out_ << line << '\n';
            return;
        }
        const std::string one_line = node.kind == Kind::map && !has_opaque_bits(node) &&
                                             !has_new_notes(node) && all_needed(node)
                                         ? flow(node)
                                         : std::string();
        if (!one_line.empty() && indent + key.size() + 1 + one_line.size() <= kLineLength) {
            out_ << key << ' ' << one_line << '\n';
            return;
        }
        const bool scalars = std::ranges::all_of(node.children, [](const FormatNode& child) {
            return child.kind == Kind::field && child.definition->count == 0;
        });
        if (!one_line.empty() && scalars) {
            out_ << key << ' ' << wrapped(one_line, indent + key.size() + 2) << '\n';
            return;
        }
        out_ << key << '\n';
        if (node.kind == Kind::map) {
            for (const FormatNode& child : node.children) {
                if (is_needed(child)) entry(child, indent + 2);
            }
            other_bits(node, indent + 2);
            return;
        }
        std::size_t count = node.children.size();
        while (count > 0 && !is_needed(node.children[count - 1])) --count;
        for (std::size_t i = 0; i < count; ++i) item(node.children[i], indent + 2);
    }

    /// An entry of a list; a map starts on the line of its dash.
    void item(const FormatNode& node, std::size_t indent) {
        out_ << std::string(indent, ' ');
        if (node.kind != Kind::map) {
            body(node, indent, "-");
            return;
        }
        out_ << "- ";
        bool first = true;
        for (const FormatNode& child : node.children) {
            if (first) {
                body(child, indent + 2, child.name + ':');
            } else {
                entry(child, indent + 2);
            }
            first = false;
        }
        other_bits(node, indent + 2);
    }

    bool all_needed(const FormatNode& node) const {
        return std::ranges::all_of(node.children, [this](const FormatNode& child) {
            return child.kind != Kind::list && is_needed(child) &&
                   (child.kind != Kind::map || (all_needed(child) && !has_opaque_bits(child)));
        });
    }

    std::string opaque_text(const OpaqueWord& word, const std::string& prefix) const {
        const std::uint32_t bits = load_word(tuning_, word.part, word.word) & word.mask;
        if (bits == 0) return {};
        return fmt::format("{}: 0x{:08x}", word.path.substr(prefix.size()), bits);
    }

    bool has_opaque_bits(const FormatNode& node) const {
        if (node.opaque == nullptr) return false;
        const std::string prefix = node.path + ".other_bits.";
        return std::ranges::any_of(opaque_words(), [&](const OpaqueWord& word) {
            return word.path.starts_with(prefix) && !opaque_text(word, prefix).empty();
        });
    }

    void other_bits(const FormatNode& node, std::size_t indent) {
        if (node.opaque == nullptr) return;
        const std::string prefix = node.path + ".other_bits.";
        bool open = false;
        for (const OpaqueWord& word : opaque_words()) {
            if (!word.path.starts_with(prefix)) continue;
            const std::string text = opaque_text(word, prefix);
            if (text.empty()) continue;
            if (!open) out_ << std::string(indent, ' ') << "other_bits:\n";
            open = true;
            out_ << std::string(indent + 2, ' ') << text << '\n';
        }
    }

    std::ostream& out_;
    const Tuning& tuning_;
    bool comments_;
    std::set<std::string> noted_;
};

}  // namespace

std::string write_yaml(const Tuning& tuning, bool comments) {
    std::ostringstream out;
    Writer(out, tuning, comments).write();
    return out.str();
}

}  // namespace imgtune::workbench
