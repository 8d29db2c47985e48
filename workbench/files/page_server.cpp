#include "workbench/files/page_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "workbench/files/http_request.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

constexpr std::string_view kHeadEnd = "\r\n\r\n";
constexpr std::size_t kChunk = 1U << 16;       // bytes that are made ready for a browser at once
constexpr std::uint64_t kFramesInEvent = 256;  // for one that catches up
constexpr int kSendBuffer = 1 << 18;

// Nothing of the answers may be kept, guessed at, framed, or told to others.
constexpr std::string_view kHeaders =
    "Cache-Control: no-store\r\n"
    "X-Content-Type-Options: nosniff\r\n"
    "X-Frame-Options: DENY\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "Connection: close\r\n";

struct Status {
    int number;
    std::string_view text;
};
constexpr Status kStatuses[] = {
    {200, "OK"},
    {400, "Bad Request"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {431, "Request Header Fields Too Large"},
    {503, "Service Unavailable"},
    {505, "HTTP Version Not Supported"},
};

std::string_view text_of(int status) {
    const auto found = std::find_if(std::begin(kStatuses), std::end(kStatuses),
                                    [&](const Status& each) { return each.number == status; });
    return found == std::end(kStatuses) ? "" : found->text;
}

/// 256 random bits as hexadecimal digits.
std::string new_token() {
    std::array<unsigned char, 32> bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0) {
        throw BadInput(std::string("no random numbers for the address: ") + std::strerror(errno));
    }
    std::string token;
    for (const unsigned char byte : bytes) token += fmt::format("{:02x}", byte);
    return token;
}

/// Takes as long for every text of that length.
bool is_same(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference |= static_cast<unsigned>(a[i]) ^ static_cast<unsigned>(b[i]);
    }
    return difference == 0;
}

void set_flags(int socket) {
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
    fcntl(socket, F_SETFD, FD_CLOEXEC);
}

}  // namespace

PageServer::PageServer(std::string page, std::uint16_t port, const Limits& limits)
    : page_(std::move(page)), limits_(limits), token_(new_token()) {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    if (listener_ < 0) throw BadInput(std::string("no socket: ") + std::strerror(errno));
    set_flags(listener_);
    const int on = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    place.sin_port = htons(port);
    socklen_t size = sizeof(place);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&place), size) != 0 ||
        listen(listener_, SOMAXCONN) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&place), &size) != 0) {
        const int error = errno;
        close(listener_);
        throw BadInput(fmt::format("cannot listen on port {}: {}", port, std::strerror(error)));
    }
    port_ = ntohs(place.sin_port);
}

PageServer::~PageServer() {
    for (const Client& client : clients_) {
        if (client.socket >= 0) close(client.socket);
    }
    close(listener_);
}

std::string PageServer::address() const {
    return fmt::format("http://127.0.0.1:{}/{}/", port_, token_);
}

void PageServer::add(std::string line) {
    ring_.push_back(std::move(line));
    if (ring_.size() > limits_.frames) {
        ring_.pop_front();
        ++first_;
    }
    for (Client& client : clients_) {
        if (client.phase == Phase::streams) send_on(client);
    }
}

void PageServer::tell(const std::string& name, const std::string& line) {
    State& state = states_[name];
    ++state.version;
    state.line = line;
}

bool PageServer::is_done() const {
    return any_done_ && std::all_of(clients_.begin(), clients_.end(), [](const Client& client) {
               return client.phase == Phase::asks || client.phase == Phase::closed;
           });
}

void PageServer::watch(std::vector<pollfd>& files) {
    files.push_back({listener_, POLLIN, 0});
    watched_.clear();
    for (std::size_t i = 0; i < clients_.size(); ++i) {
        Client& client = clients_[i];
        if (client.phase == Phase::streams) fill(client);
        const bool waiting = client.sent < client.out.size();
        const int events = (client.phase == Phase::answer ? 0 : POLLIN) | (waiting ? POLLOUT : 0);
        files.push_back({client.socket, static_cast<short>(events), 0});
        watched_.push_back(i);
    }
}

