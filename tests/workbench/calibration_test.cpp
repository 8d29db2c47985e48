#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "workbench/appearance/chart_view.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/calibration/candidates.h"
#include "workbench/calibration/conversion.h"
#include "workbench/calibration/export.h"
#include "workbench/calibration/import.h"
#include "workbench/calibration/reader.h"
#include "workbench/calibration/report_page.h"
#include "workbench/camera/camera.h"
#include "workbench/files/text_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {
namespace {

using Nine = std::array<std::int32_t, 9>;

std::string published(const std::string& file) {
    return read_text(std::string(IMGTUNE_EXAMPLES) + "/calibrations/" + file,
                     kLargestCalibrationText);
}

Import import_text(const std::string& text, const ImportChoices& choices, Faults& faults) {
    return import_calibration(read_calibration(text, "file", faults), choices, Tuning{}, faults);
}

/// Tuned matrices as calibrated.
ImportChoices as_calibrated(const std::vector<double>& cts, CcmMethod method = CcmMethod::blend) {
    ImportChoices choices;
    choices.kelvins = cts;
    choices.method = method;
    choices.fit = CcmFit::points;
    return choices;
}

Import import_published(const std::string& file, const ImportChoices& choices = {}) {
    Faults faults;
    Import import = import_text(published(file), choices, faults);
    EXPECT_FALSE(faults.has_errors()) << faults.text();
    return import;
}

Nine tuned(const Tuning& tuning, std::size_t row, std::size_t ct) {
    return decode(tuning.ccm.rCCM_Nvram[row][ct], tuning.caller);
}

struct Expected {
    const char* file;
    std::vector<double> cts;
    std::int32_t count;
    std::size_t ct;  // the one below
    std::uint32_t kelvin;
    std::int32_t red;
    std::int32_t blue;
    Nine normal;
    Nine low_light;
    Nine flash;
};

// Worked out from the published figures outside this code: 512 times, rounded half up, rows closed.
const Expected kExpected[] = {
    {"imx708.json",
     {2964, 3610, 4640, 5910, 7590},
     5,
     0,
     2964,
     687,
     1594,
     {881, -235, -134, -154, 804, -138, 77, -580, 1015},
     {562, 52, -102, -59, 675, -104, 80, -155, 587},
     {843, -226, -105, -147, 810, -151, 31, -394, 875}},
    {"imx477.json",
     {2000, 2200, 2600, 3000, 3600, 4600, 6100, 8600},
     8,
     7,
     8600,
     2052,
     535,
     {1119, -604, -3, -57, 846, -277, -4, -215, 731},
     {751, -178, -61, 44, 693, -225, 76, 56, 380},
     {1092, -581, 1, -68, 842, -262, 4, -239, 747}},
    {"imx477-measured.json",
     {2360, 2870, 2970, 3700, 4400, 4715, 5920, 9050},
     8,
     3,
     3700,
     1216,
     1040,
     {1095, -554, -29, -178, 814, -124, -2, -393, 907},
     {},
     {}},
};

TEST(Import, PublishedFiguresBecomeTheLibrarys) {
    for (const Expected& e : kExpected) {
        const Import import = import_published(e.file, as_calibrated(e.cts));
        const ISP_NVRAM_MULTI_CCM_STRUCT& ccm = import.tuning.ccm;
        EXPECT_EQ(ccm.i4NumCT, e.count) << e.file;
        for (const std::size_t row : {0U, 1U, 6U}) {
            EXPECT_EQ(ccm.rCTAWBGain[row][e.ct].i4R, e.red) << e.file;
            EXPECT_EQ(ccm.rCTAWBGain[row][e.ct].i4B, e.blue) << e.file;
            EXPECT_EQ(import.tuning.kelvin[row][e.ct], e.kelvin) << e.file;
        }
        EXPECT_EQ(tuned(import.tuning, 0, e.ct), e.normal) << e.file;
        if (e.low_light == Nine{}) continue;
        EXPECT_EQ(tuned(import.tuning, 1, e.ct), e.low_light) << e.file;
        EXPECT_EQ(tuned(import.tuning, 6, e.ct), e.flash) << e.file;
    }
}

TEST(Import, EveryPublishedFilePassesTheCheckWithEitherMethod) {
    struct Row {
        const char* file;
        std::int32_t red_lowest, blue_lowest, red_highest, blue_highest;
    };
    constexpr Row kRows[] = {
        {"imx477.json", 809, 1867, 2052, 535}, {"imx477-measured.json", 852, 1655, 2029, 652},
        {"imx219.yaml", 538, 1232, 1020, 683}, {"imx708.json", 687, 1594, 1331, 740},
        {"ov5647.csv", 489, 996, 790, 506},    {"ov64a40.json", 484, 1249, 1161, 674},
    };
    for (const Row& row : kRows) {
        for (const CcmMethod method : {CcmMethod::blend, CcmMethod::polynomial}) {
            ImportChoices choices;
            choices.method = method;
            choices.most_cts = 5;
            const Import import = import_published(row.file, choices);
            Faults faults;
            check_tables(import.tuning, faults);
            EXPECT_FALSE(faults.has_errors()) << row.file << '\n' << faults.text();
            const auto& gains = import.tuning.ccm.rCTAWBGain[0];
            const auto& highest = gains[import.kept.size() - 1];
            EXPECT_EQ(gains[0].i4R, row.red_lowest) << row.file;
            EXPECT_EQ(gains[0].i4B, row.blue_lowest) << row.file;
            EXPECT_EQ(highest.i4R, row.red_highest) << row.file;
            EXPECT_EQ(highest.i4B, row.blue_highest) << row.file;
        }
    }
}

TEST(Import, PolynomialIsFittedOnTheChord) {
    const ISP_CCM_POLY22_T& p =
        import_published("imx708.json",
                         as_calibrated({2964, 3610, 4640, 5910, 7590}, CcmMethod::polynomial))
            .tuning.ccm.rCCMPoly22;
    EXPECT_EQ(p.i4R_AVG, 106169);
    EXPECT_EQ(p.i4R_STD, 22551);
    EXPECT_EQ(p.i4B_AVG, 109712);
    EXPECT_EQ(p.i4B_STD, 29904);
    EXPECT_EQ(p.i4P00[1], -1838000);  // mean of -235, -180, -180, -216, -108
    EXPECT_EQ(p.i4P10[1], 150913);
    EXPECT_EQ(p.i4P01[1], -150913);
}

// scripts/samples.sh makes them anew.
TEST(Import, SampleTuningsAreMadeOfTheCalibrations) {
    const std::vector<double> smooth = {2000, 2200, 2600, 3000, 3600, 4600, 6100, 8600};
    struct Row {
        const char* sample;
        const char* file;
        std::vector<double> cts;
        CcmMethod method;
        double stretch;
    };
    const Row kRows[] = {
        {"imx477-polynomial", "imx477.json", smooth, CcmMethod::polynomial, 1},
        {"imx477-measured-blend",
         "imx477-measured.json",
         {2360, 2870, 2970, 3700, 4400, 4715, 5920, 9050},
         CcmMethod::blend,
         1},
        {"imx708-blend", "imx708.json", {2964, 3610, 4640, 5910, 7590}, CcmMethod::blend, 1},
        {"synthetic-stretched", "imx477.json", smooth, CcmMethod::blend, 3},
    };
    for (const Row& row : kRows) {
        const Tuning sample =
            require_tuning(std::string(IMGTUNE_EXAMPLES) + "/" + row.sample + ".yaml");
        Faults faults;
        ImportChoices choices = as_calibrated(row.cts, row.method);
        choices.stretch = row.stretch;
        const Tuning made = import_text(published(row.file), choices, faults).tuning;
        EXPECT_EQ(std::memcmp(&made.ccm, &sample.ccm, sizeof(made.ccm)), 0) << row.sample;
    }
}

// ---- candidates

// Without imx477.json: its nineteen points take their time.
constexpr const char* kPublished[] = {"imx219.yaml", "imx477-measured.json", "imx708.json",
                                      "ov5647.csv", "ov64a40.json"};

TEST(Candidates, ChosenOneIsNeverWorseThanTuningPointByPoint) {
    double mean = 0.0;
    double worst = 0.0;
    for (const char* const file : kPublished) {
        const Import import = import_published(file);
        const Candidate& chosen = import.candidates[import.chosen];
        const Candidate* point_by_point = nullptr;
        for (const Candidate& candidate : import.candidates) {
            if (candidate.method == CcmMethod::blend && candidate.fit == CcmFit::points) {
                point_by_point = &candidate;  // the last has most points
            }
        }
        ASSERT_NE(point_by_point, nullptr);
        EXPECT_LE(chosen.error.mean, point_by_point->error.mean) << file;
        EXPECT_LE(chosen.error.worst, point_by_point->error.worst) << file;
        ASSERT_EQ(import.kept.size(), chosen.kelvins.size());
        EXPECT_EQ(import.tuning.ccm.i4NumCT, static_cast<std::int32_t>(import.kept.size()));
        mean += chosen.error.mean / std::size(kPublished);
        worst += chosen.error.worst / std::size(kPublished);
    }
    EXPECT_LT(mean, 0.65);  // point by point: 1.46 and 12.2
    EXPECT_LT(worst, 4.4);
}

TEST(Candidates, SameInputGivesTheSameTuning) {
    const Tuning first = import_published("ov64a40.json").tuning;
    const Tuning second = import_published("ov64a40.json").tuning;
    EXPECT_EQ(std::memcmp(&first.ccm, &second.ccm, sizeof(first.ccm)), 0);
}

TEST(Candidates, UsersWordLeavesTheOthersOut) {
    struct Row {
        const char* method;
        const char* fit;
        std::size_t candidates;  // of 3..6 points
    };
    constexpr Row kRows[] = {
        {"", "points", 8},           {"", "blend", 4}, {"blend", "", 8}, {"polynomial", "", 5},
        {"polynomial", "points", 4}, {"", "", 13}};
    for (const Row& row : kRows) {
        ImportChoices choices;
        choose_by_words(choices, row.method, row.fit);
        const Import import = import_published("imx219.yaml", choices);
        EXPECT_EQ(import.candidates.size(), row.candidates) << row.method << ' ' << row.fit;
        const Candidate& chosen = import.candidates[import.chosen];
        EXPECT_EQ(import.tuning.ccm.i4Method, static_cast<std::int32_t>(chosen.method));
        EXPECT_TRUE(*row.method == 0 || import.tuning.ccm.i4Method == (*row.method == 'b' ? 2 : 1));
    }
    ImportChoices choices;
    EXPECT_THROW(choose_by_words(choices, "polynomial", "blend"), BadInput);
}

/// Sensors whose matrices are known at every CT: a straight locus of gains, matrices between two.
std::string made_up(double bend) {
    std::string text = "ct,r_gain,b_gain,c0,c1,c2,c3,c4,c5,c6,c7,c8\n";
    for (int i = 0; i <= 10; ++i) {
        const double share = i / 10.0;
        // The matrices lean on the place between the ends, squared if they are to bend.
        const double lean = (1.0 - bend) * share + bend * share * share;
        const double c1 = -0.6 + 0.4 * lean;
        const double c5 = -0.1 - 0.3 * lean;
        const double c7 = -0.8 + 0.5 * lean;
        text += fmt::format("{},{},{},{},{},0,0,{},{},0,{},{}\n", 1e6 / (400.0 - 25.0 * i),
                            1.2 + 1.4 * share, 3.0 - 1.6 * share, 1.0 - c1, c1, 1.0 - c5, c5, c7,
                            1.0 - c7);
    }
    return text;
}

TEST(Candidates, KnownSensorsAreMetWithinTheRounding) {
    struct Row {
        double bend;
        std::optional<CcmMethod> method;
        double mean, worst;
    };
    // On a straight locus the blend of three goes straight from matrix to matrix, too.
    // Beside the locus a gain's foot on the chord moves along it: that remains.
    const Row kRows[] = {{0.0, CcmMethod::polynomial, 0.12, 0.8},
                         {0.0, CcmMethod::blend, 0.12, 0.8},
                         {0.0, std::nullopt, 0.12, 0.8},
                         {1.0, std::nullopt, 0.35, 2.4}};
    for (const Row& row : kRows) {
        Faults faults;
        ImportChoices choices;
        choices.method = row.method;
        const Import import = import_text(made_up(row.bend), choices, faults);
        ASSERT_FALSE(faults.has_errors()) << faults.text();
        const LightsError& error = import.candidates[import.chosen].error;
        EXPECT_LT(error.mean, row.mean) << row.bend;
        EXPECT_LT(error.worst, row.worst) << row.bend;
    }
}

TEST(Candidates, SharesTellWhatTheLibraryMakesItsMatrixOf) {
    for (const CcmMethod method : {CcmMethod::blend, CcmMethod::polynomial}) {
        const Tuning tuning =
            import_published(
                "imx477-measured.json",
                as_calibrated({2360, 2870, 2970, 3700, 4400, 4715, 5920, 9050}, method))
                .tuning;
        Bench bench(tuning);
        Shares shares(tuning);
        const ISP_CCM_POLY22_T& polynomial = tuning.ccm.rCCMPoly22;
        for (std::int32_t red = 800; red <= 2100; red += 50) {
            const AWB_GAIN_T gain{red, 512, 2600 - red};
            const auto share = shares.at(gain);
            for (const std::size_t k : kOffDiagonals) {
                double sum = 0.0;
                for (std::size_t ct = 0; ct < 8 && method == CcmMethod::blend; ++ct) {
                    sum += share[ct] * tuned(tuning, 0, ct)[k];
                }
                if (method == CcmMethod::polynomial) {
                    sum = share[0] * polynomial.i4P00[k] / 1e4 +
                          share[1] * (polynomial.i4P10[k] - polynomial.i4P01[k]) / 1e4;
                }
                EXPECT_NEAR(bench.matrix_at(gain).i4Coef[k], sum, 2.0) << red << ' ' << k;
            }
        }
    }
}

TEST(Candidates, MetricIsTheVisibleSquareOfSmallChanges) {
    constexpr RealMatrix kWanted = {1.9, -0.6, -0.3, -0.3, 1.6, -0.3, 0.05, -0.75, 1.7};
    const VisibleMetric metric = visible_metric(kWanted);
    for (const std::size_t k : kOffDiagonals) {
        RealMatrix made = kWanted;
        made[k] += 0.004;
        made[4 * (k / 3)] -= 0.004;
        double square = 0.0;
        for (const float patch : patch_differences(ChartView(kWanted), ChartView(made))) {
            square += static_cast<double>(patch) * static_cast<double>(patch) / 24.0;
        }
        EXPECT_NEAR(visible_square(metric, kWanted, made) / square, 1.0, 0.03) << k;
    }
}

TEST(Report, KnownLightsAreToldFromTheOthers) {
    // A light that lies between its neighbours in every way is not missed; an end is.
    Faults faults;
    const Calibration calibration = read_calibration(made_up(0.0), "file", faults);
    const Import import = import_calibration(calibration, {}, Tuning{}, faults);
    CalibrationReport report = report_on(calibration, {}, import);
    ASSERT_EQ(report.lights.size(), 11U);
    for (const ReportedLight& light : report.lights) {
        ASSERT_TRUE(light.left_out.has_value());
        EXPECT_LT(light.error.worst, 0.4) << light.kelvin;
        if (light.at_end) {
            EXPECT_GT(light.left_out->mean, 0.3) << light.kelvin;
        } else {
            EXPECT_LT(light.left_out->mean, 0.12) << light.kelvin;
        }
    }
    ASSERT_EQ(report.few.size(), 2U);
    for (const FewLights& few : report.few) {  // the sensor is linear: the ends are enough
        EXPECT_LT(few.error.mean, 0.15);
        EXPECT_EQ(few.kelvins.front(), 2500.0);
        EXPECT_NEAR(few.kelvins.back(), 1e6 / 150, 0.01);
    }
    EXPECT_NE(advice_of(import, report)[0].find("these few suffice"), std::string::npos);
    ReportedCapture& capture = report.captures.emplace_back();
    capture.file = "a<b>.dng";
    capture.width = 2;
    capture.height = 1;
    capture.rgb = {255, 0, 0, 0, 0, 255};
    capture.outlines = {{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}}};
    const std::string page = report_page("<title>", import, report);
    for (const char* part : {"<h1>&lt;title&gt;</h1>", "a&lt;b&gt;.dng", "<polygon points='0.5,0.5",
                             // the two pixels, blue first as bitmaps have it, padded to 8 bytes
                             "AAD//wAAAAA=", "dark skin: CIEDE2000 0."}) {
        EXPECT_NE(page.find(part), std::string::npos) << part;
    }
}

