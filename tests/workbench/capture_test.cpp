#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

#include "support/chart_scene.h"
#include "support/picture_writers.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/capture/capture_tables.h"
#include "workbench/capture/chart_grid.h"
#include "workbench/capture/study_captures.h"
#include "workbench/files/capture_files.h"
#include "workbench/files/chart_locator.h"
#include "workbench/files/text_file.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {
namespace {

const Spectra& spectra() {
    static const Spectra all(IMGTUNE_TEST_DATA "/spectra.csv");
    return all;
}

CaptureChoices chart_of_spectra() {
    CaptureChoices choices;
    choices.reference = spectra().reference();
    choices.other_edition.reset();
    return choices;
}

/// What the same formulas make of the patches without a camera's faults.
LightStudy truth_of(const Spectra::Camera& camera, const CaptureChoices& choices) {
    std::array<PatchMeasure, kChartPatches> patches;
    for (std::size_t i = 0; i < kChartPatches; ++i) patches[i].mean = camera.patches[i];
    Faults faults;
    return study_captures({{"truth", 5000.0, {measured_table("truth", patches)}}}, choices, faults)
        .lights.front();
}

/// The brightest channel of a white at three quarters of the range.
double exposure_for(const Spectra::Camera& camera) {
    return 0.75 / *std::max_element(camera.white.begin(), camera.white.end());
}

std::set<std::string> codes_of(const Faults& faults) {
    std::set<std::string> codes;
    for (const Fault& fault : faults.list()) codes.insert(fault.code);
    return codes;
}

struct Taken {
    std::optional<LightStudy> light;
    std::set<std::string> codes;
    std::string text;
};

Taken study(const Picture& picture, const PictureAids& aids, const Quad& corners,
            const CaptureChoices& choices) {
    Faults faults;
    Taken taken;
    auto measured = measure_picture(picture, aids, corners, choices, faults);
    if (measured) {
        taken.light =
            study_captures({{"shot", 5000.0, {*measured}}}, choices, faults).lights.front();
    }
    taken.codes = codes_of(faults);
    taken.text = faults.text();
    return taken;
}

void expect_near(const LightStudy& light, const LightStudy& truth, const std::string& name) {
    EXPECT_NEAR(light.red_gain / truth.red_gain, 1.0, 0.006) << name;
    EXPECT_NEAR(light.blue_gain / truth.blue_gain, 1.0, 0.006) << name;
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(light.matrix[i], truth.matrix[i], 10.0 / 512.0) << name << ' ' << i;
    }
    EXPECT_LT(chart_error(truth.matrix, light.matrix).mean, 0.4) << name;
}

constexpr std::array<std::array<std::uint8_t, 4>, 4> kOrders = {
    {{0, 1, 1, 2}, {2, 1, 1, 0}, {1, 0, 2, 1}, {1, 2, 0, 1}}};
const Quad kTilted{{{92.0, 75.5}, {401.2, 40.3}, {425.7, 310.0}, {55.4, 268.8}}};

TEST(Capture, FindsGainsAndMatrixOfEveryCameraAndLight) {
    const CaptureChoices choices = chart_of_spectra();
    std::size_t number = 0;
    for (const char* const camera : {"camera_d5100", "camera_a6400", "camera_5dm2"}) {
        for (const char* const light : {"light_A", "light_D65", "light_FL11", "light_LED-B3"}) {
            const auto seen = spectra().seen_by(camera, spectra().column(light));
            Shot shot;
            shot.exposure = exposure_for(seen);
            shot.noise = 0.01;
            shot.shading = 0.3;
            shot.color_shading = 0.05;
            shot.order = kOrders[number % 4];
            shot.border = number % 3;
            shot.seed = static_cast<unsigned>(++number);
            if (number % 2 == 0) shot.corners = kTilted;
            Shot flat = shot;
            flat.is_flat = true;
            flat.seed += 100;
            Faults faults;
            const auto field = FlatField::fit(take(flat, seen), nullptr, faults);
            ASSERT_TRUE(field) << faults.text();
            const Taken taken = study(take(shot, seen), {nullptr, &*field}, shot.corners, choices);
            const std::string name = std::string(camera) + ' ' + light;
            ASSERT_TRUE(taken.light) << taken.text;
            EXPECT_EQ(taken.codes, std::set<std::string>{}) << name << '\n' << taken.text;
            expect_near(*taken.light, truth_of(seen, choices), name);
        }
    }
}

