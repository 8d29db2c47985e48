#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "tuning_fixture.h"
#include "workbench/files/tuning_files.h"
#include "workbench/studies/check.h"
#include "workbench/studies/steepness.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/starter.h"

namespace imgtune::workbench {
namespace {

namespace fs = std::filesystem;

bool same_bits(const Tuning& a, const Tuning& b) {
    return a.name == b.name && a.has_ccm == b.has_ccm && a.has_color == b.has_color &&
           std::memcmp(&a.caller, &b.caller, sizeof(a.caller)) == 0 &&
           std::memcmp(a.kelvin, b.kelvin, sizeof(a.kelvin)) == 0 &&
           std::memcmp(&a.ccm, &b.ccm, sizeof(a.ccm)) == 0 &&
           std::memcmp(a.color, b.color, sizeof(a.color)) == 0 &&
           std::memcmp(a.pca, b.pca, sizeof(a.pca)) == 0;
}

Tuning random_tuning(std::mt19937& random) {
    Tuning t;
    t.name = "odd \"name\": # with {everything}\n\t\\";
    t.has_ccm = t.has_color = true;
    for (const Part part : kParts) {
        for (std::size_t w = 0; w < part_words(part); ++w) {
            store_word(t, part, w, static_cast<std::uint32_t>(random()));
        }
    }
    return t;
}

/// A folder of its own, removed afterwards.
class Folder {
  public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "imgtune-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~Folder() { fs::remove_all(path_); }
    std::string operator/(const char* name) const { return (path_ / name).string(); }

