#ifndef IMGTUNE_WORKBENCH_TUNING_YAML_IO_H
#define IMGTUNE_WORKBENCH_TUNING_YAML_IO_H

#include <cstddef>
#include <string>

#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// The longest text that read_yaml takes, in bytes.
inline constexpr std::size_t kLargestTuningText = 16U << 20U;

/// Reads a tuning of either version as far as it can be read; every fault of the text is added to
/// `faults`. `file` is the name that the findings show.
Tuning read_yaml(const std::string& text, const std::string& file, Faults& faults);

/// Reads the text that write_settings gives.
void read_settings(const std::string& text, const std::string& file, Faults& faults,
                   Tuning& tuning);

/// The text of a tuning, from which read_yaml gives the same bits. A colour image or smoothing
/// record that resembles an earlier one is written as its differences. With comments, each field
/// is explained where it stands first.
std::string write_yaml(const Tuning& tuning, bool comments = false);

/// What the stored images have no place for, as YAML: name, caller settings, kelvin.
std::string write_settings(const Tuning& tuning);

}  // namespace imgtune::workbench

#endif