TEST(Capture, TakesTheCornersInAnyOrder) {
    const CaptureChoices choices = chart_of_spectra();
    const auto seen = spectra().seen_by("camera_d5100", spectra().column("light_D50"));
    Shot shot;
    shot.exposure = exposure_for(seen);
    shot.noise = 0.005;
    const Picture picture = take(shot, seen);
    const Taken straight = study(picture, {}, shot.corners, choices);
    ASSERT_TRUE(straight.light) << straight.text;
    for (std::size_t turn = 1; turn < 8; ++turn) {
        const Taken taken = study(picture, {}, turned(shot.corners, turn), choices);
        ASSERT_TRUE(taken.light) << turn << taken.text;
        EXPECT_EQ(taken.codes, std::set<std::string>{"P103"}) << turn << taken.text;
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(taken.light->pictures[0].corners[i].x, shot.corners[i].x) << turn;
        }
        expect_near(*taken.light, *straight.light, "turned");
    }
}

TEST(Capture, FindsTheChartWhereTheBuildCan) {
    if (!can_find_charts()) GTEST_SKIP() << "built without OpenCV";
    const auto seen = spectra().seen_by("camera_d5100", spectra().column("light_A"));
    Shot shot;
    shot.exposure = exposure_for(seen);
    shot.noise = 0.01;
    for (const Quad& corners : {shot.corners, kTilted, turned(kTilted, 2)}) {
        shot.corners = corners;
        const auto found = find_chart(take(shot, seen));
        ASSERT_TRUE(found);
        double nearest = 1e9;
        for (std::size_t turn = 0; turn < kTurns; ++turn) {
            const Quad same = turned(*found, turn);
            double farthest = 0.0;
            for (std::size_t i = 0; i < same.size(); ++i) {
                farthest = std::max(farthest,
                                    std::hypot(same[i].x - corners[i].x, same[i].y - corners[i].y));
            }
            nearest = std::min(nearest, farthest);
        }
        EXPECT_LT(nearest, 11.0) << "of 54: what is looked at of a patch is still its own";
    }
    shot.is_flat = true;
    EXPECT_FALSE(find_chart(take(shot, seen)));
}

struct FaultCase {
    const char* name;
    std::function<void(Shot&)> change;
    const char* code;
    bool alone = true;  // no other finding beside it
};

TEST(Capture, TellsEachFault) {
    const CaptureChoices choices = chart_of_spectra();
    const auto seen = spectra().seen_by("camera_a6400", spectra().column("light_D65"));
    const FaultCase cases[] = {
        {"honest", [](Shot&) {}, ""},
        {"overexposed", [](Shot& s) { s.exposure *= 1.6; }, "P117", false},
        {"gamma of a screen", [](Shot& s) { s.gamma = 0.45; }, "P112", false},
        {"gamma of a film", [](Shot& s) { s.gamma = 0.62; }, "P112", false},
        {"glare", [](Shot& s) { s.glare = 0.02; }, "P114", false},
        {"noisy", [](Shot& s) { s.noise = 0.08; }, "P116"},
        {"uneven", [](Shot& s) { s.slope_of_light = 0.3; }, "P118", false},
        {"thumb", [](Shot& s) { s.covered = 7; }, "P111", false},
        {"thumb on half", [](Shot& s) { s.covered = 2, s.covered_share = 0.5; }, "P111", false},
    };
    for (const FaultCase& each : cases) {
        Shot shot;
        shot.exposure = exposure_for(seen);
        shot.noise = 0.005;
        each.change(shot);
        const Taken taken = study(take(shot, seen), {}, shot.corners, choices);
        ASSERT_TRUE(taken.light) << each.name << '\n' << taken.text;
        const std::set<std::string> wanted =
            *each.code == '\0' ? std::set<std::string>{} : std::set<std::string>{each.code};
        EXPECT_TRUE(
            std::includes(taken.codes.begin(), taken.codes.end(), wanted.begin(), wanted.end()))
            << each.name << '\n'
            << taken.text;
        if (each.alone) {
            EXPECT_EQ(taken.codes, wanted) << each.name << '\n' << taken.text;
        }
    }
}

