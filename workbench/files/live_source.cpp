#include "workbench/files/live_source.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <utility>

#include "workbench/trace/trace_capture.h"

namespace imgtune::workbench {

namespace {

/// "06-01 12:00:00.000", by the clock of this place.
std::string log_time() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    return fmt::format("{:02}-{:02} {:02}:{:02}:{:02}.{:03}", local.tm_mon + 1, local.tm_mday,
                       local.tm_hour, local.tm_min, local.tm_sec, now.tv_nsec / 1000000);
}

}  // namespace

LiveSource::LiveSource(EventLoop& loop, const std::string& path, Seen seen, std::string ahead)
    : loop_(loop), file_(path), seen_(std::move(seen)), ahead_(std::move(ahead)) {}

std::size_t LiveSource::read(char* into, std::size_t room) {
    if (!ahead_.empty()) {
        const std::size_t count = ahead_.copy(into, room);
        ahead_.erase(0, count);
        if (seen_) seen_({into, count});
        return count;
    }
    if (loop_.wait(file_.file(), std::nullopt) == EventLoop::Woken::stopped) return 0;
    const std::size_t count = file_.read(into, room);
    if (seen_) seen_({into, count});
    return count;
}

bool LiveSource::comes_within(std::chrono::milliseconds time) {
    if (!ahead_.empty()) return true;
    const LoopTime until = std::chrono::steady_clock::now() + time;
    return loop_.wait(file_.file(), until) != EventLoop::Woken::due;
}

DemoSource::DemoSource(EventLoop& loop, const Tuning& tuning, double frames_per_second,
                       Frames frames, LiveSource::Seen seen)
    : loop_(loop),
      camera_(tuning, {tuning.has_ccm, tuning.has_color}),
      frames_(std::move(frames)),
      seen_(std::move(seen)),
      between_(std::chrono::duration_cast<LoopTime::duration>(
          std::chrono::duration<double>(1.0 / frames_per_second))),
      next_(std::chrono::steady_clock::now()) {}

void DemoSource::trace(const Frame& frame) {
    TraceCapture capture(trace_switches(false));
    camera_.run(frame);
    const std::string before =
        fmt::format("{} {:>5} {:>5} D ispfeature: ", log_time(), getpid(), getpid());
    text_.clear();
    used_ = 0;
    for (const std::string& line : capture.lines()) text_ += before + line + '\n';
}

std::size_t DemoSource::read(char* into, std::size_t room) {
    if (used_ == text_.size()) {
        Frame frame;
        if (!frames_(frame)) return 0;
        if (loop_.wait(-1, next_) == EventLoop::Woken::stopped) return 0;
        next_ += between_;
        trace(frame);
        if (seen_) seen_(text_);
    }
    const std::size_t count = text_.copy(into, room, used_);
    used_ += count;
    return count;
}

bool DemoSource::comes_within(std::chrono::milliseconds time) {
    if (used_ < text_.size()) return true;
    const LoopTime until = std::chrono::steady_clock::now() + time;
    return loop_.wait(-1, std::min(until, next_)) == EventLoop::Woken::stopped || next_ <= until;
}

}  // namespace imgtune::workbench
