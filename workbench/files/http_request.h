#ifndef IMGTUNE_WORKBENCH_FILES_HTTP_REQUEST_H
#define IMGTUNE_WORKBENCH_FILES_HTTP_REQUEST_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// What a browser asks for, as far as a server for one page needs it.
struct HttpRequest {
    std::string method;
    std::string path;  ///< as it stands, "/" first
    std::string host;
    std::optional<std::string> origin;
    std::optional<std::uint64_t> last_event_id;
};

/// Reads the head of a request of HTTP/1.1, up to and with its empty line, strictly: what two
/// readers could understand differently is refused. Returns 200, or the status to refuse it with.
int parse_http_request(std::string_view head, HttpRequest& request);

}  // namespace imgtune::workbench

#endif
