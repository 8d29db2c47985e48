#include "workbench/studies/live.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <fstream>
#include <string>
#include <vector>

#include "tests/workbench/sample_tuning.h"
#include "workbench/camera/camera.h"
#include "workbench/files/event_loop.h"
#include "workbench/files/page_server.h"
#include "workbench/text/bad_input.h"
#include "workbench/trace/trace_capture.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Every colour call ends with a line more, but for a frame that the flash lights.
Tuning live_tuning() {
    Tuning tuning = make_tuning();
    tuning.pca[0].u4OutdoorEnable = 1;
    return tuning;
}

/// The log of each frame, with the switches that are on.
std::vector<std::string> logs_of(const std::vector<std::vector<std::string>>& switches,
                                 Jobs jobs = {}) {
    Camera camera(live_tuning(), jobs);
    std::vector<std::string> logs;
    for (std::size_t i = 0; i < switches.size(); ++i) {
        TraceCapture capture(switches[i]);
        Frame frame = make_frame(60, 4000 + 10 * static_cast<unsigned>(i), {700, 512, 1250});
        frame.state.u4FlashMode = i % 3 == 2 ? 1 : 0;
        camera.run(frame);
        std::string& log = logs.emplace_back();
        for (const std::string& line : capture.lines()) {
            log += "06-01 12:00:00.000  1234  1250 D ispfeature: " + line + "\n";
        }
    }
    return logs;
}

/// A live log: its pieces come one by one, with a pause after each. Reading on would wait for ever.
class Pieces : public ByteSource {
  public:
    void come(std::string text) { piece_ = std::move(text); }
    void end() { ended_ = true; }

    std::size_t read(char* into, std::size_t room) override {
        if (piece_.empty() && !ended_) throw Waits{};
        const std::size_t count = piece_.copy(into, room);
        piece_.erase(0, count);
        return count;
    }
    bool comes_within(std::chrono::milliseconds) override { return !piece_.empty() || ended_; }

    struct Waits {};

  private:
    std::string piece_;
    bool ended_ = false;
};

/// Frames that are out after each piece.
std::vector<std::uint64_t> frames_after(const std::vector<std::string>& pieces) {
    Pieces source;
    TracedFrames frames(source, std::nullopt);
    std::vector<std::uint64_t> counts;
    std::uint64_t count = 0;
    const auto read_on = [&] {
        try {
            for (TracedFrame frame; frames.next(frame);) ++count;
        } catch (const Pieces::Waits&) {
        }
        counts.push_back(count);
    };
    for (const std::string& piece : pieces) {
        source.come(piece);
        read_on();
    }
    source.end();
    read_on();
    return counts;
}

TEST(LiveLog, AFrameIsOutWhenItsLastLineCanBeKnown) {
    const std::vector<std::string> all = trace_switches(false);
    const std::vector<std::string> inputs = trace_switches(true);
    using Counts = std::vector<std::uint64_t>;
    // Every switch: the last line says so. The inputs alone: once both endings, without the flash
    // and with it, were seen before another frame began.
    EXPECT_EQ(frames_after(logs_of({all, all, all, all})), (Counts{1, 2, 3, 4, 4}));
    EXPECT_EQ(frames_after(logs_of({inputs, inputs, inputs, inputs, inputs, inputs})),
              (Counts{0, 2, 2, 4, 5, 6, 6}));
    // A switch more: what had ended a call ends it no more.
    EXPECT_EQ(frames_after(logs_of({inputs, inputs, all, all, inputs, inputs})),
              (Counts{0, 2, 3, 4, 5, 5, 6}));
}

TEST(LiveLog, OneJobAloneWaitsForNoOther) {
    const std::vector<std::string> all = trace_switches(false);
    std::vector<std::string> logs =
        logs_of(std::vector<std::vector<std::string>>(12, all), {true, false});
    std::vector<std::uint64_t> counts = frames_after(logs);
    EXPECT_EQ(counts, (std::vector<std::uint64_t>{0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 12}));
    // The other job comes after all: one frame of its own, and then they are joined.
    const std::vector<std::string> both = logs_of({all, all, all});
    logs.insert(logs.end(), both.begin(), both.end());
    counts = frames_after(logs);
    EXPECT_EQ(counts.back(), 12U + 2U + 2U);
}

