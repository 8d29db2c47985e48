#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <span>

#include "workbench/tuning/layout.h"
#include "workbench/tuning/likeness.h"
#include "workbench/tuning/yaml_io.h"
#include "workbench/tuning/yaml_value_writer.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLineLength = 100;
constexpr std::size_t kCommentColumn = 32;

constexpr std::size_t kSectionLines = 3;

/// What stands above a map or list in a commented tuning, line by line.
struct SectionComment {
    const char* path;
    const char* lines[kSectionLines];
};
constexpr SectionComment kSectionComments[] = {
    {"caller", {"What the camera stack hands to the library beside the tables below."}},
    {"ccm", {"Colour-correction matrices."}},
    {"ccm.rows",
     {"Tuned points, the lowest CT first. normal; low_light: blended in below LV 50;",
      "flash: lit by the flash."}},
    {"ccm.rCCMPoly22",
     {"The polynomial method, without and with flash. Coefficient = P00 + P10 r + P01 b, with",
      "r and b the gains as deviations from their means; the diagonal is what is left of the "
      "row."}},
    {"color", {"Colour engine."}},
    {"color.tuning", {"How each slot follows the light. The outdoor record is not read."}},
    {"color.images",
     {"Register images, five a slot, one per entry of caller.ct_grid. The outdoor images blend",
      "with the normal ones while the normal record enables it. An image that is like another",
      "names only what differs; one number for a list stands for equal ones."}},
};

/// Null where nothing does.
const char* const* section_lines(std::string_view path) {
    const auto found =
        std::find_if(std::begin(kSectionComments), std::end(kSectionComments),
                     [&](const SectionComment& section) { return section.path == path; });
    return found == std::end(kSectionComments) ? nullptr : found->lines;
}

std::string note(const FieldDefinition& definition) {
    const std::string unit = *definition.unit == '\0' ? "" : fmt::format(" [{}]", definition.unit);
    return definition.meaning + unit;
}

/// Tuned points are maps of small records: a table of one line each.
bool is_point(const LayoutNode& node) {
    return node.kind == LayoutKind::map && node.children[0].kind == LayoutKind::values;
}

/// A flow map in lines, its keys below one another.
std::string wrapped(std::string_view text, std::size_t column) {
    std::string lines;
    while (column + text.size() > kLineLength) {
        const std::size_t end = text.rfind(", ", kLineLength - column);
        if (end == text.npos) break;
        lines += fmt::format("{}\n{}", text.substr(0, end + 1), std::string(column, ' '));
        text.remove_prefix(end + 2);
    }
    return lines + std::string(text);
}

class Writer {
  public:
    Writer(const Tuning& tuning, bool comments) : text_(tuning), comments_(comments) {}

    std::string write(Layout layout) {
        out_ = "format: imgtune-tuning/2\n";
        const Tuning& tuning = text_.tuning();
        if (!tuning.name.empty()) out_ += "name: " + quoted(tuning.name) + '\n';
        for (const LayoutNode& part : layout_tree(layout).children) {
            if (part.name == "ccm" && !tuning.has_ccm) continue;
            if (part.name == "color" && !tuning.has_color) continue;
            if (!text_.is_shown(part)) continue;
            if (comments_) out_ += '\n';
            entry(part, 0);
        }
        return std::move(out_);
    }

  private:
    void line(std::size_t indent, const std::string& text) {
        out_.append(indent, ' ').append(text) += '\n';
    }

    // ---- explanations

    /// The field's explanation, once.
    std::string new_note(const FieldDefinition& definition) {
        const std::string text = note(definition);
        return comments_ && noted_.insert(text).second ? text : std::string();
    }

    /// Whether something below still waits for its explanation.
    bool has_new_notes(const LayoutNode& node) const {
        if (!comments_) return false;
        if (node.kind == LayoutKind::field) return noted_.count(note(*node.definition)) == 0;
        return std::any_of(node.children.begin(), node.children.end(),
                           [this](const LayoutNode& child) { return has_new_notes(child); });
    }

    /// What a list of points holds.
    void explain_points(const LayoutNode& point, std::size_t indent) {
        for (const LayoutNode& child : point.children) {
            const std::vector<FieldDefinition>& definitions = child.record->definition->fields;
            for (const FieldDefinition& definition : definitions) {
                const std::string text = new_note(definition);
                if (text.empty()) continue;
                const std::string name =
                    definitions.size() == 1 ? child.name : child.name + ' ' + definition.name;
                line(indent, fmt::format("# {}: {}", name, text));
            }
        }
    }

    void explain(const LayoutNode& node, std::size_t indent) {
        if (!comments_) return;
        if (const char* const* const lines = section_lines(node.path)) {
            for (const char* const text : std::span(lines, kSectionLines)) {
                if (text != nullptr) line(indent, fmt::format("# {}", text));
            }
        }
        if (node.path == "ccm.rows") explain_points(node.children[0].children[0], indent);
        if (node.kind != LayoutKind::field || !has_new_notes(node)) return;
        // Above the field, where there is no room behind it.
        const std::size_t width =
            std::max(node.name.size() + 4 + text_.flow(node).size(), kCommentColumn) + 2 +
            note(*node.definition).size();
        if (indent + width > kLineLength) line(indent, "# " + new_note(*node.definition));
    }

