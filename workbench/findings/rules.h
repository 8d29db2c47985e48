#ifndef IMGTUNE_WORKBENCH_FINDINGS_RULES_H
#define IMGTUNE_WORKBENCH_FINDINGS_RULES_H

#include <span>
#include <string_view>

namespace imgtune::workbench {

enum class Severity { warning, error };

/// A kind of finding. C: calibrations (C0..: their text; C1..: what they hold; C2..: what was asked
/// for; C3..: tunings to be written as one). F: frame logs. P: photographs of a chart. T0..: the
/// text cannot be read as a tuning; T1..: matrices; T2..: colour.
struct Rule {
    const char* code;
    Severity severity;
    const char* title;
};

/// All of them, by code.
std::span<const Rule> rules();

/// Null: there is no such code.
const Rule* find_rule(std::string_view code);

}  // namespace imgtune::workbench

#endif
