#ifndef IMGTUNE_CLI_PHONE_LOG_H
#define IMGTUNE_CLI_PHONE_LOG_H

#include <optional>
#include <string>

#include "cli/verb.h"
#include "workbench/files/file_source.h"
#include "workbench/trace/traced_frames.h"

// What the verbs that read a device's log share.

namespace imgtune::cli {

struct PhoneLogOptions {
    std::string path;
    std::string camera;  ///< empty: the first in the log
};

/// Adds LOGCAT and --camera.
void add_phone_log(const Verb& verb, PhoneLogOptions& options);

/// Throws BadInput for what is neither PID nor PID:TID.
std::optional<workbench::CameraChoice> camera_of(const PhoneLogOptions& options);

/// Tells on standard error what else the log holds and what it lacks. Throws BadInput when no frame
/// was found, with what to do.
void tell_rest(const std::string& name, const workbench::TracedFrames& frames, std::uint64_t count);

}  // namespace imgtune::cli

#endif
