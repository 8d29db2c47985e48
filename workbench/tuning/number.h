#ifndef IMGTUNE_WORKBENCH_TUNING_NUMBER_H
#define IMGTUNE_WORKBENCH_TUNING_NUMBER_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// A number of a tuning's text.
struct Number {
    enum class Kind {
        integer,  ///< "-230": as stored
        hex,      ///< "0x1f": as stored
        scaled,   ///< "1.53", "512/512": in the field's unit
    };
    Kind kind = Kind::integer;
    std::int64_t numerator = 0;
    std::int64_t denominator = 1;  ///< above 0; not 1 for scaled numbers alone

    /// The number times `scale` (1..10000), rounded to the nearest integer, halves away from zero.
    std::int64_t times(std::int64_t scale) const;
};

/// Decimal integers, 0x hex, decimals and fractions of at most 14 digits; nothing else. When there
/// is no number, `reason` may say why, as a remark that follows the text: "looks octal".
std::optional<Number> parse_number(std::string_view text, std::string& reason);

/// A decimal or 0x hex integer alone.
std::optional<std::int64_t> parse_integer(std::string_view text);

}  // namespace imgtune::workbench

#endif
