#ifndef IMGTUNE_WORKBENCH_TUNING_LAYOUT_H
#define IMGTUNE_WORKBENCH_TUNING_LAYOUT_H

#include <stdexcept>
#include <string>
#include <vector>

#include "workbench/tuning/fields.h"

// Where the records of a tuning stand in its YAML forms.

namespace imgtune::workbench {

enum class Layout {
    current,   ///< imgtune-tuning/2
    first,     ///< imgtune-tuning/1: lists of gains and matrices, no kelvin, no `like`
    settings,  ///< caller.yaml beside stored images: what these have no place for
};

enum class LayoutKind {
    map,     ///< children by name
    list,    ///< children by index
    values,  ///< a record shown as a value, or as a list of its values
    field,
};

/// A YAML form: maps and lists down to records, and their fields.
struct LayoutNode {
    LayoutKind kind = LayoutKind::map;
    std::string name;  ///< key or index
    std::string path;  ///< what findings call it: a record's own path in every layout
    bool optional = false;
    const Record* record = nullptr;               ///< values, field; a map that is one record
    const FieldDefinition* definition = nullptr;  ///< field
    bool has_other_bits = false;                  ///< the map may hold other_bits, of its record
    std::string likes;  ///< the map may be `like` another record below this path
    std::vector<LayoutNode> children;

    const LayoutNode* child(std::string_view key) const;

    /// The record of a node that must have one; a layout that forgot it is refused.
    const Record& own_record() const {
        if (record == nullptr) throw std::logic_error("no record at " + path);
        return *record;
    }
};

const LayoutNode& layout_tree(Layout layout);

/// What a commented tuning says above the map or list at `path`; empty: nothing.
std::string section_text(std::string_view path);

}  // namespace imgtune::workbench

#endif
