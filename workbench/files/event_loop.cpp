#include "workbench/files/event_loop.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>

#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

volatile sig_atomic_t asked_to_end = 0;

extern "C" void note_end(int) {
    asked_to_end = 1;
}

timespec time_left(LoopTime until) {
    const auto left = std::max(until - std::chrono::steady_clock::now(), LoopTime::duration{0});
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
    constexpr std::int64_t kSecond = 1000000000;
    return {static_cast<time_t>(nanoseconds / kSecond), static_cast<long>(nanoseconds % kSecond)};
}

}  // namespace

EventLoop::EventLoop() {
    asked_to_end = 0;
    sigset_t held;
    sigemptyset(&held);
    for (const int number : kSignals) sigaddset(&held, number);
    // Delivered while poll waits and nowhere else, so that none is missed in between.
    sigprocmask(SIG_BLOCK, &held, &mask_before_);
    struct sigaction action = {};
    action.sa_handler = note_end;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &actions_before_[i]);
        // What the caller of the program ignores stays ignored.
        if (actions_before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

EventLoop::~EventLoop() {
    release_signals();
}

void EventLoop::release_signals() {
    if (!holds_signals_) return;
    holds_signals_ = false;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &actions_before_[i], nullptr);
    }
    sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
}

EventLoop::Woken EventLoop::wait(int file, std::optional<LoopTime> until) {
    for (;;) {
        if (stopped_) return Woken::stopped;
        files_.assign(1, {file, POLLIN, 0});
        counts_.clear();
        std::optional<LoopTime> next = until;
        for (Attendant* attendant : attendants_) {
            const std::size_t before = files_.size();
            attendant->watch(files_);
            counts_.push_back(files_.size() - before);
            const std::optional<LoopTime> due = attendant->due();
            if (due && (!next || *due < *next)) next = due;
        }
        timespec left{};
        if (next) left = time_left(*next);
        const int count =
            ppoll(files_.data(), files_.size(), next ? &left : nullptr, &mask_before_);
        if (count < 0 && errno != EINTR) {
            throw BadInput(std::string("cannot wait for input: ") + std::strerror(errno));
        }
        if (holds_signals_ && asked_to_end != 0) {
            stopped_ = true;
            release_signals();
            return Woken::stopped;
        }
        if (count < 0) continue;
        std::size_t first = 1;
        const LoopTime now = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < attendants_.size(); ++i) {
            const auto own = std::span<const pollfd>(files_).subspan(first, counts_[i]);
            first += counts_[i];
            if (count > 0 && !own.empty()) attendants_[i]->serve(own);
            const std::optional<LoopTime> due = attendants_[i]->due();
            if (due && *due <= now) attendants_[i]->tick(now);
        }
        if (files_.front().revents != 0) return Woken::readable;
        if (until && *until <= now) return Woken::due;
    }
}

}  // namespace imgtune::workbench
