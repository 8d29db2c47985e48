#include "workbench/calibration/import.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/calibration_text.h"
#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/calibration/reader.h"
#include "workbench/calibration/report_page.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/text_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/json/import.h"
#include "workbench/text/counted.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

struct ImportOptions {
    std::string file;
    std::string output = "-";
    std::string color_from;
    std::string page;
    std::string method;
    std::string fit;
    std::string rows = "divide";
    ImportChoices choices;
    bool force = false;
    bool json = false;
};

std::string form_text(const Calibration& calibration) {
    return fmt::format(
        "{}: {}, {}", calibration.form, counted(calibration.locus.size(), "locus point"),
        calibration.matrices.size() == 1 ? "1 matrix"
                                         : fmt::format("{} matrices", calibration.matrices.size()));
}

int run_import(const ImportOptions& options) {
    guard_output(options.output, {options.file, options.color_from},
                 or_anything(Replaces::nothing, options.force));
    if (!options.page.empty()) {
        guard_output(options.page, {options.file, options.color_from, options.output},
                     or_anything(Replaces::nothing, options.force));
    }
    ImportChoices choices = options.choices;
    choose_by_words(choices, options.method, options.fit);
    choices.points.divide_rows = options.rows == "divide";
    if (choices.name.empty() && options.file != "-") {
        choices.name = std::filesystem::path(options.file).stem().string();
    }
    Faults faults;
    const Calibration calibration =
        read_calibration(read_text(options.file, kLargestCalibrationText),
                         options.file == "-" ? "standard input" : options.file, faults);
    const Tuning base = options.color_from.empty() ? Tuning{} : require_tuning(options.color_from);
    const Import import = import_calibration(calibration, choices, base, faults);
    tell(faults);
    if (faults.has_errors()) return kBadInput;
    const CalibrationReport report = report_on(calibration, choices, import);
    write_file(options.output, write_yaml(import.tuning));
    if (!options.page.empty()) {
        write_file(options.page, report_page(choices.name, import, report));
    }
    print_report(options.json ? dumped(to_json(import, report, faults))
                              : import_text(form_text(calibration), import, report, choices),
                 options.output);
    return kFine;
}

void add_choices(const Verb& verb, ImportOptions& options) {
    ImportChoices& choices = options.choices;
    verb.option("--name", choices.name, "Name of the tuning; else that of the file");
    verb.option("--method", options.method, "What the camera does with the points; else the better")
        .one_of({"blend", "polynomial"});
    verb.option("--fit", options.fit,
                "Tuned matrices: as calibrated (points), or fitted through the library's blend; "
                "else the better")
        .one_of({"points", "blend"});
    verb.option("--cts", choices.kelvins, "Tuned CTs in kelvin, 3 to 8; else the best")
        .separated_by_commas();
    verb.option("--most", choices.most_cts, "How many CTs to choose at most")
        .range(3, 8)
        .shows_default();
    verb.option("--low-light-saturation", choices.low_light_saturation,
                "Saturation of the low-light row, 1: as the normal row")
        .range(0.0, 1.0)
        .shows_default();
    verb.option("--flash-ct", choices.flash_kelvin, "Light of the flash in kelvin")
        .range(1000.0, 1000000.0)
        .shows_default();
    verb.option("--flash-share", choices.flash_share,
                "Share of the flash's matrix in the flash row, 0: as the normal row")
        .range(0.0, 1.0)
        .shows_default();
    verb.option("--rows", options.rows,
                "Matrix rows that do not sum to 1: divide them by their sum, or let the "
                "diagonal close them")
        .one_of({"divide", "diagonal"})
        .shows_default();
    verb.flag("--extrapolate", choices.points.extrapolate,
              "Keep matrices outside the locus, on its continuation");
    verb.option("--stretch", choices.stretch,
                "Multiply the gains: a synthetic locus, for trials of the blend")
        .range(0.1, 10.0);
}

}  // namespace

void add_import(const Verbs& verbs) {
    const auto options = std::make_shared<ImportOptions>();
    const Verb verb = verbs.add("import", "Make a tuning of another camera stack's calibration");
    verb.option("FILE", options->file,
                "libcamera tuning file (JSON of the Raspberry Pi, YAML of other pipelines), "
                "or CSV: ct,r_gain,b_gain,c0..c8")
        .required();
    verb.option("-o,--output", options->output, "YAML file; - is standard output").shows_default();
    add_choices(verb, *options);
    verb.option("--color-from", options->color_from,
                "Tuning whose colour tables and caller settings are taken over");
    verb.option("--report", options->page,
                "Page of one file to write, with plots and patches of every light");
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.flag("--json", options->json, "Report as JSON");
    verb.footer(
        "Example:\n  imgtune import imx708.json -o imx708.yaml && imgtune check imx708.yaml\n"
        "Faults go to standard error with file, line and what was done. docs/import.md tells how\n"
        "figures are converted.");
    verb.run([options] { return run_import(*options); });
}

}  // namespace imgtune::cli
