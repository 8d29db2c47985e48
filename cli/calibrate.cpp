#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/calibration_text.h"
#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/appearance/patches.h"
#include "workbench/calibration/export.h"
#include "workbench/calibration/import.h"
#include "workbench/calibration/real_number.h"
#include "workbench/calibration/report_page.h"
#include "workbench/capture/chart_reference.h"
#include "workbench/capture/reported_captures.h"
#include "workbench/files/capture_files.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/json/capture_study.h"
#include "workbench/json/import.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

struct CalibrateOptions {
    CaptureFiles files;
    std::string black;
    std::string white;
    std::string reference;
    std::string edition = "before-2014";
    std::vector<std::string> weights;
    std::string output;
    std::string calibration;
    std::string pick;
    std::string color_from;
    std::string method;
    std::string fit;
    std::string page;
    ImportChoices choices;
    bool force = false;
    bool json = false;
};

/// A level as the user names it; none: not named.
std::optional<double> level_of(const std::string& option, const std::string& text) {
    if (text.empty()) return std::nullopt;
    const auto value = parse_real(text);
    if (!value || *value < 0.0 || *value > 65535.0) {
        throw BadInput(fmt::format("{} is {}; allowed are 0..65535, in the file's own unit", option,
                                   quoted_value(text)));
    }
    return value;
}

void take_weight(const std::string& text, PatchWeights& weights) {
    const std::size_t equals = text.rfind('=');
    const double value =
        equals == text.npos ? -1.0 : parse_real(text.substr(equals + 1)).value_or(-1.0);
    const std::size_t patch = patch_index(text.substr(0, std::min(equals, text.size())));
    if (value < 0.0 || value > 1000.0 || patch == kChartPatches) {
        throw BadInput(
            fmt::format("--weight {}: write PATCH=WEIGHT, the patch by name or number 1 "
                        "to 24, the weight 0 to 1000",
                        quoted_value(text)));
    }
    weights[patch] = value;
}

CaptureChoices capture_choices(const CalibrateOptions& options, Faults& faults) {
    CaptureChoices choices;
    if (options.edition == "after-2014") std::swap(choices.reference, *choices.other_edition);
    if (!options.reference.empty()) {
        choices.reference = read_reference_file(options.reference, faults);
        choices.other_edition.reset();
    }
    for (const std::string& weight : options.weights) take_weight(weight, choices.weights);
    weights_fit(choices.weights, faults);
    return choices;
}

std::string light_lines(const LightStudy& light) {
    std::size_t clipped = 0;
    double noise = 0.0;
    bool has_samples = true;
    for (const PatchMeasure& patch : light.patches) {
        clipped += patch.clipped.value_or(0);
        has_samples = has_samples && patch.noise && patch.clipped;
    }
    const PatchMeasure& white = light.patches[kFirstGrey];
    if (white.noise) {
        for (std::size_t k = 0; k < 3; ++k) {
            noise = std::max(noise, (*white.noise)[k] / std::max(white.mean[k], 1e-9));
        }
    }
    return fmt::format(
        "{:>6g}  {:<18} {:>5}  {:>5.3f} {:>6.3f}  {:>5.2f} {:>6.2f}  {:<14} {:>7}  {:>7}"
        "  {:>5.2f}  {:>5.1f} %  {:>4.0f} %\n",
        light.kelvin, light.name.substr(0, 18), light.pictures.size(), light.red_gain,
        light.blue_gain, light.mean_residual, light.worst_residual,
        chart_patches()[light.worst_patch].name, has_samples ? fmt::format("{}", clipped) : "-",
        has_samples ? fmt::format("{:.1f} %", 100.0 * noise) : "-", light.grey_slope,
        100.0 * light.glare, 100.0 * light.unevenness);
}

std::string study_text(const CaptureStudy& study) {
    std::string text =
        fmt::format("reference     {}\n", study.reference.name) +
        "                                gain           CIEDE2000 left over\n"
        "kelvin  light              shots    red   blue   mean  worst  at             "
        "clipped    noise  slope    glare  uneven\n";
    for (const LightStudy& light : study.lights) text += light_lines(light);
    return text +
           "kelvin are labels: no picture shows them, and the library tells lights by gains\n";
}

