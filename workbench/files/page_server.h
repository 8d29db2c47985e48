#ifndef IMGTUNE_WORKBENCH_FILES_PAGE_SERVER_H
#define IMGTUNE_WORKBENCH_FILES_PAGE_SERVER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/files/event_loop.h"

namespace imgtune::workbench {

/// Hands a page and the frames of a live log to browsers of this machine, and to nobody else.
///
/// It listens on the loopback address alone. Every request has to name the token of the address,
/// which cannot be guessed, and a Host that is this server; an Origin, where there is one, has to
/// be this server, too: a foreign page that has a name of its own resolve to this machine gets
/// nothing. Only GET is answered. A browser that reads slowly, or not at all, holds up nobody:
/// it goes on at its own place in a ring of the last frames, and is told what it has missed.
///
/// Frames go out as Server-Sent Events with the frame's number as id; a browser that lost its
/// connection goes on behind the last one it has.
class PageServer : public Attendant {
  public:
    struct Limits {
        std::size_t frames = 1U << 17;  ///< in the ring: an hour at 36 a second
        std::size_t connections = 64;
        std::size_t streams = 16;
        std::size_t request_bytes = 8192;
        std::chrono::seconds request_time{10};
    };

    /// Port 0: any that is free. Throws BadInput when it cannot listen there.
    PageServer(std::string page, std::uint16_t port, const Limits& limits);
    ~PageServer() override;

    /// "http://127.0.0.1:40123/<token>/".
    std::string address() const;

    /// The next frame, one line; numbers count from 1.
    void add(std::string line);

    /// A state of that name, one line, for every browser; the next one of the name replaces it.
    void tell(const std::string& name, const std::string& line);

    /// No more frames will come: browsers are told when they have all.
    void end() { ended_ = true; }
    /// Some browser has got them all, and none is still getting any.
    bool is_done() const;

    void watch(std::vector<pollfd>& files) override;
    void serve(std::span<const pollfd> files) override;
    std::optional<LoopTime> due() const override;
    void tick(LoopTime now) override;

  private:
    enum class Phase {
        asks,     ///< its request is not whole yet
        answer,   ///< gets an answer and is then closed
        streams,  ///< gets frames
        closed,
    };
    struct Client {
        int socket = -1;
        Phase phase = Phase::asks;
        LoopTime since;
        std::string in;
        std::string out;
        std::size_t sent = 0;                       ///< of `out`
        std::uint64_t next = 1;                     ///< frame
        std::map<std::string, std::uint64_t> told;  ///< states by name: the version it has
        bool told_end = false;
    };
    struct State {
        std::uint64_t version = 0;
        std::string line;
    };

    void accept_all();
    void make_room();
    void read_request(Client& client);
    void answer_request(Client& client);
    void refuse(Client& client, int status);
    bool is_this_server(std::string_view host) const;
    bool has_token(std::string_view path, std::string_view& rest) const;
    void fill(Client& client);
    void fill_frames(Client& client);
    void send_on(Client& client);
    void forget_closed();
    std::uint64_t first() const { return first_; }
    std::uint64_t last() const { return first_ + ring_.size() - 1; }

    std::string page_;
    Limits limits_;
    std::string token_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::vector<Client> clients_;
    std::vector<std::size_t> watched_;  ///< clients in the order of watch()
    std::deque<std::string> ring_;
    std::uint64_t first_ = 1;  ///< number of the oldest frame in the ring
    std::map<std::string, State> states_;
    bool ended_ = false;
    bool any_done_ = false;
};

/// The page's policy lets it fetch from where it came from, and is else the same. Throws BadInput
/// for a page without a policy.
std::string with_own_connections(std::string page);

}  // namespace imgtune::workbench

#endif
