#ifndef IMGTUNE_WORKBENCH_TRACE_LOGCAT_LINE_H
#define IMGTUNE_WORKBENCH_TRACE_LOGCAT_LINE_H

#include <compare>
#include <cstdint>
#include <string_view>

namespace imgtune::workbench {

/// Who wrote a line of a device's log.
struct LogWriter {
    std::int32_t process = 0;
    std::int32_t thread = 0;  ///< 0 where the form of the log does not name it

    friend bool operator==(const LogWriter&, const LogWriter&) = default;
    friend bool operator<(const LogWriter& a, const LogWriter& b) {
        return a.process != b.process ? a.process < b.process : a.thread < b.thread;
    }
};

/// A line of a device's log, cut into its parts. The texts are views into the line.
struct LogcatLine {
    std::string_view time;  ///< as written, such as "06-01 12:00:00.000"; empty where not told
    LogWriter writer;
    std::string_view tag;
    std::string_view message;
};

/// Cuts a line of the forms brief, tag, time and threadtime, with or without colour, year, epoch,
/// monotonic, usec, nsec, zone and uid. False: it is no such line, and `line` is undefined.
bool parse_logcat_line(std::string_view text, LogcatLine& line);

/// Cuts the header line of the form long, "[ 06-01 12:00:00.000  1234: 5678 D/tag ]"; the message
/// follows on the lines after it, up to an empty one.
bool parse_long_header(std::string_view text, LogcatLine& line);

/// The text without colour escapes at its ends.
std::string_view without_color(std::string_view text);

}  // namespace imgtune::workbench

#endif
