#ifndef IMGTUNE_WORKBENCH_TEXT_FILE_NAME_H
#define IMGTUNE_WORKBENCH_TEXT_FILE_NAME_H

#include <string_view>

namespace imgtune::workbench {

/// What stands behind the last '/' of a path.
inline std::string_view file_name(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? path : path.substr(slash + 1);
}

}  // namespace imgtune::workbench

#endif
