// Writes what the library traced as Android's own log library does, in the form that is named: the
// lines that 'adb logcat -v FORM -v MODIFIER ...' prints.
// Usage: logcat_forms FORM [MODIFIER...] <brief.log
#include <log/logprint.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

constexpr int kDebug = 3;  // ANDROID_LOG_DEBUG

void print(AndroidLogFormat* format, const std::string& tag, int process, int thread, long number,
           const std::string& message) {
    AndroidLogEntry entry{};
    entry.tv_sec = 1717236000 + number / 100;
    entry.tv_nsec = number % 100 * 10000000 + 123456;
    entry.priority = static_cast<android_LogPriority>(kDebug);
    entry.uid = 1041;  // audioserver, of whom Android knows the name
    entry.pid = process;
    entry.tid = thread;
    entry.tag = tag.c_str();
    entry.tagLen = tag.size();
    entry.message = message.c_str();
    entry.messageLen = message.size();
    size_t length = 0;
    char room[512];
    char* const text = android_log_formatLogLine(format, room, sizeof(room), &entry, &length);
    std::fwrite(text, 1, length, stdout);
    if (text != room) std::free(text);
}

}  // namespace

int main(int argc, char** argv) {
    AndroidLogFormat* const format = android_log_format_new();
    for (int i = 1; i < argc; ++i) {
        const AndroidLogPrintFormat word = android_log_formatFromString(argv[i]);
        if (word == FORMAT_OFF) {
            std::fprintf(stderr, "liblog knows no '%s'\n", argv[i]);
            return 2;
        }
        android_log_setPrintFormat(format, word);
    }
    const std::string end_of_prefix = "): ";
    long number = 0;
    for (std::string line; std::getline(std::cin, line); ++number) {
        const std::string message = line.substr(line.find(end_of_prefix) + end_of_prefix.size());
        print(format, "ispfeature", 1234, 1250, number, message);
        if (number % 7 == 0) print(format, "Camera3-Device", 1234, 1251, number, "Fullgain = 1");
    }
    android_log_format_free(format);
    return 0;
}
