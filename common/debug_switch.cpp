#include "common/debug_switch.h"

#include <limits>

#include "common/arithmetic.h"
#include "common/platform.h"

namespace imgtune {

namespace {

constexpr bool is_blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

std::int32_t parse_integer(const char* text) {
    while (is_blank(*text)) ++text;
    const bool negative = *text == '-';
    if (negative || *text == '+') ++text;

    // 64-bit limits: 2^63 - 1, or 2^63 behind a minus sign.
    const std::uint64_t limit = std::numeric_limits<std::int64_t>::max() + std::uint64_t{negative};
    std::uint64_t magnitude = 0;
    for (; is_digit(*text); ++text) {
        const auto digit = static_cast<std::uint64_t>(*text - '0');
        magnitude = magnitude > (limit - digit) / 10 ? limit : magnitude * 10 + digit;
    }
    const auto low = static_cast<std::uint32_t>(magnitude);
    return as_signed(negative ? 0U - low : low);
}

std::int32_t DebugSwitches::read(const char* name) {
    value_[0] = '\0';  // a read that fails and writes nothing is off, too
    property_get(name, value_, "0");
    const auto digit = static_cast<std::uint32_t>(value_[0]) - '0';
    if (digit <= 9 && value_[1] == '\0') return as_signed(digit);  // what most switches hold
    return parse_integer(value_);
}

std::int32_t read_debug_switch(const char* name) {
    DebugSwitches switches;
    return switches.read(name);
}

}  // namespace imgtune