    static void write(const std::string& file, std::string_view bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
    }
    static std::string read(const std::string& file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

  private:
    fs::path path_;
};

// ---- the field table

TEST(Fields, PlacesOfTheStoredFormat) {
    struct Row {
        const char* path;
        Part part;
        std::size_t word;
        unsigned low, width;
    };
    constexpr Row kRows[] = {
        {"caller.ct_grid[4]", Part::caller, 10, 0, 32},
        {"ccm.i4NumCT", Part::ccm, 40, 0, 32},
        {"ccm.rows.flash.2.ct", Part::kelvin, 50, 0, 32},
        {"ccm.rows.normal.0.matrix[0]", Part::ccm, 41, 0, 13},
        {"ccm.rows.row7.7.matrix[7]", Part::ccm, 423, 16, 13},
        {"ccm.rows.low_light.2.gain.B", Part::ccm, 457, 0, 32},
        {"ccm.rCCMPoly22.i4P00[8]", Part::ccm, 699, 0, 32},
        {"ccm.rCCMPoly22Flash.i4P01[8]", Part::ccm, 1101, 0, 32},
        {"color.tuning.outdoor.u4OutdoorBase", Part::color_tuning, 67, 0, 32},
        {"color.images.normal.0.control.LSP_enable", Part::color, 0, 20, 1},
        {"color.images.normal.1.Global.B", Part::color, 121, 16, 11},
        {"color.images.normal.0.Luma.PY[15]", Part::color, 13, 16, 8},
        {"color.images.normal.0.Hue.PH[19]", Part::color, 18, 24, 8},
        {"color.images.normal.0.Saturation.SP2[0]", Part::color, 39, 0, 8},
        {"color.images.normal.0.SGainByY.SGY256[19]", Part::color, 68, 24, 8},
        {"color.images.normal.0.LSP.LSP1[1]", Part::color, 69, 14, 8},
        {"color.images.normal.0.LSP.LSP2[3]", Part::color, 70, 0, 7},
        {"color.images.normal.0.ColorMap.INK_CH", Part::color, 71, 12, 2},
        {"color.images.normal.0.ColorMap.W2.EN", Part::color, 71, 4, 1},
        {"color.images.normal.0.ColorMap.W1.H.PU", Part::color, 72, 10, 10},
        {"color.images.outdoor.4.ColorMap.W3.S.WGTU", Part::color, 2339, 16, 10},
    };
    for (const Row& row : kRows) {
        const BitField at = field(row.path).definition->place(field(row.path).element);
        EXPECT_EQ(field(row.path).record->part, row.part) << row.path;
        EXPECT_EQ(field(row.path).record->first_word + at.word, row.word) << row.path;
        EXPECT_EQ(at.low, row.low) << row.path;
        EXPECT_EQ(at.width, row.width) << row.path;
    }
}

TEST(Fields, EveryBitBelongsToOneFieldOrToNone) {
    std::vector<std::uint32_t> seen[std::size(kParts)];
    for (const Part part : kParts) {
        seen[static_cast<std::size_t>(part)].resize(part_words(part));
    }
    const auto claim = [&](Part part, std::size_t word, std::uint32_t mask,
                           const std::string& who) {
        std::uint32_t& taken = seen[static_cast<std::size_t>(part)].at(word);
        EXPECT_EQ(taken & mask, 0U) << who;
        taken |= mask;
    };
    for (const FieldRef& f : fields()) {
        const BitField at = f.definition->place(f.element);
        claim(f.record->part, f.record->first_word + at.word,
              (0xffffffffU >> (32 - at.width)) << at.low, f.path());
    }
    for (const OpaqueWord& w : opaque_words()) claim(w.part, w.word, w.mask, w.path);
    for (const auto& words : seen) {
        EXPECT_TRUE(std::ranges::all_of(words, [](std::uint32_t w) { return w == 0xffffffff; }));
    }
    EXPECT_EQ(color_fields().size(), 4U + 3 + 16 + 20 + 100 + 100 + 8 + 3 + 9 + 135);
}

// ---- round trips

TEST(RoundTrip, EveryBitSurvivesYamlAndImages) {
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same cases every time
    const Folder folder;
    for (int i = 0; i < 6; ++i) {
        Tuning t = random_tuning(random);
        if (i % 2 == 0) t.caller = {};
        if (i == 4) t.caller.int_bits = 2;  // a codec that does not fill its field
        if (i % 3 == 0) t.color[1][3] = t.color[0][2];
        Faults faults;
        EXPECT_TRUE(same_bits(t, from_yaml(to_yaml(t, i % 2 == 0), faults)));
        EXPECT_EQ(faults.text(), "");
        write_images(folder / "images", t);
        EXPECT_TRUE(same_bits(t, load_tuning(folder / "images", faults)));
        EXPECT_EQ(faults.text(), "");
        check_tuning(t, faults);  // whatever the bits
        find_steepest(t);
    }
}

TEST(RoundTrip, PartsThatAreAbsentStayAbsent) {
    for (const bool ccm : {false, true}) {
        Tuning t = starter_tuning();
        (ccm ? t.has_color : t.has_ccm) = false;
        Faults faults;
        const Tuning yaml = from_yaml(to_yaml(t), faults);
        EXPECT_EQ(yaml.has_ccm, ccm);
        EXPECT_EQ(yaml.has_color, !ccm);
        const Folder folder;
        write_images(folder / "i", t);
        const Tuning images = load_tuning(folder / "i", faults);
        EXPECT_EQ(images.has_ccm, ccm);
        EXPECT_EQ(images.has_color, !ccm);
        EXPECT_EQ(faults.text(), "");
    }
}

TEST(Images, AreLittleEndianRecordsInOrder) {
    Tuning t = starter_tuning();
    t.ccm.i4NumCT = 0x01020304;
    t.color[1][2].u4Word[5] = 0xa1b2c3d4;
    t.pca[3].u4OutdoorBase = 0x11223344;
    const Folder folder;
    write_images(folder / "i", t);
    const auto bytes = [&](const char* name, std::size_t size, std::size_t at) {
        const std::string all = Folder::read(folder / name);
        EXPECT_EQ(all.size(), size) << name;
        return all.substr(at, 4);
    };
    EXPECT_EQ(bytes("i/ccm.bin", 4408, 160), "\x04\x03\x02\x01");
    EXPECT_EQ(bytes("i/color.bin", 9360, 3296), "\xd4\xc3\xb2\xa1");
    EXPECT_EQ(bytes("i/pca.bin", 272, 268), "\x44\x33\x22\x11");
}

TEST(Images, BadFoldersAreReportedAndNothingIsDestroyed) {
    const Folder folder;
    fs::create_directory(folder / "i");
    Faults empty;
    load_tuning(folder / "i", empty);
    EXPECT_NE(empty.text().find("holds no stored images"), std::string::npos);

    Folder::write(folder / "i/ccm.bin", std::string(4407, 'x'));
    Folder::write(folder / "i/pca.bin", std::string(273, 'x'));
    Faults sizes;
    load_tuning(folder / "i", sizes);
    const std::string text = sizes.text();
    for (const char* part :
         {"ccm.bin: error: 4407 bytes long; it must have 4408 (1102 words)",
          "pca.bin: error: more than 272 bytes long", "color.bin: error: missing; "}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << '\n' << text;
    }

    // A colour image that cannot be replaced: the others keep what they held.
    fs::create_directory(folder / "i/color.bin");
    EXPECT_THROW(write_images(folder / "i", starter_tuning()), BadInput);
    EXPECT_EQ(Folder::read(folder / "i/ccm.bin"), std::string(4407, 'x'));
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& file : fs::directory_iterator(folder / "i")) ++files;
    EXPECT_EQ(files, 3U);
}

// ---- documentation

TEST(Docs, HoldTheTablesOfFieldsAndFindings) {
    const std::string file = std::string(IMGTUNE_DOCS) + "/tuning-format.md";
    const std::string text = Folder::read(file);
    std::string updated = text;
    for (const auto& [what, table] :
         {std::pair("fields", describe_fields()), std::pair("findings", describe_rules())}) {
        const std::string begin = fmt::format("<!-- {}: written by tuning_test -->\n", what);
        const std::size_t start = updated.find(begin);
        const std::size_t end = updated.find(fmt::format("<!-- end of {} -->", what));
        ASSERT_TRUE(start != updated.npos && end != updated.npos);
        const std::size_t from = start + begin.size();
        updated.replace(from, end - from, table + '\n');
    }
    if (std::getenv("IMGTUNE_UPDATE_DOCS") != nullptr) Folder::write(file, updated);
    EXPECT_TRUE(Folder::read(file) == updated) << "run tuning_test with IMGTUNE_UPDATE_DOCS=1";
}

}  // namespace
}  // namespace imgtune::workbench
