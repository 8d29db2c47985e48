#include "workbench/tuning/edit_text.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cstddef>

#include "workbench/tuning/fields.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

namespace {

/// A run of bytes in the text, and what comes in its place.
struct Replacement {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
};

/// Where a value that was written in one line ends; npos: it was not.
std::size_t end_of_value(const std::string& yaml, std::size_t begin) {
    const std::size_t line_end = std::min(yaml.find('\n', begin), yaml.size());
    if (yaml[begin] == '[') {
        const std::size_t close = yaml.find(']', begin);
        return close == yaml.npos ? close : close + 1;
    }
    const std::size_t end = yaml.find_first_of(" \t\r,}]", begin);
    return std::min(end, line_end);
}

/// Of the value behind `keys`, if the text has it. YAML's mark counts bytes.
std::optional<Replacement> find_value(const std::string& yaml, const YAML::Node& root,
                                      const TextEdit& edit) {
    YAML::Node node;
    node.reset(root);
    for (const std::string& key : edit.keys) {
        if (!node.IsMap() || !node[key]) return std::nullopt;
        node.reset(node[key]);
    }
    if (node.IsSequence() && node.Style() != YAML::EmitterStyle::Flow) return std::nullopt;
    if (node.IsMap() || node.Mark().is_null()) return std::nullopt;
    const auto begin = static_cast<std::size_t>(node.Mark().pos);
    if (begin >= yaml.size()) return std::nullopt;
    const std::size_t end = end_of_value(yaml, begin);
    if (end == yaml.npos) return std::nullopt;
    return Replacement{begin, end, edit.value};
}

}  // namespace

bool same_bits(const Tuning& a, const Tuning& b) {
    if (a.has_ccm != b.has_ccm || a.has_color != b.has_color) return false;
    for (const Part part : kParts) {
        for (std::size_t w = 0; w < part_words(part); ++w) {
            if (load_word(a, part, w) != load_word(b, part, w)) return false;
        }
    }
    return true;
}

std::optional<std::string> edited_text(const std::string& yaml, const std::vector<TextEdit>& edits,
                                       const Tuning& wanted) {
    std::vector<Replacement> replacements;
    try {
        const YAML::Node root = YAML::Load(yaml);
        for (const TextEdit& edit : edits) {
            if (const auto found = find_value(yaml, root, edit)) replacements.push_back(*found);
        }
    } catch (const YAML::Exception&) {
        return std::nullopt;
    }
    // From the end, so that the places before stay where they are.
    std::sort(replacements.begin(), replacements.end(),
              [](const Replacement& a, const Replacement& b) { return a.begin > b.begin; });
    std::string text = yaml;
    for (const Replacement& each : replacements)
        text.replace(each.begin, each.end - each.begin, each.text);
    Faults faults;
    const Tuning read = read_yaml(text, "edited", faults);
    if (faults.has_errors() || !same_bits(read, wanted)) return std::nullopt;
    return text;
}

}  // namespace imgtune::workbench
