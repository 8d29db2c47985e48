#include "workbench/tuning/yaml_value_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "ccm/codec.h"
#include "workbench/tuning/likeness.h"

namespace imgtune::workbench {

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

std::string ValueWriter::value(const FieldRef& field) const {
    const std::int64_t value = field.read(tuning_);
    for (const Choice& choice : field.definition->choices) {
        if (choice.value == value) return choice.name;
    }
    if (field.definition->form == Form::coefficient) {
        const std::uint32_t stored = field.read_bits(tuning_);
        const CoefficientCodec codec(tuning_.caller.int_bits, tuning_.caller.frac_bits);
        if ((codec.encode(static_cast<std::int32_t>(value)) & 0x1fffU) != stored) {
            return fmt::format("0x{:x}", stored);
        }
    }
    return std::to_string(value);
}

std::string ValueWriter::field_text(const Record& record, const FieldDefinition& definition) const {
    std::string first = value({&record, &definition, 0});
    if (definition.count == 0) return first;
    std::string text = '[' + first;
    bool level = definition.level;
    for (unsigned e = 1; e < definition.count; ++e) {
        const std::string next = value({&record, &definition, e});
        level = level && next == first;
        text += ", " + next;
    }
    return level ? first : text + ']';
}

std::string ValueWriter::flow(const LayoutNode& node) const {
    if (node.kind == LayoutKind::field) return field_text(node.own_record(), *node.definition);
    if (node.kind == LayoutKind::values) {
        const std::vector<FieldDefinition>& definitions = node.own_record().definition->fields;
        if (definitions.size() == 1) return field_text(*node.record, definitions[0]);
        std::string text;
        for (const FieldDefinition& definition : definitions) {
            text += (text.empty() ? "[" : ", ") + value({node.record, &definition, 0});
        }
        return text + ']';
    }
    const bool list = node.kind == LayoutKind::list;
    std::string text;
    for (const LayoutNode* const child : shown_children(node)) {
        if (!text.empty()) text += ", ";
        if (!list) text += child->name + ": ";
        text += flow(*child);
    }
    return list ? '[' + text + ']' : '{' + text + '}';
}

bool ValueWriter::is_zero(const LayoutNode& node) const {
    if (node.kind == LayoutKind::map || node.kind == LayoutKind::list) {
        return std::all_of(node.children.begin(), node.children.end(),
                           [this](const LayoutNode& child) { return is_zero(child); });
    }
    for (const FieldDefinition& definition : node.own_record().definition->fields) {
        if (node.kind == LayoutKind::field && &definition != node.definition) continue;
        for (unsigned e = 0; e < definition.elements(); ++e) {
            if (FieldRef{node.record, &definition, e}.read_bits(tuning_) != 0) return false;
        }
    }
    return true;
}

bool ValueWriter::is_shown(const LayoutNode& node) const {
    if (base_ != nullptr) {
        if (node.kind == LayoutKind::field) {
            return !same_field(tuning_, *node.definition, *node.record, *base_);
        }
        return std::any_of(node.children.begin(), node.children.end(),
                           [this](const LayoutNode& child) { return is_shown(child); });
    }
    const bool has_defaults = node.record != nullptr && node.record->part == Part::caller;
    return !node.optional || has_defaults || !is_zero(node);
}

std::vector<const LayoutNode*> ValueWriter::shown_children(const LayoutNode& node) const {
    std::vector<const LayoutNode*> shown;
    std::size_t needed = 0;
    for (const LayoutNode& child : node.children) {
        const bool is_needed = is_shown(child);
        if (is_needed || node.kind == LayoutKind::list) shown.push_back(&child);
        if (is_needed) needed = shown.size();
    }
    shown.resize(needed);
    return shown;
}

std::vector<std::string> ValueWriter::other_bits(const LayoutNode& node) const {
    std::vector<std::string> lines;
    if (!node.has_other_bits) return lines;
    for (const OpaqueWord& word : opaque_words()) {
        if (word.record != node.record) continue;
        const std::size_t index = word.word - word.record->first_word;
        const std::uint32_t bits = load_word(tuning_, word.part, word.word) & word.mask;
        const std::uint32_t supplied =
            base_ == nullptr ? 0
                             : load_word(tuning_, word.part, base_->first_word + index) & word.mask;
        if (bits != supplied) lines.push_back(fmt::format("{}: 0x{:08x}", index, bits));
    }
    return lines;
}

}  // namespace imgtune::workbench
