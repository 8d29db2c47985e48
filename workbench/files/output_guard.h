#ifndef IMGTUNE_WORKBENCH_FILES_OUTPUT_GUARD_H
#define IMGTUNE_WORKBENCH_FILES_OUTPUT_GUARD_H

#include <string>
#include <vector>

namespace imgtune::workbench {

/// What becomes of a file that stands where a result goes.
enum class Existing {
    replaced,  ///< a run's result, made again at will
    kept,      ///< refused, unless it is empty
};

/// Looks before anything runs whether a result may go there: throws BadInput for an output that is
/// also an input, or stands in an input's folder of stored images, and for one that must be kept.
/// "-" and an empty output are always fine.
void guard_output(const std::string& output, const std::vector<std::string>& inputs,
                  Existing existing);

}  // namespace imgtune::workbench

#endif
