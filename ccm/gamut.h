#ifndef IMGTUNE_CCM_GAMUT_H
#define IMGTUNE_CCM_GAMUT_H

#include "ccm/coefficient_rows.h"

namespace imgtune {

/// Whether i4PQType names an output gamut: 1 or 2.
constexpr bool has_gamut(std::int32_t type) {
    return type == 1 || type == 2;
}

/// Multiplies each row by the matrix of a gamut; the diagonals, which take part, are left open.
CoefficientRows apply_gamut(CoefficientRows matrix, std::int32_t type);

}  // namespace imgtune

#endif
