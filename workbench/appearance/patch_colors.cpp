#include "workbench/appearance/patch_colors.h"

#include <cmath>
#include <cstdint>
#include <cstring>

// Functions that are compiled twice, and chosen by the machine when the program starts: with
// vectors twice as long where it has them. Results are the same, digit by digit. Sanitizers are not
// ready by then.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define IMGTUNE_SANITIZED
#endif
#endif
#if defined(__x86_64__) && defined(__linux__) && !defined(IMGTUNE_SANITIZED) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define IMGTUNE_LONG_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define IMGTUNE_LONG_VECTORS
#endif

namespace imgtune::workbench {

namespace {

using Plane = std::array<float, kPatchCount>;

/// Beyond every colour that a matrix of 13-bit coefficients can make; keeps wild input finite.
constexpr float kMostLinear = 1e4F;

float bits_as_float(std::int32_t bits) {
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

std::int32_t float_as_bits(float value) {
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

float smaller(float a, float b) {
    return a < b ? a : b;
}

float larger(float a, float b) {
    return a > b ? a : b;
}

/// Of a positive number: a third of its exponent, then Halley's rule twice, which triples the
/// digits each time.
float cube_root(float x) {
    constexpr float kThirdOfBias = 709921077.0F;
    const auto third = static_cast<std::int32_t>(
        static_cast<float>(float_as_bits(x)) * (1.0F / 3.0F) + kThirdOfBias);
    float root = bits_as_float(third);
    for (int round = 0; round < 2; ++round) {
        const float cube = root * root * root;
        root *= (cube + 2.0F * x) / (2.0F * cube + x);
    }
    return root;
}

float lab_function(float t) {
    constexpr float kKnee = 216.0F / 24389.0F;
    const float line = (24389.0F / 27.0F * t + 16.0F) / 116.0F;
    const float root = cube_root(larger(t, kKnee));
    return t > kKnee ? root : line;
}

/// e^-x for x of at least 0, within 1e-5.
float decay(float x) {
    // 2^-whole times 2^-rest, rest within half.
    const float power = smaller(x * 1.44269504F, 120.0F);
    const float above = power + 0.5F;
    const auto whole = static_cast<std::int32_t>(above);
    const float rest = (static_cast<float>(whole) - power) * 0.69314718F;
    const float series =
        1.0F +
        rest *
            (1.0F + rest * (0.5F + rest * (1.0F / 6.0F + rest * (1.0F / 24.0F + rest / 120.0F))));
    return series * bits_as_float((127 - whole) << 23);
}

/// Degrees of the direction (x, y) of length 1, 0 to 360, within 0.02: the arcus tangent's series
/// in the eighth of a turn at hand, as fitted by least squares.
float degrees_of(float x, float y) {
    const float across = std::abs(x);
    const float up = std::abs(y);
    const float ratio = smaller(across, up) / larger(larger(across, up), 1e-30F);
    const float square = ratio * ratio;
    const float eighth =
        ratio * (57.29577951F *
                 (0.99997726F +
                  square * (-0.33262347F +
                            square * (0.19354346F +
                                      square * (-0.11643287F +
                                                square * (0.05265332F + square * -0.01172120F))))));
    const float quarter = up > across ? 90.0F - eighth : eighth;
    const float half = x < 0.0F ? 180.0F - quarter : quarter;
    return y < 0.0F ? 360.0F - half : half;
}

/// The share of a chroma that counts as strongly coloured.
float chroma_share(float chroma) {
    const float small = smaller(chroma, 2000.0F) * (1.0F / 25.0F);
    const float square = small * small;
    const float power = square * square * square * small;
    return std::sqrt(power / (power + 1.0F));
}

}  // namespace

IMGTUNE_LONG_VECTORS PatchLabs patch_labs(const RealMatrix& matrix) {
    static const auto kChart = [] {
        std::array<Plane, 3> planes{};
        for (std::size_t i = 0; i < kPatchCount; ++i) {
            const auto patch = linear(chart_patches()[i]);
            for (std::size_t k = 0; k < 3; ++k) planes[k][i] = static_cast<float>(patch[k]);
        }
        return planes;
    }();
    const RealMatrix to_white = to_relative_xyz(matrix);
    std::array<Plane, 3> f{};
    for (std::size_t row = 0; row < 3; ++row) {
        const auto red = static_cast<float>(to_white[3 * row]);
        const auto green = static_cast<float>(to_white[3 * row + 1]);
        const auto blue = static_cast<float>(to_white[3 * row + 2]);
        for (std::size_t i = 0; i < kPatchCount; ++i) {
            const float t = red * kChart[0][i] + green * kChart[1][i] + blue * kChart[2][i];
            f[row][i] = lab_function(larger(smaller(t, kMostLinear), -kMostLinear));
        }
    }
    PatchLabs labs;
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        labs.lightness[i] = 116.0F * f[1][i] - 16.0F;
        labs.a[i] = 500.0F * (f[0][i] - f[1][i]);
        labs.b[i] = 200.0F * (f[1][i] - f[2][i]);
    }
    return labs;
}

/// The mean chroma is at least half of this one. So a is stretched no more than it would be there,
/// and the divisor of chroma is no smaller than there; those of lightness and hue are at least 1.
/// Squares of chroma and hue add up to those of a and b. The rotation adds at most twice the sine
/// of 60 degrees times their product: with chroma divided by d, the sum is at most the larger
/// eigenvalue of (1/d^2, r/d; r/d, 1), r that sine, times those squares.
PatchFactors patch_factors(const PatchLabs& x) {
    constexpr float kRotation = 0.866025404F;
    PatchFactors factors;
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        const float chroma = std::sqrt(x.a[i] * x.a[i] + x.b[i] * x.b[i]) / 2.0F;
        const float stretch = 1.5F - 0.5F * chroma_share(chroma);
        factors.a[i] = stretch * stretch;
        const float over = 1.0F / (1.0F + 0.045F * chroma);
        const float half = (1.0F - over * over) / 2.0F;
        factors.color[i] =
            1.0F - half + std::sqrt(half * half + kRotation * kRotation * over * over);
    }
    return factors;
}

IMGTUNE_LONG_VECTORS PatchDifferences ciede2000_bounds(const PatchLabs& x,
                                                       const PatchFactors& factors,
                                                       const PatchLabs& y) {
    constexpr float kRounding = 1.002F;
    PatchDifferences bounds;
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        const float lightness = y.lightness[i] - x.lightness[i];
        const float a = y.a[i] - x.a[i];
        const float b = y.b[i] - x.b[i];
        bounds[i] = kRounding * std::sqrt(lightness * lightness +
                                          factors.color[i] * (factors.a[i] * a * a + b * b));
    }
    return bounds;
}

