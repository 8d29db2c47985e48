#include "cli/progress.h"

#include <unistd.h>

#include <cstdio>

namespace imgtune::cli {

ProgressLine::ProgressLine()
    : on_(isatty(STDERR_FILENO) == 1),
      next_(std::chrono::steady_clock::now() + std::chrono::seconds(1)) {}

void ProgressLine::show(const std::string& text) {
    const auto now = std::chrono::steady_clock::now();
    if (!on_ || now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
}

void ProgressLine::clear() {
    if (shown_) std::fputs("\r\x1b[K", stderr);
    shown_ = false;
}

}  // namespace imgtune::cli
