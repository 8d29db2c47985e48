#include "workbench/tuning/check.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

struct Options {
    std::string tuning;
    bool json = false;
};

int run(const Options& options) {
    Faults faults;
    const Tuning tuning = load_tuning(options.tuning, faults);
    // A file that cannot be read, or is no YAML at all, says nothing about a tuning.
    const bool unreadable = std::ranges::any_of(faults.list(), [](const Fault& fault) {
        return fault.code == "T001" || fault.code == "T010";
    });
    if (!unreadable) check_tuning(tuning, faults);
    faults.sort();
    if (options.json) {
        write_file("-", faults.json());
    } else {
        const auto errors = std::ranges::count(faults.list(), Severity::error, &Fault::severity);
        const auto warnings = static_cast<std::ptrdiff_t>(faults.list().size()) - errors;
        const bool color = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
        write_file(
            "-", faults.text(color) +
                     (faults.empty() ? fmt::format("{}: no findings\n", options.tuning)
                                     : fmt::format("{}: {} error{}, {} warning{}\n", options.tuning,
                                                   errors, errors == 1 ? "" : "s", warnings,
                                                   warnings == 1 ? "" : "s")));
    }
    if (unreadable) return kBadInput;
    return faults.empty() ? kFine : kFindings;
}

}  // namespace

void add_check(CLI::App& app, Context& context) {
    const auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("check", "Report every fault of a tuning");
    verb->add_option("TUNING", options->tuning, "YAML file, folder of stored images, or -")
        ->required();
    verb->add_flag("--json", options->json, "Write the findings as JSON");
    verb->footer(
        "Example:\n  imgtune check tuning.yaml\n"
        "Exit status: 0 no findings, 1 findings, 2 the input cannot be read.");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
