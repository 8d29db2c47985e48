#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "binding.h"
#include "workbench/calibration/import.h"
#include "workbench/calibration/report_page.h"
#include "workbench/capture/reported_captures.h"
#include "workbench/files/capture_files.h"
#include "workbench/files/output_file.h"
#include "workbench/json/capture_study.h"
#include "workbench/json/import.h"

// Photographs of a colour chart.

namespace imgtune::python {

namespace {

using workbench::Faults;

/// The 24 means of one light.
workbench::CapturedPicture means_of(const py::object& given, double kelvin) {
    const auto values =
        py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(given);
    if (!values || values.ndim() != 2 || values.shape(0) != 24 || values.shape(1) != 3) {
        PyErr_Clear();
        raise_input_error(fmt::format("captures: the means of {:g} K are no (24, 3) array", kelvin),
                          "captures");
    }
    std::array<workbench::PatchMeasure, workbench::kChartPatches> patches;
    for (std::size_t i = 0; i < 72; ++i) patches[i / 3].mean[i % 3] = values.data()[i];
    for (const auto& patch : patches) {
        for (const double mean : patch.mean) {
            if (mean > -1e9 && mean < 1e9) continue;
            raise_input_error(fmt::format("captures: the means of {:g} K hold {}", kelvin, mean),
                              "captures");
        }
    }
    return workbench::measured_table(fmt::format("{:g} K", kelvin), patches);
}

std::vector<std::string> paths_of(const py::object& given) {
    std::vector<std::string> paths;
    if (given.is_none()) return paths;
    if (py::isinstance<py::str>(given) || py::hasattr(given, "__fspath__")) {
        return {path_text(given)};
    }
    for (const py::handle path : given) paths.push_back(path_text(py::cast<py::object>(path)));
    return paths;
}

std::string path_or_none(const py::object& given) {
    return given.is_none() ? std::string() : path_text(given);
}

void take_weights(const py::object& given, workbench::PatchWeights& weights) {
    if (given.is_none()) return;
    for (const auto& [patch, weight] : py::cast<py::dict>(given)) {
        const auto index = workbench::patch_index(py::cast<std::string>(py::str(patch)));
        const auto value = py::cast<double>(weight);
        if (index == workbench::kChartPatches || !(value >= 0.0 && value <= 1000.0)) {
            raise_input_error("weights: a patch's name or number 1 to 24, and a weight 0 to 1000",
                              "weights");
        }
        weights[index] = value;
    }
}

struct CalibrateArguments {
    workbench::CaptureFiles files;
    std::vector<workbench::LightInput> lights;
    std::string reference;
    workbench::CaptureChoices chart;
    workbench::ImportChoices import;
    Tuning base;
    std::string page;  ///< file of the report; empty: none
};

py::tuple calibrate_with(CalibrateArguments& arguments) {
    Faults faults;
    nlohmann::ordered_json report;
    const std::string file =
        arguments.files.captures.empty() ? "" : arguments.files.captures.front();
    Tuning tuning = work_on_file(file, [&] {
        if (!arguments.reference.empty()) {
            arguments.chart.reference = workbench::read_reference_file(arguments.reference, faults);
            arguments.chart.other_edition.reset();
        }
        if (!weights_fit(arguments.chart.weights, faults) || faults.has_errors()) return Tuning{};
        const workbench::CaptureStudy study =
            arguments.lights.empty()
                ? workbench::study_capture_files(arguments.files, arguments.chart, faults)
                : workbench::study_captures(std::move(arguments.lights), arguments.chart, faults);
        if (faults.has_errors()) return Tuning{};
        faults.set_place("", "captures", 0);
        const workbench::Calibration calibration = workbench::calibration_of(study);
        const workbench::Import made =
            workbench::import_calibration(calibration, arguments.import, arguments.base, faults);
        report = to_json(study);
        if (faults.has_errors()) return Tuning{};
        workbench::CalibrationReport judged =
            workbench::report_on(calibration, arguments.import, made);
        judged.captures = workbench::reported_captures(study);
        if (!arguments.page.empty()) {
            workbench::write_file(arguments.page, report_page(arguments.import.name, made, judged));
        }
        report["import"] = to_json(made, judged, faults);
        return made.tuning;
    });
    if (faults.has_errors()) raise_findings(faults.text(), faults);
    return py::make_tuple(tuning, as_python(report));
}

py::tuple calibrate(const py::object& captures, const py::object& corners, const py::object& flats,
                    const py::object& dark, const std::vector<double>& kelvin,
                    const py::object& reference, const std::string& edition,
                    const py::object& weights, std::optional<double> black,
                    std::optional<double> white, const std::string& order, const std::string& name,
                    const std::optional<std::string>& method, const std::optional<std::string>& fit,
                    const std::vector<double>& cts, const Tuning* color_from,
                    const py::object& page) {
    require_word("edition", edition, {"before-2014", "after-2014"});
    if (method) require_word("method", *method, {"blend", "polynomial"});
    if (fit) require_word("fit", *fit, {"points", "blend"});
    if (!order.empty()) require_word("order", order, {"RGGB", "BGGR", "GRBG", "GBRG"});
    CalibrateArguments arguments;
    if (py::isinstance<py::dict>(captures)) {
        for (const auto& [light, means] : py::cast<py::dict>(captures)) {
            const auto label = py::cast<double>(light);
            arguments.lights.push_back(
                {fmt::format("{:g} K", label),
                 label,
                 {means_of(py::reinterpret_borrow<py::object>(means), label)}});
        }
    } else {
        arguments.files.captures = paths_of(captures);
    }
    if (arguments.lights.empty() && arguments.files.captures.empty()) {
        raise_input_error("captures: nothing is given", "captures");
    }
    if (!kelvin.empty() && kelvin.size() != arguments.files.captures.size()) {
        raise_input_error(fmt::format("kelvin names {} lights for {} captures", kelvin.size(),
                                      arguments.files.captures.size()),
                          "kelvin");
    }
    arguments.files.corners = path_or_none(corners);
    arguments.files.flats = paths_of(flats);
    arguments.files.dark = path_or_none(dark);
    arguments.files.kelvin = kelvin;
    arguments.files.pictures = {black, white, order};
    arguments.reference = path_or_none(reference);
    if (edition == "after-2014") {
        std::swap(arguments.chart.reference, *arguments.chart.other_edition);
    }
    take_weights(weights, arguments.chart.weights);
    arguments.import.name = name;
    choose_by_words(arguments.import, method.value_or(""), fit.value_or(""));
    arguments.page = path_or_none(page);
    arguments.import.kelvins = cts;
    if (color_from != nullptr) arguments.base = *color_from;
    return calibrate_with(arguments);
}

}  // namespace

void bind_capture(py::module_& module) {
    module.def("calibrate", &calibrate, py::arg("captures"), py::kw_only(),
               py::arg("corners") = py::none(), py::arg("flats") = py::none(),
               py::arg("dark") = py::none(), py::arg("kelvin") = std::vector<double>(),
               py::arg("reference") = py::none(), py::arg("edition") = "before-2014",
               py::arg("weights") = py::none(), py::arg("black") = py::none(),
               py::arg("white") = py::none(), py::arg("order") = "", py::arg("name") = "calibrated",
               py::arg("method") = py::none(), py::arg("fit") = py::none(),
               py::arg("cts") = std::vector<double>(), py::arg("color_from") = py::none(),
               py::arg("page") = py::none(),
               R"(Makes a tuning of photographs of a colour chart under several lights.

Parameters
----------
captures : sequence of path-like, or dict of float to (24, 3) array
    Raw files, linear 16-bit TIFF or PNG, or CSV of 24 patch means; or the means above black by
    the kelvin of their light. Captures of one kelvin are averaged.
corners : path-like, optional
    CSV: file,x1,y1,..,x4,y4, the outer corners of patches 1, 6, 24 and 19. Pictures need it.
flats : path-like or sequence of them, optional
    Flat frames, with their light's kelvin in the name; one alone is for all.
dark : path-like, optional
    Dark frame, in place of the files' black levels.
kelvin : sequence of float
    Of the captures; default: as their names say (d65_6500k.dng).
reference : path-like, optional
    CSV with the chart's colours under r,g,b (linear sRGB) or L,a,b (D50).
edition : {'before-2014', 'after-2014'}
    Else the maker's colours of that edition.
weights : dict of str or int to float, optional
    Weight of a patch in the fit; 0 leaves it out.
black, white : float, optional
    Levels in place of the files'.
order : {'', 'RGGB', 'BGGR', 'GRBG', 'GBRG'}
    Mosaic of TIFF or PNG with one channel.
name : str
    Of the tuning.
method : {'blend', 'polynomial'}, optional
    Default: the better.
fit : {'points', 'blend'}, optional
    Tuned matrices as measured, or fitted through the library's blend; default: the better.
cts : sequence of float
    Tuned CTs in kelvin, 3 to 8; default: the best.
color_from : Tuning, optional
    Whose colour tables and caller settings are taken over.
page : path-like, optional
    Report to write as a page of one file: captures with the found grid, plots, patches.

Returns
-------
tuning : Tuning
report : dict
    As `imgtune calibrate --json` prints it.

Raises
------
InputError
    With every finding.
)");
}

}  // namespace imgtune::python
