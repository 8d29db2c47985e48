#ifndef IMGTUNE_WORKBENCH_STUDIES_WHITE_BALANCE_H
#define IMGTUNE_WORKBENCH_STUDIES_WHITE_BALANCE_H

#include <imgtune/awb_gain.h>

#include <array>
#include <cstddef>
#include <optional>

namespace imgtune::workbench {

inline std::array<double, 3> real_gains(const AWB_GAIN_T& gains) {
    return {static_cast<double>(gains.i4R), static_cast<double>(gains.i4G),
            static_cast<double>(gains.i4B)};
}

inline bool same_gains(const AWB_GAIN_T& a, const AWB_GAIN_T& b) {
    return a.i4R == b.i4R && a.i4G == b.i4G && a.i4B == b.i4B;
}

/// By how much each channel is off; brightness is no matter of white balance, so green is 1. None
/// where a gain is 0 or negative.
inline std::optional<std::array<double, 3>> gain_error(const std::array<double, 3>& gains,
                                                       const std::array<double, 3>& right) {
    for (std::size_t k = 0; k < gains.size(); ++k) {
        if (gains[k] <= 0.0 || right[k] <= 0.0) return std::nullopt;
    }
    const double green = gains[1] / right[1];
    return std::array<double, 3>{gains[0] / right[0] / green, 1.0, gains[2] / right[2] / green};
}

}  // namespace imgtune::workbench

#endif
