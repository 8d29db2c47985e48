#ifndef IMGTUNE_WORKBENCH_JSON_SARIF_H
#define IMGTUNE_WORKBENCH_JSON_SARIF_H

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// The text of a line of a file, counted from 1; empty when it is not known.
using SourceLine = std::function<std::string(const std::string& file, int line)>;

/// Where on a line a finding stands, in characters from 1; `end` is the first behind it.
struct Columns {
    std::size_t begin = 1;
    std::size_t end = 1;
};

/// The key that names a field, with its value as far as the line holds it; without such a key all
/// of the line but its indentation.
Columns columns_of(std::string_view line, std::string_view path);

/// Findings as SARIF 2.1.0, which code reviews show at the lines they are about. Their codes are
/// the rules.
nlohmann::ordered_json sarif_of(const Faults& faults, const SourceLine& source_line);

}  // namespace imgtune::workbench

#endif
