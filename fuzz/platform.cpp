#include <android/log.h>
#include <cutils/properties.h>

#include <cstdarg>

#include "input.h"

namespace {

std::uint32_t switches = 0;
std::uint64_t log_digest = 0;

constexpr const char* kValues[] = {"0", "1", "2", " -9999999999999999999999x"};

std::size_t value_index(const char* name) {
    unsigned sum = 0;
    for (; *name != '\0'; ++name) sum = sum * 7 + static_cast<unsigned char>(*name);
    return switches >> 2 * (sum % 16) & 3U;
}

}  // namespace

namespace imgtune::fuzz {

void set_switches(std::uint32_t bits) {
    switches = bits;
}

int switch_value(const char* name) {
    // The last one saturates to -2^63, whose low 32 bits are 0.
    return static_cast<int>(value_index(name) % 3);
}

std::uint64_t take_log_digest() {
    const std::uint64_t digest = log_digest;
    log_digest = 0;
    return digest;
}

}  // namespace imgtune::fuzz

int property_get(const char* name, char* value, const char*) {
    const char* text = kValues[value_index(name)];
    std::strcpy(value, text);
    return static_cast<int>(std::strlen(text));
}

int __android_log_print(int, const char*, const char* format, ...) {
    char text[4096];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text, sizeof(text), format, values);
    va_end(values);
    imgtune::fuzz::require(length > 0 && length < 1024, "a line fits the log");
    for (int i = 0; i < length; ++i) {
        log_digest = (log_digest ^ static_cast<unsigned char>(text[i])) * 0x100000001b3U;
    }
    return 1;
}