TEST(Capture, NamesTheCoveredPatchAndGoesOnWithoutIt) {
    CaptureChoices choices = chart_of_spectra();
    const auto seen = spectra().seen_by("camera_5dm2", spectra().column("light_D50"));
    Shot shot;
    shot.exposure = exposure_for(seen);
    shot.covered = 9;
    const Picture picture = take(shot, seen);
    EXPECT_NE(study(picture, {}, shot.corners, choices).text.find("patch 10, purple"),
              std::string::npos);
    choices.weights[9] = 0.0;
    const Taken without = study(picture, {}, shot.corners, choices);
    ASSERT_TRUE(without.light);
    EXPECT_EQ(without.codes, std::set<std::string>{}) << without.text;
    expect_near(*without.light, truth_of(seen, choices), "without purple");
}

TEST(Capture, RefusesCornersWithoutAChart) {
    const CaptureChoices choices = chart_of_spectra();
    const auto seen = spectra().seen_by("camera_d5100", spectra().column("light_D65"));
    Shot shot;
    shot.exposure = exposure_for(seen);
    shot.noise = 0.005;
    const Picture picture = take(shot, seen);
    Quad shifted = shot.corners;
    for (PicturePoint& corner : shifted) corner.x = (corner.x - 60.0) * 0.5 + 10.0;
    const struct {
        const char* name;
        Quad corners;
        std::set<std::string> codes;  // one of them
    } cases[] = {
        {"crossed", {{{70, 60}, {430, 296}, {418, 48}, {61, 281}}}, {"P101"}},
        {"outside", {{{70, 60}, {600, 48}, {600, 296}, {61, 281}}}, {"P101"}},
        {"one point", {{{70, 60}, {70, 60}, {70, 60}, {70, 60}}}, {"P101"}},
        {"half the chart", shifted, {"P110", "P102"}},
        {"surroundings", {{{2, 2}, {44, 2}, {44, 30}, {2, 30}}}, {"P110", "P102"}},
    };
    for (const auto& each : cases) {
        const Taken taken = study(picture, {}, each.corners, choices);
        const bool told = std::any_of(each.codes.begin(), each.codes.end(), [&](const auto& code) {
            return taken.codes.count(code) > 0;
        });
        EXPECT_TRUE(told) << each.name << '\n' << taken.text;
    }
}

TEST(Capture, SeesClippingWithoutAWhiteLevel) {
    const auto seen = spectra().seen_by("camera_d5100", spectra().column("light_D65"));
    Shot shot;
    shot.exposure = 1.6 * exposure_for(seen);
    shot.noise = 0.01;
    Picture picture = take(shot, seen);
    picture.white.reset();
    const Taken taken = study(picture, {}, shot.corners, chart_of_spectra());
    ASSERT_TRUE(taken.light);
    EXPECT_EQ(taken.codes.count("P117"), 1U) << taken.text;
    EXPECT_TRUE(taken.light->pictures[0].white_found);
    EXPECT_EQ(taken.light->pictures[0].white, 16383.0);

    shot.exposure = exposure_for(seen);
    picture = take(shot, seen);
    picture.white.reset();
    EXPECT_EQ(study(picture, {}, shot.corners, chart_of_spectra()).codes,
              std::set<std::string>{"P104"});
}

