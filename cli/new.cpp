#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/text/bad_input.h"
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
            std::error_code error;
            const bool kept = options->output != "-" && !options->force &&
                              std::filesystem::is_regular_file(options->output, error) &&
                              std::filesystem::file_size(options->output, error) > 0;
            if (kept) {
                throw BadInput(options->output +
                               ": stands there already; name another file, or use --force");
            }
            const std::string text =
                "# Tuning to start from. Numbers are integers, decimal or hex; check it with\n"
                "# 'imgtune check'. Figures are plausible, of no sensor in particular.\n" +
                write_yaml(starter_tuning(), true);
            write_file(options->output, text);
            return kFine;
        };
    });
}

}  // namespace imgtune::cli
