// The toolkit as a program outside the library uses it.

#include <gtest/gtest.h>
#include <imgtune/matrix.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using Vector = std::array<float, 3>;
using Matrix = std::array<float, 9>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kTiniest = std::numeric_limits<float>::denorm_min();
constexpr Matrix kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr Matrix kCounted = {1, 2, 3, 4, 5, 6, 7, 8, 9};

/// Bit for bit, but any NaN for any other.
template <std::size_t N>
void expect_same(const std::array<float, N>& got, const std::array<float, N>& expected) {
    for (std::size_t i = 0; i < N; ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(got[i])) << "element " << i << ": " << got[i];
            continue;
        }
        EXPECT_EQ(std::bit_cast<std::uint32_t>(got[i]), std::bit_cast<std::uint32_t>(expected[i]))
            << "element " << i << ": " << std::hexfloat << got[i] << " for " << expected[i];
    }
}

Matrix product(Matrix left, Matrix right) {
    Matrix out{};
    EXPECT_EQ(matmul3(out.data(), right.data(), left.data()), out.data());
    return out;
}

Matrix transposed(Matrix m) {
    trans3(m.data());
    return m;
}

Vector roots_of(Vector p) {
    solvecubic(p.data());
    return p;
}

Vector null_vector(Matrix m) {
    Vector v = {7, 7, 7};
    find_eigenvector(m.data(), v.data());
    return v;
}

TEST(Matrix3, ProductIsSecondTimesFirst) {
    const Matrix stretch = {1, 0, 0, 0, 2, 0, 0, 0, 3};
    const Matrix ones = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    expect_same(product(kCounted, kIdentity), kCounted);
    expect_same(product(kIdentity, kCounted), kCounted);
    expect_same(product(ones, stretch), {1, 2, 3, 1, 2, 3, 1, 2, 3});
    expect_same(product({1, 2, 0, 0, 1, 0, 3, 0, 1}, kCounted), {9, 12, 15, 4, 5, 6, 10, 14, 18});
}