void PageServer::serve(std::span<const pollfd> files) {
    for (std::size_t k = 0; k < watched_.size(); ++k) {
        Client& client = clients_[watched_[k]];
        const int events = files[k + 1].revents;
        if ((events & POLLIN) != 0) read_request(client);
        if (client.phase != Phase::closed && (events & POLLOUT) != 0) send_on(client);
        if ((events & (POLLERR | POLLNVAL)) != 0) client.phase = Phase::closed;
        if ((events & POLLHUP) != 0 && (events & POLLIN) == 0) client.phase = Phase::closed;
    }
    forget_closed();
    if (files.front().revents != 0) accept_all();
}

/// The oldest request that is not whole is given up in time.
std::optional<LoopTime> PageServer::due() const {
    std::optional<LoopTime> first;
    for (const Client& client : clients_) {
        if (client.phase != Phase::asks) continue;
        const LoopTime end = client.since + limits_.request_time;
        if (!first || end < *first) first = end;
    }
    return first;
}

void PageServer::tick(LoopTime now) {
    for (Client& client : clients_) {
        if (client.phase == Phase::asks && client.since + limits_.request_time <= now) {
            client.phase = Phase::closed;
        }
    }
    forget_closed();
}

void PageServer::accept_all() {
    for (;;) {
        const int socket = accept(listener_, nullptr, nullptr);
        if (socket < 0) return;
        set_flags(socket);
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
        setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));
        make_room();
        if (clients_.size() >= limits_.connections) {
            close(socket);
            continue;
        }
        Client& client = clients_.emplace_back();
        client.socket = socket;
        client.since = std::chrono::steady_clock::now();
        read_request(client);  // mostly it is there already
    }
}

/// A browser asks at once: who has asked for nothing the longest goes first.
void PageServer::make_room() {
    if (clients_.size() < limits_.connections) return;
    const auto oldest = std::find_if(clients_.begin(), clients_.end(), [](const Client& client) {
        return client.phase == Phase::asks || client.phase == Phase::closed;
    });
    if (oldest == clients_.end()) return;
    oldest->phase = Phase::closed;
    forget_closed();
}

void PageServer::read_request(Client& client) {
    std::array<char, 4096> buffer;
    const ssize_t count = recv(client.socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0) {
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) client.phase = Phase::closed;
        return;
    }
    if (count == 0) {
        client.phase = Phase::closed;
        return;
    }
    if (client.phase != Phase::asks) return;  // nothing more is asked for
    client.in.append(buffer.data(), static_cast<std::size_t>(count));
    const std::size_t end = client.in.find(kHeadEnd);
    if (end == std::string::npos) {
        if (client.in.size() > limits_.request_bytes) refuse(client, 431);
        return;
    }
    if (end > limits_.request_bytes) {
        refuse(client, 431);
        return;
    }
    client.in.resize(end + kHeadEnd.size());
    answer_request(client);
}

bool PageServer::is_this_server(std::string_view host) const {
    return host == fmt::format("127.0.0.1:{}", port_) || host == fmt::format("localhost:{}", port_);
}

bool PageServer::has_token(std::string_view path, std::string_view& rest) const {
    const std::size_t length = token_.size() + 2;
    if (path.size() < length || !is_same(path.substr(1, token_.size()), token_) ||
        path[length - 1] != '/') {
        return false;
    }
    rest = path.substr(length);
    return true;
}

