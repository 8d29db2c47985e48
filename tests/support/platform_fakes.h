#ifndef IMGTUNE_TESTS_SUPPORT_PLATFORM_FAKES_H
#define IMGTUNE_TESTS_SUPPORT_PLATFORM_FAKES_H

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

// A test that links this file answers the library's property reads and records its log itself.
// Not for tests with threads, which link the stand-ins.

namespace imgtune::fakes {

struct LogLine {
    int priority;
    std::string tag;
    std::string text;
    std::string format;
};

extern std::map<std::string, std::string> properties;
extern std::vector<std::string> property_reads;  ///< names, in order
extern std::vector<LogLine> log_lines;

/// Forgets every property, read and line.
void reset();

/// The same, with these properties set to "1".
void reset_with(std::initializer_list<const char*> switches_on);

/// The recorded texts, joined.
std::string log_text();

}  // namespace imgtune::fakes

#endif
