#ifndef IMGTUNE_WORKBENCH_FILES_TUNING_FILES_H
#define IMGTUNE_WORKBENCH_FILES_TUNING_FILES_H

#include <string>

#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// Reads a YAML file ("-": standard input) or a folder of stored images. Every fault is added to
/// `faults`. `yaml` takes the text of a YAML file.
Tuning load_tuning(const std::string& path, Faults& faults, std::string* yaml = nullptr);

/// load_tuning for callers that need a readable tuning: throws BadInput with all errors as its
/// text.
Tuning require_tuning(const std::string& path, std::string* yaml = nullptr);

/// Writes a folder of stored images: every file beside its place first, renamed last. Throws
/// BadInput; a file that stood there before is then still whole.
void write_images(const std::string& folder, const Tuning& tuning);

}  // namespace imgtune::workbench

#endif
