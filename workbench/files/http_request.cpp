#include "workbench/files/http_request.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "workbench/text/characters.h"

namespace imgtune::workbench {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kVersion = "HTTP/1.1";
constexpr int kFine = 200;
constexpr int kBadRequest = 400;
constexpr int kOtherVersion = 505;

bool is_token(std::string_view text) {
    constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               kOthers.find(c) != std::string_view::npos;
    });
}

bool is_visible(char c) {
    return c > ' ' && c < '\x7f';
}

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

/// "GET /path HTTP/1.1".
int parse_request_line(std::string_view line, HttpRequest& request) {
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string_view::npos || first == last) return kBadRequest;
    request.method = line.substr(0, first);
    request.path = line.substr(first + 1, last - first - 1);
    const std::string_view version = line.substr(last + 1);
    if (!is_token(request.method) || !request.path.starts_with('/') ||
        !std::all_of(request.path.begin(), request.path.end(), is_visible)) {
        return kBadRequest;
    }
    if (version == kVersion) return kFine;
    return version.starts_with("HTTP/") ? kOtherVersion : kBadRequest;
}

/// Each of these may stand once; a body is none of a request that only asks.
int take_header(const std::string& name, std::string_view value, bool& has_host,
                HttpRequest& request) {
    if (name == "host") {
        if (has_host) return kBadRequest;
        has_host = true;
        request.host = lower(value);
    } else if (name == "origin") {
        if (request.origin) return kBadRequest;
        request.origin = lower(value);
    } else if (name == "last-event-id") {
        std::uint64_t id = 0;
        const char* const end = value.data() + value.size();
        const auto result = std::from_chars(value.data(), end, id);
        if (request.last_event_id || result.ec != std::errc() || result.ptr != end) {
            return kBadRequest;
        }
        request.last_event_id = id;
    } else if (name == "transfer-encoding" || (name == "content-length" && value != "0")) {
        return kBadRequest;
    }
    return kFine;
}

}  // namespace

int parse_http_request(std::string_view head, HttpRequest& request) {
    request = {};
    bool has_host = false;
    bool first = true;
    while (!head.empty()) {
        const std::size_t end = head.find(kLineEnd);
        if (end == std::string_view::npos) return kBadRequest;
        const std::string_view line = head.substr(0, end);
        head.remove_prefix(end + kLineEnd.size());
        const bool clean = std::all_of(line.begin(), line.end(), [](char c) {
            return c == '\t' || (static_cast<unsigned char>(c) >= ' ' && c != '\x7f');
        });
        if (!clean) return kBadRequest;
        if (first) {
            const int status = parse_request_line(line, request);
            if (status != kFine) return status;
            first = false;
            continue;
        }
        if (line.empty()) return head.empty() && has_host ? kFine : kBadRequest;
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !is_token(line.substr(0, colon))) {
            return kBadRequest;  // a continued line, too
        }
        const int status = take_header(lower(line.substr(0, colon)),
                                       trimmed(line.substr(colon + 1)), has_host, request);
        if (status != kFine) return status;
    }
    return kBadRequest;
}

}  // namespace imgtune::workbench