TEST(Capture, TellsTheOtherEdition) {
    // Camera values that a known matrix turns into the colours of the later chart.
    const ChartReference after = chart_reference(ChartEdition::after_2014);
    std::array<PatchMeasure, kChartPatches> patches;
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        const Rgb& rgb = after.rgb[i];
        patches[i].mean = {0.3 * rgb[0] + 0.2 * rgb[1] + 0.02 * rgb[2],
                           0.1 * rgb[0] + 0.8 * rgb[1] + 0.1 * rgb[2],
                           0.02 * rgb[0] + 0.2 * rgb[1] + 0.4 * rgb[2]};
    }
    Faults faults;
    const CaptureStudy made = study_captures({{"shot", 5000.0, {measured_table("shot", patches)}}},
                                             CaptureChoices{}, faults);
    EXPECT_EQ(codes_of(faults), std::set<std::string>{"P120"}) << faults.text();
    EXPECT_LT(*made.lights[0].other_edition_residual, 0.01);
    // Both editions' figures stand where their makers published them.
    double mean = 0.0;
    const ChartReference before = chart_reference(ChartEdition::before_2014);
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        mean += ciede2000(to_lab(before.rgb[i]), to_lab(after.rgb[i])) / 24.0;
    }
    EXPECT_NEAR(mean, 0.85, 0.01);
}

TEST(Capture, ReadsKelvinFromNames) {
    const struct {
        const char* path;
        std::optional<double> kelvin;
    } cases[] = {
        {"d65_6500k.dng", 6500.0},
        {"shots_300k/a_2856K-2.tif", 2856.0},
        {"2300k", 2300.0},
        {"f11-4000k.flat.png", 4000.0},
        {"d65_65k.dng", std::nullopt},
        {"x4000k.dng", std::nullopt},
        {"4000kb.dng", std::nullopt},
        {"3000k/plain.dng", std::nullopt},
    };
    for (const auto& each : cases) EXPECT_EQ(kelvin_of_name(each.path), each.kelvin) << each.path;
}

TEST(Capture, RefusesTablesByLine) {
    const auto first = [](const Faults& faults) {
        return faults.empty()
                   ? std::string()
                   : faults.list().front().code + ':' + std::to_string(faults.list().front().line);
    };
    const auto corners = [&](const char* text) {
        Faults faults;
        read_corners(text, "corners.csv", faults);
        return first(faults);
    };
    EXPECT_EQ(corners("file,x1,y1\n# a comment\na,b.dng,1,2,3,4,5,6,7,8\n"), "");
    EXPECT_EQ(corners("a.dng,1,2,3,4,5,6,7\n"), "P003:1");
    EXPECT_EQ(corners("a.dng,1,2,3,4,5,6,7,8\nb.dng,1,2,x,4,5,6,7,8\n"), "P003:2");
    EXPECT_EQ(corners(",1,2,3,4,5,6,7,8\n"), "P003:1");
    const auto means = [&](const std::string& text) {
        Faults faults;
        read_patch_means(text, "means.csv", faults);
        return first(faults);
    };
    std::string rows;
    for (int i = 0; i < 24; ++i) rows += "0.1,0.2,0.3\n";
    EXPECT_EQ(means("r,g,b\n" + rows), "");
    EXPECT_EQ(means("r,g\n" + rows), "P002:1");
    EXPECT_EQ(means("r,g,b\n0.1,0.2\n" + rows), "P002:2");
    EXPECT_EQ(means("r,g,b\n" + rows + "1,1,1\n"), "P002:26");
    EXPECT_EQ(means("r,g,b\n1,1,1\n"), "P002:0");
    EXPECT_EQ(means("patch,r,g,b\nlight skin,1,1,1\n"), "P002:2");
}

// ---- files

class CaptureFile : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = std::filesystem::path(testing::TempDir()) /
                  testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(folder_);
        seen_ = spectra().seen_by("camera_5dm2", spectra().column("light_D50"));
        shot_.exposure = exposure_for(seen_);
        shot_.noise = 0.01;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }

    std::filesystem::path folder_;
    Spectra::Camera seen_{};
    Shot shot_;
};

