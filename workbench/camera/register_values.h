#ifndef IMGTUNE_WORKBENCH_CAMERA_REGISTER_VALUES_H
#define IMGTUNE_WORKBENCH_CAMERA_REGISTER_VALUES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"

namespace imgtune::workbench {

/// The values that a job's registers hold: coefficients c0..c8, or the colour fields.
enum class Job { ccm, color };

std::vector<std::string> value_names(Job job);
std::vector<std::int64_t> values_of(Job job, const Registers& registers,
                                    const CallerSettings& caller);

/// Where two sets of values lie farthest apart.
struct Difference {
    std::int64_t size = 0;  ///< without sign; 0: equal
    std::size_t value = 0;  ///< index into value_names
};
Difference largest_difference(const std::vector<std::int64_t>& a,
                              const std::vector<std::int64_t>& b);

}  // namespace imgtune::workbench

#endif