// ---- faults

std::string json(const std::string& curve, const std::string& matrices) {
    return "{ \"rpi.awb\": {\n \"ct_curve\": [" + curve + "] },\n \"rpi.ccm\": { \"ccms\": [" +
           matrices + "] } }\n";
}

const std::string kCurve = "3000, 0.7, 0.4, 4000, 0.6, 0.5, 6000, 0.5, 0.6";
std::string matrix(const std::string& ct, const std::string& first = "1.5") {
    return "\n {\"ct\": " + ct + ", \"ccm\": [" + first +
           ",-0.3,-0.2, -0.2,1.4,-0.2, 0,-0.4,1.4]},";
}
const std::string kMatrices = matrix("3000") + matrix("4000") + matrix("6000");

TEST(Import, FaultsAreToldWithTheirLine) {
    struct Row {
        std::string text;
        const char* code;
        int line;
        const char* part;
    };
    const Row kRows[] = {
        {"", "C001", 1, "no YAML document"},
        {"just words", "C001", 1, "not a calibration"},
        {"{ \"a\": [1,\n2 ", "C001", 2, "not readable as JSON"},
        {"{\"rpi.ccm\": {}}", "C002", 1, "no grey locus"},
        {"{\"rpi.awb\": {\"ct_curve\": [" + kCurve + "]}}", "C002", 1, "no colour matrices"},
        {json("3000, 0.7, 0.4, 4000, 0.6", kMatrices), "C004", 2, "ct_curve has 5 values"},
        {json("3000, 0.7, 0.4", kMatrices), "C106", 2, "too short: 1 point"},
        {json("3000, 0.4, 0.7, 4000, 0.5, 0.6, 6000, 0.6, 0.5", kMatrices), "C103", 2,
         "does not rise in red"},
        {json("3000, 0.7, 0.4, 4000, 0.6, 0.5,\n 5000, 0.65, 0.55, 6000, 0.5, 0.6", kMatrices),
         "C104", 3, "the locus point at 5000 K is out of order"},
        {json("3000, 0.7, nan", kMatrices), "C003", 2, "ct_curve[2] is 'nan'"},
        {json("3000, 0.7, -0.4", kMatrices), "C003", 2, "ct_curve[2] is '-0.4'"},
        {json("300, 0.7, 0.4, 4000, 0.6, 0.5", kMatrices), "C101", 2, "CT of 300 K"},
        {json(kCurve, matrix("3000") + matrix("3500", "1.6") + matrix("6000")), "C110", 5,
         "a row of the matrix at 3500 K sums to 1.1000"},
        {json(kCurve, matrix("3000", "512")), "C109", 4, "row 0 of the matrix sums to 511.5"},
        {json(kCurve, matrix("2500") + kMatrices), "C107", 4, "2500 K lies outside the locus"},
        {json(kCurve, matrix("4000") + kMatrices), "C102", 6, "a second matrix at 4000 K"},
        {json(kCurve, "\n {\"ct\": 4000, \"ccm\": [1, 0, 0]}"), "C004", 4, "ccm has 3 values"},
        {json(kCurve, "\n {\"ccm\": [1, 0, 0]}"), "C003", 4, "ct is missing"},
        {"version: 1\nalgorithms:\n  - Awb:\n      colourGains: [ {ct: 3000, gains: [1.4, 2.5]}, "
         "{ct: 6000, gains: [2, 1.7]} ]\n  - Ccm:\n      ccms:\n"
         "        - {ct: 4000, ccm: [1,0,0, 0,1,0, 0,0,1], offsets: [0, 2, 0]}\n",
         "C111", 7, "offsets [0, 2, 0] at 4000 K"},
        {"ct,r_gain,b_gain\n", "C004", 1, "the header has 3 columns"},
        {"# a table\nct,r_gain,b_gain,c0,c1,c2,c3,c4,c5,c6,c7,c8\n3000,0,2,1,0,0,0,1,0,0,0,1\n",
         "C003", 3, "r_gain is '0'"},
    };
    for (const Row& row : kRows) {
        Faults faults;
        import_text(row.text, {}, faults);
        const auto& list = faults.list();
        EXPECT_TRUE(std::any_of(list.begin(), list.end(),
                                [&row](const Fault& fault) {
                                    return fault.code == row.code && fault.file == "file" &&
                                           fault.line == row.line &&
                                           fault.sentence().find(row.part) != std::string::npos;
                                }))
            << row.part << "\n"
            << row.text << "\nsaid: " << faults.text();
        EXPECT_EQ(faults.has_errors(), find_rule(row.code)->severity == Severity::error)
            << row.text << faults.text();
    }
}

