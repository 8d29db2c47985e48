#ifndef IMGTUNE_WORKBENCH_CALIBRATION_CALIBRATION_H
#define IMGTUNE_WORKBENCH_CALIBRATION_CALIBRATION_H

#include <array>
#include <string>
#include <vector>

#include "workbench/appearance/real_matrix.h"

namespace imgtune::workbench {

/// Where the light of a colour temperature stands on a sensor's grey locus.
struct LocusPoint {
    double kelvin = 0.0;
    double red = 0.0;   ///< R/G of a grey patch after black level; its gain is the reciprocal
    double blue = 0.0;  ///< B/G likewise
    int line = 0;       ///< in the file it came from; 0: none
};

/// A colour matrix calibrated at a colour temperature.
struct CalibratedMatrix {
    double kelvin = 0.0;
    RealMatrix coefficients{};
    std::array<double, 3> offsets{};  ///< added after the matrix; the library has no place for them
    int line = 0;
};

/// A sensor's calibration as published.
struct Calibration {
    std::string form;  ///< which of the forms it came in
    std::vector<LocusPoint> locus;
    std::vector<CalibratedMatrix> matrices;
    int locus_line = 1;  ///< where its locus stands, or should
    int matrices_line = 1;
};

}  // namespace imgtune::workbench

#endif
