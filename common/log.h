#ifndef IMGTUNE_COMMON_LOG_H
#define IMGTUNE_COMMON_LOG_H

#include "common/platform.h"

namespace imgtune {

constexpr int kDebugPriority = 3;

/// Writes one line to the Android log: priority debug, tag "ispfeature".
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"  // a format without values is a literal, too
template <class... Values>
void log_line(const char* format, Values... values) {
    __android_log_print(kDebugPriority, "ispfeature", format, values...);
}
#pragma GCC diagnostic pop

}  // namespace imgtune

#endif
