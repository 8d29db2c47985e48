#ifndef IMGTUNE_MATRIX_H
#define IMGTUNE_MATRIX_H

#include <imgtune/export.h>

// 3x3 matrices of single-precision floats, row-major: element (i, j) at index 3 i + j. Vectors have
// three floats. An output array must not overlap an input. Routines that return float* return their
// output pointer.

/// out = B A.
IMGTUNE_API float* matmul3(float* out, float* A, float* B);

/// M = transpose(M), in place; the words are moved unchanged.
IMGTUNE_API void trans3(float* M);

/// out = a x b.
IMGTUNE_API float* cross(float* out, float* a, float* b);

/// out = transpose(M) v.
IMGTUNE_API float* matvec3(float* out, float* M, float* v);

/// out = A transpose(A), symmetric.
IMGTUNE_API float* aat3(float* out, float* A);

/// v = v / |v|, in place. A zero vector gives NaN in every component.
IMGTUNE_API void unit3(float* v);

/// 1 if x > 0, else -1: zero, negative zero and NaN give -1.
IMGTUNE_API int sign(float x);

/// The low 32 - n bits of v as a signed number (n modulo 32); n = 19 extends a 13-bit field.
IMGTUNE_API int sign_extension(int v, int n);

/// |x| + 0.5 truncated, with the sign of x: the nearest integer, halves away from zero, where that
/// sum is exact. It is taken in single precision: 0.49999997 gives 1, 8388609 gives 8388610. NaN
/// gives 0. The magnitude saturates before the sign is applied: minus infinity gives -2147483647.
IMGTUNE_API int round_stats(float x);

/// v limited to lo..hi; the upper bound is tested first, so with lo > hi a v above hi gives hi.
IMGTUNE_API unsigned char CLIP(unsigned char v, unsigned char lo, unsigned char hi);
IMGTUNE_API unsigned int CLIP(unsigned int v, unsigned int lo, unsigned int hi);

/// Roots of x^3 + p[2] x^2 + p[1] x + p[0], written over p, not sorted. Meant for cubics whose
/// roots are all real, as those of a symmetric matrix: with one real root the results are NaN or no
/// roots, and so they can be by rounding at a double root.
IMGTUNE_API void solvecubic(float* p);

/// Real cube root of R. Infinite and NaN arguments come back as they are; four finite arguments,
/// -1 among them, end on minus infinity.
IMGTUNE_API float cbrt_stats(float R);

/// Sorts v into descending order, in place; NaNs are not moved by a comparison.
IMGTUNE_API void sort3(float* v);

/// v = unit vector spanning the null space of M, found from the largest cross product of two rows.
/// When that is shorter than 1e-5, as for rank 1 or entries below some 3e-3, v is (M[3], -M[0], 0)
/// scaled to unit length: NaN when both are 0.
IMGTUNE_API void find_eigenvector(float* M, float* v);

/// out = transpose(P) diag(1 / sqrt(w)) Q, a singular value of 1e-5 or less inverting to 0.
///
/// The pseudo-inverse of A, when the rows of Q are the eigenvectors of A transpose(A), w its
/// eigenvalues in the same order and the rows of P the matching right singular vectors.
/// On return w holds the singular values and P its own transpose.
IMGTUNE_API void pseudo_inverse(float* out, float* P, float* w, float* Q);

#endif