TEST(LiveLog, InputMayStopInTheMiddleOfALineAndEndThere) {
    const std::vector<std::string> logs =
        logs_of(std::vector<std::vector<std::string>>(3, trace_switches(false)));
    std::vector<std::string> pieces;
    for (const std::string& log : logs) {
        pieces.push_back(log.substr(0, log.size() / 2 - 7));
        pieces.push_back(log.substr(log.size() / 2 - 7, log.size() - log.size() / 2 + 2));
        pieces.push_back(log.substr(log.size() - 5));
    }
    EXPECT_EQ(frames_after(pieces), (std::vector<std::uint64_t>{0, 0, 1, 1, 1, 2, 2, 2, 3, 3}));
    pieces.pop_back();  // the end of the last frame's last line
    EXPECT_EQ(frames_after(pieces).back(), 3U);
}

// ---- the server

/// One that asks the server for something, in the server's own thread.
class Browser {
  public:
    Browser(EventLoop& loop, const PageServer& server, int receive_buffer = 0) : loop_(loop) {
        const std::string address = server.address();
        const std::size_t port_at = address.find(':', 7) + 1;
        port_ = address.substr(port_at, address.find('/', port_at) - port_at);
        token_ = address.substr(address.find('/', port_at));
        socket_ = socket(AF_INET, SOCK_STREAM, 0);
        if (receive_buffer > 0) {
            setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof(receive_buffer));
        }
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        place.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port_)));
        EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&place), sizeof(place)), 0);
    }
    ~Browser() { close(socket_); }
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    std::string place() const { return token_; }
    std::string host() const { return "Host: 127.0.0.1:" + port_ + "\r\n"; }
    std::string port() const { return port_; }

    void send(const std::string& text) const {
        EXPECT_EQ(::send(socket_, text.data(), text.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(text.size()));
    }
    void ask(const std::string& what, const std::string& headers = "") const {
        send("GET " + place() + what + " HTTP/1.1\r\n" + host() + headers + "\r\n");
    }

    /// All that has come until this stands in it, the server closes, or two seconds are over.
    const std::string& wait_for(std::string_view text) {
        const auto end = Clock::now() + 2s;
        while (got_.find(text) == std::string::npos && !closed_ && Clock::now() < end) {
            loop_.wait(-1, Clock::now() + 2ms);
            char buffer[1 << 16];
            ssize_t count = 0;
            while ((count = recv(socket_, buffer, sizeof(buffer), MSG_DONTWAIT)) > 0) {
                got_.append(buffer, static_cast<std::size_t>(count));
            }
            closed_ = count == 0 || (count < 0 && errno != EAGAIN);
        }
        return got_;
    }
    const std::string& all() { return wait_for("never to come"); }
    bool closed() const { return closed_; }

  private:
    EventLoop& loop_;
    std::string port_;
    std::string token_;
    int socket_ = -1;
    bool closed_ = false;
    std::string got_;
};

constexpr const char* kPage =
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'\" />page";

struct Served {
    explicit Served(const PageServer::Limits& limits = {})
        : server(with_own_connections(kPage), 0, limits) {
        loop.attend(server);
    }
    EventLoop loop;
    PageServer server;
};

