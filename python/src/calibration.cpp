#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "binding.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/appearance/patches.h"
#include "workbench/calibration/conversion.h"
#include "workbench/calibration/export.h"
#include "workbench/calibration/import.h"
#include "workbench/calibration/reader.h"
#include "workbench/calibration/report_page.h"
#include "workbench/files/output_file.h"
#include "workbench/files/text_file.h"
#include "workbench/json/import.h"

// Published calibrations, fits and colour patches.

namespace imgtune::python {

namespace {

using NSIspTuning::ISP_CCM_T;
using workbench::Faults;

constexpr std::int64_t kLargestGain = 32767;
constexpr std::int64_t kLeastCoefficient = -4095;
constexpr std::int64_t kMostCoefficient = 4096;

struct ImportArguments {
    workbench::ImportChoices choices;
    Tuning base;
    std::string page;  ///< file of the report; empty: none
};

py::tuple import_calibration(const std::string& file, const ImportArguments& arguments) {
    Faults faults;
    workbench::CalibrationReport report;
    const workbench::Import made = work_on_file(file, [&] {
        const workbench::Calibration calibration = workbench::read_calibration(
            workbench::read_text(file, workbench::kLargestCalibrationText), file, faults);
        workbench::Import import =
            workbench::import_calibration(calibration, arguments.choices, arguments.base, faults);
        if (!faults.has_errors()) {
            report = workbench::report_on(calibration, arguments.choices, import);
            if (!arguments.page.empty()) {
                workbench::write_file(arguments.page,
                                      report_page(arguments.choices.name, import, report));
            }
        }
        return import;
    });
    if (faults.has_errors()) raise_findings(faults.text(), faults);
    return py::make_tuple(made.tuning, as_python(to_json(made, report, faults)));
}

py::tuple import_path(const py::object& path, const std::string& name,
                      const std::optional<std::string>& method,
                      const std::optional<std::string>& fit, const std::vector<double>& cts,
                      std::uint32_t most, double low_light_saturation, double flash_ct,
                      double flash_share, const std::string& rows, bool extrapolate, double stretch,
                      const Tuning* color_from, const py::object& page) {
    if (method) require_word("method", *method, {"blend", "polynomial"});
    if (fit) require_word("fit", *fit, {"points", "blend"});
    require_word("rows", rows, {"divide", "diagonal"});
    const std::string file = path_text(path);
    ImportArguments arguments;
    workbench::ImportChoices& choices = arguments.choices;
    choices.name = name.empty() ? std::filesystem::path(file).stem().string() : name;
    workbench::choose_by_words(choices, method.value_or(""), fit.value_or(""));
    choices.kelvins = cts;
    choices.most_cts = most;
    choices.low_light_saturation = low_light_saturation;
    choices.flash_kelvin = flash_ct;
    choices.flash_share = flash_share;
    choices.stretch = stretch;
    choices.points = {rows == "divide", extrapolate};
    if (!page.is_none()) arguments.page = path_text(page);
    if (color_from != nullptr) arguments.base = *color_from;
    return import_calibration(file, arguments);
}

py::object export_calibration(const Tuning& tuning, const py::object& path, const std::string& form,
                              const std::vector<double>& cts) {
    require_word("form", form, {"json", "yaml"});
    Faults faults;
    faults.set_place("", tuning.name, 0);
    const workbench::Calibration calibration = workbench::calibration_of(tuning, cts, faults);
    if (faults.has_errors()) raise_findings(faults.text(), faults);
    const std::string text = form == "json" ? workbench::write_json_form(calibration)
                                            : workbench::write_yaml_form(calibration);
    const std::string file = path_text(path);
    work_on_file(file, [&] { workbench::write_file(file, text); });
    return findings_of(faults);
}

using Integers = py::array_t<std::int64_t, py::array::c_style>;

/// Whole numbers of a given range, as many as are needed.
Integers whole_numbers(const py::object& given, const char* argument, std::int64_t least,
                       std::int64_t most) {
    const py::array array = py::module_::import("numpy").attr("asarray")(given);
    if (array.dtype().kind() != 'i' && array.dtype().kind() != 'u') {
        raise_input_error(fmt::format("{} takes whole numbers, not {}", argument,
                                      py::cast<std::string>(py::str(array.dtype()))),
                          argument);
    }
    const Integers values(array);
    for (py::ssize_t i = 0; i < values.size(); ++i) {
        if (values.data()[i] >= least && values.data()[i] <= most) continue;
        raise_input_error(fmt::format("{} has the value {}; allowed are {}..{}", argument,
                                      values.data()[i], least, most),
                          argument);
    }
    return values;
}

std::vector<ISP_CCM_T> matrices_of(const py::object& given, const char* argument) {
    const Integers values = whole_numbers(given, argument, kLeastCoefficient, kMostCoefficient);
    if (values.size() == 0 || values.size() % 9 != 0) {
        raise_input_error(fmt::format("{} has {} values; a matrix has 9", argument, values.size()),
                          argument);
    }
    std::vector<ISP_CCM_T> matrices(static_cast<std::size_t>(values.size()) / 9);
    for (std::size_t i = 0; i < matrices.size(); ++i) {
        for (std::size_t k = 0; k < 9; ++k) {
            matrices[i].i4Coef[k] = static_cast<std::int32_t>(values.data()[9 * i + k]);
        }
    }
    return matrices;
}

std::vector<AWB_GAIN_T> gains_of(const py::object& given) {
    const Integers values = whole_numbers(given, "gains", 1, kLargestGain);
    if (values.size() < 6 || values.size() % 3 != 0) {
        raise_input_error(
            fmt::format("gains has {} values; red, green and blue of two points or more are needed",
                        values.size()),
            "gains");
    }
    std::vector<AWB_GAIN_T> gains(static_cast<std::size_t>(values.size()) / 3);
    for (std::size_t i = 0; i < gains.size(); ++i) {
        const auto value = [&](std::size_t k) {
            return static_cast<std::int32_t>(values.data()[3 * i + k]);
        };
        gains[i] = {value(0), value(1), value(2)};
        if (i == 0) continue;
        if (gains[i].i4R <= gains[i - 1].i4R || gains[i].i4B >= gains[i - 1].i4B) {
            raise_input_error(fmt::format("gains: from point {} to {} red does not rise or blue "
                                          "does not fall; give the points by rising CT",
                                          i - 1, i),
                              "gains");
        }
    }
    return gains;
}

py::dict fit(const py::object& gains, const py::object& matrices) {
    const auto points = gains_of(gains);
    const auto fixed = matrices_of(matrices, "matrices");
    if (points.size() != fixed.size()) {
        raise_input_error(fmt::format("{} matrices for {} gains", fixed.size(), points.size()),
                          "matrices");
    }
    const ISP_CCM_POLY22_T made = workbench::fit_polynomial(points, fixed);
    const auto terms = [](const std::int32_t(&values)[9]) {
        return py::array_t<std::int32_t>(9, values);
    };
    return py::dict(py::arg("i4R_AVG") = made.i4R_AVG, py::arg("i4R_STD") = made.i4R_STD,
                    py::arg("i4B_AVG") = made.i4B_AVG, py::arg("i4B_STD") = made.i4B_STD,
                    py::arg("i4P00") = terms(made.i4P00), py::arg("i4P10") = terms(made.i4P10),
                    py::arg("i4P01") = terms(made.i4P01));
}

ISP_CCM_T matrix_of(const py::object& given, const char* argument) {
    const auto matrices = matrices_of(given, argument);
    if (matrices.size() == 1) return matrices.front();
    raise_input_error(fmt::format("{} has {} matrices; one is needed", argument, matrices.size()),
                      argument);
}

py::dict patches(const py::object& matrix, const py::object& reference) {
    const auto error = workbench::chart_error(workbench::to_real(matrix_of(reference, "reference")),
                                              workbench::to_real(matrix_of(matrix, "matrix")));
    py::list names;
    const std::vector<py::ssize_t> shape{24, 3};
    py::array_t<std::uint8_t> chart(shape);
    py::array_t<std::uint8_t> seen(shape);
    py::array_t<double> differences(24);
    for (std::size_t i = 0; i < error.patches.size(); ++i) {
        const workbench::Patch& patch = workbench::chart_patches()[i];
        const auto srgb = workbench::encoded(error.patches[i].actual_rgb);
        names.append(patch.name);
        std::copy(patch.srgb.begin(), patch.srgb.end(), chart.mutable_data() + 3 * i);
        std::copy(srgb.begin(), srgb.end(), seen.mutable_data() + 3 * i);
        differences.mutable_data()[i] = error.patches[i].difference;
    }
    return py::dict(py::arg("name") = names, py::arg("chart") = chart, py::arg("seen") = seen,
                    py::arg("ciede2000") = differences, py::arg("mean") = error.mean,
                    py::arg("largest") = error.largest);
}

void bind_import(py::class_<Tuning>& tuning) {
    const workbench::ImportChoices usual;
    tuning.def_static(
        "import_calibration", &import_path, py::arg("path"), py::kw_only(), py::arg("name") = "",
        py::arg("method") = py::none(), py::arg("fit") = py::none(), py::arg("cts") = usual.kelvins,
        py::arg("most") = usual.most_cts,
        py::arg("low_light_saturation") = usual.low_light_saturation,
        py::arg("flash_ct") = usual.flash_kelvin, py::arg("flash_share") = usual.flash_share,
        py::arg("rows") = "divide", py::arg("extrapolate") = usual.points.extrapolate,
        py::arg("stretch") = usual.stretch, py::arg("color_from") = py::none(),
        py::arg("page") = py::none(),
        R"(Makes a tuning of another camera stack's calibration.

Parameters
----------
path : path-like
    libcamera tuning file (JSON of the Raspberry Pi, YAML of other pipelines), or CSV:
    ct,r_gain,b_gain,c0..c8.
name : str
    Of the tuning; default: that of the file.
method : {'blend', 'polynomial'}, optional
    What the camera does with the points; default: the better.
fit : {'points', 'blend'}, optional
    Tuned matrices as calibrated, or fitted through the library's blend; default: the better.
cts : sequence of float
    Tuned CTs in kelvin, 3 to 8; default: the best, `most` at most.
most : int
    How many to choose at most, 3..8.
low_light_saturation, flash_share : float
    0..1: saturation of the low-light row, share of the flash's own matrix in the flash row.
flash_ct : float
    Light of the flash in kelvin.
rows : {'divide', 'diagonal'}
    Matrix rows that do not sum to 1 are divided by their sum, or closed by the diagonal.
extrapolate : bool
    Keep matrices outside the locus.
stretch : float
    Factor of the gains, 0.1..10: a synthetic locus.
color_from : Tuning, optional
    Whose colour tables and caller settings are taken over.
page : path-like, optional
    Report to write as a page of one file, with plots and patches of every light.

Returns
-------
tuning : Tuning
report : dict
    As `imgtune import --json` prints it: findings, candidates with their CIEDE2000, lights with
    what is lost without each, advice.

Raises
------
InputError
    With every finding.
)");
}

void bind_export(py::class_<Tuning>& tuning) {
    tuning.def("export_calibration", &export_calibration, py::arg("path"), py::kw_only(),
               py::arg("form") = "json", py::arg("cts") = std::vector<double>(),
               R"(Writes the normal row as another camera stack's file, whole or not at all.

Parameters
----------
path : path-like
form : {'json', 'yaml'}
    Of the Raspberry Pi's pipeline, or of libcamera's others.
cts : sequence of float
    CT of each tuned point in kelvin, where the tuning does not say.

Returns
-------
list of dict
    What the file has no place for, as `check` gives findings.
)");
}

void bind_fit(py::module_& module) {
    module.def("fit", &fit, py::arg("gains"), py::arg("matrices"),
               R"(The polynomial of method 1 through tuned points: least squares along the chord.

Parameters
----------
gains : (N, 3) int
    Red, green, blue, 512 = 1.0, by rising CT: red rises, blue falls. At least two points.
matrices : (N, 3, 3) or (N, 9) int
    Coefficients in 1/512.

Returns
-------
dict
    The fields of a polynomial, to be assigned: ``t["ccm.rCCMPoly22"] = imgtune.fit(g, m)``.

Raises
------
InputError
    With `field` naming the argument.

Examples
--------
>>> t = imgtune.Tuning.starter()
>>> count = t["ccm.i4NumCT"]
>>> t["ccm.rCCMPoly22"] = imgtune.fit(
...     t["ccm.rows.normal.gains"][:count], t["ccm.rows.normal.matrices"][:count])
)");
}

void bind_patches(py::module_& module) {
    module.def("patches", &patches, py::arg("matrix"), py::arg("reference"),
               R"(The 24 patches of the usual chart through a matrix, against a reference.

Parameters
----------
matrix, reference : (3, 3) or (9,) int
    Coefficients in 1/512. The camera values that `reference` turns into the chart's own colours
    go through `matrix`.

Returns
-------
dict
    name: list of 24; chart, seen: (24, 3) uint8 sRGB, cut off at its limits; ciede2000: (24,);
    mean, largest: float, CIEDE2000.

Raises
------
InputError
    With `field` naming the argument.

Examples
--------
>>> unity = 512 * numpy.eye(3, dtype=int)
>>> imgtune.patches(unity, unity)["largest"]
0.0
)");
}

}  // namespace

void bind_calibration(py::module_& module) {
    auto tuning = tuning_class(module);
    bind_import(tuning);
    bind_export(tuning);
    bind_fit(module);
    bind_patches(module);
}

}  // namespace imgtune::python
