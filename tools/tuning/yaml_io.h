#ifndef IMGTUNE_TOOLS_TUNING_YAML_IO_H
#define IMGTUNE_TOOLS_TUNING_YAML_IO_H

#include <iosfwd>
#include <string>

#include "tuning/faults.h"
#include "tuning/tuning.h"

namespace imgtune::tool {

/// Reads a tuning as far as it can be read; every fault of the text is added to `faults`.
/// `file` is the name that the findings show.
Tuning read_yaml(std::istream& in, const std::string& file, Faults& faults);

/// Reads a file with name and caller settings only.
void read_caller_yaml(std::istream& in, const std::string& file, Faults& faults, Tuning& tuning);

/// Writes a tuning so that read_yaml gives the same bits. With comments, each field is
/// explained where it stands first.
void write_yaml(std::ostream& out, const Tuning& tuning, bool comments = false);

/// Reads a YAML file ("-": standard input) or a folder of stored images.
Tuning load_tuning(const std::string& path, Faults& faults);

/// load_tuning for verbs that need a readable tuning: throws BadInput with all errors as its text.
Tuning require_tuning(const std::string& path);

}  // namespace imgtune::tool

#endif
