#ifndef ANDROID_LOG_H
#define ANDROID_LOG_H

// The Android log on a machine that is not Android: lines go to standard error in the brief form of
// logcat, `D/tag     (  pid): text`, or to a function of the program.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT
};

/// One message as a logger function receives it; the strings live until it returns.
struct __android_log_message {
    size_t struct_size;   ///< sizeof(struct __android_log_message)
    int32_t buffer_id;    ///< 0: the main log
    int32_t priority;     ///< an android_LogPriority
    const char* tag;      ///< may be null
    const char* file;     ///< null
    uint32_t line;        ///< 0
    const char* message;  ///< whole text, newlines included
};

typedef void (*__android_logger_function)(const struct __android_log_message* log_message);

/// Sends the messages of every thread to `logger` from now on; null: to standard error again.
void __android_log_set_logger(__android_logger_function logger);

/// Formats a message as printf does, cut to 1023 characters, and logs it. Returns 1, or a negative
/// value when the format cannot be carried out.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

#endif
