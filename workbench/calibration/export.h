#ifndef IMGTUNE_WORKBENCH_CALIBRATION_EXPORT_H
#define IMGTUNE_WORKBENCH_CALIBRATION_EXPORT_H

#include <string>
#include <vector>

#include "workbench/calibration/calibration.h"
#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// A tuning's normal row as a calibration: ratios 512 / gain, coefficients over 512. What the
/// public forms have no place for (low-light and flash rows, polynomials, output gamut, colour
/// tables) is told in `faults`, and so is a row that is none: no gains, no matrices, CTs unknown.
/// @param kelvins the tuned CTs; empty: those that the tuning keeps
Calibration calibration_of(const Tuning& tuning, const std::vector<double>& kelvins,
                           Faults& faults);

/// The Raspberry Pi JSON form of libcamera, version 2: a file with these two sections alone.
std::string write_json_form(const Calibration& calibration);

/// The YAML form of libcamera's other pipelines: a file with these two sections alone.
std::string write_yaml_form(const Calibration& calibration);

}  // namespace imgtune::workbench

#endif
