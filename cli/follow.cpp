#include "cli/follow.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/page_server.h"
#include "workbench/files/report.h"
#include "workbench/json/verify.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"

namespace imgtune::cli {

namespace {

/// Tells the browsers how phone and desk agree, twice a second.
class VerdictTeller : public Attendant {
  public:
    VerdictTeller(PageServer& server, const Verifier& verifier)
        : server_(server), verifier_(verifier) {}

    std::optional<LoopTime> due() const override { return last_ + std::chrono::milliseconds(500); }
    void tick(LoopTime now) override {
        last_ = now;
        tell();
    }
    void tell() {
        const Verification& so_far = verifier_.so_far();
        if (so_far.frames == frames_) return;
        frames_ = so_far.frames;
        using Handler = nlohmann::ordered_json::error_handler_t;
        server_.tell("verify", to_json(so_far).dump(-1, ' ', true, Handler::replace));
    }

  private:
    PageServer& server_;
    const Verifier& verifier_;
    std::uint64_t frames_ = 0;
    LoopTime last_{};
};

/// A file that leads a browser to an address: what a program is started with everyone can list, and
/// the address is nobody else's to know. It goes when this does.
class Pointer {
  public:
    explicit Pointer(const std::string& address) {
        path_ = (std::filesystem::temp_directory_path() / "imgtune-XXXXXX.html").string();
        const int file = mkstemps(path_.data(), 5);  // the user's alone
        if (file < 0) throw BadInput(path_ + ": cannot be made");
        const std::string text = fmt::format(
            "<!doctype html><meta charset=\"utf-8\"><meta name=\"referrer\" "
            "content=\"no-referrer\">"
            "<meta http-equiv=\"refresh\" content=\"0;url={0}\"><title>imgtune</title>"
            "<a href=\"{0}\">imgtune follows the phone here</a>\n",
            address);
        const bool written =
            write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(file);
        if (!written) throw BadInput(path_ + ": cannot be written");
    }
    ~Pointer() { unlink(path_.c_str()); }
    Pointer(const Pointer&) = delete;
    Pointer& operator=(const Pointer&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

/// Starts the desktop's browser and does not wait for it, with nothing of this program's: not its
/// input, and signals as usual. False: there is no desktop.
bool start_browser(const std::string& path) {
    std::string command = "xdg-open";
    std::string argument = path;
    const std::array<char*, 3> words = {command.data(), argument.data(), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setpgroup(&attributes, 0);  // Ctrl-C is not meant for it
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    pid_t child = 0;
    const bool started =
        posix_spawnp(&child, "xdg-open", &files, &attributes, words.data(), environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return started;
}

/// Numbers alone, in the order of kFrameColumns, then the time as the log writes it.
std::string event_of(const FrameValues& values, const std::string& time) {
    std::string line;
    for (const std::int64_t value : values) line += fmt::format("{},", value);
    return line + time;
}

/// After the end of the log: until every browser has all of it, or for as long as one may take that
/// was started with it. After Ctrl-C for a moment, so that pages know the end.
void hand_out_rest(EventLoop& loop, const PageServer& server) {
    const auto most = loop.stopped() ? std::chrono::milliseconds(300) : std::chrono::seconds(10);
    loop.go_on();
    const LoopTime end = std::chrono::steady_clock::now() + most;
    while (!server.is_done() && std::chrono::steady_clock::now() < end) {
        loop.wait(-1, std::chrono::steady_clock::now() + std::chrono::milliseconds(20));
    }
}

/// Whether a whole line is there that is neither blank nor a comment.
bool has_telling_line(std::string_view text) {
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        const std::size_t first = text.find_first_not_of(" \t\r");
        if (first < end && text[first] != '#') return true;
        text.remove_prefix(end + 1);
    }
    return false;
}

}  // namespace

bool is_live(const std::string& path, std::string& ahead) {
    if (path.empty()) {
        throw BadInput("the frames are missing: a frame log, what adb logcat prints, or --demo");
    }
    constexpr std::size_t kEnough = 1 << 16;
    FileSource source(path);
    std::array<char, 4096> buffer;
    while (!has_telling_line(ahead) && ahead.size() < kEnough) {
        const std::size_t count = source.read(buffer.data(), buffer.size());
        if (count == 0) break;
        ahead.append(buffer.data(), count);
    }
    const bool live = !begins_frame_log(ahead);
    if (path != "-") ahead.clear();  // it is opened again
    return live;
}

int run_follow(const FollowOptions& options, std::string ahead) {
    const Tuning tuning = tuning_to_run(options.tuning);
    std::optional<ReportFile> against;
    if (!options.against.empty()) against = tuning_for_report(options.against);
    const std::string page = make_report(options.page.empty() ? find_page() : options.page,
                                         tuning_for_report(options.tuning), against, std::nullopt);
    EventLoop loop;
    LiveInput input(loop, tuning, options.input, {options.tuning, options.against, options.page},
                    std::move(ahead));
    PageServer server(with_own_connections(page), static_cast<std::uint16_t>(options.port), {});
    loop.attend(server);
    Verifier verifier(tuning);
    VerdictTeller teller(server, verifier);
    loop.attend(teller);

    std::optional<Pointer> pointer;
    if (!options.no_browser) {
        pointer.emplace(server.address());
        if (!start_browser(pointer->path())) {
            say("imgtune: no desktop here to open it (xdg-open is missing)\n");
        }
    }
    say(fmt::format("imgtune: following at {} (for you alone; Ctrl-C ends it)\n",
                    server.address()));
    while (input.next()) {
        const LiveFrames& frames = input.frames();
        verifier.add(frames.traced());
        server.add(event_of(frames.values(), frames.traced().first().time));
    }
    input.keep();
    teller.tell();
    server.end();
    hand_out_rest(loop, server);
    tell_rest(input.name(), input.frames().source(), input.frames().count());
    say(fmt::format("imgtune: the log has ended after {}\n",
                    counted(input.frames().count(), "frame")));
    return kFine;
}

}  // namespace imgtune::cli
