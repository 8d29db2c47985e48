#include "support/platform_fakes.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace imgtune::fakes {

std::map<std::string, std::string> properties;
std::vector<std::string> property_reads;
std::vector<LogLine> log_lines;

void reset() {
    properties.clear();
    property_reads.clear();
    log_lines.clear();
}

void reset_with(std::initializer_list<const char*> switches_on) {
    reset();
    for (const char* name : switches_on) properties[name] = "1";
}

std::string log_text() {
    std::string text;
    for (const LogLine& line : log_lines) text += line.text;
    return text;
}

}  // namespace imgtune::fakes

extern "C" int property_get(const char* name, char* value, const char* default_value) {
    using namespace imgtune::fakes;
    property_reads.emplace_back(name);
    const auto found = properties.find(name);
    const std::string text = found == properties.end() ? default_value : found->second;
    std::memcpy(value, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
}

extern "C" __attribute__((format(printf, 3, 4))) int __android_log_print(int priority,
                                                                         const char* tag,
                                                                         const char* format, ...) {
    char text[2048];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text, sizeof(text), format, values);
    va_end(values);
    imgtune::fakes::log_lines.push_back({priority, tag, text, format});
    return length;
}
