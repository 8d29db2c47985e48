#include <imgtune/matrix.h>

#include <cmath>
#include <utility>

#include "common/arithmetic.h"

namespace {

template <class Value>
Value limited(Value v, Value lo, Value hi) {
    if (v > hi) return hi;
    return v < lo ? lo : v;
}

}  // namespace

float* matmul3(float* out, float* A, float* B) {
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i) {
            out[3 * i + j] = (A[j] * B[3 * i] + A[j + 3] * B[3 * i + 1]) + A[j + 6] * B[3 * i + 2];
        }
    }
    return out;
}

void trans3(float* M) {
    std::swap(M[1], M[3]);
    std::swap(M[2], M[6]);
    std::swap(M[5], M[7]);
}

float* cross(float* out, float* a, float* b) {
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = -(a[0] * b[2] - a[2] * b[0]);
    out[2] = a[0] * b[1] - a[1] * b[0];
    return out;
}

float* matvec3(float* out, float* M, float* v) {
    for (int r = 0; r < 3; ++r) out[r] = (M[r] * v[0] + M[r + 3] * v[1]) + M[r + 6] * v[2];
    return out;
}

float* aat3(float* out, float* A) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j <= i; ++j) {
            const float* a = A + 3 * i;
            const float* b = A + 3 * j;
            out[3 * i + j] = out[3 * j + i] = (a[0] * b[0] + a[1] * b[1]) + a[2] * b[2];
        }
    }
    return out;
}

void unit3(float* v) {
    const float length = std::sqrt((v[0] * v[0] + v[1] * v[1]) + v[2] * v[2]);
    for (int i = 0; i < 3; ++i) v[i] = v[i] / length;
}

int sign(float x) {
    return x > 0.0f ? 1 : -1;
}

int sign_extension(int v, int n) {
    using namespace imgtune;
    return shift_right_arithmetic(as_signed(shift_left(as_unsigned(v), n)), n);
}

int round_stats(float x) {
    return imgtune::wrap_mul(imgtune::truncate_to_int32(std::fabs(x) + 0.5f), sign(x));
}

unsigned char CLIP(unsigned char v, unsigned char lo, unsigned char hi) {
    return limited(v, lo, hi);
}

unsigned int CLIP(unsigned int v, unsigned int lo, unsigned int hi) {
    return limited(v, lo, hi);
}
