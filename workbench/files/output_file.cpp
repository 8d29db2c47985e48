#include "workbench/files/output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

/// Temporary files to remove on a signal: plain storage, since the handler may use nothing else.
struct Slot {
    std::atomic<bool> taken{false};
    std::atomic<bool> named{false};
    char path[PATH_MAX];
};
std::array<Slot, 64> slots;

void remove_temporaries() {
    for (Slot& slot : slots) {
        if (slot.named.load()) unlink(slot.path);
    }
}

extern "C" void end_by_signal(int number) {
    remove_temporaries();
    raise(number);  // the default action is back (SA_RESETHAND): the caller sees the signal
}

void watch_signals() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction action = {};
        action.sa_handler = end_by_signal;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
            struct sigaction present = {};
            sigaction(number, nullptr, &present);
            if (present.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
        }
    });
}

/// -1 when all are taken or the name is too long: the file is then not removed on a signal.
int take_slot(const std::string& path) {
    if (path.size() >= PATH_MAX) return -1;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (slots[i].taken.exchange(true)) continue;
        std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
        slots[i].named = true;
        return static_cast<int>(i);
    }
    return -1;
}

void release_slot(int& slot) {
    if (slot < 0) return;
    Slot& held = slots[static_cast<std::size_t>(slot)];
    held.named = false;
    held.taken = false;
    slot = -1;
}

std::string follow_links(const std::string& path) {
    char* resolved = realpath(path.c_str(), nullptr);
    if (resolved == nullptr) return path;
    std::string target = resolved;
    std::free(resolved);
    return target;
}

mode_t mode_of_new_files() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    if (path_ == "-") {
        stream_ = stdout;
        return;
    }
    struct stat present = {};
    const bool exists = stat(path_.c_str(), &present) == 0;
    if (exists && S_ISDIR(present.st_mode)) fail(EISDIR);
    if (exists && !S_ISREG(present.st_mode)) {
        stream_ = std::fopen(path_.c_str(), "wb");
        if (stream_ == nullptr) fail(errno);
        return;
    }
    if (exists && access(path_.c_str(), W_OK) != 0) fail(errno);
    target_ = follow_links(path_);
    temporary_ = target_ + ".XXXXXX";
    watch_signals();
    const int file = mkstemp(temporary_.data());
    if (file < 0) {
        temporary_.clear();
        fail(errno);
    }
    slot_ = take_slot(temporary_);
    if (fchmod(file, exists ? present.st_mode & 07777 : mode_of_new_files()) != 0) {
        const int error = errno;
        close(file);
        discard();
        fail(error);
    }
    stream_ = fdopen(file, "wb");
    if (stream_ == nullptr) {
        const int error = errno;
        close(file);
        discard();
        fail(error);
    }
}

OutputFile::~OutputFile() {
    discard();
}

void OutputFile::discard() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
    stream_ = nullptr;
    if (!temporary_.empty()) unlink(temporary_.c_str());
    temporary_.clear();
    release_slot(slot_);
}

void OutputFile::fail(int error) {
    const std::string name = path_ == "-" ? "standard output" : path_;
    if (error == EPIPE) throw ClosedPipe(name);
    throw BadInput(name + ": cannot write: " + std::strerror(error), {name});
}

void OutputFile::write(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size()) fail(errno);
}

void OutputFile::check() {
    if (std::ferror(stream_) != 0) fail(errno != 0 ? errno : EIO);
}

void OutputFile::commit() {
    check();
    if (std::fflush(stream_) != 0) fail(errno);
    if (stream_ == stdout) {
        stream_ = nullptr;
        return;
    }
    if (std::fclose(std::exchange(stream_, nullptr)) != 0) fail(errno);
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
    temporary_.clear();
    release_slot(slot_);
}

void write_file(const std::string& path, std::string_view text) {
    OutputFile file(path);
    file.write(text);
    file.commit();
}

}  // namespace imgtune::workbench
