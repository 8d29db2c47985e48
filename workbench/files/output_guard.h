#ifndef IMGTUNE_WORKBENCH_FILES_OUTPUT_GUARD_H
#define IMGTUNE_WORKBENCH_FILES_OUTPUT_GUARD_H

#include <string>
#include <vector>

namespace imgtune::workbench {

/// What may stand where a result goes, and be replaced. An empty file may always.
enum class Replaces {
    nothing,
    rows,         ///< rows of registers, an earlier run's
    differences,  ///< a table of register differences
    frame_log,    ///< a frame log that begins with the frame's number, as of a phone's log
    report,       ///< findings as SARIF, or verdicts as JUnit XML
    anything,     ///< the user insists
};

/// Looks before anything runs whether a result may go there: throws BadInput for an output that is
/// also an input, or stands in an input's folder of stored images, and for one that must be kept.
/// "-", an empty output, devices and pipes are always fine.
void guard_output(const std::string& output, const std::vector<std::string>& inputs,
                  Replaces replaces);

/// Whether something stands there that a result would replace.
bool holds_something(const std::string& output);

/// What a verb that makes tables may replace.
inline Replaces or_anything(Replaces kind, bool force) {
    return force ? Replaces::anything : kind;
}

}  // namespace imgtune::workbench

#endif
