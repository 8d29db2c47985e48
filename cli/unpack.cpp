#include <filesystem>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

void add_unpack(const Verbs& verbs) {
    struct Options {
        std::string folder;
        std::string output = "-";
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb = verbs.add("unpack", "Turn stored binary images into a YAML tuning");
    verb.option("DIR", options->folder, "Folder of stored images").required();
    verb.option("-o,--output", options->output, "YAML file; - is standard output").shows_default();
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer(
        "Example:\n  imgtune unpack images -o tuning.yaml\n"
        "Packing the result again gives the same bytes, whatever they are.");
    verb.run([options]() -> int {
        std::error_code error;
        if (!std::filesystem::is_directory(options->folder, error)) {
            throw BadInput(options->folder +
                           ": not a folder; expected one with ccm.bin, or color.bin and "
                           "pca.bin, or all three");
        }
        if (!options->force) {
            guard_output(options->output, {options->folder}, Replaces::nothing);
        }
        write_file(options->output, write_yaml(require_tuning(options->folder), true));
        return kFine;
    });
}

}  // namespace imgtune::cli
