#ifndef IMGTUNE_WORKBENCH_TUNING_STALL_H
#define IMGTUNE_WORKBENCH_TUNING_STALL_H

#include <array>
#include <cstdint>

namespace imgtune::workbench {

/// The farthest, in 1/512, that these weights of the matrix average leave an off-diagonal
/// coefficient from its target for ever: it truncates, and a share of less than one unit is lost.
/// A diagonal coefficient, which closes its row, can be off by twice that. At most 4095.
std::int32_t worst_stall(const std::array<std::uint32_t, 3>& weights);

}  // namespace imgtune::workbench

#endif