TEST(Matrix3, SumsGroupTheFirstTwoProducts) {
    const Matrix cancelling = {1e8f, 0, 0, -1e8f, 0, 0, 1, 0, 0};  // (1e8 - 1e8) + 1
    expect_same(product({1, 1, 1, 0, 0, 0, 0, 0, 0}, cancelling), {1, 0, 0, 0, 0, 0, 0, 0, 0});

    Matrix m = cancelling;
    Vector v = {1, 1, 1};
    Vector out{};
    EXPECT_EQ(matvec3(out.data(), m.data(), v.data()), out.data());
    expect_same(out, {1, 0, 0});

    // 1 + 2^-24 + 2^-24 from the left stays 1; the two small ones first make 1 + 2^-23.
    Matrix square{}, a = {1, 0x1p-12f, 0x1p-12f, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(aat3(square.data(), a.data()), square.data());
    expect_same(square, {1, 0x1p-12f, 0x1p-12f, 0x1p-12f, 1, 0, 0x1p-12f, 0, 1});
}

TEST(Matrix3, ProductsAreRoundedBeforeTheyAreAdded) {
    const float x = 1 + 0x1p-12f;       // its square is 1 + 2^-11 + 2^-24,
    const float square = 1 + 0x1p-11f;  // rounded
    Vector a = {0, x, 1}, b = {0, square, x}, out = {7, 7, 7};
    cross(out.data(), a.data(), b.data());
    expect_same(out, {0, -0.0f, 0});
    expect_same(product({x, 1, 0, 0, 0, 0, 0, 0, 0}, {x, 0, 0, -square, 0, 0, 0, 0, 0}), {});
}

TEST(Matrix3, VectorsAndTransposes) {
    struct {
        Vector a, b, out;
    } const crosses[] = {
        {{1, 0, 0}, {0, 1, 0}, {0, -0.0f, 1}},
        {{0, 1, 0}, {1, 0, 0}, {0, -0.0f, -1}},
        {{1, 2, 3}, {4, 5, 7}, {-1, 5, -3}},
    };
    for (auto [a, b, expected] : crosses) {
        Vector out{};
        EXPECT_EQ(cross(out.data(), a.data(), b.data()), out.data());
        expect_same(out, expected);
    }

    Matrix m = {0, 1, 0, 0, 0, 0, 0, 0, 0};
    Vector v = {5, 7, 9}, out{};
    matvec3(out.data(), m.data(), v.data());
    expect_same(out, {0, 5, 0});

    Matrix square{}, a = {1, 2, 3, 0, 1, 0, 0, 0, 2};
    aat3(square.data(), a.data());
    expect_same(square, {14, 2, 6, 2, 1, 0, 6, 0, 4});

    expect_same(transposed(kCounted), {1, 4, 7, 2, 5, 8, 3, 6, 9});
    std::array<std::uint32_t, 9> words{};
    for (std::uint32_t i = 0; i < 9; ++i) words[i] = 0xFF800000U + i;  // NaNs of nine kinds
    auto image = std::bit_cast<Matrix>(words);
    trans3(image.data());
    words = {words[0], words[3], words[6], words[1], words[4],
             words[7], words[2], words[5], words[8]};
    EXPECT_EQ(std::bit_cast<decltype(words)>(image), words);
}

TEST(Matrix3, UnitVectors) {
    struct {
        Vector v, unit;
    } const rows[] = {
        {{3, 0, 4}, {0.6f, 0, 0.8f}},
        {{0, -2, -0.0f}, {0, -1, -0.0f}},
        {{0, 0, 0}, {kNaN, kNaN, kNaN}},
        {{kInfinity, 1, 0}, {kNaN, 0, 0}},
        {{3.4f, 2.4f, 2.6f},
         {0x1.62bfa4p-1f, 0x1.f4d25p-2f, 0x1.0f474p-1f}},  // x and y added first
    };
    for (auto [v, expected] : rows) {
        unit3(v.data());
        expect_same(v, expected);
    }
}

TEST(Scalars, SignRoundingAndExtension) {
    struct {
        float x;
        int sign, rounded;
    } const rows[] = {
        {2.5f, 1, 3},
        {-2.5f, -1, -3},
        {-0.4f, -1, 0},
        {0.49f, 1, 0},
        {0x1.fffffep-2f, 1, 1},  // just below a half: the sum rounds up to 1
        {0.0f, -1, 0},
        {-0.0f, -1, 0},
        {1e-30f, 1, 0},
        {8388609.0f, 1, 8388610},  // 2^23 + 1: the half no longer fits, ties to even
        {2147483520.0f, 1, 2147483520},
        {-2147483520.0f, -1, -2147483520},
        {2147483648.0f, 1, 2147483647},
        {-2147483648.0f, -1, -2147483647},
        {kInfinity, 1, 2147483647},
        {-kInfinity, -1, -2147483647},
        {kNaN, -1, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(sign(row.x), row.sign) << row.x;
        EXPECT_EQ(round_stats(row.x), row.rounded) << row.x;
    }

    struct {
        int v, n, extended;
    } const fields[] = {
        {0x1FFF, 19, -1},    {0x0FFF, 19, 4095},   {0x1000, 19, -4096}, {0x2FFF, 19, 0x0FFF},
        {0x1FFF, -13, -1},   {0x1FFF, 51, -1},     {3, 31, -1},         {2, 31, 0},
        {-12345, 0, -12345}, {-12345, 32, -12345}, {0xFF, 24, -1},      {0x17F, 24, 127},
    };
    for (const auto& row : fields) {
        EXPECT_EQ(sign_extension(row.v, row.n), row.extended) << row.v << ", " << row.n;
    }
}

TEST(Scalars, ClipTestsTheUpperBoundFirst) {
    struct {
        unsigned char v, lo, hi, limited;
    } const rows[] = {
        {5, 10, 20, 10},     {25, 10, 20, 20},   {15, 10, 20, 15},     {10, 10, 20, 10},
        {20, 10, 20, 20},    {15, 20, 10, 10},   {5, 20, 10, 20},      {10, 20, 10, 20},
        {200, 10, 250, 200}, {255, 0, 128, 128}, {128, 130, 255, 130},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CLIP(row.v, row.lo, row.hi), row.limited);
        // The 32-bit overload, on the same values in the highest byte.
        const auto high = [](unsigned char v) { return static_cast<unsigned int>(v) << 24U; };
        EXPECT_EQ(CLIP(high(row.v), high(row.lo), high(row.hi)), high(row.limited));
    }
}

TEST(Eigen, CubeRoots) {
    struct {
        float R, root;
    } const rows[] = {
        {27, 3},
        {-27, -3},
        {8, 0x1.000002p+1f},  // the iteration ends one step above 2
        {1, 1},
        {0.0f, 0.0f},
        {-0.0f, 0.0f},
        {-1, -kInfinity},  // the first half step hits 0
        {kLargest, 0x1.965fe8p+42f},
        {-kLargest, -0x1.965fe8p+42f},
        {kTiniest, 0x1.428a3p-50f},
        {kInfinity, kInfinity},
        {-kInfinity, -kInfinity},
        {kNaN, kNaN},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.R);
        expect_same<1>({cbrt_stats(row.R)}, {row.root});
    }
}

