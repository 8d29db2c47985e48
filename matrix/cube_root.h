#ifndef IMGTUNE_MATRIX_CUBE_ROOT_H
#define IMGTUNE_MATRIX_CUBE_ROOT_H

namespace imgtune {

/// Half a round of the cube-root iteration: the mean of x and R / x^2.
constexpr float cube_root_half_step(float x, float R) {
    return (x + (R / x) / x) * 0.5f;
}

/// No finite argument needs more than 56 rounds (tests/matrix/cbrt_exhaustive.cpp); the bound ends
/// the iteration in floating-point modes, such as flush-to-zero, in which it might not settle.
constexpr int kMaxCubeRootRounds = 64;

}  // namespace imgtune

#endif
