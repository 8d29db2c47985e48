#ifndef IMGTUNE_WORKBENCH_TUNING_YAML_VALUE_WRITER_H
#define IMGTUNE_WORKBENCH_TUNING_YAML_VALUE_WRITER_H

#include <string>
#include <vector>

#include "workbench/tuning/layout.h"

namespace imgtune::workbench {

/// A text in double quotes.
std::string quoted(const std::string& text);

/// The texts of a tuning's values and what of them needs to be written.
class ValueWriter {
  public:
    explicit ValueWriter(const Tuning& tuning) : tuning_(tuning) {}

    const Tuning& tuning() const { return tuning_; }

    /// From here on a record shows only what sets it apart from `base`; null: all of it.
    void set_base(const Record* base) { base_ = base; }

    /// Whether the node has something to say that reading would not supply by itself.
    bool is_shown(const LayoutNode& node) const;

    /// The children that are; of a list, those up to the last one that is.
    std::vector<const LayoutNode*> shown_children(const LayoutNode& node) const;

    /// The node on one line, without its other_bits.
    std::string flow(const LayoutNode& node) const;

    /// "17: 0x00000003" for every word of other_bits that is shown.
    std::vector<std::string> other_bits(const LayoutNode& node) const;

  private:
    std::string value(const FieldRef& field) const;
    std::string field_text(const Record& record, const FieldDefinition& definition) const;
    bool is_zero(const LayoutNode& node) const;

    const Tuning& tuning_;
    const Record* base_ = nullptr;
};

}  // namespace imgtune::workbench

#endif
