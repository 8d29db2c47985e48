#ifndef IMGTUNE_CCM_GAMUT_H
#define IMGTUNE_CCM_GAMUT_H

#include <imgtune/ccm_types.h>

namespace imgtune {

/// Whether i4PQType names an output gamut: 1 or 2.
constexpr bool has_gamut(std::int32_t type) {
    return type == 1 || type == 2;
}

/// Multiplies each row by the matrix of a gamut; the diagonals take part, and are left open.
NSIspTuning::ISP_CCM_T apply_gamut(NSIspTuning::ISP_CCM_T matrix, std::int32_t type);

}  // namespace imgtune

#endif
