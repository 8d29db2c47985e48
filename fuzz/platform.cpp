// What the library asks of its process, as quick as can be.

#include <android/log.h>
#include <cutils/properties.h>

#include <cstdarg>

#include "input.h"

namespace {

std::uint32_t switches = 0;

}  // namespace

void imgtune::fuzz::set_switches(std::uint32_t bits) {
    switches = bits;
}

int property_get(const char* name, char* value, const char*) {
    constexpr const char* kValues[] = {"0", "1", "2", " -9999999999999999999999x"};
    unsigned sum = 0;
    for (; switches != 0 && *name != '\0'; ++name)
        sum = sum * 7 + static_cast<unsigned char>(*name);
    const char* text = kValues[switches >> 2 * (sum % 16) & 3U];
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
    return 1;
}
