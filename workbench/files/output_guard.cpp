#include "workbench/files/output_guard.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace fs = std::filesystem;

namespace {

/// A column that frame logs have; rows of registers have others, too.
bool is_of_a_frame_log(std::string_view column) {
    return column == "frame" || column.starts_with("x_") ||
           std::any_of(kFrameColumns.begin(), kFrameColumns.end(),
                       [&](const FrameColumn& known) { return known.name == column; });
}

/// By its beginning what a file is; every table that is written here begins with the frame, and a
/// report names the tool.
Replaces kind_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string first(4096, '\0');
    file.read(first.data(), static_cast<std::streamsize>(first.size()));
    first.resize(static_cast<std::size_t>(file.gcount()));
    if ((first.starts_with('{') && first.find("\"name\": \"imgtune\"") != first.npos) ||
        (first.starts_with("<?xml") && first.find("<testsuites name=\"imgtune") != first.npos)) {
        return Replaces::report;
    }
    first.resize(std::min(first.find('\n'), first.size()));
    if (!first.starts_with("frame,")) return Replaces::nothing;
    if (first == "frame,field,a,b") return Replaces::differences;
    for (std::string_view rest = first; !rest.empty();) {
        const std::string_view column = rest.substr(0, rest.find(','));
        if (!is_of_a_frame_log(column)) return Replaces::rows;
        rest.remove_prefix(std::min(rest.size(), column.size() + 1));
    }
    return Replaces::frame_log;
}

/// The same file, or one inside an input's folder.
bool touches(const std::string& output, const std::string& input) {
    std::error_code error;
    if (!fs::exists(input, error)) return false;
    if (fs::equivalent(output, input, error)) return true;
    if (!fs::is_directory(input, error)) return false;
    const fs::path folder = fs::path(output).parent_path();
    return fs::equivalent(folder.empty() ? "." : folder, input, error);
}

}  // namespace

bool holds_something(const std::string& output) {
    std::error_code error;
    if (fs::is_directory(output, error)) return !fs::is_empty(output, error);
    return fs::is_regular_file(output, error) && fs::file_size(output, error) > 0;
}

void guard_output(const std::string& output, const std::vector<std::string>& inputs,
                  Replaces replaces) {
    if (output.empty() || output == "-") return;
    for (const std::string& input : inputs) {
        if (input.empty() || input == "-" || !touches(output, input)) continue;
        throw BadInput(output + ": is also an input; name another file for the output", {output});
    }
    if (replaces == Replaces::anything || !holds_something(output)) return;
    if (replaces == Replaces::nothing)
        throw BadInput(output + ": already exists; choose another file or pass --force", {output});
    if (kind_of(output) != replaces) {
        throw BadInput(output +
                           ": already exists and is no earlier result of this kind; choose another "
                           "file or pass --force",
                       {output});
    }
}

}  // namespace imgtune::workbench
