#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_READER_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_READER_H

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/text/line_reader.h"
#include "workbench/trace/logcat_line.h"
#include "workbench/trace/trace_grammar.h"

namespace imgtune::workbench {

/// The trace of one call of the library, as a device's log holds it.
struct TracedCall {
    TracedJob job = TracedJob::ccm;
    LogWriter writer;
    std::string time;                ///< of its first line, as written; empty where not told
    std::uint64_t line = 0;          ///< of the log, from 1: its first line
    bool lost_lines = false;         ///< the log says that lines were lost in it or just before it
    std::vector<std::string> lines;  ///< without line ends; as many as the log has
};

/// What a log held beside whole calls.
struct TraceTotals {
    std::uint64_t lines = 0;        ///< of the log
    std::uint64_t trace_lines = 0;  ///< of the library
    std::uint64_t stray_lines =
        0;                         ///< of the library, in no call that the log shows from its start
    std::uint64_t lost_lines = 0;  ///< that the log itself reports as lost, of whomever
};

/// Reads the library's trace out of a device's log, in constant memory whatever its length: the
/// forms of parse_logcat_line and long, lines of other tags and writers between.
///
/// With some switches alone the last line of a colour call says nothing of its being the last: the
/// call ends where its writer begins the next one, or where such a call ended before and the source
/// pauses, so that of a live log no call waits for the next.
class TraceReader {
  public:
    /// The source stays the caller's.
    explicit TraceReader(ByteSource& source) : lines_(source) {}

    /// The next call, in the order in which the log shows that they ended; false at the end.
    bool next(TracedCall& call);

    const TraceTotals& totals() const { return totals_; }

  private:
    struct Stream {
        std::optional<TracedCall> open;
        std::array<bool, 2> lost_lines{};  ///< before the next call of each job
        std::vector<std::string> endings;  ///< labels of lines that were a colour call's last
        std::string ended_by;              ///< one of them, after which a pause ended the call
        bool may_end = false;              ///< the open call, with the line that it has last
        std::uint64_t used = 0;            ///< line of the log
    };

    struct LongHeader {
        LogWriter writer;
        std::string time;
    };

    void take(std::string_view text);
    void take_message(const LogcatLine& line);
    void take_loss(const LogcatLine& line);
    void learn_ending(Stream& stream);
    void unlearn_ending(Stream& stream);
    void end_what_may();
    void begin(Stream& stream, TracedJob job, const LogcatLine& line);
    void close(Stream& stream);
    Stream& stream_of(const LogWriter& writer);

    LineReader lines_;
    TraceTotals totals_;
    std::map<LogWriter, Stream> streams_;
    std::deque<TracedCall> ended_;
    std::optional<LongHeader> long_header_;  ///< its lines follow
    bool any_may_end_ = false;
    bool at_end_ = false;
};

}  // namespace imgtune::workbench

#endif
