#ifndef IMGTUNE_WORKBENCH_TEXT_COUNTED_H
#define IMGTUNE_WORKBENCH_TEXT_COUNTED_H

#include <cstdint>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// "1 frame", "2 frames".
inline std::string counted(std::uint64_t count, std::string_view what) {
    return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace imgtune::workbench

#endif
