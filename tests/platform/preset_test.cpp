// Alone in its program: the store reads its file on the first use.

#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/stderr_writes.h"

namespace {

using std::string;

string value_of(const char* name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name, value, "unset");
    return value;
}

TEST(PropertyFile, IsReadOnceAndBadLinesAreReported) {
    const string path = testing::TempDir() + "imgtune_preset_test.prop";
    std::ofstream(path) << "# a comment\n"
                           "\n"
                           "debug.smooth_ccm.enable=1\n"
                           "  debug.blanks = two words \r\n"
                           "debug.equals=a=b\n"
                           "no sign\n"
                           "=1\n"
                           "two words=1\n"
                           "debug.empty=\n"
                        << "debug.long=" << string(92, 'x') << '\n'
                        << "debug.longest=" << string(91, 'x') << '\n'
                        << "debug.zero=1" << '\0' << "2\n"
                        << "  # another\n"
                           "debug.twice=1\n"
                           "debug.twice=2\n"
                           "debug.last=no newline";
    setenv("IMGTUNE_PROPERTIES", path.c_str(), 1);

    string report;
    for (const string& text : stderr_writes([] { value_of("debug.any"); })) report += text;
    const string rule = ": a name has 1 to 127 letters, digits and . - _ @ :; skipped: ";
    EXPECT_EQ(report,
              path + ":6: no '=', expected name=value; skipped: no sign\n" + path + ":7" + rule +
                  "=1\n" + path + ":8" + rule + "two words=1\n" + path +
                  ":10: a value has at most 91 characters; skipped: debug.long=" + string(92, 'x') +
                  "\n" + path + ":12: a zero byte in the value; skipped: debug.zero=1\n");

    struct {
        const char* name;
        string value;
    } const rows[] = {
        {"debug.smooth_ccm.enable", "1"}, {"debug.blanks", "two words"},
        {"debug.equals", "a=b"},          {"debug.empty", "unset"},
        {"debug.long", "unset"},          {"debug.longest", string(91, 'x')},
        {"debug.zero", "unset"},          {"debug.twice", "2"},
        {"debug.last", "no newline"},
    };
    for (const auto& row : rows) EXPECT_EQ(value_of(row.name), row.value) << row.name;

    std::ofstream(path) << "debug.twice=3\n";
    EXPECT_EQ(value_of("debug.twice"), "2");
    EXPECT_EQ(property_set("debug.twice", "4"), 0);
    EXPECT_EQ(value_of("debug.twice"), "4");
    std::remove(path.c_str());
}

// Runs before the other test, as death tests do, in a child whose store is fresh.
TEST(PropertyFileDeathTest, MissingFileIsReported) {
    EXPECT_EXIT(
        {
            setenv("IMGTUNE_PROPERTIES", "/nonexistent/properties", 1);
            std::exit(property_set("test.set", "1") == 0 && value_of("test.set") == "1" ? 0 : 1);
        },
        testing::ExitedWithCode(0),
        "^/nonexistent/properties: cannot be read \\(IMGTUNE_PROPERTIES\\): No such file");
}

TEST(PropertyFileDeathTest, EmptyPathNamesNoFile) {
    EXPECT_EXIT(
        {
            setenv("IMGTUNE_PROPERTIES", "", 1);
            std::exit(value_of("debug.any") == "unset" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "^$");
}

}  // namespace