TEST(Eigen, RootsOfCubics) {
    struct {
        const char* what;
        Vector p, roots;
        float error;
    } const rows[] = {
        {"1, 2, 3", {-6, 11, -6}, {3, 1, 2}, 4e-7f},
        {"-1, -2, -3", {6, 11, 6}, {-1, -3, -2}, 4e-7f},
        {"-1, 0, 1", {0, -1, 0}, {1, -1, 0}, 2e-7f},
        {"triple", {-1, 3, -3}, {1, 1, 1}, 0},
        {"zero", {0, 0, 0}, {0, -0.0f, -0.0f}, 0},
        {"one real root: 2 r and -r with r = 3", {-54, 0, 0}, {6, -3, -3}, 0},
        {"r = cbrt(-1)", {2, 0, 0}, {-kInfinity, kInfinity, kInfinity}, 0},
        {"r infinite", {-kInfinity, 0, 0}, {kInfinity, -kInfinity, -kInfinity}, 0},
        {"1, 1, 6: the cosine rounds above 1", {-6, 13, -8}, {kNaN, kNaN, kNaN}, 0},
        {"3, i, -i: a cosine above 1", {-3, 1, -3}, {kNaN, kNaN, kNaN}, 0},
        {"NaN", {0, kNaN, 0}, {kNaN, kNaN, kNaN}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Vector roots = roots_of(row.p);
        if (row.error == 0) {
            expect_same(roots, row.roots);
            continue;
        }
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(roots[i], row.roots[i], row.error);
    }
}

TEST(Eigen, EigenvectorIsTheLargestNormal) {
    const float half = 0x1.6a09e6p-1f;  // 1 / sqrt(2)
    struct {
        const char* what;
        Matrix m;
        Vector v;
    } const rows[] = {
        {"null space x", {0, 0, 0, 0, 1, 0, 0, 0, 1}, {1, 0, 0}},
        {"null space y", {1, 0, 0, 0, 0, 0, 0, 0, 1}, {0, 1, 0}},
        {"null space z", {1, 0, 0, 0, 1, 0, 0, 0, 0}, {0, 0, 1}},
        {"all tie: the third", kIdentity, {0, 1, 0}},
        {"first two tie: the second", {1, 0, 0, 0, 1, 0, 0.5f, 0, 0.5f}, {half, 0, -half}},
        {"NaN in a row: the last", {1, 0, 0, kNaN, 1, 0, 0, 0, 2}, {0, 1, 0}},
        {"sizes add magnitudes: (0, 2, -2) above (3, 0, 0)",
         {2, 0, 0, 0, 1.5f, 0, 0, 1, 1},
         {0, half, -half}},
        {"parallel only when products are rounded",  // by 2^-4 otherwise
         {1024 + 0x1p-2f, 1024 + 0x1p-1f, 0, 1024, 1024 + 0x1p-2f, 0, 0, 0, 0},
         {0.70702046f, -0.70719307f, 0}},
        {"parallel rows", {1, 1, 1, 1, 1, 1, 1, 1, 1}, {half, -half, 0}},
        {"a normal of 1e-5f is too short", {1e-5f, 0, 0, 0, 1, 0, 0, 0, 0}, {0, -1, 0}},
        {"one of 1.1e-5f is not", {1.1e-5f, 0, 0, 0, 1, 0, 0, 0, 0}, {0, 0, 1}},
        {"rank 1, first column zero", {0, 0, 0, 0, 1, 0, 0, 0, 0}, {kNaN, kNaN, kNaN}},
        {"zero", {}, {kNaN, kNaN, kNaN}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Vector v = null_vector(row.m);
        for (std::size_t i = 0; i < 3; ++i) {
            if (std::isnan(row.v[i])) {
                EXPECT_TRUE(std::isnan(v[i])) << v[i];
            } else {
                EXPECT_FLOAT_EQ(v[i], row.v[i]);
            }
        }
    }
}

TEST(Eigen, SortsDownwardsAndMovesOnlyOnLess) {
    struct {
        Vector v, sorted;
    } const rows[] = {
        {{1, 2, 3}, {3, 2, 1}},
        {{1, 3, 2}, {3, 2, 1}},
        {{2, 1, 3}, {3, 2, 1}},
        {{2, 3, 1}, {3, 2, 1}},
        {{3, 1, 2}, {3, 2, 1}},
        {{3, 2, 1}, {3, 2, 1}},
        {{2, 2, 1}, {2, 2, 1}},
        {{-0.0f, 0.0f, 1}, {1, -0.0f, 0.0f}},
        {{0.0f, -0.0f, 0.0f}, {0.0f, -0.0f, 0.0f}},
        {{0.0f, -1, -0.0f}, {0.0f, -0.0f, -1}},
        {{kNaN, 1, 2}, {kNaN, 2, 1}},
        {{1, kNaN, 2}, {1, kNaN, 2}},
        {{1, 2, kNaN}, {2, 1, kNaN}},
    };
    for (auto [v, sorted] : rows) {
        sort3(v.data());
        expect_same(v, sorted);
    }
}

TEST(Eigen, PseudoInverseFromItsParts) {
    struct {
        Vector w, values;
        Matrix P, Q, inverse;
    } const rows[] = {
        {{4, 1, 0}, {2, 1, 0}, kIdentity, kIdentity, {0.5f, 0, 0, 0, 1, 0, 0, 0, 0}},
        {{1, 4, 0},
         {1, 2, 0},
         kCounted,
         {1, 0, 2, 0, 2, 4, 5, 5, 5},
         {1, 4, 10, 2, 5, 14, 3, 6, 18}},
        // Too small, just large enough, and negative.
        {{0x1p-34f, 0x1p-32f, -1},
         {0x1p-17f, 0x1p-16f, kNaN},
         kIdentity,
         kIdentity,
         {0, 0, 0, 0, 65536, 0, 0, 0, 0}},
        {{1, 1, 1}, {1, 1, 1}, kCounted, kIdentity, {1, 4, 7, 2, 5, 8, 3, 6, 9}},
    };
    for (auto [w, values, P, Q, inverse] : rows) {
        const Matrix before = P;
        Matrix out{};
        pseudo_inverse(out.data(), P.data(), w.data(), Q.data());
        expect_same(out, inverse);
        expect_same(w, values);
        expect_same(P, transposed(before));
    }
}

/// The pseudo-inverse of A from the toolkit's pieces. Eigenvalues below `noise` of the largest are
/// rounding and taken as zero.
Matrix pseudo_inverse_of(const Matrix& A, float noise) {
    Matrix S{};
    Matrix copy = A;
    aat3(S.data(), copy.data());
    Vector w = {
        -(S[0] * (S[4] * S[8] - S[5] * S[7]) - S[1] * (S[3] * S[8] - S[5] * S[6]) +
          S[2] * (S[3] * S[7] - S[4] * S[6])),
        (S[0] * S[4] - S[1] * S[3]) + (S[0] * S[8] - S[2] * S[6]) + (S[4] * S[8] - S[5] * S[7]),
        -(S[0] + S[4] + S[8])};
    solvecubic(w.data());
    sort3(w.data());

    Matrix P{}, Q{};  // rows: right and left singular vectors
    for (std::size_t k = 0; k < 3; ++k) {
        if (!(w[k] > noise * w[0])) {
            w[k] = 0;
            continue;
        }
        Matrix shifted = S;
        for (std::size_t i = 0; i < 9; i += 4) shifted[i] -= w[k];
        float* left = &Q[3 * k];
        float* right = &P[3 * k];
        find_eigenvector(shifted.data(), left);

        Vector image{};  // S q = w q
        matvec3(image.data(), S.data(), left);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(image[i], w[k] * left[i], 2e-6f * w[0]);

        matvec3(right, copy.data(), left);
        unit3(right);
    }
    Matrix out{};
    pseudo_inverse(out.data(), P.data(), w.data(), Q.data());
    return out;
}

float largest(const Matrix& m) {
    float size = 0;
    for (const float x : m) size = std::max(size, std::fabs(x));
    return size;
}

float distance(const Matrix& a, const Matrix& b) {
    Matrix difference{};
    for (std::size_t i = 0; i < 9; ++i) difference[i] = a[i] - b[i];
    return largest(difference);
}

TEST(Eigen, PseudoInverseHasItsFourProperties) {
    struct {
        const char* what;
        Matrix A;
        float error;  // relative
    } const rows[] = {
        {"triangular", {2, 1, 0, 0, 3, 1, 0, 0, 5}, 1e-5f},
        {"colour correction",
         {1.74f, -0.61f, -0.13f, -0.28f, 1.65f, -0.37f, 0.02f, -0.55f, 1.53f},
         1e-4f},
        {"rotation, stretched", {0, -2, 0, 1, 0, 0, 0, 0, 4}, 1e-5f},
        {"large", {200, 100, 0, 0, 300, 100, 0, 0, 500}, 1e-5f},
        {"small", {0.4f, 0.2f, 0, 0, 0.6f, 0.2f, 0, 0, 1}, 1e-5f},
        {"condition 30", {30, 0, 3, 1, 5, 0, 2, 0, 1.25f}, 1e-3f},
        {"condition 1000", {1, 0.5f, 0.25f, 0, 0.03125f, 0.5f, 0, 0, 0.0625f}, 2e-2f},
        {"rank 2", {1, 2, 3, 4, 5, 6, 5, 7, 9}, 1e-3f},
        {"rank 2, a zero row", {1, 2, 0, 3, 1, 4, 0, 0, 0}, 1e-5f},
        {"rank 1", {1, 2, 2, 2, 4, 4, 0, 0, 0}, 1e-5f},
        {"rank 1, one element", {0, 0, 0, 0, 0, 0, 4, 0, 0}, 1e-5f},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Matrix X = pseudo_inverse_of(row.A, 1e-5f);
        const Matrix AX = product(row.A, X);
        const Matrix XA = product(X, row.A);
        EXPECT_LE(distance(product(AX, row.A), row.A), row.error * largest(row.A));
        EXPECT_LE(distance(product(XA, X), X), row.error * largest(X));
        EXPECT_LE(distance(transposed(AX), AX), row.error);
        EXPECT_LE(distance(transposed(XA), XA), row.error);
        EXPECT_GT(largest(X), 0.1f / largest(row.A));
    }
}

}  // namespace
