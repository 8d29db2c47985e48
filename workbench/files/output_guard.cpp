#include "workbench/files/output_guard.h"

#include <filesystem>

#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace fs = std::filesystem;

namespace {

bool holds_something(const std::string& output) {
    std::error_code error;
    if (fs::is_directory(output, error)) return !fs::is_empty(output, error);
    return fs::is_regular_file(output, error) && fs::file_size(output, error) > 0;
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

void guard_output(const std::string& output, const std::vector<std::string>& inputs,
                  Existing existing) {
    if (output.empty() || output == "-") return;
    for (const std::string& input : inputs) {
        if (input.empty() || input == "-" || !touches(output, input)) continue;
        throw BadInput(output + ": is also an input; name another file for the output");
    }
    if (existing == Existing::kept && holds_something(output)) {
        throw BadInput(output + ": stands there already; name another, or use --force");
    }
}

}  // namespace imgtune::workbench