IMGTUNE_LONG_VECTORS PatchDifferences ciede2000(const PatchLabs& x, const PatchLabs& y) {
    PatchDifferences differences;
    for (std::size_t i = 0; i < kPatchCount; ++i) {
        const float plain_x = std::sqrt(x.a[i] * x.a[i] + x.b[i] * x.b[i]);
        const float plain_y = std::sqrt(y.a[i] * y.a[i] + y.b[i] * y.b[i]);
        const float stretch = 1.5F - 0.5F * chroma_share((plain_x + plain_y) / 2.0F);
        const float ax = stretch * x.a[i];
        const float ay = stretch * y.a[i];
        const float bx = x.b[i];
        const float by = y.b[i];
        const float chroma_x = std::sqrt(ax * ax + bx * bx);
        const float chroma_y = std::sqrt(ay * ay + by * by);

        // Hues as directions of length 1: the chord between them is twice the sine of half the
        // angle, their sum points to the mean hue.
        const float over_x = 1.0F / larger(chroma_x, 1e-12F);
        const float over_y = 1.0F / larger(chroma_y, 1e-12F);
        const float cos_x = ax * over_x;
        const float sin_x = bx * over_x;
        const float cos_y = ay * over_y;
        const float sin_y = by * over_y;
        const float chord =
            std::sqrt((cos_y - cos_x) * (cos_y - cos_x) + (sin_y - sin_x) * (sin_y - sin_x));
        const float turn = cos_x * sin_y - sin_x * cos_y;
        const float hue_length = std::sqrt(chroma_x * chroma_y) * chord;
        const float hue_difference = turn < 0.0F ? -hue_length : hue_length;
        const float sum_cos = cos_x + cos_y;
        const float sum_sin = sin_x + sin_y;
        const float sum = std::sqrt(sum_cos * sum_cos + sum_sin * sum_sin);
        const bool opposite = sum < 1e-6F;  // the mean hue is a quarter turn from either
        const float over_sum = 1.0F / larger(sum, 1e-6F);
        const float c = opposite ? -sin_x : sum_cos * over_sum;
        const float s = opposite ? cos_x : sum_sin * over_sum;

        // Cosines of multiples of the mean hue, each turned as the formula wants it.
        const float c2 = c * c - s * s;
        const float s2 = 2.0F * s * c;
        const float c3 = c2 * c - s2 * s;
        const float s3 = s2 * c + c2 * s;
        const float c4 = c2 * c2 - s2 * s2;
        const float s4 = 2.0F * s2 * c2;
        const float weight = 1.0F - 0.17F * (0.866025404F * c + 0.5F * s) + 0.24F * c2 +
                             0.32F * (0.994521895F * c3 - 0.104528463F * s3) -
                             0.20F * (0.453990500F * c4 + 0.891006524F * s4);

        const float chroma = (chroma_x + chroma_y) / 2.0F;
        const float middle = (x.lightness[i] + y.lightness[i]) / 2.0F - 50.0F;
        const float square = middle * middle;
        const float lightness_term = (y.lightness[i] - x.lightness[i]) /
                                     (1.0F + 0.015F * square / std::sqrt(20.0F + square));
        const float chroma_term = (chroma_y - chroma_x) / (1.0F + 0.045F * chroma);
        const float hue_term = hue_difference / (1.0F + 0.015F * chroma * weight);

        const float from_blue = (degrees_of(c, s) - 275.0F) * 0.04F;
        const float angle = 1.04719755F * decay(from_blue * from_blue);
        const float angle2 = angle * angle;
        const float sine =
            angle * (1.0F - angle2 * (1.0F / 6.0F - angle2 * (1.0F / 120.0F - angle2 / 5040.0F)));
        const float rotation = -2.0F * chroma_share(chroma) * sine;
        differences[i] =
            std::sqrt(larger(0.0F, lightness_term * lightness_term + chroma_term * chroma_term +
                                       hue_term * hue_term + rotation * chroma_term * hue_term));
    }
    return differences;
}

}  // namespace imgtune::workbench