TEST_F(CaptureFile, RawFilesKeepOrderBlackAndWhereLightFalls) {
    for (std::size_t i = 0; i < 8; ++i) {
        Shot shot = shot_;
        shot.width = 320;
        shot.height = 240;
        shot.order = kOrders[i % 4];
        shot.border = i / 4 * 6;
        shot.corners = {{{50, 40}, {290, 40}, {290, 200}, {50, 200}}};
        Picture picture = take(shot, seen_);
        DngTags tags;
        tags.black_cell = {1000, 1020, 1040, 1060};
        tags.orientation = 6;
        write_dng(path("a.dng"), picture, tags);
        const Picture read = read_picture(path("a.dng"), {});
        ASSERT_EQ(read.width, picture.width);
        ASSERT_EQ(read.height, picture.height);
        EXPECT_EQ(read.order, picture.order) << i;
        EXPECT_EQ(read.samples, picture.samples) << i;
        EXPECT_EQ(read.left, picture.left);
        EXPECT_EQ(read.lit_width, picture.lit_width);
        EXPECT_EQ(read.white, picture.white);
        for (std::size_t place = 0; place < 4; ++place) {
            EXPECT_EQ(read.black.at(picture.left + place % 2, picture.top + place / 2),
                      tags.black_cell[place])
                << i << ' ' << place;
        }
    }
    Shot odd = shot_;
    odd.border = 5;  // the mosaic of what is lit is another
    const Picture bordered = take(odd, seen_);
    write_dng(path("c.dng"), bordered);
    const Picture odd_read = read_picture(path("c.dng"), {});
    EXPECT_EQ(odd_read.order, bordered.order);
    EXPECT_EQ(odd_read.samples, bordered.samples);
    EXPECT_GE(odd_read.left, 5U);
    DngTags silent;
    silent.says_white = false;
    write_dng(path("b.dng"), take(shot_, seen_), silent);
    EXPECT_FALSE(read_picture(path("b.dng"), {}).white);
    EXPECT_EQ(read_picture(path("b.dng"), {7.0, 9000.0, ""}).white, 9000.0);
}

TEST_F(CaptureFile, SameAnswerFromRawTiffPngAndTable) {
    const Picture picture = take(shot_, seen_);
    write_dng(path("a_5000k.dng"), picture);
    write_tiff(path("b_5000k.tif"), picture);
    write_tiff(path("c_5000k.tiff"), picture, true);
    write_png(path("d_5000k.png"), picture);
    std::string corners = "file,x1,y1,x2,y2,x3,y3,x4,y4\n";
    for (const char* const name : {"a_5000k.dng", "b_5000k.tif", "c_5000k.tiff", "d_5000k.png"}) {
        corners += name;
        for (const PicturePoint& corner : shot_.corners) {
            corners += ',' + std::to_string(corner.x) + ',' + std::to_string(corner.y);
        }
        corners += '\n';
    }
    write("corners.csv", corners);
    const auto light = [&](const std::string& file) {
        CaptureFiles files;
        files.captures = {path(file)};
        if (!file.ends_with(".csv")) files.corners = path("corners.csv");
        files.pictures = {1024.0, 16383.0, "RGGB"};
        Faults faults;
        const CaptureStudy made = study_capture_files(files, chart_of_spectra(), faults);
        EXPECT_FALSE(faults.has_errors()) << faults.text();
        return made.lights.at(0);
    };
    const LightStudy raw = light("a_5000k.dng");
    std::string table = "r,g,b\n";
    for (const PatchMeasure& patch : raw.patches) {
        for (std::size_t k = 0; k < 3; ++k) {
            char number[40];
            std::snprintf(number, sizeof(number), "%.17g%c", patch.mean[k], k < 2 ? ',' : '\n');
            table += number;
        }
    }
    write("e_5000k.csv", table);
    for (const char* const file :
         {"a_5000k.dng", "b_5000k.tif", "c_5000k.tiff", "d_5000k.png", "e_5000k.csv"}) {
        const LightStudy other = light(file);
        EXPECT_EQ(other.matrix, raw.matrix) << file;  // bit for bit, and when run again
        EXPECT_EQ(other.red_gain, raw.red_gain) << file;
    }
    Shot colors = shot_;
    colors.channels = 3;
    write_tiff(path("b_5000k.tif"), take(colors, seen_));
    expect_near(light("b_5000k.tif"), raw, "three channels");
    write_png(path("d_5000k.png"), take(colors, seen_));
    expect_near(light("d_5000k.png"), raw, "three channels");
}

