#ifndef IMGTUNE_WORKBENCH_TUNING_YAML_IO_H
#define IMGTUNE_WORKBENCH_TUNING_YAML_IO_H

#include <iosfwd>
#include <string>

#include "workbench/tuning/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// Reads a tuning as far as it can be read; every fault of the text is added to `faults`.
/// `file` is the name that the findings show.
Tuning read_yaml(std::istream& in, const std::string& file, Faults& faults);

/// Reads a file with name and caller settings only.
void read_caller_yaml(std::istream& in, const std::string& file, Faults& faults, Tuning& tuning);

/// Writes a tuning so that read_yaml gives the same bits. With comments, each field is
/// explained where it stands first.
void write_yaml(std::ostream& out, const Tuning& tuning, bool comments = false);

}  // namespace imgtune::workbench

#endif
