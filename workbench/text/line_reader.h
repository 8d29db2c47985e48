#ifndef IMGTUNE_WORKBENCH_TEXT_LINE_READER_H
#define IMGTUNE_WORKBENCH_TEXT_LINE_READER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "workbench/text/byte_source.h"

namespace imgtune::workbench {

/// Cuts a stream of bytes into lines, in constant memory. A byte order mark at the start is left
/// out.
class LineReader {
  public:
    static constexpr std::size_t kLongestLine = 1 << 16;

    explicit LineReader(ByteSource& source);

    /// The next line without its end (LF or CRLF), valid until the next call; false at the end. A
    /// line of more than kLongestLine bytes is cut there, and the rest is the next line.
    bool next(std::string_view& text);

    /// Whether the next line, or the end, is still being waited for after that time.
    bool waits(std::chrono::milliseconds time);

    std::uint64_t line() const { return line_; }       ///< number of the last line, from 1
    bool too_long() const { return too_long_; }        ///< the last line was cut
    bool ended_whole() const { return ended_whole_; }  ///< the last line had its line end
    std::uint64_t bytes_read() const { return bytes_read_; }
    std::uint64_t size() const { return source_.size(); }  ///< 0 when not known

  private:
    bool fill();

    ByteSource& source_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  ///< of what is not yet read, in the buffer
    std::size_t end_ = 0;
    bool ended_ = false;
    bool too_long_ = false;
    bool ended_whole_ = true;
    std::uint64_t line_ = 0;
    std::uint64_t bytes_read_ = 0;
};

}  // namespace imgtune::workbench

#endif
