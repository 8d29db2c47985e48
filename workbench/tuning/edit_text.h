#ifndef IMGTUNE_WORKBENCH_TUNING_EDIT_TEXT_H
#define IMGTUNE_WORKBENCH_TUNING_EDIT_TEXT_H

#include <optional>
#include <string>
#include <vector>

#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// A value to put in the place of another in a tuning's text.
struct TextEdit {
    std::vector<std::string> keys;  ///< down to the value: {"caller", "weights"}
    std::string value;              ///< as YAML, in one line: "[3, 8, 8]"
};

/// The text with the values replaced and everything else, comments and layout, as it was. A value
/// that the text leaves out stays so where its place takes it from another (`like`). None when that
/// does not give `wanted`: reading the text is the proof.
std::optional<std::string> edited_text(const std::string& yaml, const std::vector<TextEdit>& edits,
                                       const Tuning& wanted);

/// Whether two tunings hold the same bits.
bool same_bits(const Tuning& a, const Tuning& b);

}  // namespace imgtune::workbench

#endif