int run_calibrate(const CalibrateOptions& options) {
    std::vector<std::string> inputs = files_of(options.files);
    for (const std::string& file : {options.reference, options.color_from}) {
        if (!file.empty()) inputs.push_back(file);
    }
    const Replaces replaces = or_anything(Replaces::nothing, options.force);
    for (const std::string& output :
         {options.output, options.calibration, options.pick, options.page}) {
        guard_output(output, inputs, replaces);
    }
    if (options.output.empty() == options.pick.empty()) {
        throw BadInput(
            "calibrate: name the tuning with -o, or a page to click corners on with --pick");
    }
    if (!options.files.kelvin.empty() &&
        options.files.kelvin.size() != options.files.captures.size()) {
        throw BadInput(fmt::format("--kelvin names {} lights for {} captures; name one a capture",
                                   options.files.kelvin.size(), options.files.captures.size()));
    }
    CaptureFiles files = options.files;
    files.pictures.black = level_of("--black", options.black);
    files.pictures.white = level_of("--white", options.white);
    if (!options.pick.empty()) {
        write_file(options.pick, corner_page_of(files));
        return kFine;
    }
    ImportChoices choices = options.choices;
    choose_by_words(choices, options.method, options.fit);
    if (choices.name.empty() && options.output != "-") {
        choices.name = std::filesystem::path(options.output).stem().string();
    }

    Faults faults;
    const CaptureChoices chart = capture_choices(options, faults);
    if (faults.has_errors()) {
        tell(faults);
        return kBadInput;
    }
    const CaptureStudy study = study_capture_files(files, chart, faults);
    if (faults.has_errors()) {
        tell(faults);
        if (!study.lights.empty()) say(study_text(study));
        return kBadInput;
    }
    const Tuning base = options.color_from.empty() ? Tuning{} : require_tuning(options.color_from);
    const Calibration calibration = calibration_of(study);
    faults.set_place("", files.captures.front(), 0);
    const Import import = import_calibration(calibration, choices, base, faults);
    tell(faults);
    if (faults.has_errors()) return kBadInput;
    if (!options.calibration.empty()) {
        write_file(options.calibration, write_json_form(calibration));
    }
    write_file(options.output, write_yaml(import.tuning));
    CalibrationReport report = report_on(calibration, choices, import);
    report.captures = reported_captures(study);
    if (!options.page.empty()) {
        write_file(options.page, report_page(choices.name, import, report));
    }
    if (options.json) {
        nlohmann::ordered_json json = to_json(study);
        json["import"] = to_json(import, report, faults);
        print_report(dumped(json), options.output);
    } else {
        print_report(study_text(study) + import_text("", import, report, choices), options.output);
    }
    return kFine;
}

void add_chart_options(const Verb& verb, CalibrateOptions& options) {
    verb.option("--corners", options.files.corners,
                "CSV, a line a picture: file,x1,y1,..,x4,y4, the outer corners of patches 1, 6, 24 "
                "and 19 in pixels of the full mosaic, unrotated, first pixel 0,0");
    verb.option("--flat", options.files.flats,
                "Flat frames, each with its light's kelvin in the name; one alone is for all")
        .one_value_each();
    verb.option("--dark", options.files.dark, "Dark frame, in place of the files' black levels");
    const Option kelvins =
        verb.option("--kelvins", options.files.kelvins, "CSV, a line a capture: file,kelvin");
    verb.option("--kelvin", options.files.kelvin, "Kelvin of the captures, in their order")
        .separated_by_commas()
        .excludes(kelvins);
    const Option reference = verb.option(
        "--reference", options.reference,
        "Colours of the chart: CSV of 24 lines under r,g,b (linear sRGB) or L,a,b (D50)");
    verb.option("--edition", options.edition, "Else those of the chart's maker, by its date")
        .one_of({"before-2014", "after-2014"})
        .shows_default()
        .excludes(reference);
    verb.option("--weight", options.weights,
                "PATCH=WEIGHT in the fit, by name or number; 0 leaves the patch out (repeatable)")
        .one_value_each();
    verb.option("--black", options.black, "Black level, in place of the files'");
    verb.option("--white", options.white, "Level at which samples clip, in place of the files'");
    verb.option("--order", options.files.pictures.order, "Mosaic of TIFF or PNG with one channel")
        .one_of({"RGGB", "BGGR", "GRBG", "GBRG"});
}

}  // namespace

void add_calibrate(const Verbs& verbs) {
    const auto options = std::make_shared<CalibrateOptions>();
    const Verb verb = verbs.add("calibrate", "Make a tuning of photographs of a colour chart");
    verb.option("CAPTURE", options->files.captures,
                "photographs, raw files or linear 16-bit TIFF or PNG, or CSV of 24 patch means; "
                "kelvin in the name, as d65_6500k.dng")
        .required();
    verb.option("-o,--output", options->output, "YAML file; - is standard output");
    add_chart_options(verb, *options);
    verb.option("--pick", options->pick,
                "Make a page instead, to click the corners on in a browser; it saves the table");
    verb.option("--calibration", options->calibration,
                "Also write gains and matrices as measured, for 'imgtune import'");
    verb.option("--name", options->choices.name, "Name of the tuning; else that of its file");
    verb.option("--method", options->method,
                "What the camera does with the points; else the better")
        .one_of({"blend", "polynomial"});
    verb.option("--fit", options->fit,
                "Tuned matrices: as measured (points), or fitted through the library's blend; else "
                "the better")
        .one_of({"points", "blend"});
    verb.option("--report", options->page,
                "Page of one file to write: captures with the found grid, plots, patches");
    verb.option("--cts", options->choices.kelvins, "Tuned CTs in kelvin, 3 to 8; else the best")
        .separated_by_commas();
    verb.option("--color-from", options->color_from,
                "Tuning whose colour tables and caller settings are taken over");
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.flag("--json", options->json, "Report as JSON");
    verb.footer(
        "Example:\n  imgtune calibrate a_2850k.dng d65_6500k.dng --corners corners.csv -o "
        "phone.yaml\n"
        "Captures of one kelvin are averaged. A kelvin is a label: no picture shows it.\n"
        "docs/calibrate.md tells how to photograph, and what the findings mean.");
    verb.run([options] { return run_calibrate(*options); });
}

}  // namespace imgtune::cli
