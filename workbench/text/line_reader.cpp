#include "workbench/text/line_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kSmallBuffer = LineReader::kLongestLine + 4096;
constexpr std::size_t kLargeBuffer = 1 << 20;

/// Short texts need no large one.
std::size_t buffer_size(std::uint64_t text_size) {
    if (text_size == 0) return kLargeBuffer;
    return static_cast<std::size_t>(
        std::clamp<std::uint64_t>(text_size, kSmallBuffer, kLargeBuffer));
}

}  // namespace

LineReader::LineReader(ByteSource& source) : source_(source), buffer_(buffer_size(source.size())) {}

/// Reads on behind what is in the buffer; false at the end.
bool LineReader::fill() {
    if (ended_) return false;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= std::exchange(begin_, 0);
    const std::size_t count = source_.read(buffer_.data() + end_, buffer_.size() - end_);
    ended_ = count == 0;
    end_ += count;
    bytes_read_ += count;
    return !ended_;
}

bool LineReader::waits(std::chrono::milliseconds time) {
    for (std::size_t searched = 0; !ended_;) {
        const std::size_t held = end_ - begin_;
        if (held > kLongestLine) return false;
        const char* const start = buffer_.data() + begin_;
        if (std::memchr(start + searched, '\n', held - searched) != nullptr) return false;
        searched = held;
        if (!source_.comes_within(time)) return true;
        fill();
    }
    return false;
}

bool LineReader::next(std::string_view& text) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    if (line_ == 0) {
        while (end_ < kByteOrderMark.size() && fill()) continue;
        if (std::string_view(buffer_.data(), end_).starts_with(kByteOrderMark)) {
            begin_ = kByteOrderMark.size();
        }
    }
    std::size_t searched = 0;
    const char* found = nullptr;
    for (;;) {
        const char* const start = buffer_.data() + begin_;
        const std::size_t held = end_ - begin_;
        found = static_cast<const char*>(std::memchr(start + searched, '\n', held - searched));
        if (found != nullptr || held > kLongestLine) break;
        searched = held;
        if (!fill()) break;
    }
    const char* const start = buffer_.data() + begin_;
    const std::size_t whole =
        found != nullptr ? static_cast<std::size_t>(found - start) : end_ - begin_;
    if (found == nullptr && whole == 0) return false;
    ++line_;
    too_long_ = whole > kLongestLine;
    ended_whole_ = found != nullptr && !too_long_;
    const std::size_t length = std::min(whole, kLongestLine);
    begin_ += length + (found != nullptr && !too_long_ ? 1 : 0);
    text = std::string_view(start, length);
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    return true;
}

}  // namespace imgtune::workbench
