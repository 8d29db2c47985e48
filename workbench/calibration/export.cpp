#include "workbench/calibration/export.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "ccm/codec.h"
#include "workbench/calibration/conversion.h"

namespace imgtune::workbench {

namespace {

constexpr double kUnityGain = 512.0;

void tell_what_stays_behind(const Tuning& tuning, Faults& faults) {
    std::string what = "low-light and flash rows, polynomials";
    if (tuning.ccm.i4PQType != 0) what += ", the output gamut";
    if (tuning.has_color) what += ", colour tables";
    faults.add({.code = "C303",
                .message = fmt::format("only gains and matrices of the normal row have a place in "
                                       "a calibration; left out: {}",
                                       what)});
}

bool has_points(const Tuning& tuning, Faults& faults) {
    const ISP_NVRAM_MULTI_CCM_STRUCT& ccm = tuning.ccm;
    if (!tuning.has_ccm || ccm.i4NumCT < 1 || ccm.i4NumCT > 8) {
        faults.add({.code = "C301",
                    .message = "no tuned matrices",
                    .suggestion = "name a tuning with a ccm part of 1..8 CTs"});
        return false;
    }
    for (std::int32_t ct = 0; ct < ccm.i4NumCT; ++ct) {
        const AWB_GAIN_T& gain = ccm.rCTAWBGain[0][ct];
        const auto& words = ccm.rCCM_Nvram[0][ct].u4Word;
        if (gain.i4R <= 0 || gain.i4B <= 0) {
            faults.add({.code = "C301",
                        .message = fmt::format("the tuned gain {} of the normal row is [{}, {}, "
                                               "{}]; gains are above 0",
                                               ct, gain.i4R, gain.i4G, gain.i4B)});
        }
        if (std::all_of(std::begin(words), std::end(words), [](auto w) { return w == 0; })) {
            faults.add({.code = "C301",
                        .message = fmt::format("the matrix {} of the normal row is all zero; a "
                                               "calibration needs the matrices themselves",
                                               ct)});
        }
    }
    return !faults.has_errors();
}

/// CT, gains of a point on one line of a list.
std::string lines_of(const std::vector<std::string>& lines, const char* separator) {
    std::string text;
    for (const std::string& line : lines) text += (text.empty() ? "" : separator) + line;
    return text;
}

std::string nine(const RealMatrix& matrix) {
    std::string text;
    for (const double c : matrix) text += fmt::format("{}{:.5f}", text.empty() ? "" : ", ", c);
    return text;
}

}  // namespace

Calibration calibration_of(const Tuning& tuning, const std::vector<double>& kelvins,
                           Faults& faults) {
    Calibration calibration;
    if (!has_points(tuning, faults)) return calibration;
    const auto count = static_cast<std::size_t>(tuning.ccm.i4NumCT);
    if (!kelvins.empty() && kelvins.size() != count) {
        faults.add({.code = "C302",
                    .message = fmt::format("{} CTs named for {} tuned ones", kelvins.size(), count),
                    .suggestion = "name the CT of each"});
        return calibration;
    }
    const CoefficientCodec codec(tuning.caller.int_bits, tuning.caller.frac_bits);
    for (std::size_t ct = 0; ct < count; ++ct) {
        const double kelvin = kelvins.empty() ? tuning.kelvin[0][ct] : kelvins[ct];
        const double before = ct == 0 ? 0.0 : calibration.locus.back().kelvin;
        if (!(kelvin > before)) {
            faults.add({.code = "C302",
                        .message = kelvin == 0.0
                                       ? fmt::format("the CT of the tuned point {} is unknown", ct)
                                       : fmt::format("{} K after {} K", kelvin, before),
                        .suggestion = "name the CTs of all tuned points, rising"});
            return calibration;
        }
        const AWB_GAIN_T& gain = tuning.ccm.rCTAWBGain[0][ct];
        calibration.locus.push_back({kelvin, kUnityGain / gain.i4R, kUnityGain / gain.i4B, 0});
        CalibratedMatrix& matrix = calibration.matrices.emplace_back();
        matrix.kelvin = kelvin;
        matrix.coefficients = to_real(codec.decode(tuning.ccm.rCCM_Nvram[0][ct]));
    }
    tell_what_stays_behind(tuning, faults);
    return calibration;
}

std::string write_json_form(const Calibration& calibration) {
    std::vector<std::string> curve;
    for (const LocusPoint& point : calibration.locus) {
        curve.push_back(
            fmt::format("          {:g}, {:.6f}, {:.6f}", point.kelvin, point.red, point.blue));
    }
    std::vector<std::string> matrices;
    for (const CalibratedMatrix& matrix : calibration.matrices) {
        matrices.push_back(fmt::format("          {{ \"ct\": {:g}, \"ccm\": [ {} ] }}",
                                       matrix.kelvin, nine(matrix.coefficients)));
    }
    return fmt::format(R"({{
  "version": 2.0,
  "algorithms": [
    {{
      "rpi.awb": {{
        "ct_curve": [
{}
        ]
      }}
    }},
    {{
      "rpi.ccm": {{
        "ccms": [
{}
        ]
      }}
    }}
  ]
}}
)",
                       lines_of(curve, ",\n"), lines_of(matrices, ",\n"));
}

std::string write_yaml_form(const Calibration& calibration) {
    std::string text = "version: 1\nalgorithms:\n  - Awb:\n      colourGains:\n";
    for (const LocusPoint& point : calibration.locus) {
        text += fmt::format("        - {{ ct: {:g}, gains: [ {:.6f}, {:.6f} ] }}\n", point.kelvin,
                            1.0 / point.red, 1.0 / point.blue);
    }
    text += "  - Ccm:\n      ccms:\n";
    for (const CalibratedMatrix& matrix : calibration.matrices) {
        text += fmt::format("        - ct: {:g}\n          ccm: [ {} ]\n", matrix.kelvin,
                            nine(matrix.coefficients));
    }
    return text;
}

}  // namespace imgtune::workbench
