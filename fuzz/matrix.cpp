#include <imgtune/matrix.h>

#include <algorithm>
#include <cmath>

#include "input.h"

using namespace imgtune::fuzz;

namespace {

using Nine = std::unique_ptr<float[]>;

bool small(const float* v, int count) {
    return std::all_of(v, v + count, [](float x) { return std::fabs(x) < 1e3f; });
}

void require_near(float actual, double expected, double error, const char* what) {
    require(std::fabs(static_cast<double>(actual) - expected) <= error, what);
}

void products(float* a, float* b) {
    const Nine out = std::make_unique<float[]>(9);
    const Nine before = std::make_unique<float[]>(9);
    std::memcpy(before.get(), a, 36);
    require(matmul3(out.get(), a, b) == out.get(), "the output is returned");
    aat3(out.get(), a);
    for (std::size_t i = 0; i < 9; ++i) {
        const float t = out[3 * (i % 3) + i / 3];
        require(std::memcmp(&out[i], &t, 4) == 0, "A transpose(A) is symmetric");
    }
    trans3(a);
    trans3(a);
    require(std::memcmp(a, before.get(), 36) == 0, "twice transposed is unchanged");

    const Nine v = std::make_unique<float[]>(3);
    cross(v.get(), a, b);
    matvec3(v.get(), a, b);
    unit3(v.get());
    if (small(a, 3) && std::hypot(a[0], a[1], a[2]) > 1e-3f) {
        std::memcpy(v.get(), a, 12);
        unit3(v.get());
        require_near(std::hypot(v[0], v[1], v[2]), 1.0, 1e-5, "a unit vector has length 1");
    }
}

void roots(float* p) {
    const Nine q = std::make_unique<float[]>(3);
    std::memcpy(q.get(), p, 12);
    solvecubic(q.get());
    const float R = p[0];
    const float root = cbrt_stats(R);
    if (std::fabs(R) > 1e-3f && std::fabs(R) < 1e3f && std::isfinite(root)) {
        require_near(root, std::cbrt(static_cast<double>(R)), 1e-5, "a cube root");
    }
    sort3(p);
    if (!std::isnan(p[0]) && !std::isnan(p[1]) && !std::isnan(p[2])) {
        require(p[0] >= p[1] && p[1] >= p[2], "sorted values descend");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    do {
        Nine nine[3];
        for (auto& values : nine) {
            values = std::make_unique<float[]>(9);
            for (std::size_t i = 0; i < 9; ++i) values[i] = in.real();
        }
        products(nine[0].get(), nine[1].get());
        roots(nine[2].get());
        const Nine three = std::make_unique<float[]>(3);
        find_eigenvector(nine[0].get(), three.get());
        pseudo_inverse(nine[2].get(), nine[0].get(), three.get(), nine[1].get());

        const float x = in.real();
        require(sign(x) == (x > 0.0f ? 1 : -1), "a sign is 1 or -1");
        if (std::fabs(x) < 1e6f) {
            require_near(static_cast<float>(round_stats(x)), static_cast<double>(x), 0.6,
                         "rounding");
        }
        const int v = in.number(), n = in.number();
        require(sign_extension(sign_extension(v, n), n) == sign_extension(v, n),
                "extending twice changes nothing");
        const unsigned value = in.value(), a = in.value(), b = in.value();
        const unsigned low = std::min(a, b), high = std::max(a, b);
        require(CLIP(value, low, high) == std::clamp(value, low, high), "clipped to the range");
        const auto low_byte = [](unsigned w) { return static_cast<unsigned char>(w); };
        CLIP(low_byte(value), low_byte(a), low_byte(b));
    } while (!in.ended());
    return 0;
}
