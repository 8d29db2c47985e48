#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_COMPARISON_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_COMPARISON_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace imgtune::workbench {

/// What a trace line tells of, without its values: "Temporal CCM 0", "[InterParamPartialY()]
/// PY_Out".
std::string_view trace_label(std::string_view line);

/// The name of the value-th number of a line: "Temporal CCM 0[4]", "InterParamGlobal (Out) C".
std::string trace_value_name(std::string_view line, std::size_t value);

/// A line that two traces of one call tell differently.
struct LineDifference {
    std::size_t line = 0;   ///< in the phone's trace, from 0
    std::size_t value = 0;  ///< of the line's numbers, from 0
    std::string name;       ///< of that value, or of the line when its words differ
    std::string phone;      ///< the value, or the whole line
    std::string desk;       ///< empty: this trace has no such line
};

struct LinesComparison {
    std::uint64_t compared = 0;
    std::uint64_t missing = 0;  ///< lines that the phone's trace lacks though their switch was on
    std::optional<LineDifference> first;
};

/// Holds a phone's trace of one call against the desk's, line by line. Lines that the phone's trace
/// lacks are counted, but those of a function that it does not trace at all, and details of one of
/// which it traces the header alone, are not expected. `left_out` names labels not to be compared.
LinesComparison compare_traces(std::span<const std::string> phone,
                               std::span<const std::string> desk,
                               const std::function<bool(std::string_view)>& left_out);

}  // namespace imgtune::workbench

#endif
