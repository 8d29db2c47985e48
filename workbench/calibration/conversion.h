#ifndef IMGTUNE_WORKBENCH_CALIBRATION_CONVERSION_H
#define IMGTUNE_WORKBENCH_CALIBRATION_CONVERSION_H

#include <imgtune/ccm_types.h>

#include <span>

#include "workbench/calibration/calibration.h"
#include "workbench/camera/mired.h"

// How published figures become the library's, one rule a function.

namespace imgtune::workbench {

/// The terms of a stored polynomial, for each 1/512 of a coefficient.
inline constexpr double kStoredTerm = 10000.0;

/// The AWB gain, 512 = 1.0, that makes a grey patch with these ratios grey: 512 / ratio, rounded
/// half up, green 512. Ratios above 0.
AWB_GAIN_T to_gain(const LocusPoint& point);

/// The locus at a colour temperature: between its points both ratios are linear in mired, beyond
/// them the logarithms of the gains are (the ratios themselves would run to zero). Exact at a
/// point. Rising kelvin, at least two points.
LocusPoint locus_at(std::span<const LocusPoint> locus, double kelvin);

/// The matrix at a colour temperature: linear in mired, beyond the ends the nearest. Exact at a
/// matrix. Rising kelvin, at least one.
RealMatrix matrix_at(std::span<const CalibratedMatrix> matrices, double kelvin);

/// The sum of a row, 0..2. White keeps its colour only if every row sums to 1.
double row_sum(const RealMatrix& matrix, std::size_t row);

/// Each row divided by its sum: white stays white, and a row's proportions stay. No sum of 0.
RealMatrix divide_rows(const RealMatrix& matrix);

/// 512 times the matrix: off-diagonals rounded half up, diagonals what is left of 512 in the row.
NSIspTuning::ISP_CCM_T to_fixed(const RealMatrix& matrix);

/// The nine coefficients over 512.
RealMatrix to_real(const NSIspTuning::ISP_CCM_T& matrix);

/// The matrix followed by a change of saturation that keeps luma (ITU-R BT.709 weights): 1 leaves
/// it, 0 gives greys.
RealMatrix desaturate(const RealMatrix& matrix, double saturation);

/// (1 - share) a + share b.
RealMatrix mix(const RealMatrix& a, const RealMatrix& b, double share_of_b);

/// The polynomial for method 1: a straight line for every coefficient along the chord from the
/// first gain to the last, on which the library evaluates it, by least squares. The gains are
/// projected onto the chord first; mean and standard deviation are theirs. On the chord the two
/// normalised gains are exactly opposite, so each takes half of the slope.
/// As many gains as matrices, at least two; red rises and blue falls.
ISP_CCM_POLY22_T fit_polynomial(std::span<const AWB_GAIN_T> gains,
                                std::span<const NSIspTuning::ISP_CCM_T> matrices);

}  // namespace imgtune::workbench

#endif
