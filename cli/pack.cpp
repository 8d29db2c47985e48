#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

void add_pack(const Verbs& verbs) {
    struct Options {
        std::string tuning;
        std::string folder;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb = verbs.add("pack", "Turn a tuning into stored binary images");
    verb.option("TUNING", options->tuning, "YAML file, folder of stored images, or -").required();
    verb.option("-o,--output", options->folder,
                "Folder for ccm.bin, color.bin, pca.bin and caller.yaml")
        .required();
    verb.flag("--force", options->force, "Overwrite the images of a folder");
    verb.footer(
        "Example:\n  imgtune pack tuning.yaml -o images\n"
        "Words are 32 bits, little-endian. The caller's settings stay text (caller.yaml).");
    verb.run([options]() -> int {
        if (!options->force) {
            guard_output(options->folder, {options->tuning}, Replaces::nothing);
        }
        write_images(options->folder, require_tuning(options->tuning));
        return kFine;
    });
}

}  // namespace imgtune::cli
