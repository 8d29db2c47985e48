#include "workbench/files/file_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "workbench/files/text_file.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

FileSource::FileSource(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      owned_(path != "-") {
    if (file_ < 0) {
        throw BadInput(fmt::format("{}: cannot open: {}", name_, std::strerror(errno)), {name_});
    }
    struct stat status = {};
    if (fstat(file_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = static_cast<std::uint64_t>(status.st_size);
    }
}

FileSource::~FileSource() {
    if (owned_) close(file_);
}

std::size_t FileSource::read(char* into, std::size_t room) {
    if (before_waiting_) {
        pollfd ready{file_, POLLIN, 0};
        if (poll(&ready, 1, 0) == 0) before_waiting_();
    }
    ssize_t count = 0;
    do {
        count = ::read(file_, into, room);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        throw BadInput(fmt::format("{}: cannot read: {}", name_, std::strerror(errno)), {name_});
    }
    return static_cast<std::size_t>(count);
}

bool FileSource::comes_within(std::chrono::milliseconds time) {
    pollfd ready{file_, POLLIN, 0};
    return poll(&ready, 1, static_cast<int>(time.count())) != 0;
}

bool holds_frame_log(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    if (path.ends_with(".csv")) return true;
    constexpr std::size_t kStart = 1 << 16;
    return begins_frame_log(read_text(path, kStart));
}

}  // namespace imgtune::workbench
