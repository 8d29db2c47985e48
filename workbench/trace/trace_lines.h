#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_LINES_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_LINES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace imgtune::workbench {

/// All whole numbers of a text, "-3" and "(4,5)" alike; one beyond 64 bits is left out.
std::vector<std::int64_t> integers_of(std::string_view text);

/// All decimal numbers of a text, "nan" and "inf" included.
std::vector<double> reals_of(std::string_view text);

/// The library's trace lines in order, looked up by how they begin.
class TraceLines {
  public:
    explicit TraceLines(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    /// What follows `beginning` in the first line that has it.
    std::optional<std::string_view> rest(std::string_view beginning) const;
    bool has(std::string_view beginning) const { return rest(beginning).has_value(); }
    std::vector<std::int64_t> integers(std::string_view beginning) const;
    std::vector<double> reals(std::string_view beginning) const;

    /// The first number of the line; 0 without one.
    std::int64_t integer(std::string_view beginning) const;
    double real(std::string_view beginning) const;

    /// The number after "name = " in the first line that begins so and names it; else 0.
    std::int64_t named(std::string_view beginning, std::string_view name) const;

    /// The lines up to and with the first that begins so, and the lines after it.
    std::pair<TraceLines, TraceLines> split_after(std::string_view beginning) const;

  private:
    std::vector<std::string> lines_;
};

}  // namespace imgtune::workbench

#endif
