#ifndef IMGTUNE_WORKBENCH_CAMERA_MIRED_H
#define IMGTUNE_WORKBENCH_CAMERA_MIRED_H

#include <cstddef>
#include <span>

namespace imgtune::workbench {

/// 1,000,000 / kelvin: equal steps look about equally large. Kelvin above 0.
inline double to_mired(double kelvin) {
    return 1e6 / kelvin;
}

/// Where a colour temperature lies among entries of rising `kelvin`: between those at upper - 1 and
/// upper, of which the upper has the share, linear in mired. Beyond the ends it is that of the two
/// nearest, below 0 or above 1. At least two entries; the two must differ.
struct MiredPlace {
    std::size_t upper = 1;
    double share_of_upper = 0.0;
};

template <typename Entry>
MiredPlace place_in_mired(std::span<const Entry> entries, double kelvin) {
    std::size_t upper = 1;
    std::size_t above = entries.size() - 1;
    while (upper < above) {
        const std::size_t middle = upper + (above - upper) / 2;
        if (kelvin > entries[middle].kelvin)
            upper = middle + 1;
        else
            above = middle;
    }
    const double lower = to_mired(entries[upper - 1].kelvin);
    return {upper, (to_mired(kelvin) - lower) / (to_mired(entries[upper].kelvin) - lower)};
}

}  // namespace imgtune::workbench

#endif
