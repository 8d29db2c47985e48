#include "workbench/calibration/export.h"

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

struct ExportOptions {
    std::string tuning;
    std::string output = "-";
    std::string form = "json";
    std::vector<double> kelvins;
    bool force = false;
};

int run_export(const ExportOptions& options) {
    guard_output(options.output, {options.tuning}, or_anything(Replaces::nothing, options.force));
    const Tuning tuning = require_tuning(options.tuning);
    Faults faults;
    faults.set_place("", options.tuning == "-" ? "standard input" : options.tuning, 0);
    const Calibration calibration = calibration_of(tuning, options.kelvins, faults);
    tell(faults);
    if (faults.has_errors()) return kBadInput;
    write_file(options.output, options.form == "json" ? write_json_form(calibration)
                                                      : write_yaml_form(calibration));
    return kFine;
}

}  // namespace

void add_export(const Verbs& verbs) {
    const auto options = std::make_shared<ExportOptions>();
    const Verb verb = verbs.add("export", "Write a tuning's points as another camera stack's file");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("-o,--output", options->output, "File; - is standard output").shows_default();
    verb.option("--form", options->form,
                "json: of the Raspberry Pi; yaml: of libcamera's other pipelines")
        .one_of({"json", "yaml"})
        .shows_default();
    verb.option("--cts", options->kelvins,
                "CT of each tuned point in kelvin, where the tuning does not say")
        .separated_by_commas();
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer(
        "Example:\n  imgtune export imx708.yaml --form yaml -o awb_ccm.yaml\n"
        "What a calibration has no place for is told on standard error.");
    verb.run([options] { return run_export(*options); });
}

}  // namespace imgtune::cli
