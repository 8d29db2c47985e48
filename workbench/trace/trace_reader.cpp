#include "workbench/trace/trace_reader.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace imgtune::workbench {

namespace {

constexpr std::string_view kTag = "ispfeature";
constexpr std::string_view kLossTag = "chatty";  // the log daemon's report of lines it threw away

constexpr std::size_t kMostStreams = 64;
constexpr std::size_t kMostLines = 512;  // of a call; the library writes some 300 at most

/// A call's lines come within microseconds of each other, a frame's calls after milliseconds.
constexpr std::chrono::milliseconds kPause{5};
constexpr std::size_t kMostEndings = 8;

bool begins_call(std::string_view label, TracedJob job) {
    return label == (job == TracedJob::color ? color_label::kBracket : ccm_label::kFullGain);
}

bool ends_call(std::string_view label, TracedJob job) {
    if (job == TracedJob::ccm) return label == ccm_label::kAverage;
    return label == color_label::kMapEnd || label == color_label::kLocked;
}

/// Others write under the tag, too.
bool is_trace(std::string_view message, std::string_view label) {
    return message.starts_with("[SmoothCOLOR()] ") || message.starts_with("[InterParam") ||
           find_ccm_line(label) != nullptr;
}

}  // namespace

bool TraceReader::next(TracedCall& call) {
    std::string_view text;
    while (ended_.empty() && !at_end_) {
        if (any_may_end_ && lines_.waits(kPause)) {
            end_what_may();
            continue;
        }
        if (lines_.next(text)) {
            ++totals_.lines;
            take(text);
            continue;
        }
        at_end_ = true;
        for (auto& [writer, stream] : streams_) {
            // A last line without its end may be cut anywhere.
            if (stream.open && stream.used == lines_.line() && !lines_.ended_whole() &&
                !stream.open->lines.empty()) {
                stream.open->lines.pop_back();
            }
            close(stream);
        }
    }
    if (ended_.empty()) return false;
    call = std::move(ended_.front());
    ended_.pop_front();
    return true;
}

void TraceReader::take(std::string_view text) {
    LogcatLine line;
    if (long_header_) {
        const std::string_view message = without_color(text);
        if (message.empty()) {
            long_header_.reset();
            return;
        }
        if (!parse_long_header(text, line)) {
            take_message({long_header_->time, long_header_->writer, kTag, message});
            return;
        }
        long_header_.reset();
    }
    const bool ours = text.find(kTag) != std::string_view::npos;
    if (!ours && text.find(kLossTag) == std::string_view::npos) return;
    if (parse_logcat_line(text, line)) {
        if (line.tag == kTag) take_message(line);
        if (line.tag == kLossTag) take_loss(line);
    } else if (parse_long_header(text, line) && line.tag == kTag) {
        long_header_ = {line.writer, std::string(line.time)};
    }
}

void TraceReader::take_message(const LogcatLine& line) {
    const std::string_view label = trace_label(line.message);
    if (!is_trace(line.message, label)) return;
    const TracedJob job = label.starts_with('[') ? TracedJob::color : TracedJob::ccm;
    ++totals_.trace_lines;
    Stream& stream = stream_of(line.writer);
    stream.used = lines_.line();
    if (begins_call(label, job)) begin(stream, job, line);
    if (!stream.open || stream.open->job != job || stream.open->lines.size() >= kMostLines) {
        ++totals_.stray_lines;
        if (job == TracedJob::color) unlearn_ending(stream);
        return;
    }
    stream.open->lines.emplace_back(line.message);
    if (job == TracedJob::color && !stream.endings.empty()) {
        stream.may_end =
            std::find(stream.endings.begin(), stream.endings.end(), label) != stream.endings.end();
        any_may_end_ |= stream.may_end;
    }
    // What ends a log without a line end may be cut: closed at the end, where that is known.
    if (ends_call(label, job) && lines_.ended_whole()) close(stream);
}

/// "uid=1041(audioserver) expire 4 lines"; "identical 4 lines" lose nothing.
void TraceReader::take_loss(const LogcatLine& line) {
    const std::size_t at = line.message.find(" expire ");
    if (at == std::string_view::npos) return;
    const std::string_view count = line.message.substr(at + std::string_view(" expire ").size());
    std::uint64_t lost = 0;
    std::from_chars(count.data(), count.data() + count.size(), lost);
    totals_.lost_lines += lost;
    for (auto& [writer, stream] : streams_) {
        if (writer.process != line.writer.process) continue;
        stream.lost_lines.fill(true);
        if (stream.open) stream.open->lost_lines = true;
    }
}

/// The open call was whole: what it ended with may end others.
void TraceReader::learn_ending(Stream& stream) {
    if (!stream.open || stream.open->job != TracedJob::color || stream.open->lost_lines) return;
    const std::string_view label = trace_label(stream.open->lines.back());
    const bool known =
        std::find(stream.endings.begin(), stream.endings.end(), label) != stream.endings.end();
    if (!known && stream.endings.size() < kMostEndings) stream.endings.emplace_back(label);
}

/// More lines came after a pause: another switch was turned on.
void TraceReader::unlearn_ending(Stream& stream) {
    std::erase(stream.endings, std::exchange(stream.ended_by, {}));
}

void TraceReader::end_what_may() {
    any_may_end_ = false;
    for (auto& [writer, stream] : streams_) {
        if (!stream.open || !stream.may_end) continue;
        stream.ended_by = trace_label(stream.open->lines.back());
        close(stream);
    }
}

void TraceReader::begin(Stream& stream, TracedJob job, const LogcatLine& line) {
    learn_ending(stream);
    close(stream);
    stream.ended_by.clear();
    TracedCall& call = stream.open.emplace();
    call.job = job;
    call.writer = line.writer;
    call.time = line.time;
    call.line = lines_.line();
    call.lost_lines = std::exchange(stream.lost_lines[static_cast<std::size_t>(job)], false);
}

void TraceReader::close(Stream& stream) {
    if (!stream.open) return;
    ended_.push_back(std::move(*stream.open));
    stream.open.reset();
    stream.may_end = false;
}

TraceReader::Stream& TraceReader::stream_of(const LogWriter& writer) {
    const auto found = streams_.find(writer);
    if (found != streams_.end()) return found->second;
    if (streams_.size() >= kMostStreams) {
        const auto oldest = std::min_element(
            streams_.begin(), streams_.end(),
            [](const auto& a, const auto& b) { return a.second.used < b.second.used; });
        close(oldest->second);
        streams_.erase(oldest);
    }
    return streams_[writer];
}

}  // namespace imgtune::workbench
