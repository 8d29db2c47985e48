#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

void add_new(CLI::App& app, Context& context) {
    struct Options {
        std::string output = "-";
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("new", "Write a commented tuning to start from");
    verb->add_option("-o,--output", options->output, "YAML file; - is standard output")
        ->capture_default_str();
    verb->add_flag("--force", options->force, "Overwrite a file that holds something");
    verb->footer("Example:\n  imgtune new -o tuning.yaml && imgtune check tuning.yaml");
    verb->callback([options, &context] {
        context.run = [options]() -> int {
            if (!options->force) guard_output(options->output, {}, Existing::kept);
            const std::string text =
                "# Tuning to start from; check it with 'imgtune check'. Figures are plausible, of "
                "no\n"
                "# sensor in particular. Whole numbers, decimal or hex, are as stored; decimals "
                "and\n"
                "# fractions (1.53, 783/512) are in the unit that [...] names.\n" +
                write_yaml(starter_tuning(), true);
            write_file(options->output, text);
            return kFine;
        };
    });
}

}  // namespace imgtune::cli
