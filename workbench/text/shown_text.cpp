#include "workbench/text/shown_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

namespace imgtune::workbench {

namespace {

/// The character at the start of a text: its length in bytes and its code point; length 0 where
/// the bytes are no UTF-8.
struct Character {
    std::size_t length;
    std::uint32_t code;
};

Character first_character(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {1, lead};
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return {0, 0};
    std::uint32_t code = lead & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0U) != 0x80) return {0, 0};
        code = (code << 6U) | (byte(i) & 0x3fU);
    }
    constexpr std::uint32_t kLeast[5] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return code < kLeast[length] || code > 0x10ffff || surrogate ? Character{0, 0}
                                                                 : Character{length, code};
}

/// Control characters, line and paragraph ends, and what changes the direction of writing.
bool is_control(std::uint32_t code) {
    return code < 0x20 || (code >= 0x7f && code <= 0x9f) || (code >= 0x2028 && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x2069) || code == 0x200e || code == 0x200f || code == 0x061c;
}

bool is_plain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace

std::string shown_text(std::string_view text, std::size_t longest) {
    if (text.size() <= longest && is_plain(text)) return std::string(text);
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const Character next = first_character(text.substr(at));
        const std::size_t length = next.length == 0 ? 1 : next.length;
        if (at + length > longest) return out + "...";
        const std::string_view bytes = text.substr(at, length);
        if (next.length != 0 && !is_control(next.code)) {
            out += bytes;
        } else {
            for (const char c : bytes) {
                out += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
            }
        }
        at += length;
    }
    return out;
}

std::string shown_lines(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        out += shown_text(text.substr(0, end));
        text.remove_prefix(end);
        if (text.empty()) break;
        out += '\n';
        text.remove_prefix(1);
    }
    return out;
}

std::string shown_json(std::string_view json) {
    std::string out;
    for (std::size_t at = 0; at < json.size();) {
        const Character next = first_character(json.substr(at));
        const std::size_t length = next.length == 0 ? 1 : next.length;
        if (next.code >= 0x7f && is_control(next.code))
            out += fmt::format("\\u{:04x}", next.code);
        else
            out += json.substr(at, length);
        at += length;
    }
    return out;
}

}  // namespace imgtune::workbench
