#include "common/vector.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "color/blend.h"
#include "common/vector_plain.h"

// The machine's vectors against the plain form of each operation, and the plain form against the
// rule that it carries.

namespace imgtune {
namespace {

constexpr unsigned kEdgeBytes[] = {0, 1, 2, 127, 128, 129, 254, 255};
constexpr std::int32_t kDivisors[] = {1, 2, 3, 41, 47, 50, 55, 64, 255, 256, 257, 4096, 8191, 8192};

class Values {
  public:
    std::uint8_t byte() {
        const auto bits = static_cast<std::uint32_t>(random_());
        return static_cast<std::uint8_t>(bits % 3 == 0 ? kEdgeBytes[bits / 3 % 8] : bits >> 8);
    }
    std::int32_t below(std::uint32_t end) { return static_cast<std::int32_t>(random_() % end); }
    std::uint32_t bits() { return static_cast<std::uint32_t>(random_()); }

  private:
    std::mt19937 random_{11};
};

/// What either set of vectors gives for the same inputs, as bytes and as 32-bit values: of sixteen
/// fields, then of the first four alone.
struct Results {
    std::uint8_t bytes[10][16];
    std::uint32_t spaced[8];
    std::int32_t values[2][10][16];
    std::int32_t quads[4][4];
    std::uint32_t packed;
    bool all_zero, below;

