#ifndef IMGTUNE_WORKBENCH_FILES_PICTURE_DECODERS_H
#define IMGTUNE_WORKBENCH_FILES_PICTURE_DECODERS_H

#include <cstddef>
#include <string>

#include "workbench/capture/picture.h"

// One decoder a file, each over a library that a build may leave out. All throw BadInput.

namespace imgtune::workbench {

Picture decode_raw(const std::string& bytes, const std::string& name);
Picture decode_tiff(const std::string& bytes, const std::string& name);
Picture decode_png(const std::string& bytes, const std::string& name);

/// Throws where a picture is empty or larger than anything that is read.
void require_picture_size(const std::string& name, std::size_t width, std::size_t height,
                          std::size_t channels);

/// Throws BadInput: "name: reason; advice".
[[noreturn]] void refuse_picture(const std::string& name, const std::string& reason,
                                 const std::string& advice);

}  // namespace imgtune::workbench

#endif
