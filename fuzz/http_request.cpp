// What the page's server reads from whoever connects.

#include "workbench/files/http_request.h"

#include <string>

#include "input.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string head(reinterpret_cast<const char*>(data), size);
    HttpRequest request;
    if (parse_http_request(head, request) != 200) return 0;
    require(head.ends_with("\r\n\r\n") && request.path.starts_with('/'), "a head is whole");
    // Read from its parts, it says the same; a second host or origin is never taken.
    std::string written =
        request.method + ' ' + request.path + " HTTP/1.1\r\nHost: " + request.host;
    if (request.origin) written += "\r\nOrigin: " + *request.origin;
    if (request.last_event_id)
        written += "\r\nLast-Event-ID: " + std::to_string(*request.last_event_id);
    const std::string end = "\r\n\r\n";
    HttpRequest again;
    require(parse_http_request(written + end, again) == 200, "what was read is a request");
    require(again.method == request.method && again.path == request.path &&
                again.host == request.host && again.origin == request.origin &&
                again.last_event_id == request.last_event_id,
            "it is the same request");
    for (const char* const name : {"hOST: a", "Host:", "Content-Length: 1"}) {
        require(parse_http_request(written + "\r\n" + name + end, again) == 400,
                "one host and no body");
    }
    return 0;
}