TEST(Import, JsonKeepsItsLinesAndStringsWithoutComments) {
    EXPECT_EQ(blank_json_comments("{ // a \"b\n\t\"c // \\\" /*\": /* d\n\"*/ 1 /"),
              "{        \n \"c // \\\" /*\":     \n    1 /");
}

TEST(Import, LociAndMatricesAreInterpolatedInMired) {
    // 250, 200 and 100 mired.
    const std::vector<LocusPoint> locus = {{4000, 0.8, 0.4, 0}, {5000, 0.4, 0.8, 0}};
    EXPECT_NEAR(locus_at(locus, 1e6 / 225).red, 0.6, 1e-12);
    EXPECT_NEAR(locus_at(locus, 1e6 / 150).red, 0.2, 1e-12);  // halved again: logarithmic
    EXPECT_NEAR(locus_at(locus, 1e6 / 150).blue, 1.6, 1e-12);
    CalibratedMatrix a{4000, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {}, 0};
    CalibratedMatrix b{5000, {2, -1, 0, 0, 1, 0, 0, 0, 1}, {}, 0};
    const std::vector<CalibratedMatrix> matrices = {a, b};
    EXPECT_NEAR(matrix_at(matrices, 1e6 / 210)[1], -0.8, 1e-12);
    EXPECT_EQ(matrix_at(matrices, 9000)[1], -1.0);
}

