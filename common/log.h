#ifndef IMGTUNE_COMMON_LOG_H
#define IMGTUNE_COMMON_LOG_H

#include <android/log.h>

namespace imgtune {

/// Writes one line to the Android log: priority debug, tag "ispfeature".
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"  // a format without values is a literal, too
template <class... Values>
void log_line(const char* format, Values... values) {
    __android_log_print(ANDROID_LOG_DEBUG, "ispfeature", format, values...);
}
#pragma GCC diagnostic pop

}  // namespace imgtune

#endif
