#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

void add_new(const Verbs& verbs) {
    struct Options {
        std::string output = "-";
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb = verbs.add("new", "Write a commented tuning to start from");
    verb.option("-o,--output", options->output, "YAML file; - is standard output").shows_default();
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer("Example:\n  imgtune new -o tuning.yaml && imgtune check tuning.yaml");
    verb.run([options]() -> int {
        if (!options->force) guard_output(options->output, {}, Replaces::nothing);
        const std::string text =
            "# Tuning to start from; check it with 'imgtune check'. Figures are plausible, of "
            "no\n"
            "# sensor in particular. Whole numbers, decimal or hex, are as stored; decimals "
            "and\n"
            "# fractions (1.53, 783/512) are in the unit that [...] names.\n" +
            write_yaml(starter_tuning(), true);
        write_file(options->output, text);
        return kFine;
    });
}

}  // namespace imgtune::cli