    // ---- nodes

    void entry(const LayoutNode& node, std::size_t indent) {
        explain(node, indent);
        out_.append(indent, ' ');
        body(node, indent, node.name + ':');
    }

    /// A key that is already indented, and what belongs to it.
    void body(const LayoutNode& node, std::size_t indent, const std::string& key) {
        if (node.likes.empty()) {
            plain_body(node, indent, key);
            return;
        }
        const Record* const base = nearest_record(text_.tuning(), node.own_record());
        text_.set_base(base);
        if (base == nullptr) {
            plain_body(node, indent, key);
        } else {
            line(0, key);
            line(indent + 2, "like: " + base->path.substr(node.likes.size()));
            children(node, indent + 2);
        }
        text_.set_base(nullptr);
    }

    void plain_body(const LayoutNode& node, std::size_t indent, const std::string& key) {
        if (node.kind == LayoutKind::field || node.kind == LayoutKind::values) {
            std::string text = key + ' ' + text_.flow(node);
            const std::string remark =
                node.kind == LayoutKind::field ? new_note(*node.definition) : "";
            if (!remark.empty()) {
                text.resize(std::max(text.size() + 2, kCommentColumn), ' ');
                text += "# " + remark;
            }
            line(0, text);
            return;
        }
        if (is_point(node)) {
            line(0, key + ' ' + text_.flow(node));
            return;
        }
        if (one_line(node, indent, key)) return;
        line(0, key);
        if (node.kind == LayoutKind::map) {
            children(node, indent + 2);
            return;
        }
        for (const LayoutNode* const child : text_.shown_children(node)) item(*child, indent + 2);
    }

    /// Short maps and maps of single values stand in braces.
    bool one_line(const LayoutNode& node, std::size_t indent, const std::string& key) {
        const bool numbers =
            node.kind == LayoutKind::list && node.children[0].kind == LayoutKind::values;
        if ((node.kind == LayoutKind::list && !numbers) || has_new_notes(node) || !is_plain(node)) {
            return false;
        }
        const std::string text = text_.flow(node);
        if (indent + key.size() + 1 + text.size() <= kLineLength) {
            line(0, key + ' ' + text);
            return true;
        }
        const bool scalars =
            std::all_of(node.children.begin(), node.children.end(), [](const LayoutNode& child) {
                return child.kind == LayoutKind::field && child.definition->count == 0;
            });
        if (scalars) line(0, key + ' ' + wrapped(text, indent + key.size() + 2));
        return scalars;
    }

    /// Nothing in it needs lines of its own.
    bool is_plain(const LayoutNode& node) const {
        return text_.other_bits(node).empty() &&
               std::all_of(node.children.begin(), node.children.end(),
                           [&](const LayoutNode& child) {
                               return child.kind != LayoutKind::list &&
                                      (child.kind != LayoutKind::map || is_plain(child));
                           });
    }

    void children(const LayoutNode& node, std::size_t indent) {
        for (const LayoutNode* const child : text_.shown_children(node)) entry(*child, indent);
        const std::vector<std::string> other_bits = text_.other_bits(node);
        if (other_bits.empty()) return;
        line(indent, "other_bits:");
        for (const std::string& text : other_bits) line(indent + 2, text);
    }

    /// An entry of a list; a map starts on the line of its dash.
    void item(const LayoutNode& node, std::size_t indent) {
        const bool image = node.record != nullptr && node.record->definition == &kColorImageRecord;
        if (comments_ && image) {
            const std::size_t ct = static_cast<std::size_t>(node.name[0] - '0');
            line(indent, fmt::format("# {} K", text_.tuning().caller.ct_grid[ct]));
        }
        const std::size_t start = out_.size();
        out_.append(indent, ' ');
        body(node, indent, "-");
        // "-", a line end and the indent of the map: "- " and its first key.
        const std::size_t dash = start + indent + 1;
        if (out_[dash] == '\n') out_.replace(dash, indent + 3, 1, ' ');
    }

    ValueWriter text_;
    bool comments_;
    std::string out_;
    std::set<std::string> noted_;
};

}  // namespace

std::string section_text(std::string_view path) {
    std::string text;
    const char* const* const lines = section_lines(path);
    for (std::size_t i = 0; lines != nullptr && i < kSectionLines && lines[i] != nullptr; ++i) {
        if (!text.empty()) text += ' ';
        text += lines[i];
    }
    return text;
}

std::string write_yaml(const Tuning& tuning, bool comments) {
    return Writer(tuning, comments).write(Layout::current);
}

std::string write_settings(const Tuning& tuning) {
    return Writer(tuning, false).write(Layout::settings);
}

}  // namespace imgtune::workbench
