#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

namespace fs = std::filesystem;

std::string to_yaml(const Tuning& tuning, bool comments = false) {
    return write_yaml(tuning, comments);
}

Tuning from_yaml(const std::string& text, Faults& faults) {
    return read_yaml(text, "t.yaml", faults);
}

bool same_bits(const Tuning& a, const Tuning& b) {
    return a.name == b.name && a.has_ccm == b.has_ccm && a.has_color == b.has_color &&
           std::memcmp(&a.caller, &b.caller, sizeof(a.caller)) == 0 &&
           std::memcmp(&a.ccm, &b.ccm, sizeof(a.ccm)) == 0 &&
           std::memcmp(a.color, b.color, sizeof(a.color)) == 0 &&
           std::memcmp(a.pca, b.pca, sizeof(a.pca)) == 0;
}

Tuning random_tuning(std::mt19937& random) {
    Tuning t;
    t.name = "odd \"name\": # with {everything}\n\t\\";
    t.has_ccm = t.has_color = true;
    for (const Part part : {Part::caller, Part::ccm, Part::color, Part::pca}) {
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
        {"ccm.rows.normal.matrices.0[0]", Part::ccm, 41, 0, 13},
        {"ccm.rows.row7.matrices.7[7]", Part::ccm, 423, 16, 13},
        {"ccm.rows.low_light.gains.2.B", Part::ccm, 457, 0, 32},
        {"ccm.rCCMPoly22.i4P00[8]", Part::ccm, 699, 0, 32},
        {"ccm.rCCMPoly22Flash.i4P01[8]", Part::ccm, 1101, 0, 32},
        {"color.tuning.outdoor.u4OutdoorBase", Part::pca, 67, 0, 32},
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
        const auto found = std::ranges::find(fields(), row.path, &FieldRef::path);
        ASSERT_NE(found, fields().end()) << row.path;
        const BitField at = found->definition->place(found->element);
        EXPECT_EQ(found->record->part, row.part) << row.path;
        EXPECT_EQ(found->record->first_word + at.word, row.word) << row.path;
        EXPECT_EQ(at.low, row.low) << row.path;
        EXPECT_EQ(at.width, row.width) << row.path;
    }
}

