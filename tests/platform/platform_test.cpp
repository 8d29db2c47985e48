#include "common/platform.h"  // the library's own declarations, which must agree

#include <android/log.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/stderr_writes.h"

namespace {

using std::string;

string value_of(const string& name, const char* default_value = "unset") {
    char value[PROPERTY_VALUE_MAX];
    std::memset(value, '#', sizeof(value));
    const int length = property_get(name.c_str(), value, default_value);
    EXPECT_EQ(length, static_cast<int>(std::strlen(value)));
    return value;
}

TEST(Properties, KeepTheDevicesLimits) {
    const string longest(91, 'x');
    const string too_long(92, 'x');
    EXPECT_EQ(value_of("test.never.set"), "unset");
    EXPECT_EQ(value_of("test.never.set", nullptr), "");
    EXPECT_EQ(value_of("test.never.set", too_long.c_str()), longest);
    struct {
        string name;
        const char* value;
        int result;
        string after;
    } const steps[] = {
        {"test.a", "1", 0, "1"},
        {"test.a", longest.c_str(), 0, longest},
        {"test.a", too_long.c_str(), -1, longest},  // refused: the old value stays
        {"test.a", "short again", 0, "short again"},
        {"test.a", "", 0, "unset"},
        {"test.a", "2", 0, "2"},
        {"test.a", nullptr, 0, "unset"},
        {"test.a.b", "3", 0, "3"},
        {"", "1", -1, "unset"},
        {"a name", "1", -1, "unset"},
        {string(127, 'n'), "4", 0, "4"},
        {string(128, 'n'), "5", -1, "unset"},
        {"abcdefgh.12345678", "6", 0, "6"},
        {"abcdefgh.12345679", "7", 0, "7"},
        {"abcdefgh.12345678", "8", 0, "8"},
        {"Aa0.-_@:", "9", 0, "9"},
    };
    for (const auto& step : steps) {
        EXPECT_EQ(property_set(step.name.c_str(), step.value), step.result) << step.name;
        EXPECT_EQ(value_of(step.name), step.after) << step.name;
    }
    EXPECT_EQ(value_of("abcdefgh.12345679"), "7");
    EXPECT_EQ(property_set(nullptr, "1"), -1);
}

TEST(Properties, ThreadsSeeWholeValues) {
    const string values[] = {string(91, 'a'), string(90, 'b')};
    property_set("test.shared", values[0].c_str());
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            while (!done) {
                char value[PROPERTY_VALUE_MAX];
                const int length = property_get("test.shared", value, "");
                const string& whole = values[value[0] == 'a' ? 0 : 1];
                if (std::memcmp(value, whole.c_str(), whole.size() + 1) != 0 ||
                    length != static_cast<int>(whole.size())) {
                    ++torn;
                }
            }
        });
    }
    std::vector<std::thread> writers;
    for (int i = 0; i < 2; ++i) {
        writers.emplace_back([&, i] {
            for (int n = 0; n < 20000; ++n) {
                for (const string& value : values) property_set("test.shared", value.c_str());
                const string own = "test.thread" + std::to_string(i) + "." + std::to_string(n % 40);
                property_set(own.c_str(), std::to_string(n).c_str());
                if (n % 40 == 0 && value_of(own) != std::to_string(n)) ++torn;
            }
        });
    }
    for (auto& thread : writers) thread.join();
    done = true;
    for (auto& thread : readers) thread.join();
    EXPECT_EQ(torn, 0);
    for (int n = 0; n < 40; ++n) {
        const string last = std::to_string(19960 + n);
        EXPECT_EQ(value_of("test.thread0." + std::to_string(n)), last);
        EXPECT_EQ(value_of("test.thread1." + std::to_string(n)), last);
    }
}

