#include "workbench/studies/steepness.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "ccm/codec.h"
#include "tuning_fixture.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/files/tuning_files.h"
#include "workbench/studies/check.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/starter.h"

namespace imgtune::workbench {
namespace {

using Coefficients = std::array<std::int32_t, 9>;

constexpr Coefficients kPlain{512, 0, 0, 0, 512, 0, 0, 0, 512};
constexpr Coefficients kStrong{912, -300, -100, -200, 912, -200, 0, -400, 912};

RealMatrix real(const Coefficients& coefficients) {
    RealMatrix matrix{};
    for (std::size_t k = 0; k < 9; ++k) matrix[k] = coefficients[k] / 512.0;
    return matrix;
}

/// Blends over four points of every row, plain but where `strong` says so.
struct Built {
    const char* strong_normal;     ///< "0001": the matrix of the last point is the strong one
    const char* strong_low_light;  ///< nullptr: not used
    std::vector<std::array<std::int32_t, 2>> gains;  ///< red, blue
};

Tuning build(const Built& built) {
    Tuning tuning = starter_tuning();
    tuning.ccm.i4Method = 2;
    tuning.ccm.i4NumCT = static_cast<std::int32_t>(built.gains.size());
    tuning.ccm.i4NumLV = built.strong_low_light != nullptr ? 2 : 1;
    tuning.ccm.i4NumFlash = 0;
    const CoefficientCodec codec(3, 9);
    for (std::size_t row = 0; row < 2; ++row) {
        const std::string strong = row == kRowNormal || built.strong_low_light == nullptr
                                       ? built.strong_normal
                                       : built.strong_low_light;
        for (std::size_t i = 0; i < built.gains.size(); ++i) {
            tuning.ccm.rCTAWBGain[row][i] = {built.gains[i][0], 512, built.gains[i][1]};
            NSIspTuning::ISP_CCM_T matrix{};
            const Coefficients& given = strong[i] == '1' ? kStrong : kPlain;
            std::copy(given.begin(), given.end(), matrix.i4Coef);
            codec.encode(matrix, tuning.ccm.rCCM_Nvram[row][i]);
            tuning.kelvin[row][i] = static_cast<std::uint32_t>(2500 + 1500 * i);
        }
        for (std::size_t i = built.gains.size(); i < 8; ++i) {
            tuning.ccm.rCTAWBGain[row][i] = {};
            tuning.ccm.rCCM_Nvram[row][i] = {};
            tuning.kelvin[row][i] = 0;
        }
    }
    return tuning;
}

const std::vector<std::array<std::int32_t, 2>> kFour{
    {600, 1500}, {800, 1150}, {1000, 900}, {1200, 750}};

/// Of four points as far apart as a sensor's, the library blends the first three, and takes the
/// highest alone from its gain on.
TEST(Steepness, FindsWhatIsKnownByConstruction) {
    const ChartError whole = chart_error(real(kPlain), real(kStrong));
    struct Row {
        const char* name;
        Built built;
        std::size_t row;      ///< of the steepest place on the locus
        bool jumps;           ///< by `whole`, ...
        std::int32_t at_red;  ///< ... at this gain; else less than a fifth of it
    };
    const Row rows[] = {
        {"one matrix", {"0000", nullptr, kFour}, kRowNormal, false, 0},
        {"the highest differs", {"0001", nullptr, kFour}, kRowNormal, true, 1200},
        {"all but the highest differ", {"1110", nullptr, kFour}, kRowNormal, true, 1200},
        {"in low light", {"0000", "0001", kFour}, kRowLowLight, true, 1200},
        {"three points blend", {"001", nullptr, {kFour[0], kFour[1], kFour[3]}}, 0, false, 0},
        {"the third leads to it", {"0011", nullptr, kFour}, kRowNormal, false, 0},
    };
    for (const Row& row : rows) {
        const Steepness found = find_steepest(build(row.built));
        const SteepPlace* steepest = nullptr;
        for (const Steepness::Row& each : found.rows) {
            if (!each.on_locus) continue;
            if (steepest == nullptr || each.on_locus->strength() > steepest->strength()) {
                steepest = &*each.on_locus;
            }
        }
        if (!row.jumps) {
            EXPECT_LT(steepest == nullptr ? 0.0 : steepest->step.worst, whole.largest / 5)
                << row.name;
            EXPECT_EQ(steepest == nullptr, row.name == std::string("one matrix")) << row.name;
            continue;
        }
        ASSERT_NE(steepest, nullptr) << row.name;
        EXPECT_EQ(steepest->row, row.row) << row.name;
        EXPECT_TRUE(steepest->is_jump) << row.name;
        EXPECT_EQ(steepest->lights[0].gain.i4R, row.at_red - 1) << row.name;
        EXPECT_EQ(steepest->lights[1].gain.i4R, row.at_red) << row.name;
        EXPECT_LE(std::abs(steepest->lights[0].gain.i4B - steepest->lights[1].gain.i4B), 1);
        if (row.built.strong_normal != std::string("1110")) {
            EXPECT_NEAR(steepest->step.worst, whole.largest, 0.02 * whole.largest) << row.name;
            EXPECT_NEAR(steepest->step.mean, whole.mean, 0.02 * whole.mean) << row.name;
        }
    }
}

/// Gains 2 % under the tuned ones are clipped to the highest before they reach it.
TEST(Steepness, LooksBesideTheTunedGainsToo) {
    const Steepness found = find_steepest(build({"001", nullptr, {kFour[0], kFour[1], kFour[3]}}));
    const Steepness::Row& row = found.rows.at(0);
    ASSERT_TRUE(row.on_locus && row.beside);
    EXPECT_EQ(row.beside->beside, -kBesideLocus);
    EXPECT_TRUE(row.beside->is_jump);
    EXPECT_GT(row.beside->step.worst, row.on_locus->step.worst);
    EXPECT_FALSE(row.on_locus->is_jump && row.on_locus->step.worst > 1.0);
    EXPECT_FALSE(found.over_lv);
}

TEST(Steepness, LooksOverLightValues) {
    const double whole = chart_error(real(kStrong), real(kPlain)).largest;
    const Steepness found = find_steepest(build({"0000", "1111", kFour}));
    ASSERT_TRUE(found.over_lv);
    const auto& [dark, bright] = found.over_lv->lights;
    EXPECT_EQ(bright.lv, dark.lv + 1);
    EXPECT_GT(found.over_lv->step.worst, whole / 30);
    EXPECT_LT(found.over_lv->step.worst, whole / 10);
}

TEST(Steepness, TriesWhatCanBeChanged) {
    const std::vector<Remedy> tried = try_remedies(build({"0001", nullptr, kFour}));
    ASSERT_GE(tried.size(), 3U);
    EXPECT_EQ(tried[0].change, "");
    EXPECT_GT(tried[0].strength(), 1.0);
    for (const Remedy& remedy : tried) {
        if (remedy.change.find("i4NumCT: 3") == std::string::npos) continue;
        EXPECT_LT(remedy.strength(), tried[0].strength() / 5) << remedy.change;
    }
    // As it is, the matrix is plain at the first three gains and strong at the last, as tuned.
    EXPECT_NEAR(*tried[0].off_points, 0.0, 0.3);
}

TEST(Steepness, IsAFinding) {
    struct Row {
        Tuning tuning;
        const char* codes;
        const char* says;
    };
    Tuning faulty = build({"0001", nullptr, kFour});
    faulty.caller.weights = {0, 0, 0};
    Faults unread;
    const auto sample = [&](const char* name) {
        return load_tuning(std::string(IMGTUNE_EXAMPLES) + '/' + name, unread);
    };
    const Row rows[] = {
        {build({"0000", nullptr, kFour}), "", ""},
        {build({"0001", nullptr, kFour}), "T112", "ccm.rows.normal.3 is where the matrix jumps"},
        {build({"0001", "0001", kFour}), "T112", ", in row low_light by "},
        {build({"0000", "0001", kFour}), "T112", "ccm.rows.low_light.3 is where the matrix jumps"},
        {faulty, "T116", ""},
        {starter_tuning(), "", ""},
        {sample("imx477-polynomial.yaml"), "", ""},
        {sample("imx708-blend.yaml"), "T112",
         "from gain 1330,512,740 to 1331,512,740 (7576 to 7590 K) the chart changes by CIEDE2000 "
         "2.9 on average and 7.2 in orange"},
    };
    for (const Row& row : rows) {
        Faults faults;
        check_tuning(row.tuning, faults);
        EXPECT_EQ(codes(faults), row.codes) << faults.text();
        EXPECT_NE(faults.text().find(row.says), std::string::npos) << faults.text();
    }
}

}  // namespace
}  // namespace imgtune::workbench
