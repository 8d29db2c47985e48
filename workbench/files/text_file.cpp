#include "workbench/files/text_file.h"

#include <algorithm>

#include "workbench/files/file_source.h"

namespace imgtune::workbench {

std::string read_text(const std::string& path, std::size_t longest) {
    FileSource source(path);
    std::string text;
    char buffer[1U << 16U];
    while (text.size() <= longest) {
        const std::size_t room = std::min(sizeof(buffer), longest + 1 - text.size());
        const std::size_t count = source.read(buffer, room);
        if (count == 0) break;
        text.append(buffer, count);
    }
    return text;
}

}  // namespace imgtune::workbench
