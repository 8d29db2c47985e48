#include "cli/calibration_text.h"

#include <fmt/format.h>

#include "cli/common.h"
#include "workbench/appearance/patches.h"
#include "workbench/calibration/report_page.h"

namespace imgtune::cli {

using namespace workbench;

namespace {

const char* method_text(CcmMethod method) {
    return method == CcmMethod::blend ? "2, blend of the tuned matrices"
                                      : "1, polynomial of the gain";
}

const char* fit_text(const Candidate& candidate) {
    if (candidate.fit == CcmFit::points) return "as calibrated";
    return candidate.method == CcmMethod::blend ? "fitted through the blend" : "fitted to lights";
}

std::string list_of_kelvins(const std::vector<double>& kelvins) {
    std::string text;
    for (const double kelvin : kelvins) {
        text += fmt::format("{}{:g}", text.empty() ? "" : ", ", kelvin);
    }
    return text;
}

std::string candidate_line(const Candidate& candidate, bool chosen) {
    const LightsError& error = candidate.error;
    return fmt::format("{} {:<11}{:<25}{:>3}{:>8.2f}{:>8.2f}  {} at {}\n", chosen ? '*' : ' ',
                       candidate.method == CcmMethod::blend ? "blend" : "polynomial",
                       fit_text(candidate), candidate.kelvins.size(), error.mean, error.worst,
                       workbench::chart_patches()[error.worst_patch].name,
                       workbench::light_name(error.worst_kelvin, error.worst_beside));
}

std::string light_line(const ReportedLight& light) {
    std::string left_out = "  not measured";
    if (light.left_out) {
        left_out = fmt::format("{:>6.2f}{:>8.2f}{}", light.left_out->mean, light.left_out->worst,
                               light.at_end ? "  clipped: an end" : "");
    }
    return fmt::format("{} {:>7g}{:>8.3f}{:>8.3f}{:>8.2f}{:>8.2f}  {:<14}{}\n",
                       light.tuned ? '*' : ' ', light.kelvin, light.gain.i4R / 512.0,
                       light.gain.i4B / 512.0, light.error.mean, light.error.worst,
                       workbench::chart_patches()[light.error.worst_patch].name, left_out);
}

}  // namespace

std::string import_text(const std::string& form, const Import& import,
                        const CalibrationReport& report, const ImportChoices& choices) {
    const Candidate& chosen = import.candidates[import.chosen];
    std::string text = form.empty() ? "" : form + '\n';
    text += fmt::format("method        {}, {}\n", method_text(chosen.method), fit_text(chosen));
    text += fmt::format("tuned CTs     {} K{}\n", list_of_kelvins(chosen.kelvins),
                        choices.kelvins.empty() ? "" : ", as named");
    text += fmt::format("low light     saturation {:g}\n", choices.low_light_saturation);
    text += fmt::format("flash         {:g} of the way to the matrix at {:g} K, nearest {:g} K\n",
                        choices.flash_share, import.flash_tuned_kelvin, choices.flash_kelvin);
    if (choices.stretch != 1.0) {
        text += fmt::format("SYNTHETIC     gains times {:g}, as no sensor has\n", choices.stretch);
    }
    text +=
        "\nThe library's matrix against the calibrated one: CIEDE2000 over 24 patches and all\n"
        "lights along the locus and up to 3.6 % beside it; * is chosen\n"
        "  method     tuned matrices           CTs    mean   worst  patch and light\n";
    for (std::size_t i = 0; i < import.candidates.size(); ++i) {
        text += candidate_line(import.candidates[i], i == import.chosen);
    }
    text +=
        "\nThe chosen one in the calibrated lights; * is tuned; left out: made without that light\n"
        "   kelvin     red    blue    mean   worst  patch         left out: mean, worst\n";
    for (const ReportedLight& light : report.lights) text += light_line(light);
    text += '\n';
    for (const std::string& sentence : workbench::advice_of(import, report))
        text += sentence + '\n';
    return text;
}

}  // namespace imgtune::cli
