#ifndef IMGTUNE_WORKBENCH_FILES_TEXT_FILE_H
#define IMGTUNE_WORKBENCH_FILES_TEXT_FILE_H

#include <cstddef>
#include <string>

namespace imgtune::workbench {

/// A whole file, or standard input for "-"; of a longer one than `longest` bytes, one byte more
/// than these. Throws BadInput when it cannot be read.
std::string read_text(const std::string& path, std::size_t longest);

}  // namespace imgtune::workbench

#endif