    friend bool operator==(const Results& a, const Results& b) {
        return std::memcmp(&a, &b, sizeof(a)) == 0;
    }
};

constexpr PackedFields kFields({{0, 22, 7}, {0, 14, 8}, {0, 7, 7}, {0, 0, 7}});

template <class Quad, std::size_t N>
void put(std::int32_t (&to)[16], const ValuesIn<Quad, N>& values) {
    for (std::size_t k = 0; k < N / 4; ++k) store(to + 4 * k, values.quad[k]);
}

#define IMGTUNE_RESULTS_WITH(V)                                                                 \
    template <std::size_t N>                                                                    \
    V::Sixteen curves_with_##V(const NarrowScale& scale, const std::uint8_t(&b)[4][16],         \
                               std::int32_t(&out)[10][16]) {                                    \
        const auto pairs_of = [&](std::size_t high, std::size_t low) {                          \
            return V::pairs<N>(V::load<N>(b[high]), V::load<N>(b[low]));                        \
        };                                                                                      \
        const auto each = [&](const auto& sums, const auto& divide) {                           \
            return each_quad(sums, sums, [&](V::Quad x, V::Quad) { return divide(scale, x); }); \
        };                                                                                      \
        const auto gain = pairs_of(0, 1), first = pairs_of(2, 3), second = pairs_of(3, 0);      \
        const auto sum = V::weigh_levels(scale, gain * first);                                  \
        const auto knot = each(V::weigh_bytes(scale, first), V::divide_bytes);                  \
        const auto level = each(sum, V::divide_levels);                                         \
        const auto last = sum + times_32(V::weigh_bytes(scale, gain));                          \
        const auto slope = quotient_or_zero(level, knot);                                       \
        put(out[0], sum);                                                                       \
        put(out[1], knot);                                                                      \
        put(out[2], level);                                                                     \
        put(out[3], V::weigh_levels(scale, gain*(second - first)));                             \
        put(out[4], slope);                                                                     \
        put(out[5], each(last, V::divide_levels));                                              \
        put(out[6], over_32(plus_32(knot)));                                                    \
        put(out[7], level - knot);                                                              \
        V::store<N>(reinterpret_cast<std::uint8_t*>(out[8]), V::cut(level - knot));             \
        V::store<N>(reinterpret_cast<std::uint8_t*>(out[9]), V::saturate(slope));               \
        return V::mean<N>(scale, V::load<N>(b[0]), V::load<N>(b[1]));                           \
    }                                                                                           \
                                                                                                \
    Results results_with_##V(const NarrowScale& scale, const std::uint8_t(&b)[4][16],           \
                             const std::int32_t(&level)[8], const std::uint32_t(&words)[8]) {   \
        Results out;                                                                            \
        std::memset(&out, 0, sizeof(out));                                                      \
        const auto x = V::load<16>(b[0]), y = V::load<16>(b[1]), z = V::load<16>(b[2]);         \
        V::store<16>(out.bytes[0], curves_with_##V<16>(scale, b, out.values[0]));               \
        V::store<4>(out.bytes[1], curves_with_##V<4>(scale, b, out.values[1]));                 \
        V::store<16>(out.bytes[2], V::clip(x, y, z));                                           \
        V::store<16>(out.bytes[3], V::step(x, y, b[3][0]));                                     \
        V::store<16>(out.bytes[4], V::excess(x, y) | V::excess(z, x));                          \
        V::store<16>(out.bytes[5], V::load_spaced(words));                                      \
        std::memcpy(out.spaced, words, sizeof(words));                                          \
        V::store_spaced(out.spaced, x);                                                         \
        const auto low = V::load(level), high = V::load(level + 4);                             \
        V::store(out.quads[0], V::weigh_levels(scale, V::pairs(low, high)).quad[0]);            \
        V::store(out.quads[1], V::unpack(kFields, words[0]));                                   \
        V::store(out.quads[2], low - high);                                                     \
        out.packed = V::pack(kFields, low);                                                     \
        out.all_zero = V::all_zero(V::excess(x, y));                                            \
        out.below = V::all_below(x, y);                                                         \
        return out;                                                                             \
    }

// A namespace is no template parameter.
IMGTUNE_RESULTS_WITH(plain)
IMGTUNE_RESULTS_WITH(vector)

TEST(Vectors, OfTheMachineGiveWhatThePlainOnesGive) {
    Values values;
    for (int round = 0; round < 20000; ++round) {
        const std::int32_t divisor =
            round % 2 == 0 ? kDivisors[values.below(14)] : 1 + values.below(8192);
        const std::int32_t high =
            round % 5 == 0 ? divisor * (round % 2) : values.below(as_unsigned(divisor) + 1);
        const NarrowScale scale(high, divisor - high);
        std::uint8_t bytes[4][16];
        for (auto& row : bytes) {
            for (auto& v : row) v = values.byte();
        }
        if (round % 3 == 0) std::memset(bytes[1], 255 - round % 2, 16);  // so that comparisons hold
        if (round % 4 == 0) std::memset(bytes[2], 0, 4);                 // a run of nothing
        std::int32_t level[8];
        for (auto& v : level) v = values.below(round % 2 == 0 ? 65026 : 300);
        std::uint32_t words[8];
        for (auto& w : words) w = values.bits();
        const auto plain = results_with_plain(scale, bytes, level, words);
        const auto native = results_with_vector(scale, bytes, level, words);
        ASSERT_TRUE(plain == native) << round << ": " << high << " of " << divisor;
    }
}

TEST(Vectors, PlainOnesFollowTheirRules) {
    const std::uint8_t high[16] = {0, 255, 100, 10, 255, 200}, low[16] = {255, 0, 50, 20, 255, 100};
    std::uint8_t out[16];
    plain::store<16>(out, plain::mean<16>({30, 20}, plain::load<16>(high), plain::load<16>(low)));
    const std::uint8_t means[16] = {102, 153, 80, 14, 255, 160};  // (30 high + 20 low) / 50
    EXPECT_EQ(std::memcmp(out, means, 16), 0);
    plain::store<16>(out, plain::step(plain::load<16>(high), plain::load<16>(low), 20));
    const std::uint8_t steps[16] = {20, 235, 80, 20, 255, 180};
    EXPECT_EQ(std::memcmp(out, steps, 16), 0);
    const std::uint8_t values[16] = {7, 250, 49, 15, 0, 255},
                       clipped[16] = {7, 250, 50, 15, 255, 200};
    plain::store<16>(
        out, plain::clip(plain::load<16>(values), plain::load<16>(high), plain::load<16>(low)));
    EXPECT_EQ(std::memcmp(out, clipped, 16), 0);
    const plain::Values<4> wide{{{{256, 257, 65025, 0}}}};
    const std::uint8_t cut[16] = {0, 1, 1, 0}, limited[16] = {255, 255, 255, 0};
    plain::store<16>(out, plain::cut(wide));
    EXPECT_EQ(std::memcmp(out, cut, 16), 0);
    plain::store<16>(out, plain::saturate(wide));
    EXPECT_EQ(std::memcmp(out, limited, 16), 0);
    const std::uint8_t excess[16] = {0, 255, 50, 0, 0, 100};
    plain::store<16>(out, plain::excess(plain::load<16>(high), plain::load<16>(low)));
    EXPECT_EQ(std::memcmp(out, excess, 16), 0);
    EXPECT_FALSE(plain::all_zero(plain::load<16>(excess)));
    EXPECT_TRUE(plain::all_zero(plain::excess(plain::load<4>(low + 3), plain::load<4>(low + 3))));
    const std::uint32_t word = 1U << 22 | 2U << 14 | 3U << 7 | 4 | 7U << 29;
    const plain::Quad fields = plain::unpack(kFields, word);
    EXPECT_EQ(fields.v[0] * 1000 + fields.v[1] * 100 + fields.v[2] * 10 + fields.v[3], 1234);
    EXPECT_EQ(plain::pack(kFields, {{129, 258, 131, 132}}), word & 0x1fffffffU);
    EXPECT_EQ(plain::quotient_or_zero({{7, 65025, 254, 1}}, {{2, 1, 255, 0}}).v[3], 0);
    EXPECT_EQ(plain::quotient_or_zero({{7, 65025, 254, 1}}, {{2, 1, 255, 0}}).v[2], 0);
}

/// What either set of vectors gives for two matrix rows, three weights and real values.
struct RowResults {
    std::int32_t values[14][4];
    std::uint32_t words[8];
    float lengths[4];

    friend bool operator==(const RowResults& a, const RowResults& b) {
        return std::memcmp(&a, &b, sizeof(a)) == 0;
    }
};

#define IMGTUNE_ROW_RESULTS_WITH(V)                                                         \
    RowResults row_results_with_##V(const std::int32_t(&n)[12], const std::int32_t(&w)[3],  \
                                    const float(&real)[3]) {                                \
        RowResults out;                                                                     \
        const auto x = V::load(n), y = V::load(n + 4), z = V::load(n + 8);                  \
        const auto real_x = V::to_reals(x);                                                 \
        const V::Quad each[14] = {x & y,                                                    \
                                  x | y,                                                    \
                                  x > y,                                                    \
                                  x + y,                                                    \
                                  x - y,                                                    \
                                  sum(x) + V::splat(w[0]),                                  \
                                  V::lanes_from<1>(x, y),                                   \
                                  V::lanes_from<3>(x, y),                                   \
                                  V::mean(FrameDivisor(w[0] + w[1] + w[2]), w, x, y, z),    \
                                  V::mean(FrameDivisor(n[0]), {n[1], n[2], n[3]}, x, y, z), \
                                  truncate(real_x * real[0] + V::to_reals(y) * real[1]),    \
                                  truncate(real_x / real[2]),                               \
                                  V::lanes_from<2>(x, y),                                   \
                                  V::quad(w[0], n[1], w[2], n[3])};                         \
        for (std::size_t k = 0; k < 14; ++k) V::store(out.values[k], each[k]);              \
        const auto low = V::splat(0x1fff);                                                  \
        V::store(out.words, V::pack_halves(x& low, y& low));                                \
        const std::uint32_t halves[2] = {as_unsigned(n[0]), as_unsigned(n[1])};             \
        V::store(out.words + 4, V::load_halves(halves));                                    \
        V::store(out.lengths, lengths(real_x - V::to_reals(z), V::to_reals(y), 0.01));      \
        return out;                                                                         \
    }

IMGTUNE_ROW_RESULTS_WITH(plain)
IMGTUNE_ROW_RESULTS_WITH(vector)

TEST(Vectors, OfTheMachineGiveTheRowsThatThePlainOnesGive) {
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kEdges[] = {0, 1, -1, 512, -512, 8191, kLeast, kLeast + 1, kMost};
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kReals[] = {0.0F, -0.0F, 0.25F, 1.0F, -1.0F, 3e9F, 1e-40F, kInfinity, NAN};
    Values values;
    for (int round = 0; round < 20000; ++round) {
        std::int32_t numbers[12];
        for (auto& n : numbers) {
            n = values.below(3) == 0 ? kEdges[values.below(9)]
                                     : as_signed(values.bits()) >> values.below(32);
        }
        const std::int32_t weights[3] = {values.below(20), values.below(20) - 10, values.below(20)};
        float reals[3];
        for (auto& r : reals) {
            r = values.below(2) == 0 ? kReals[values.below(9)] : bit_cast<float>(values.bits());
        }
        ASSERT_TRUE(row_results_with_plain(numbers, weights, reals) ==
                    row_results_with_vector(numbers, weights, reals))
            << round;
    }
}

TEST(Vectors, PlainRowsFollowTheirRules) {
    const auto expect = [](plain::Quad a, std::array<std::int32_t, 4> expected) {
        EXPECT_EQ(std::to_array(a.v), expected);
    };
    const plain::Quad a{{7, -7, std::numeric_limits<std::int32_t>::min(), 1000}};
    const plain::Quad b{{1, 2, 3, 4}}, c{{10, 20, 30, 40}};
    expect(plain::mean(FrameDivisor(-1), {1, 0, 0}, a, b, c),
           {-7, 7, std::numeric_limits<std::int32_t>::min(), -1000});
    expect(plain::mean(FrameDivisor(0), {1, -2, 1}, a, b, c), {0, 0, 0, 0});
    expect(plain::mean(FrameDivisor(7), {3, 3, 1}, a, b, c), {4, 0, -306783372, 436});
    expect(plain::lanes_from<3>(b, c), {4, 10, 20, 30});
    expect(plain::truncate({{-1.9F, 3e9F, -3e9F, NAN}}),
           {-1, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min(),
            0});
    float lengths[4];  // of (1, 4), (2, 2), (3, 6) and (2^31, 1) hundredths
    plain::store(lengths, plain::lengths({{1, 2, 3, 2147483648.0F}}, {{4, 2, 6, 1}}, 0.01));
    EXPECT_EQ(std::to_array(lengths),
              (std::array{0.0412310563F, 0.0282842712F, 0.0670820393F, 21474836.0F}));
    const std::uint32_t words[2] = {0x00020001, 0xffff0003};
    expect(plain::load_halves(words), {1, 2, 3, 65535});
    expect(plain::pack_halves(b, b), {0x00020001, 0x00040003, 0x00020001, 0x00040003});
}

// Where a quotient first reaches a value, and the sum just before: tests/proof proves every
// divisor.
TEST(Vectors, NarrowDivisionsAreExactWhereAQuotientChanges) {
    for (const std::int32_t divisor : kDivisors) {
        const NarrowScale scale(divisor, 0);
        const std::int32_t unit = scale.weight_high / divisor;  // what weights are taken times
        for (std::int32_t quotient = 1; quotient <= kHighestLevel; ++quotient) {
            const std::int32_t sum = scale.weight_high * quotient;
            ASSERT_EQ(scale.divide(sum), quotient) << divisor;
            ASSERT_EQ(scale.divide(sum - unit), quotient - 1) << divisor;
            if (quotient > 255) continue;
            const plain::Quad bytes = plain::divide_bytes(scale, {{sum, sum - unit, 0, 0}});
            ASSERT_EQ(bytes.v[0], quotient) << divisor;
            ASSERT_EQ(bytes.v[1], quotient - 1) << divisor;
        }
    }
}

// Narrow weights: a High weight of 0 to the divisor, the divisor 1 to 8192.
TEST(Vectors, NarrowBlendTakesItsWeightsAndNoOthers) {
    const struct {
        std::int32_t high, divisor;
        bool narrow;
    } cases[] = {{0, 1, true},     {1, 1, true},       {8192, 8192, true}, {0, 8192, true},
                 {0, 8193, false}, {5, 8193, false},   {-1, 50, false},    {51, 50, false},
                 {0, 0, false},    {0, -50, false},    {-20, -50, false},  {50, 50, true},
                 {49, 50, true},   {8193, 8192, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(NarrowBlend::fits({c.high, c.divisor - c.high, c.divisor}), c.narrow) << c.high;
    }
}

}  // namespace
}  // namespace imgtune