// ---- there and back

TEST(Export, PointsComeOutAsTheyCameIn) {
    const std::vector<double> cts = {2300, 2700, 3000, 4000, 4150, 6500};
    const Tuning first = import_published("ov64a40.json", as_calibrated(cts)).tuning;
    for (const auto& write : {write_json_form, write_yaml_form}) {
        Faults faults;
        const std::string text = write(calibration_of(first, {}, faults));
        const Tuning again = import_text(text, as_calibrated(cts), faults).tuning;
        ASSERT_FALSE(faults.has_errors()) << faults.text();
        EXPECT_EQ(again.ccm.i4NumCT, 6);
        for (std::size_t ct = 0; ct < 6; ++ct) {
            EXPECT_EQ(tuned(again, 0, ct), tuned(first, 0, ct));
            EXPECT_EQ(again.ccm.rCTAWBGain[0][ct].i4R, first.ccm.rCTAWBGain[0][ct].i4R);
            EXPECT_EQ(again.ccm.rCTAWBGain[0][ct].i4B, first.ccm.rCTAWBGain[0][ct].i4B);
            EXPECT_EQ(again.kelvin[0][ct], first.kelvin[0][ct]);
        }
    }
    Faults faults;
    Tuning unknown = first;
    unknown.kelvin[0][2] = 0;
    calibration_of(unknown, {}, faults);
    EXPECT_NE(faults.text().find("the CT of the tuned point 2 is unknown"), std::string::npos);
}

