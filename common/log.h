#ifndef IMGTUNE_COMMON_LOG_H
#define IMGTUNE_COMMON_LOG_H

#include <android/log.h>

namespace imgtune {

/// Writes one line to the Android log: priority debug, tag "ispfeature".
template <class... Values>
void log_line(const char* format, Values... values) {
    __android_log_print(ANDROID_LOG_DEBUG, "ispfeature", format, values...);
}

}  // namespace imgtune

#endif