TEST_F(CaptureFile, DarkAndFlatFramesAndSeveralShotsOfALight) {
    shot_.shading = 0.4;
    Shot flat = shot_;
    flat.is_flat = true;
    Shot dark = shot_;
    dark.is_dark = true;
    std::string corners;
    for (unsigned i = 1; i <= 2; ++i) {
        shot_.seed = i;
        const std::string name = "shot" + std::to_string(i) + "_5000k.tif";
        write_tiff(path(name), take(shot_, seen_));
        corners += name;
        for (const PicturePoint& corner : shot_.corners) {
            corners += ',' + std::to_string(corner.x) + ',' + std::to_string(corner.y);
        }
        corners += '\n';
    }
    write("corners.csv", corners);
    write_tiff(path("flat_5000k.tif"), take(flat, seen_));
    write_tiff(path("dark.tif"), take(dark, seen_));
    CaptureFiles files;
    files.captures = {path("shot1_5000k.tif"), path("shot2_5000k.tif")};
    files.flats = {path("flat_5000k.tif")};
    files.dark = path("dark.tif");  // and no black level is named
    files.corners = path("corners.csv");
    files.pictures.order = "RGGB";
    Faults faults;
    const CaptureStudy made = study_capture_files(files, chart_of_spectra(), faults);
    ASSERT_FALSE(faults.has_errors()) << faults.text();
    ASSERT_EQ(made.lights.size(), 1U);
    EXPECT_EQ(made.lights[0].pictures.size(), 2U);
    expect_near(made.lights[0], truth_of(seen_, chart_of_spectra()), "two shots");

    files.flats = {path("shot1_5000k.tif"), path("flat_4000k.tif")};
    files.captures = {path("shot1_5000k.tif"), path("dark.tif")};
    files.kelvin = {4500.0, 5000.0};
    Faults missing;
    study_capture_files(files, chart_of_spectra(), missing);
    EXPECT_EQ(codes_of(missing).count("P107"), 1U) << missing.text();
    EXPECT_EQ(codes_of(missing).count("P101"), 1U) << missing.text();
}

TEST_F(CaptureFile, RefusesWhatIsNoPicture) {
    Shot shot = shot_;
    shot.width = 160;
    shot.height = 120;
    shot.corners = {{{20, 20}, {140, 20}, {140, 100}, {20, 100}}};
    const Picture picture = take(shot, seen_);
    write_dng(path("whole.dng"), picture);
    write_tiff(path("whole.tif"), picture);
    write_png(path("whole.png"), picture);
    const auto said = [&](const std::string& name, const std::string& bytes) -> std::string {
        try {
            decode_picture(bytes, name, {{}, {}, "RGGB"});
        } catch (const BadInput& error) {
            return error.what();
        }
        return "";
    };
    for (const char* const ending : {".dng", ".tif", ".png"}) {
        const std::string whole = read_text(path("whole" + std::string(ending)), 1U << 24U);
        ASSERT_EQ(said("a" + std::string(ending), whole), "");
        for (const double share : {0.0, 0.001, 0.01, 0.3, 0.7, 0.9}) {
            const auto count = static_cast<std::size_t>(static_cast<double>(whole.size()) * share);
            const std::string message = said("a" + std::string(ending), whole.substr(0, count));
            EXPECT_TRUE(message.starts_with("a" + std::string(ending) + ": ")) << share << message;
            EXPECT_NE(message.find(';'), std::string::npos) << message;  // what to do
        }
    }
    EXPECT_NE(said("a.dng", "just some words").find("not a raw file"), std::string::npos);
    EXPECT_NE(said("a.nef", std::string(5000, '\0')).find("not a raw file"), std::string::npos);
    EXPECT_NE(said("a.tif", "just some words").find("no TIFF"), std::string::npos);
}

}  // namespace
}  // namespace imgtune::workbench
