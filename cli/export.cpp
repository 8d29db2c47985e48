#include "workbench/calibration/export.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"

namespace imgtune::cli {

namespace {

struct Options {
    std::string tuning;
    std::string output = "-";
    std::string form = "json";
    std::vector<double> kelvins;
    bool force = false;
};

int run(const Options& options) {
    guard_output(options.output, {options.tuning},
                 options.force ? Existing::replaced : Existing::kept);
    const Tuning tuning = require_tuning(options.tuning);
    Remarks remarks(options.tuning == "-" ? "standard input" : options.tuning);
    const Calibration calibration = calibration_of(tuning, options.kelvins, remarks);
    std::fputs(remarks.text().c_str(), stderr);
    if (remarks.has_errors()) return kBadInput;
    write_file(options.output, options.form == "json" ? write_json_form(calibration)
                                                      : write_yaml_form(calibration));
    return kFine;
}

}  // namespace

void add_export(CLI::App& app, Context& context) {
    const auto options = std::make_shared<Options>();
    CLI::App* verb =
        app.add_subcommand("export", "Write a tuning's points as another camera stack's file");
    verb->add_option("TUNING", options->tuning, kTuningHelp)->required();
    verb->add_option("-o,--output", options->output, "File; - is standard output")
        ->capture_default_str();
    verb->add_option("--form", options->form,
                     "json: of the Raspberry Pi; yaml: of libcamera's other pipelines")
        ->check(CLI::IsMember({"json", "yaml"}))
        ->capture_default_str();
    verb->add_option("--cts", options->kelvins,
                     "CT of each tuned point in kelvin, where the tuning does not say")
        ->delimiter(',');
    verb->add_flag("--force", options->force, "Overwrite a file that holds something");
    verb->footer(
        "Example:\n  imgtune export imx708.yaml --form yaml -o awb_ccm.yaml\n"
        "What a calibration has no place for is told on standard error.");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
