#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_COMPARISON_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_COMPARISON_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbench/trace/trace_grammar.h"

namespace imgtune::workbench {

/// What two traces of one call tell differently.
struct LineDifference {
    std::size_t line = 0;   ///< in the phone's trace, from 0
    std::size_t value = 0;  ///< of the line's values, from 0
    std::string name;       ///< of that value, or of the line when its words differ
    std::string phone;      ///< the value, or the whole line
    std::string desk;       ///< empty: this trace has no such line
};

struct LinesComparison {
    std::uint64_t compared = 0;
    std::uint64_t missing = 0;  ///< lines that the phone's trace lacks though their switch was on
    /// Lines that differ: of the phone's trace, from 0, and the desk's; none: it has no such line.
    std::vector<std::pair<std::size_t, std::optional<std::size_t>>> differing;
};

/// Where two lines of one label differ, value by value; where their words do, once, as a whole.
std::vector<LineDifference> differences_of(std::size_t line, std::string_view phone,
                                           std::string_view desk);

/// Holds a phone's trace of one call against the desk's, line by line. Lines that the phone's trace
/// lacks are counted, but those of a function that it does not trace at all, and details of one of
/// which it traces the header alone, are not expected. `left_out` names lines not to be compared.
LinesComparison compare_traces(std::span<const std::string> phone,
                               std::span<const std::string> desk,
                               const std::function<bool(const TraceLine&)>& left_out);

}  // namespace imgtune::workbench

#endif
