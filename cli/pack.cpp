#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

void add_pack(CLI::App& app, Context& context) {
    struct Options {
        std::string tuning;
        std::string folder;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("pack", "Turn a tuning into stored binary images");
    verb->add_option("TUNING", options->tuning, "YAML file, folder of stored images, or -")
        ->required();
    verb->add_option("-o,--output", options->folder,
                     "Folder for ccm.bin, color.bin, pca.bin and caller.yaml")
        ->required();
    verb->add_flag("--force", options->force, "Overwrite the images of a folder");
    verb->footer(
        "Example:\n  imgtune pack tuning.yaml -o images\n"
        "Words are 32 bits, little-endian. The caller's settings stay text (caller.yaml).");
    verb->callback([options, &context] {
        context.run = [options]() -> int {
            if (!options->force) {
                guard_output(options->folder, {options->tuning}, Existing::kept);
            }
            write_images(options->folder, require_tuning(options->tuning));
            return kFine;
        };
    });
}

}  // namespace imgtune::cli
