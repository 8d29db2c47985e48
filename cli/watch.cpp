#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli/common.h"
#include "cli/live_input.h"
#include "cli/live_text.h"
#include "cli/phone_log.h"
#include "cli/screen.h"
#include "cli/summary_text.h"
#include "cli/verbs.h"
#include "cli/verification_text.h"
#include "workbench/json/live.h"
#include "workbench/json/summary.h"
#include "workbench/json/verify.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/shown_text.h"

namespace imgtune::cli {

namespace {

struct WatchOptions {
    std::string tuning;
    LiveInputOptions input;
    bool json = false;
};

using Clock = std::chrono::steady_clock;

/// When frames came.
class FrameClock {
  public:
    void frame() {
        last_ = Clock::now();
        times_.push_back(last_);
        if (times_.size() > kMostTimes) times_.pop_front();
    }

    LiveClock read(const TracedFrames& log) const {
        const auto now = Clock::now();
        const auto since = [now](Clock::time_point time) {
            return std::chrono::duration_cast<std::chrono::milliseconds>(now - time);
        };
        LiveClock clock;
        clock.since_start = since(start_);
        if (!times_.empty()) clock.since_frame = since(last_);
        if (times_.size() == kMostTimes && times_.front() < times_.back()) {
            const std::chrono::duration<double> span = times_.back() - times_.front();
            clock.frames_per_second = (kMostTimes - 1) / span.count();
        }
        clock.lines = log.totals().lines;
        clock.trace_lines = log.totals().trace_lines;
        clock.lost_lines = log.totals().lost_lines;
        clock.unusable_calls = log.unusable_calls();
        clock.others = log.others_text();
        return clock;
    }

  private:
    static constexpr std::size_t kMostTimes = 60;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
    std::deque<Clock::time_point> times_;
};

/// Draws at most ten times a second, and once a second when nothing comes.
class Refresher : public Attendant {
  public:
    explicit Refresher(std::function<void()> draw) : draw_(std::move(draw)) {}

    void changed() { changed_ = true; }
    std::optional<LoopTime> due() const override {
        return last_ + (changed_ ? std::chrono::milliseconds(100) : std::chrono::seconds(1));
    }
    void tick(LoopTime now) override {
        last_ = now;
        changed_ = false;
        draw_();
    }
    /// Between frames that come without a pause.
    void tick_if_due() {
        const LoopTime now = Clock::now();
        if (*due() <= now) tick(now);
    }

  private:
    std::function<void()> draw_;
    bool changed_ = false;
    LoopTime last_{};
};

void write_now(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0) throw ClosedPipe("standard output");
}

std::string line_of(LiveStudy& study, bool json) {
    if (!json) return shown_lines(live_line(study));
    using Handler = nlohmann::ordered_json::error_handler_t;
    return shown_json(to_json(study).dump(-1, ' ', false, Handler::replace)) + "\n";
}

/// The end: one JSON document a line as before, or two texts.
void tell_end(LiveStudy& study, bool json) {
    const SummaryRecord record = study.finish();
    if (json) {
        const nlohmann::ordered_json end = {{"summary", to_json(record)},
                                            {"verify", to_json(study.verdict())}};
        using Handler = nlohmann::ordered_json::error_handler_t;
        write_now(shown_json(end.dump(-1, ' ', false, Handler::replace)) + "\n");
        return;
    }
    write_now(fmt::format("\n{}\n", shown_lines(summary_text(record))));
    if (study.verification().lines > 0) {
        write_now(shown_lines(verification_text(study.verdict())));
    }
}

int run_watch(const WatchOptions& options) {
    const Tuning tuning = tuning_to_run(options.tuning);
    EventLoop loop;
    std::signal(SIGPIPE, SIG_IGN);  // the files are kept when nobody reads the rows any more
    LiveInput input(loop, tuning, options.input, {options.tuning});
    LiveStudy study(tuning, options.input.summary);
    FrameClock clock;
    std::optional<Screen> screen;
    if (!options.json && Screen::is_there()) screen.emplace();
    Refresher refresher([&] {
        screen->show(
            live_screen(*screen, options.tuning, study, clock.read(input.frames().source())));
    });
    if (screen) loop.attend(refresher);
    try {
        while (input.next()) {
            clock.frame();
            study.add(input.frames().traced(), input.frames().values(), input.frames().frame());
            if (screen) {
                refresher.changed();
                refresher.tick_if_due();
            } else {
                write_now(line_of(study, options.json));
            }
        }
    } catch (const ClosedPipe&) {
        input.keep();
        throw;
    }
    screen.reset();
    input.keep();
    tell_rest(input.name(), input.frames().source(), input.frames().count());
    tell_end(study, options.json);
    return study.verification().first ? kFindings : kFine;
}

}  // namespace

void add_watch(const Verbs& verbs) {
    const auto options = std::make_shared<WatchOptions>();
    const Verb verb = verbs.add("watch", "Follow a phone's log as it comes");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("LOGCAT", options->input.log.path,
                "what adb logcat prints: '-' or a file; with --demo: a frame log to play");
    add_live_input(verb, options->input);
    verb.flag("--json", options->json, "a JSON document a frame, and one for the end");
    verb.footer(
        "Shows every frame that the phone traces, what the tuning makes of it, and whether phone\n"
        "and desk agree: as a picture of the whole terminal, or as a line a frame where standard\n"
        "output is none. Ctrl-C ends it with the summary. Exit status 0: equal; 1: different; 2:\n"
        "bad input.\n"
        "\n"
        "Example:\n"
        "  imgtune props | sh; adb logcat -v threadtime | imgtune watch phone.yaml -\n"
        "  imgtune watch phone.yaml --demo");
    verb.run([options] { return run_watch(*options); });
}

}  // namespace imgtune::cli
