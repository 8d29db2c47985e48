#include <imgtune/matrix.h>

#include <cmath>
#include <utility>

#include "matrix/cube_root.h"

namespace {

// Shorter normals and smaller singular values, widened to double, count as zero.
constexpr double kNegligible = 1e-5;

struct Vector {
    float x, y, z;

    float size() const { return (std::fabs(x) + std::fabs(y)) + std::fabs(z); }
};

const Vector& larger_or_later(const Vector& earlier, const Vector& later) {
    return earlier.size() > later.size() ? earlier : later;
}

}  // namespace

float cbrt_stats(float R) {
    if (R == 0.0f) return 0.0f;
    if (!std::isfinite(R)) return R;
    float x = 1.0f;
    for (int round = 0; round < imgtune::kMaxCubeRootRounds; ++round) {
        const float y = imgtune::cube_root_half_step(x, R);
        const float next = imgtune::cube_root_half_step(y, R);
        if (x == next || y == next) return next;
        x = next;
    }
    return x;
}

void solvecubic(float* p) {
    const float a = p[2];
    const float b = p[1];
    const float d = p[0];
    const float Q = (b * 3.0f - a * a) / 9.0f;
    const float R = (a * (b * 9.0f + (a * a) * -2.0f) + d * -27.0f) / 54.0f;
    const float third = a / 3.0f;

    if (Q < 0.0f) {  // three real roots
        const float root = std::sqrt(-Q);
        const float k = root + root;
        const float q = std::sqrt(Q * (Q * -Q));
        // Read once for each function: a compiler that sees one angle calls sincosf for both.
        const volatile float angle = std::acos(R / q) / 3.0f;
        const float X = k * std::cos(angle);
        const float Y = (k * std::sin(angle)) * 0.8660254f;  // sqrt(3) / 2
        const float middle =
            static_cast<float>(static_cast<double>(X) * -0.5 - static_cast<double>(third));
        p[0] = X - third;
        p[1] = middle - Y;
        p[2] = Y + middle;
        return;
    }
    const float r = cbrt_stats(R);
    p[0] = 2.0f * r - third;
    p[1] = p[2] = -third - r;
}

void sort3(float* v) {
    if (v[0] < v[1]) std::swap(v[0], v[1]);
    if (v[1] < v[2]) {
        std::swap(v[1], v[2]);
        if (v[0] < v[1]) std::swap(v[0], v[1]);
    }
}

void find_eigenvector(float* M, float* v) {
    const Vector u0 = {M[1] * M[5] - M[4] * M[2], M[2] * M[3] - M[5] * M[0],
                       M[0] * M[4] - M[3] * M[1]};
    const Vector u1 = {M[4] * M[8] - M[5] * M[7], M[5] * M[6] - M[3] * M[8],
                       M[3] * M[7] - M[4] * M[6]};
    const Vector u2 = {M[7] * M[2] - M[8] * M[1], M[8] * M[0] - M[6] * M[2],
                       M[6] * M[1] - M[7] * M[0]};
    Vector n = larger_or_later(larger_or_later(u0, u1), u2);
    float length = std::sqrt(n.z * n.z + (n.x * n.x + n.y * n.y));
    if (static_cast<double>(length) < kNegligible) {
        // The rows are nearly parallel: a normal of the first column serves.
        n = {M[3], -M[0], (0.0f - M[3] * M[0]) + M[3] * M[0]};
        length = std::sqrt(n.z * n.z + (M[3] * M[3] + M[0] * M[0]));
    }
    v[0] = n.x / length;
    v[1] = n.y / length;
    v[2] = n.z / length;
}

void pseudo_inverse(float* out, float* P, float* w, float* Q) {
    float D[9] = {};
    for (int i = 2; i >= 0; --i) {
        w[i] = std::sqrt(w[i]);
        D[4 * i] = static_cast<double>(w[i]) > kNegligible ? 1.0f / w[i] : 0.0f;
    }
    float T[9];
    matmul3(T, Q, D);
    trans3(P);
    matmul3(out, T, P);
}