// ---- colour difference

TEST(ColorDifference, PublishedPairs) {
    struct Row {
        Lab x, y;
        double difference;
    };
    // From the supplementary data of G. Sharma, W. Wu and E. N. Dalal, "The CIEDE2000
    // Color-Difference Formula", Color Research and Application 30 (2005): neutral pairs, hues on
    // both sides of 0 and 180 degrees, dark and light.
    constexpr Row kRows[] = {
        {{50, 2.6772, -79.7751}, {50, 0, -82.7485}, 2.0425},
        {{50, -1.3802, -84.2814}, {50, 0, -82.7485}, 1.0000},
        {{50, 0, 0}, {50, -1, 2}, 2.3669},
        {{50, 2.49, -0.001}, {50, -2.49, 0.0009}, 7.1792},
        {{50, 2.49, -0.001}, {50, -2.49, 0.0011}, 7.2195},
        {{50, 2.5, 0}, {73, 25, -18}, 27.1492},
        {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
        {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
        {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
    };
    for (const Row& row : kRows) {
        EXPECT_NEAR(ciede2000(row.x, row.y), row.difference, 5e-5);
        EXPECT_NEAR(ciede2000(row.y, row.x), row.difference, 5e-5);
    }
}

TEST(ColorDifference, ChartThroughMatrices) {
    constexpr RealMatrix kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    constexpr RealMatrix kOther = {1.5, -0.3, -0.2, -0.2, 1.4, -0.2, 0, -0.4, 1.4};
    const ChartError none = chart_error(kOther, kOther);
    EXPECT_NEAR(none.largest, 0.0, 1e-6);
    const ChartError grey = chart_error(kIdentity, {0.3, 0.5, 0.2, 0.3, 0.5, 0.2, 0.3, 0.5, 0.2});
    EXPECT_LT(grey.patches[20].difference, 1e-6);                  // grey stays grey
    EXPECT_NEAR(grey.patches[20].reference.lightness, 65.9, 0.2);  // sRGB 160
    EXPECT_NEAR(grey.patches[14].reference.a, 49.0, 3.0);          // red
    EXPECT_NEAR(grey.patches[14].actual.a, 0.0, 1e-3);
    EXPECT_GT(grey.largest, 25.0);
}

}  // namespace
}  // namespace imgtune::workbench
