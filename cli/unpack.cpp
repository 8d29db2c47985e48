#include <filesystem>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/text_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

/// Of one stored image; BadInput for anything else that is no folder.
std::string fields_of_file(const std::string& path) {
    constexpr std::size_t kLongestImage = std::size_t{1} << 20U;
    std::error_code error;
    std::string text;
    if (std::filesystem::is_regular_file(path, error))
        text = stored_fields(read_text(path, kLongestImage));
    if (!text.empty()) return text;
    throw BadInput(path +
                   ": neither a stored image nor a folder of them; expected ccm.bin, or color.bin "
                   "and pca.bin, or all three");
}

}  // namespace

void add_unpack(const Verbs& verbs) {
    struct Options {
        std::string folder;
        std::string output = "-";
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb = verbs.add("unpack", "Turn stored binary images into a YAML tuning");
    verb.option("DIR", options->folder,
                "Folder of stored images, or one of them: its fields, one a line")
        .required();
    verb.option("-o,--output", options->output, "YAML file; - is standard output").shows_default();
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer(
        "Example:\n  imgtune unpack images -o tuning.yaml\n"
        "Packing the result again gives the same bytes, whatever they are.");
    verb.run([options]() -> int {
        std::error_code error;
        const bool is_folder = std::filesystem::is_directory(options->folder, error);
        if (!options->force) {
            guard_output(options->output, {options->folder}, Replaces::nothing);
        }
        write_file(options->output, is_folder ? write_yaml(require_tuning(options->folder), true)
                                              : fields_of_file(options->folder));
        return kFine;
    });
}

}  // namespace imgtune::cli
