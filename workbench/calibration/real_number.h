#ifndef IMGTUNE_WORKBENCH_CALIBRATION_REAL_NUMBER_H
#define IMGTUNE_WORKBENCH_CALIBRATION_REAL_NUMBER_H

#include <optional>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// A finite decimal number ("-0.25", "2.86e3") with blanks around it, in any locale; none for
/// anything else.
std::optional<double> parse_real(std::string_view text);

/// Foreign text for a message: quoted, cut when long, without control characters.
std::string quoted_value(std::string_view text);

}  // namespace imgtune::workbench

#endif
