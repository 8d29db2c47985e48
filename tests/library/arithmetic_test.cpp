#include "common/arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

#include "common/debug_switch.h"

namespace imgtune {
namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

TEST(Arithmetic, WrapsDividesAndShiftsAtTheLimits) {
    EXPECT_EQ(wrap_add(kMax, 1), kMin);
    EXPECT_EQ(wrap_sub(kMin, 1), kMax);
    EXPECT_EQ(wrap_mul(65536, 65536), 0);
    EXPECT_EQ(wrap_mul(kMin, -1), kMin);
    EXPECT_EQ(wrap_negate(kMin), kMin);
    EXPECT_EQ(divide_or_zero(-7, 2), -3);
    EXPECT_EQ(divide_or_zero(kMin, -1), kMin);
    EXPECT_EQ(divide_or_zero(5, 0), 0);
    EXPECT_EQ(divide_or_zero(5U, 0U), 0U);
    EXPECT_EQ(shift_left(1, 33), 2U);
    EXPECT_EQ(shift_left(1, -1), 0x80000000U);
    EXPECT_EQ(shift_right_arithmetic(-8, 33), -4);
}

TEST(Arithmetic, FloatToIntegerTruncatesAndSaturates) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        std::int32_t as_int;
        std::uint32_t as_uint;
    } cases[] = {
        {1.9f, 1, 1},
        {-1.9f, -1, 0},
        {-0.5f, 0, 0},
        {nan, 0, 0},
        {inf, kMax, 0xffffffff},
        {-inf, kMin, 0},
        {2147483648.0f, kMax, 2147483648U},
        {-2147483648.0f, kMin, 0},
        {2147483520.0f, 2147483520, 2147483520U},
        {4294967296.0f, kMax, 0xffffffff},
        {4294967040.0f, kMax, 4294967040U},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(truncate_to_int32(c.value), c.as_int) << c.value;
        EXPECT_EQ(truncate_to_uint32(c.value), c.as_uint) << c.value;
    }
}

TEST(Arithmetic, FieldWriteKeepsTheOtherBitsAndCutsTheValue) {
    std::uint32_t words[2] = {0xffffffff, 0xa5a5a5a5};
    const BitField field{0, 16, 13};
    field.write(words, 8200);
    EXPECT_EQ(words[0], 0xe008ffffU);
    EXPECT_EQ(field.read(words), 8U);
    EXPECT_EQ(words[1], 0xa5a5a5a5U);
}

// Multiples of the divisor and their neighbours are where a reciprocal goes wrong first.
TEST(Arithmetic, ReciprocalDivisionIsExact) {
    std::mt19937 random(7);
    std::vector<std::int32_t> divisors = {0,  1,     -1,    2,    -2,       3,    7,
                                          10, 46341, 65535, kMax, kMax - 1, kMin, kMin + 1};
    for (int i = 0; i < 2000; ++i) {
        divisors.push_back(as_signed(static_cast<std::uint32_t>(random())) >> (random() % 31));
    }
    for (const std::int32_t d : divisors) {
        const FrameDivisor divisor(d);
        const auto check = [&](std::int32_t n) {
            ASSERT_EQ(divisor.divide(n), divide_or_zero(n, d)) << n << " / " << d;
            const std::uint32_t un = as_unsigned(n);
            const std::uint32_t ud = as_unsigned(d);
            ASSERT_EQ(divide_lane_or_zero(un, ud), divide_or_zero(un, ud)) << un << " / " << ud;
        };
        for (const std::int32_t n : {0, 1, -1, kMin, kMin + 1, kMax, kMax - 1}) check(n);
        for (int i = 0; i < 200; ++i) {
            const std::int32_t n = as_signed(static_cast<std::uint32_t>(random()));
            const std::int32_t multiple = wrap_mul(divide_or_zero(n, d), d);
            check(n);
            check(multiple);
            check(wrap_add(multiple, 1));
            check(wrap_sub(multiple, 1));
        }
    }
}

TEST(DebugSwitch, ReadsIntegersAsAtoiDoes) {
    const char* texts[] = {"0",
                           "1",
                           "-1",
                           "+2",
                           " \t\n7x",
                           "",
                           "abc",
                           "- 1",
                           "2147483648",
                           "4294967297",
                           "9223372036854775807",
                           "9223372036854775808",
                           "-9223372036854775808",
                           "99999999999999999999999",
                           "-99999999999999999999",
                           "00012",
                           "1 2",
                           "+-3",
                           "\r1",
                           "\v\f1",
                           "\b1",
                           "9223372036854775805",
                           "-9223372036854775806"};
    for (const char* text : texts) EXPECT_EQ(parse_integer(text), std::atoi(text)) << text;
}

}  // namespace
}  // namespace imgtune