void PageServer::answer_request(Client& client) {
    HttpRequest request;
    const int status = parse_http_request(client.in, request);
    if (status != 200) return refuse(client, status);
    constexpr std::string_view kScheme = "http://";
    const bool own_origin =
        !request.origin ||
        (request.origin->starts_with(kScheme) &&
         is_this_server(std::string_view(*request.origin).substr(kScheme.size())));
    if (!is_this_server(request.host) || !own_origin) return refuse(client, 403);
    std::string_view rest;
    if (!has_token(request.path, rest)) return refuse(client, 404);
    if (request.method != "GET") return refuse(client, 405);
    if (rest.empty()) {
        client.phase = Phase::answer;
        client.out = fmt::format(
            "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: {}\r\n"
            "{}\r\n",
            page_.size(), kHeaders);
        client.out += page_;
    } else if (rest == "frames") {
        const auto streams =
            std::count_if(clients_.begin(), clients_.end(),
                          [](const Client& each) { return each.phase == Phase::streams; });
        if (static_cast<std::size_t>(streams) >= limits_.streams) return refuse(client, 503);
        client.phase = Phase::streams;
        client.out = fmt::format(
            "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n{}\r\nretry: 1000\n\n",
            kHeaders);
        // An id that no frame has yet is of another run of the program.
        const std::uint64_t seen = request.last_event_id.value_or(0);
        client.next = seen <= last() ? seen + 1 : 1;
    } else {
        return refuse(client, 404);
    }
    send_on(client);
}

void PageServer::refuse(Client& client, int status) {
    client.phase = Phase::answer;
    const std::string body = fmt::format("{} {}\n", status, text_of(status));
    client.out = fmt::format(
        "HTTP/1.1 {} {}\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: "
        "{}\r\n{}{}\r\n"
        "{}",
        status, text_of(status), body.size(), status == 405 ? "Allow: GET\r\n" : "", kHeaders,
        body);
    send_on(client);
}

/// Makes ready what there is for a browser, as much as it should get at once.
void PageServer::fill(Client& client) {
    if (client.sent > 0) {
        client.out.erase(0, client.sent);
        client.sent = 0;
    }
    while (client.out.size() < kChunk && client.next <= last()) fill_frames(client);
    if (client.out.size() >= kChunk || client.told_end) return;
    for (const auto& [name, state] : states_) {
        std::uint64_t& told = client.told[name];
        if (told == state.version) continue;
        told = state.version;
        client.out += fmt::format("event: {}\ndata: {}\n\n", name, state.line);
    }
    if (!ended_) return;
    client.told_end = true;
    client.out += "event: end\ndata: \n\n";
}

void PageServer::fill_frames(Client& client) {
    if (client.next < first()) {
        client.out += fmt::format("event: skipped\ndata: {} {}\n\n", client.next, first() - 1);
        client.next = first();
    }
    const std::uint64_t end = std::min(last() + 1, client.next + kFramesInEvent);
    client.out += fmt::format("id: {}\n", end - 1);
    for (; client.next < end; ++client.next) {
        client.out += fmt::format("data: {}\n", ring_[client.next - first()]);
    }
    client.out += '\n';
}

void PageServer::send_on(Client& client) {
    for (;;) {
        if (client.phase == Phase::streams) fill(client);
        if (client.sent == client.out.size()) break;
        const ssize_t count = send(client.socket, client.out.data() + client.sent,
                                   client.out.size() - client.sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0) {
            if (errno == EINTR) continue;
            if (errno != EAGAIN && errno != EWOULDBLOCK) client.phase = Phase::closed;
            return;
        }
        client.sent += static_cast<std::size_t>(count);
    }
    if (client.phase == Phase::answer || client.told_end) {
        any_done_ |= client.told_end;
        shutdown(client.socket, SHUT_WR);
        client.phase = Phase::closed;
    }
}

void PageServer::forget_closed() {
    std::erase_if(clients_, [](const Client& client) {
        if (client.phase != Phase::closed) return false;
        // What it sent and nobody read would have its answer thrown away.
        std::array<char, 4096> rest;
        while (recv(client.socket, rest.data(), rest.size(), MSG_DONTWAIT) > 0) continue;
        close(client.socket);
        return true;
    });
}

std::string with_own_connections(std::string page) {
    constexpr std::string_view kPolicy = "http-equiv=\"Content-Security-Policy\" content=\"";
    const std::size_t begin = page.find(kPolicy);
    const std::size_t end =
        begin == std::string::npos ? begin : page.find('"', begin + kPolicy.size());
    if (end == std::string::npos) throw BadInput("the page has no policy to widen");
    page.insert(end, "; connect-src 'self'");
    return page;
}

}  // namespace imgtune::workbench