// Last of its kind: it leaves the store full.
TEST(Properties, FullStoreRefusesNewNamesOnly) {
    property_set("test.kept", "1");
    int added = 0;
    while (added < 1000 && property_set(("test.fill" + std::to_string(added)).c_str(), "1") == 0) {
        ++added;
    }
    EXPECT_GE(added, 250);
    EXPECT_LE(added, 383);
    EXPECT_EQ(value_of("test.fill" + std::to_string(added)), "unset");
    EXPECT_EQ(property_set("test.kept", "2"), 0);
    EXPECT_EQ(value_of("test.kept"), "2");
    for (int i = 0; i < added; ++i) EXPECT_EQ(value_of("test.fill" + std::to_string(i)), "1");
}

string pid() {
    char text[16];
    std::snprintf(text, sizeof(text), "(%5d): ", getpid());
    return text;
}

TEST(Log, WritesLogcatsBriefForm) {
    struct {
        int priority;
        const char* tag;
        const char* message;
        std::vector<string> lines;  // without the newline of each
    } const rows[] = {
        {ANDROID_LOG_DEBUG, "ispfeature", "text", {"D/ispfeature" + pid() + "text"}},
        {ANDROID_LOG_DEBUG, "ispfeature", "text\n", {"D/ispfeature" + pid() + "text"}},
        {ANDROID_LOG_INFO, "abc", "", {"I/abc     " + pid()}},
        {ANDROID_LOG_VERBOSE, "12345678", "v", {"V/12345678" + pid() + "v"}},
        {ANDROID_LOG_WARN, nullptr, "w", {"W/        " + pid() + "w"}},
        {ANDROID_LOG_ERROR,
         "t",
         "a\n\n b\n",
         {"E/t       " + pid() + "a", "E/t       " + pid(), "E/t       " + pid() + " b"}},
        {ANDROID_LOG_FATAL, "t", "f", {"F/t       " + pid() + "f"}},
        {9, "t", "?", {"?/t       " + pid() + "?"}},
        {-1, "t", "?", {"?/t       " + pid() + "?"}},
    };
    for (const auto& row : rows) {
        const auto writes = stderr_writes([&] {
            errno = ENOENT;
            EXPECT_EQ(__android_log_print(row.priority, row.tag, "%s", row.message), 1);
            EXPECT_EQ(errno, ENOENT);
        });
        ASSERT_EQ(writes.size(), row.lines.size()) << row.message;
        for (std::size_t i = 0; i < writes.size(); ++i) EXPECT_EQ(writes[i], row.lines[i] + "\n");
    }

    const auto cut = stderr_writes([] { __android_log_print(3, "t", "%02000d", 7); });
    EXPECT_EQ(cut, std::vector<string>{"D/t       " + pid() + string(1023, '0') + "\n"});
}

TEST(Log, LinesOfSeveralThreadsDoNotMix) {
    const auto writes = stderr_writes([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([i] {
                for (int n = 0; n < 20; ++n) __android_log_print(3, "t", "%d.%d", i, n);
            });
        }
        for (auto& thread : threads) thread.join();
    });
    std::vector<string> expected;
    for (int i = 0; i < 80; ++i) {
        expected.push_back("D/t       " + pid() + std::to_string(i / 20) + "." +
                           std::to_string(i % 20) + "\n");
    }
    EXPECT_TRUE(std::ranges::is_permutation(writes, expected));
}

std::vector<string> captured;

void capture(const __android_log_message* message) {
    EXPECT_EQ(message->struct_size, sizeof(*message));
    captured.push_back(std::to_string(message->priority) + " " + message->tag + " " +
                       message->message);
}

TEST(Log, ProgramsLoggerTakesWholeMessages) {
    __android_log_set_logger(capture);
    const auto writes = stderr_writes(
        [] { __android_log_print(ANDROID_LOG_DEBUG, "ispfeature", "%d\n%d\n", 1, 2); });
    __android_log_set_logger(nullptr);
    EXPECT_TRUE(writes.empty());
    EXPECT_EQ(captured, std::vector<string>{"3 ispfeature 1\n2\n"});
    EXPECT_EQ(stderr_writes([] { __android_log_print(3, "t", "x"); }).size(), 1U);
}

}  // namespace