TEST(Fields, EveryBitBelongsToOneFieldOrToNone) {
    std::vector<std::uint32_t> seen[4];
    for (const Part part : {Part::caller, Part::ccm, Part::color, Part::pca}) {
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
    for (int i = 0; i < 12; ++i) {
        Tuning t = random_tuning(random);
        if (i % 2 == 0) t.caller = {};
        if (i == 10) t.caller.int_bits = 2;  // a codec that does not fill its field
        const std::string text = to_yaml(t);
        Faults faults;
        EXPECT_TRUE(same_bits(t, from_yaml(text, faults)));
        EXPECT_EQ(faults.text(), "");
        write_images(folder / "images", t);
        EXPECT_TRUE(same_bits(t, load_tuning(folder / "images", faults)));
        EXPECT_EQ(faults.text(), "");
        check_tuning(t, faults);  // whatever the bits
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
    EXPECT_NE(empty.text().find("no stored images"), std::string::npos);

    Folder::write(folder / "i/ccm.bin", std::string(4407, 'x'));
    Folder::write(folder / "i/pca.bin", std::string(273, 'x'));
    Faults sizes;
    load_tuning(folder / "i", sizes);
    const std::string text = sizes.text();
    for (const char* part : {"ccm.bin: error: wrong size: 4407 bytes", "4408 bytes",
                             "wrong size: more than 272 bytes", "color.bin: error: missing file"}) {
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

// ---- faults of the text

/// The starter with one piece of its text replaced.
std::string edited(const std::string& from, const std::string& to) {
    static const std::string text = to_yaml(starter_tuning(), true);
    std::string out = text;
    const std::size_t at = out.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? out : out.replace(at, from.size(), to);
}

int line_with(const std::string& text, const std::string& piece) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(text.find(piece));
    return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

std::string codes(const Faults& faults) {
    std::string list;
    for (const Fault& f : faults.list()) list += (list.empty() ? "" : " ") + f.code;
    return list;
}

TEST(Reader, ReportsFaultsWithLineAndSuggestion) {
    struct Row {
        const char* from;
        const char* to;
        const char* marker;  ///< stands in the faulty line
        const char* codes;
        const char* shows;
    };
    const Row kRows[] = {
        {"format: imgtune-tuning/1", "format: imgtune-tuning/9", "format:", "T002",
         "imgtune-tuning/1"},
        {"  i4NumCT: 4", "  i4NumCt: 4", "i4NumCt", "T003 T004", "did you mean 'i4NumCT'?"},
        {"    low_light:", "    lowlight:", "lowlight", "T003", "did you mean 'low_light'?"},
        {"hue_speed: 2", "lum_speed: 2", "lum_speed: 2", "T009 T004", "stands twice"},
        {"i4PQType: 0", "i4PQType: none", "i4PQType", "T005", "none"},
        {"i4PQType: 0", "i4PQType: 1.5", "i4PQType", "T005", "1.5"},
        {"i4PQType: 0", "i4PQType: [0]", "i4PQType", "T005", "a list of 1"},
        {"i4PQType: 0", "i4PQType: 2147483648", "i4PQType", "T007", "-2147483648..2147483647"},
        {"i4PQType: 0", "i4PQType: 99999999999999999999", "i4PQType", "T005", "not an integer"},
        {"BYPASS: 1", "BYPASS: 2", "BYPASS: 2", "T007", "0..1"},
        {"LSP1: [16, 32, 48, 64]", "LSP1: [128, 255, 256, -1]", "LSP1: [128", "T007 T007 T007",
         "0..127"},
        {"[700, 512, 1250]", "[700, 512]", "[700, 512]", "T006", "a list of 3 integers"},
        {"[832, -230, -90,", "[832, -4096, -90,", "-4096", "T008", "the camera would read 4096"},
        {"[832, -230, -90,", "[4097, -230, -90,", "4097", "T008", "-4095..4096"},
        {"[832, -230, -90,", "[832, 0x2000, -90,", "0x2000", "T007", "0..8191"},
        {"weights: [2, 1, 1]", "weights: {a: 1}", "weights", "T005", "a list of 3 integers"},
        {"Global:\n", "Gloobal:\n", "Gloobal", "T003 T004", "did you mean 'Global'?"},
        {"ccm:\n", "ccm:\n  other_bits: {1: 0x1, 37: 0x1, 41: 0xe000, 9999: 1}\n", "37: 0x1",
         "T011 T011", "named field"},
        {"ccm:\n", "ccm: &a\n  <<: *a\n", "<<", "T013", "16 levels"},
        {"ccm:\n", "ccm:\n\t- x\n", "\t- x", "T001", "not readable as YAML"},
        {"format: imgtune-tuning/1", "- a\n- b", "- a", "T001", "number of YAML documents"},
    };
    for (const Row& row : kRows) {
        const std::string text = edited(row.from, row.to);
        Faults faults;
        from_yaml(text, faults);
        EXPECT_EQ(codes(faults), row.codes) << row.to << '\n' << faults.text();
        ASSERT_FALSE(faults.empty()) << row.to;
        if (row.codes != std::string("T001")) {
            EXPECT_EQ(faults.list()[0].line, line_with(text, row.marker)) << faults.text();
        }
        EXPECT_NE(faults.text().find(row.shows), std::string::npos) << faults.text();
        EXPECT_EQ(faults.list()[0].file, "t.yaml");
    }
}

TEST(Reader, OddTextsAreFaultsAndNothingElse) {
    for (const char* text : {"", "~", "[]", "x", "{}", "format: imgtune-tuning/1", "a: &a [*a]",
                             "---\n---\n", "\x01\xff\xfe", "{ccm: 1, color: 2}", "ccm: {rows: []}",
                             "color: {images: {normal: [~, ~, ~, ~, ~]}}", "? [a]\n: b\n",
                             "ccm: &a {rows: *a, <<: [*a, 1]}"}) {
        Faults faults;
        from_yaml(text, faults);
        EXPECT_TRUE(faults.has_errors()) << text;
    }
}

TEST(Reader, MergeKeysTakeOverWhatAnImageLeavesOut) {
    // The second normal image: the first one with another hue.
    std::string text = to_yaml(starter_tuning());
    const std::size_t first = text.find("      - control:", text.find("  images:"));
    const std::size_t second = text.find("      - control:", first + 1);
    const std::size_t third = text.find("      - control:", second + 1);
    text.replace(second, third - second, "      - {<<: *first, Global: {<<: *g, C: 9}}\n");
    text.replace(text.find("Global: {", first), 9, "Global: &g {");
    text.replace(first, 8, "      - &first\n        ");
    Faults faults;
    const Tuning t = from_yaml(text, faults);
    EXPECT_EQ(faults.text(), "");
    NSIspTuning::ISP_NVRAM_COLOR_T expected = starter_tuning().color[0][0];
    expected.u4Word[4] = (1024U << 16U) | 9U;
    EXPECT_EQ(std::memcmp(&t.color[0][1], &expected, sizeof(expected)), 0);
}

// ---- what is wrong on the camera

TEST(Check, StarterHasNoFindings) {
    for (const bool comments : {false, true}) {
        Faults faults;
        const Tuning t = from_yaml(to_yaml(starter_tuning(), comments), faults);
        check_tuning(t, faults);
        EXPECT_EQ(faults.text(), "");
    }
}

struct Edit {
    const char* path;
    std::int64_t value;
};

void apply(Tuning& t, const Edit& edit) {
    bool found = false;
    for (const FieldRef& f : fields()) {
        // A path that ends above the elements means all of them.
        const std::string path = f.path();
        if (!path.starts_with(edit.path)) continue;
        const std::string rest = path.substr(std::strlen(edit.path));
        if (!rest.empty() && rest[0] != '.' && rest[0] != '[') continue;
        f.write_bits(t, static_cast<std::uint32_t>(edit.value));
        found = true;
    }
    EXPECT_TRUE(found) << edit.path;
}

TEST(Check, EachFaultHasItsCodeAndPlace) {
    struct Row {
        std::vector<Edit> edits;
        const char* codes;
        const char* path;  ///< of the first finding
    };
    const std::vector<Row> kRows = {
        {{{"ccm.i4Method", 3}}, "T101", "ccm.i4Method"},
        {{{"ccm.i4NumCT", 0}}, "T102", "ccm.i4NumCT"},
        {{{"ccm.i4NumCT", 9}}, "T102", "ccm.i4NumCT"},
        {{{"ccm.i4NumCT", 2}}, "T103", "ccm.i4NumCT"},
        {{{"ccm.i4NumCT", 2}, {"ccm.i4Method", 1}}, "", ""},
        {{{"ccm.rows.normal.gains.1.R", 700}}, "T104", "ccm.rows.normal.gains.1.R"},
        {{{"ccm.rows.flash.gains.2.B", 980}}, "T104", "ccm.rows.flash.gains.2.B"},
        {{{"ccm.rows.normal.gains.0.B", 40000}}, "T101", "ccm.rows.normal.gains.0.B"},
        {{{"ccm.rows.row3.gains.1.R", -5}}, "", ""},
        {{{"ccm.rows.low_light.gains", 0}}, "T105", "ccm.rows.low_light"},
        {{{"ccm.rows.low_light.gains", 0}, {"ccm.i4NumLV", 1}}, "", ""},
        {{{"ccm.rows.flash.matrices", 0}}, "T106", "ccm.rows.flash"},
        {{{"ccm.rows.flash", 0}, {"ccm.i4NumFlash", 0}}, "", ""},
        {{{"ccm.rows.normal.matrices.2", 0}}, "T107", "ccm.rows.normal.matrices.2"},
        {{{"ccm.rows.normal.matrices.0[4]", 761}}, "T108", "ccm.rows.normal.matrices.0[3]"},
        {{{"ccm.rows.normal.matrices.0[3]", 67}, {"ccm.rows.normal.matrices.0[4]", 505}},
         "T112",
         "ccm.rows.normal.matrices.1[4]"},
        {{{"ccm.i4Method", 1}, {"ccm.rCCMPoly22.i4R_STD", 0}}, "T109", "ccm.rCCMPoly22.i4R_STD"},
        {{{"ccm.i4Method", 1}, {"ccm.rCCMPoly22Flash.i4B_STD", 300000}},
         "T109",
         "ccm.rCCMPoly22Flash.i4B_STD"},
        {{{"ccm.i4Method", 1}, {"ccm.rCCMPoly22.i4B_AVG", -1}}, "T110", "ccm.rCCMPoly22.i4B_AVG"},
        {{{"ccm.rCCMPoly22.i4R_STD", 0}}, "", ""},
        {{{"ccm.i4Method", 1}, {"ccm.rCCMPoly22Flash.i4P00[5]", 50000000}},
         "T111 T111",
         "ccm.rCCMPoly22Flash"},
        {{{"caller.int_bits", 4}}, "T114", "caller.int_bits"},
        {{{"caller.weights", 0}}, "T116", "caller.weights"},
        {{{"caller.weights[0]", 0}}, "T117", "caller.weights[0]"},
        {{{"caller.ct_grid[2]", 2850}}, "T209", "caller.ct_grid[2]"},
        {{{"caller.ct_grid[4]", 100}}, "T101 T209", "caller.ct_grid[4]"},
        {{{"color.tuning.flash.u4RatioLV_Th1", 91}}, "T201", "color.tuning.flash.u4RatioLV_Th2"},
        {{{"color.tuning.normal.u4RatioLV_Th3", 90}}, "T201", "color.tuning.normal.u4RatioLV_Th3"},
        {{{"color.tuning.normal.u4RatioLV_Th3", 90}, {"color.tuning.normal.u4RatioHighLV", 16}},
         "",
         ""},
        {{{"color.tuning.scene.u4RatioMidLV", 256}}, "T101", "color.tuning.scene.u4RatioMidLV"},
        {{{"color.tuning.normal.u4OutdoorLV_End", 99}},
         "T203",
         "color.tuning.normal.u4OutdoorLV_Start"},
        {{{"color.tuning.normal.u4OutdoorLV_End", 300}},
         "T101",
         "color.tuning.normal.u4OutdoorLV_End"},
        {{{"color.tuning.normal.u4OutdoorBase", 0}}, "T204", "color.tuning.normal.u4OutdoorBase"},
        {{{"color.tuning.flash.u4OutdoorBase", 0}}, "", ""},
        {{{"color.tuning.normal.u4OutdoorEnable", 0}, {"color.tuning.normal.u4OutdoorBase", 0}},
         "",
         ""},
        {{{"color.images.scene.3.Saturation.SP1[7]", 131}},
         "T207",
         "color.images.scene.3.Saturation.SP1[7]"},
        {{{"color.tuning.scene.hue_speed", 0}}, "T208", "color.tuning.scene.hue_speed"},
        {{{"color.tuning.outdoor", 0}}, "", ""},
        {{{"color.images.normal.4", 0}}, "T211", "color.images.normal.4"},
        {{{"color.images.flash.1.control.LSP_enable", 0}}, "T212", "color.images.flash.1.control"},
        {{{"color.images.outdoor.2.Global.S", 911}}, "T213", "color.images.outdoor.2.Global.S"},
        {{{"color.images.outdoor.2.Global.S", 910}}, "", ""},
        {{{"color.tuning.flash.u4SatOffset", -286}}, "T213", "color.images.flash.0.Global.S"},
        {{{"color.tuning.flash.u4SatOffset", -285}}, "", ""},
    };
    for (const Row& row : kRows) {
        Tuning t = starter_tuning();
        for (const Edit& edit : row.edits) apply(t, edit);
        Faults faults;
        check_tuning(t, faults);
        EXPECT_EQ(codes(faults), row.codes) << row.edits[0].path << '\n' << faults.text();
        if (!faults.empty()) {
            EXPECT_EQ(faults.list()[0].path, row.path);
        }
        for (const Fault& f : faults.list()) EXPECT_NE(f.effect, "") << f.code;
    }
}

TEST(Check, CopiedSlotsAreFoundWhereTheyAreUsed) {
    Tuning t = starter_tuning();
    std::memcpy(t.color[3], t.color[1], sizeof(t.color[3]));
    Faults faults;
    check_tuning(t, faults);
    EXPECT_EQ(codes(faults), "T210");
    EXPECT_EQ(faults.list()[0].path, "color.images.outdoor");
    t.pca[0].u4OutdoorEnable = 0;
    Faults unused;
    check_tuning(t, unused);
    EXPECT_EQ(unused.text(), "");
}

TEST(Check, FindingsPointIntoTheTextAndDoNotRepeatTheReader) {
    const std::string text = edited("[860, 512, 980]", "[690, 512, 980]");
    Faults faults;
    check_tuning(from_yaml(text, faults), faults);
    ASSERT_EQ(codes(faults), "T104");
    EXPECT_EQ(faults.list()[0].line, line_with(text, "[690, 512, 980]"));
    EXPECT_TRUE(faults.text().starts_with("t.yaml:" + std::to_string(faults.list()[0].line) +
                                          ": error: ccm.rows.normal.gains.1.R: "));

    // The missing count is the finding, not the zero that stands for it.
    Faults missing;
    check_tuning(from_yaml(edited("  i4NumCT: 4", "  #"), missing), missing);
    EXPECT_EQ(codes(missing), "T004");
}

TEST(Faults, TextAndJsonAreSafeForAnyBytes) {
    Faults faults;
    faults.add({.code = "T003",
                .file = "f",
                .line = 3,
                .path = "a",
                .message = "m",
                .value = "\033[31m\xff" + std::string(500, 'x')});
    EXPECT_EQ(faults.text().find('\033'), std::string::npos);
    EXPECT_LT(faults.text().size(), 300U);
    EXPECT_NE(faults.json().find("\"line\": 3"), std::string::npos);
}

// ---- documentation

TEST(Docs, DescribeTheTableOfFields) {
    const std::string file = std::string(IMGTUNE_DOCS) + "/tuning-format.md";
    const std::string text = Folder::read(file);
    const std::string begin = "<!-- fields: written by tuning_test -->\n";
    const std::size_t start = text.find(begin);
    const std::size_t end = text.find("<!-- end of fields -->");
    ASSERT_TRUE(start != text.npos && end != text.npos);
    const std::size_t from = start + begin.size();
    const std::string expected = describe_fields() + '\n';
    if (std::getenv("IMGTUNE_UPDATE_DOCS") != nullptr) {
        Folder::write(file, text.substr(0, from) + expected + text.substr(end));
        return;
    }
    EXPECT_EQ(text.substr(from, end - from), expected)
        << "run tuning_test with IMGTUNE_UPDATE_DOCS=1";
}

}  // namespace
}  // namespace imgtune::workbench
