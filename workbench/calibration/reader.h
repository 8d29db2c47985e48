#ifndef IMGTUNE_WORKBENCH_CALIBRATION_READER_H
#define IMGTUNE_WORKBENCH_CALIBRATION_READER_H

#include <cstddef>
#include <string>

#include "workbench/calibration/calibration.h"
#include "workbench/findings/faults.h"

// Published calibrations as text. Three forms, told apart by what stands in them:
//   the Raspberry Pi JSON form of libcamera: rpi.awb's ct_curve and rpi.ccm's ccms
//   the YAML form of libcamera's other pipelines: Awb's colourGains and Ccm's ccms
//   a table: the columns ct, r_gain, b_gain, c0 .. c8, a tuned point a line

namespace imgtune::workbench {

/// The longest text that read_calibration takes, in bytes.
inline constexpr std::size_t kLargestCalibrationText = 16U << 20U;

/// The most locus points, and the most matrices.
inline constexpr std::size_t kMostCalibratedPoints = 256;

/// Reads a calibration as far as it can be read, its points in the order of the text. What cannot
/// be read, or is missing, is an error in `faults`, which name `file` in all that follows.
Calibration read_calibration(const std::string& text, const std::string& file, Faults& faults);

/// JSON with its comments (// and /* */) and tabs blanked out, as YAML takes it: every line stays
/// where it is, and strings stay as they are.
std::string blank_json_comments(std::string text);

/// The table form. Called by read_calibration.
Calibration read_calibration_table(const std::string& text, Faults& faults);

}  // namespace imgtune::workbench

#endif
