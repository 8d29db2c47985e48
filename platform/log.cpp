#include <android/log.h>
#include <locale.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::size_t kMessageSize = 1024;  // with the terminator, as on the device

char letter_of(int priority) {
    constexpr std::string_view kLetters = "??VDIWEFS";
    if (priority < 0 || priority >= static_cast<int>(kLetters.size())) return '?';
    return kLetters[static_cast<std::size_t>(priority)];
}

/// One system call a line, so that lines of several threads or processes do not mix.
void write_line(int priority, std::string_view tag, std::string_view text) {
    const char head[] = {letter_of(priority), '/'};
    constexpr std::size_t kTagWidth = 8;
    const int padding = tag.size() < kTagWidth ? static_cast<int>(kTagWidth - tag.size()) : 0;
    char middle[32];
    const int length = std::snprintf(middle, sizeof(middle), "%*s(%5d): ", padding, "", getpid());
    const auto part = [](std::string_view bytes) {
        return iovec{const_cast<char*>(bytes.data()), bytes.size()};
    };
    const iovec line[] = {part({head, sizeof(head)}), part(tag),
                          part({middle, static_cast<std::size_t>(length)}), part(text), part("\n")};
    ssize_t written = 0;
    do {
        written = writev(STDERR_FILENO, line, static_cast<int>(std::size(line)));
    } while (written < 0 && errno == EINTR);
}

void write_to_stderr(const __android_log_message* message) {
    const std::string_view tag = message->tag == nullptr ? "" : message->tag;
    std::string_view rest = message->message;
    do {
        const std::string_view text = rest.substr(0, rest.find('\n'));
        write_line(message->priority, tag, text);
        rest.remove_prefix(text.size() < rest.size() ? text.size() + 1 : text.size());
    } while (!rest.empty());
}

std::atomic<__android_logger_function> current_logger{write_to_stderr};

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED void __android_log_set_logger(__android_logger_function logger) {
    current_logger.store(logger == nullptr ? write_to_stderr : logger);
}

EXPORTED int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    const int callers_errno = errno;  // a trace line must not disturb the code around it
    char text[kMessageSize];
    // As on the device, where no locale turns a decimal point into a comma.
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    const locale_t callers_locale = uselocale(plain);
    va_list values;
    va_start(values, fmt);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): started on the line above
    const int length = std::vsnprintf(text, sizeof(text), fmt, values);
    va_end(values);
    uselocale(callers_locale);
    if (length >= 0) {
        const __android_log_message message = {sizeof(message), 0, prio, tag, nullptr, 0, text};
        current_logger.load()(&message);
    }
    errno = callers_errno;
    return length < 0 ? length : 1;
}
