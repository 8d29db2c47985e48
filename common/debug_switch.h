#ifndef IMGTUNE_COMMON_DEBUG_SWITCH_H
#define IMGTUNE_COMMON_DEBUG_SWITCH_H

#include <cstddef>
#include <cstdint>

namespace imgtune {

/// Decimal integer at the start of a text, as atoi reads it on a 64-bit system: blanks and a sign
/// first, 0 without digits, saturated to 64 bits and cut to 32. Independent of the locale.
///
/// Not inlined, so that a read of one digit saves no registers for it.
[[gnu::noinline]] std::int32_t parse_integer(const char* text);

/// Reads debug switches, which are system properties, into one buffer that starts out zeroed.
class DebugSwitches {
  public:
    /// The switch's value now; 0 (off) when it is not set.
    std::int32_t read(const char* name);

  private:
    static constexpr std::size_t kValueSize = 92;
    char value_[kValueSize] = {};
};

/// A switch's value now, read into a buffer of its own.
std::int32_t read_debug_switch(const char* name);

}  // namespace imgtune

#endif
