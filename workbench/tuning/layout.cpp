#include "workbench/tuning/layout.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace imgtune::workbench {

namespace {

std::vector<std::string_view> split(std::string_view path) {
    std::vector<std::string_view> parts;
    for (std::size_t dot = 0; (dot = path.find('.')) != path.npos; path.remove_prefix(dot + 1)) {
        parts.push_back(path.substr(0, dot));
    }
    parts.push_back(path);
    return parts;
}

/// The node at `path` below `node`, made where it is missing.
LayoutNode& node_at(LayoutNode& node, std::string_view path) {
    LayoutNode* at = &node;
    for (const std::string_view name : split(path)) {
        auto child =
            std::find_if(at->children.begin(), at->children.end(),
                         [&](const LayoutNode& candidate) { return candidate.name == name; });
        if (child == at->children.end()) {
            if (name[0] >= '0' && name[0] <= '9') at->kind = LayoutKind::list;
            LayoutNode made;
            made.name = name;
            made.path = at->path.empty() ? std::string(name) : at->path + '.' + std::string(name);
            child = at->children.insert(at->children.end(), std::move(made));
        }
        at = &*child;
    }
    return *at;
}

/// Where a record stands in a layout; empty: nowhere.
std::string place_of(const Record& record, Layout layout) {
    const bool kelvin = record.part == Part::kelvin;
    if (layout == Layout::current) return record.path;
    if (layout == Layout::settings) {
        if (record.part == Part::caller) return record.path;
        // ccm.rows.normal.0.ct: kelvin.normal.0
        return kelvin ? fmt::format("kelvin.{}.{}", kRowNames[record.first_word / 8],
                                    record.first_word % 8)
                      : std::string();
    }
    if (kelvin) return {};
    const bool gain = record.definition == &kGainRecord;
    if (!gain && record.definition != &kMatrixRecord) return record.path;
    // ccm.rows.normal.0.gain: ccm.rows.normal.gains.0
    const std::vector<std::string_view> parts = split(record.path);
    return fmt::format("ccm.rows.{}.{}.{}", parts[2], gain ? "gains" : "matrices", parts[3]);
}

void add_record(LayoutNode& root, const Record& record, Layout layout) {
    const std::string place = place_of(record, layout);
    if (place.empty()) return;
    LayoutNode& top = node_at(root, place);
    top.path = record.path;
    if (record.definition->as_list) {
        top.kind = LayoutKind::values;
        top.record = &record;
        top.optional = record.definition->optional;
        return;
    }
    for (const FieldDefinition& definition : record.definition->fields) {
        LayoutNode& leaf = node_at(top, definition.name);
        leaf.kind = LayoutKind::field;
        leaf.record = &record;
        leaf.definition = &definition;
        leaf.optional = definition.optional;
    }
    const bool image = record.definition == &kColorImageRecord;
    const bool smoothing = record.definition == &kColorTuningRecord;
    top.has_other_bits = image || record.definition == &kCcmHeadRecord;
    top.record = &record;
    top.optional = record.definition->optional;
    if (layout == Layout::current && image) top.likes = "color.images.";
    if (layout == Layout::current && smoothing) top.likes = "color.tuning.";
}

/// What has only optional children is optional.
void settle(LayoutNode& node) {
    for (LayoutNode& child : node.children) settle(child);
    if (node.children.empty() || node.record != nullptr) return;
    node.optional = std::all_of(node.children.begin(), node.children.end(),
                                [](const LayoutNode& child) { return child.optional; });
}

LayoutNode make_tree(Layout layout) {
    LayoutNode root;
    for (const Record& record : records()) add_record(root, record, layout);
    settle(root);
    return root;
}

}  // namespace

const LayoutNode* LayoutNode::child(std::string_view key) const {
    for (const LayoutNode& each : children) {
        if (each.name == key) return &each;
    }
    return nullptr;
}

const LayoutNode& layout_tree(Layout layout) {
    static const LayoutNode trees[] = {make_tree(Layout::current), make_tree(Layout::first),
                                       make_tree(Layout::settings)};
    return trees[static_cast<std::size_t>(layout)];
}

}  // namespace imgtune::workbench
