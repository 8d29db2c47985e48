#ifndef IMGTUNE_WORKBENCH_CALIBRATION_IMPORT_H
#define IMGTUNE_WORKBENCH_CALIBRATION_IMPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/calibration/calibration.h"
#include "workbench/calibration/candidates.h"
#include "workbench/calibration/points.h"
#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// What a calibration leaves open.
struct ImportChoices {
    std::string name;                   ///< of the tuning
    std::optional<CcmMethod> method;    ///< none: the better one
    std::optional<CcmFit> fit;          ///< none: the better one
    std::vector<double> kelvins;        ///< tuned CTs, 3..8; empty: the best ones
    std::uint32_t most_cts = 8;         ///< 3..8, where they are chosen
    double low_light_saturation = 0.6;  ///< 0..1; of the low-light row against the normal one
    double flash_kelvin = 5600.0;       ///< light of the flash
    double flash_share = 0.5;           ///< 0..1; of the flash's matrix in each of the flash row
    double stretch = 1.0;               ///< factor of the gains; other than 1: synthetic
    PointChoices points;
};

/// What a user's words decide: method "blend" or "polynomial", fit "points" or "blend" (which is
/// one of the blend's matrices); empty: left open. Throws BadInput for the polynomial fitted
/// through the blend.
void choose_by_words(ImportChoices& choices, std::string_view method, std::string_view fit);

/// The largest errors over some points.
struct ImportError {
    std::size_t points = 0;
    std::int32_t largest = 0;         ///< of a coefficient, in 1/512
    double largest_kelvin = 0.0;      ///< where
    double mean_difference = 0.0;     ///< CIEDE2000, over patches and points
    double largest_difference = 0.0;  ///< CIEDE2000
};

ImportError import_error(const std::vector<PointError>& errors, bool with_kept, bool with_dropped);

/// A calibration as a tuning, and what that costs.
struct Import {
    Tuning tuning;
    std::vector<TunedPoint> kept;       ///< as tuned: with fitted matrices where the fit says so
    std::vector<Candidate> candidates;  ///< all that was tried
    std::size_t chosen = 0;             ///< of the candidates
    std::vector<PointError> errors;     ///< at every calibrated point
    double flash_tuned_kelvin = 0.0;    ///< the tuned CT nearest to the flash
};

/// Makes a tuning of a calibration: normal row by the best of all candidates, low-light row with
/// less saturation, flash row drawn towards the light of the flash, polynomials for both. Colour
/// tables and caller settings are those of `base`, whose CCM part is replaced; a codec other than 3
/// and 9 bits is set to these. Faults are told in `faults`; after an error there the result is no
/// tuning.
Import import_calibration(const Calibration& calibration, const ImportChoices& choices,
                          const Tuning& base, Faults& faults);

}  // namespace imgtune::workbench

#endif
