#include "cli/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace imgtune::cli {

namespace {

constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l";  // other page, no cursor
constexpr std::string_view kLeave = "\x1b[?25h\x1b[?1049l";
constexpr std::string_view kHome = "\x1b[H";
constexpr std::string_view kRestOfLine = "\x1b[K";
constexpr std::string_view kRestOfScreen = "\x1b[J";
constexpr std::string_view kPlain = "\x1b[m";

/// As many characters as fit; control sequences and the bytes within a character take no room.
std::string_view cut(std::string_view line, std::size_t width) {
    std::size_t shown = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\x1b') {
            i = line.find('m', i);
            if (i == std::string_view::npos) break;
            continue;
        }
        const bool within = (static_cast<unsigned char>(line[i]) & 0xC0U) == 0x80;
        if (!within && shown++ == width) return line.substr(0, i);
    }
    return line;
}

void put(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace

Screen::Screen() : colors_(std::getenv("NO_COLOR") == nullptr) {}

Screen::~Screen() {
    if (!begun_) return;
    put(kLeave);
    std::fflush(stdout);
}

bool Screen::is_there() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && *terminal != '\0' &&
           std::string_view(terminal) != "dumb";
}

std::string Screen::styled(const char* style, std::string_view text) const {
    if (!colors_) return std::string(text);
    return std::string("\x1b[") + style + 'm' + std::string(text) + std::string(kPlain);
}

void Screen::show(const std::vector<std::string>& lines) {
    winsize size{};
    const bool known =
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
    const std::size_t width = known ? size.ws_col : 80;
    const std::size_t height = known ? size.ws_row : 24;
    std::string text;
    if (!begun_) text += kEnter;
    begun_ = true;
    text += kHome;
    for (std::size_t i = 0; i < lines.size() && i < height; ++i) {
        if (i > 0) text += "\r\n";
        text += cut(lines[i], width);
        text += kPlain;
        text += kRestOfLine;
    }
    text += kRestOfScreen;
    put(text);
    std::fflush(stdout);
}

}  // namespace imgtune::cli
