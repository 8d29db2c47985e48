#ifndef IMGTUNE_WORKBENCH_FILES_EVENT_LOOP_H
#define IMGTUNE_WORKBENCH_FILES_EVENT_LOOP_H

#include <poll.h>
#include <signal.h>

#include <array>
#include <chrono>
#include <optional>
#include <span>
#include <vector>

namespace imgtune::workbench {

using LoopTime = std::chrono::steady_clock::time_point;

/// What has work of its own while a loop waits: a screen to refresh, sockets to serve.
class Attendant {
  public:
    Attendant() = default;
    virtual ~Attendant() = default;
    Attendant(const Attendant&) = delete;
    Attendant& operator=(const Attendant&) = delete;

    /// Adds the files that are to be watched.
    virtual void watch(std::vector<pollfd>&) {}
    /// The same files in the same order, with what became of them.
    virtual void serve(std::span<const pollfd>) {}
    /// When it wants tick() to be called; none: not by the clock.
    virtual std::optional<LoopTime> due() const { return std::nullopt; }
    virtual void tick(LoopTime) {}
};

/// Waits for an input, and lets others work meanwhile: one thread does everything, so that nothing
/// needs a lock and a slow reader of results never holds up the input.
///
/// While it lives, Ctrl-C (and a closed terminal, and a request to end) ends the waiting and not
/// the program. Once that has happened the next one acts as usual. One at a time in a program.
class EventLoop {
  public:
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// It stays the caller's, and lives as long as the loop waits.
    void attend(Attendant& attendant) { attendants_.push_back(&attendant); }

    enum class Woken {
        readable,  ///< the file has bytes, or has ended
        due,       ///< the time has come
        stopped,   ///< the user wants an end
    };
    /// `file` -1: the time alone.
    Woken wait(int file, std::optional<LoopTime> until);

    bool stopped() const { return stopped_; }
    /// Waits again after a stop, for what is left to do; the next Ctrl-C ends the program.
    void go_on() {
        stopped_ = false;
        release_signals();
    }

  private:
    static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};

    void release_signals();

    std::vector<Attendant*> attendants_;
    std::vector<pollfd> files_;
    std::vector<std::size_t> counts_;  ///< files of each attendant
    bool stopped_ = false;
    bool holds_signals_ = true;
    sigset_t mask_before_{};
    std::array<struct sigaction, kSignals.size()> actions_before_{};
};

}  // namespace imgtune::workbench

#endif