TEST(PageServer, WhoeverDoesNotKnowTheAddressGetsNothing) {
    Served served;
    served.server.add("secret");
    const Browser any(served.loop, served.server);
    const std::string place = any.place();
    const std::string host = any.host();
    const std::string port = any.port();
    std::string other = place;
    other[5] = other[5] == '0' ? '1' : '0';
    const struct {
        std::string request;
        const char* answer;
    } cases[] = {
        {"GET " + place + " HTTP/1.1\r\n" + host + "\r\n", "200"},
        {"GET " + place + " HTTP/1.1\r\nhost: LOCALHOST:" + port + "\r\n\r\n", "200"},
        {"GET " + place + " HTTP/1.1\r\n" + host + "Origin: http://127.0.0.1:" + port + "\r\n\r\n",
         "200"},
        {"GET " + other + " HTTP/1.1\r\n" + host + "\r\n", "404"},
        {"GET " + other + "frames HTTP/1.1\r\n" + host + "\r\n", "404"},
        {"GET / HTTP/1.1\r\n" + host + "\r\n", "404"},
        {"GET " + place + "etc HTTP/1.1\r\n" + host + "\r\n", "404"},
        {"GET " + place + "frames HTTP/1.1\r\nHost: rebound.example:" + port + "\r\n\r\n", "403"},
        {"GET " + place + "frames HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", "403"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "Origin: http://rebound.example\r\n\r\n",
         "403"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "Origin: null\r\n\r\n", "403"},
        {"GET " + place + "frames HTTP/1.1\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + host + "\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "Origin: http://127.0.0.1:" + port +
             "\r\norigin: http://rebound.example\r\n\r\n",
         "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "X: a\r\n Host: b\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "Last-Event-ID: -1\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "X : a\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\n" + host + "\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.0\r\n" + host + "\r\n", "505"},
        {"POST " + place + "frames HTTP/1.1\r\n" + host + "\r\n", "405"},
        {"HEAD " + place + " HTTP/1.1\r\n" + host + "\r\n", "405"},
        {"POST " + place + "frames HTTP/1.1\r\n" + host + "Content-Length: 3\r\n\r\nabc", "400"},
        {"\x16\x03\x01 hello\r\n\r\n", "400"},
        {"GET " + place + "frames HTTP/1.1\r\n" + host + "X: " + std::string(9000, 'x') +
             "\r\n\r\n",
         "431"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.request.substr(0, 300));
        Browser browser(served.loop, served.server);
        browser.send(each.request);
        const std::string got = browser.all();
        EXPECT_EQ(got.substr(0, 13), std::string("HTTP/1.1 ") + each.answer + " ");
        EXPECT_TRUE(browser.closed());
        EXPECT_EQ(got.find("secret"), std::string::npos);
    }
}

TEST(PageServer, ThePolicyIsWidenedByItsOwnConnectionsAlone) {
    Served served;
    Browser browser(served.loop, served.server);
    browser.ask("");
    const std::string& got = browser.all();
    EXPECT_NE(got.find("content=\"default-src 'none'; connect-src 'self'\" />page"),
              std::string::npos);
    EXPECT_NE(got.find("Referrer-Policy: no-referrer\r\n"), std::string::npos);
    EXPECT_THROW(with_own_connections("no policy"), BadInput);
}

TEST(PageServer, ALostConnectionGoesOnWhereItWasAndIsToldWhatItMissed) {
    PageServer::Limits limits;
    limits.frames = 4;
    Served served(limits);
    for (int i = 1; i <= 3; ++i) served.server.add("f" + std::to_string(i));
    Browser first(served.loop, served.server);
    first.ask("frames");
    EXPECT_NE(first.wait_for("f3").find("id: 3\ndata: f1\ndata: f2\ndata: f3\n\n"),
              std::string::npos);
    served.server.add("f4");
    EXPECT_NE(first.wait_for("f4").find("id: 4\ndata: f4\n\n"), std::string::npos);
    served.server.tell("verify", "{}");
    EXPECT_NE(first.wait_for("verify").find("event: verify\ndata: {}\n\n"), std::string::npos);

    Browser again(served.loop, served.server);
    again.ask("frames", "Last-Event-ID: 3\r\n");
    EXPECT_NE(again.wait_for("f4\n").find("\n\nid: 4\ndata: f4\n\n"), std::string::npos);
    for (int i = 5; i <= 9; ++i) served.server.add("f" + std::to_string(i));
    Browser late(served.loop, served.server);
    late.ask("frames", "Last-Event-ID: 3\r\n");
    EXPECT_NE(late.wait_for("f9").find("event: skipped\ndata: 4 5\n\nid: 9\ndata: f6\n"),
              std::string::npos);
    Browser of_another_run(served.loop, served.server);
    of_another_run.ask("frames", "Last-Event-ID: 5000\r\n");
    EXPECT_NE(of_another_run.wait_for("f9").find("data: 1 5\n\nid: 9\ndata: f6\n"),
              std::string::npos);

    EXPECT_FALSE(served.server.is_done());
    served.server.end();
    for (Browser* browser : {&first, &again, &late, &of_another_run}) {
        EXPECT_NE(browser->all().find("event: end\n"), std::string::npos);
        EXPECT_TRUE(browser->closed());
    }
    EXPECT_TRUE(served.server.is_done());
}

TEST(PageServer, OneThatReadsNothingHoldsUpNobody) {
    PageServer::Limits limits;
    limits.frames = 1000;
    Served served(limits);
    Browser slow(served.loop, served.server, 4096);
    slow.ask("frames");
    Browser quick(served.loop, served.server);
    quick.ask("frames");
    quick.wait_for("retry");
    const std::string text(400, 'x');
    const auto begin = Clock::now();
    std::size_t seen = 0;
    for (int i = 1; i <= 40000; ++i) {
        served.server.add(text);
        if (i % 500 != 0) continue;
        quick.wait_for("id: " + std::to_string(i) + "\n");
        ++seen;
    }
    EXPECT_EQ(seen, 80U);
    EXPECT_LT(Clock::now() - begin, 20s);
    const std::string got = quick.wait_for("id: 40000\n");
    EXPECT_EQ(got.find("skipped"), std::string::npos);
    // It begins to read: what fell out of the ring is told, and the newest comes.
    const std::string& late = slow.wait_for("id: 40000\n");
    EXPECT_NE(late.find("event: skipped\n"), std::string::npos);
    EXPECT_NE(late.find("id: 40000\n"), std::string::npos);
}

TEST(PageServer, AHundredHalfOpenConnectionsStarveNobody) {
    PageServer::Limits limits;
    limits.request_time = 1s;
    Served served(limits);
    Browser follows(served.loop, served.server);
    follows.ask("frames");
    follows.wait_for("retry");
    std::deque<Browser> half_open;
    for (int i = 0; i < 100; ++i) {
        Browser& browser = half_open.emplace_back(served.loop, served.server);
        browser.send("GET " + browser.place());
        served.loop.wait(-1, Clock::now());
    }
    const auto begin = Clock::now();
    Browser late(served.loop, served.server);
    late.ask("");
    EXPECT_NE(late.all().find("HTTP/1.1 200 OK"), std::string::npos);
    EXPECT_LT(Clock::now() - begin, 500ms);
    served.server.add("frame");
    EXPECT_NE(follows.wait_for("data: frame").find("data: frame"), std::string::npos);
    half_open.back().all();  // given up in time
    EXPECT_TRUE(half_open.back().closed());
    served.server.end();
    follows.all();
    EXPECT_TRUE(served.server.is_done());
}

// ---- the tool itself

TEST(Watch, ARowComesWithinMillisecondsOfItsLine) {
    const std::string path = testing::TempDir() + "live_tuning.yaml";
    std::ofstream(path) << write_yaml(live_tuning());
    int to[2];
    int from[2];
    ASSERT_EQ(pipe(to), 0);
    ASSERT_EQ(pipe(from), 0);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, to[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, from[1], STDOUT_FILENO);
    for (const int each : {to[0], to[1], from[0], from[1]}) {
        posix_spawn_file_actions_addclose(&files, each);
    }
    std::string words[] = {IMGTUNE_TOOL, "watch", path, "-"};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                         nullptr};
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, IMGTUNE_TOOL, &files, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&files);
    close(to[0]);
    close(from[1]);
    const std::vector<std::string> logs =
        logs_of(std::vector<std::vector<std::string>>(60, trace_switches(true)));
    std::vector<Clock::duration> times;
    char buffer[1 << 16];
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const auto sent = Clock::now();
        ASSERT_GT(write(to[1], logs[i].data(), logs[i].size()), 0);
        if (i < 3) continue;  // how a call ends is learned from these
        const std::string wanted = "frame " + std::to_string(i + 1) + " ";
        for (std::string got; got.find(wanted) == std::string::npos;) {
            const ssize_t count = read(from[0], buffer, sizeof(buffer));
            ASSERT_GT(count, 0);
            got.append(buffer, static_cast<std::size_t>(count));
        }
        times.push_back(Clock::now() - sent);
    }
    close(to[1]);
    while (read(from[0], buffer, sizeof(buffer)) > 0) continue;
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    std::sort(times.begin(), times.end());
    EXPECT_LT(times[times.size() / 2], 50ms);
    RecordProperty("median_us", static_cast<int>(times[times.size() / 2] / 1us));
    RecordProperty("most_us", static_cast<int>(times.back() / 1us));
    std::printf("line to row: median %.1f ms, most %.1f ms\n",
                std::chrono::duration<double, std::milli>(times[times.size() / 2]).count(),
                std::chrono::duration<double, std::milli>(times.back()).count());
}

}  // namespace
}  // namespace imgtune::workbench
