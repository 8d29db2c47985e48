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
#include "workbench/json/findings.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/shown_text.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/comments.h"
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

// ---- the text

/// A small tuning without faults: lines that a case replaces or adds to.
constexpr const char* kSmall = R"(format: imgtune-tuning/2
caller: {int_bits: 3, frac_bits: 9, weights: [2, 1, 1]}
ccm:
  i4Method: blend
  i4PQType: 0
  i4NumLV: 1
  i4NumFlash: 0
  i4NumCT: 1
  rows:
    normal:
      - {ct: 2850, gain: [700, 512, 1250], matrix: [832, -230, -90, -190, 762, -60, -40, -330, 882]}
)";

std::string edited(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(Reader, ReportsEachFaultOnceInASentenceWithItsLine) {
    struct Row {
        const char* from;
        const char* to;
        const char* codes;
        int line;
        const char* says;
    };
    const Row kRows[] = {
        {"tuning/2", "tuning/9", "T002", 1,
         "format is imgtune-tuning/9; allowed are imgtune-tuning/2 and imgtune-tuning/1"},
        {"i4NumLV: 1", "i4NumLv: 1", "T003 T004", 6, "did you mean 'i4NumLV'?"},
        {"i4NumLV: 1", "i4NumLV: 1\n  i4NumLV: 2", "T009", 7,
         "stands twice; the first is in line 6"},
        {"i4NumLV: 1", "#", "T004", 4, "ccm.i4NumLV is missing; allowed are 1..8"},
        {"blend", "mix", "T005", 4, "ccm.i4Method is mix; allowed are 1, polynomial, and 2, blend"},
        {"i4PQType: 0", "i4PQType: 1.5", "T005", 5, "is 1.5, which is no whole number"},
        {"i4PQType: 0", "i4PQType: [0]", "T005", 5, "is a list of 1; allowed are 0, none, 1, "},
        {"i4NumCT: 1", "i4NumCT: 010", "T005", 8, "is 010, which looks octal"},
        {"i4NumCT: 1", "i4NumCT: 2147483648", "T007", 8, "allowed are 1..8"},
        {"[700, 512, 1250]", "[700, 512]", "T006", 11,
         "gain is a list of 2; it must be a list of 3"},
        {"[700, 512, 1250]", "[700, 1/0, 1250]", "T005", 11, "gain.G is 1/0, which divides by 0"},
        {"[832, -230,", "[832, -4096,", "T008", 11, "it wraps: the camera would read 4096"},
        {"[832, -230,", "[832, 8.01,", "T008", 11, "matrix[1] is 4101; allowed are -4095..4096"},
        {"[832, -230,", "[832, 0x2000,", "T007", 11, "or 0x0..0x1fff as stored"},
        {"frac_bits: 9", "frac_bits: 3", "T008", 11, "7 coefficients do not fit their fields"},
        {"int_bits: 3", "int_bits: 4", "T114", 2, "caller.int_bits is 4, with frac_bits 9"},
        {"int_bits: 3", "int_bits: x", "T005", 2, "caller.int_bits is x; allowed are 0..12"},
        {"[2, 1, 1]", "{a: 1}", "T005", 2, "caller.weights is a map; it must be a list of 3"},
        {"ccm:", "ccm:\n  other_bits: {1: 0x1, 37: 0x1, 41: 0xe000, 9999: 1}", "T011 T011", 4,
         "ccm.other_bits.37 is 0x1: bits of a named field"},
        {"ccm:", "ccm: &a\n  <<: *a", "T013", 4, "nested too deep"},
        {"ccm:", "ccm:\n\t- x", "T001", 4, "not readable as YAML"},
        {"format:", "---\n---\nformat:", "T001", 1, "holds 2 or more YAML documents"},
        {"ccm:",
         "color: {tuning: {normal: {like: outdoor}, scene: {like: scene2}, flash: {like: "
         "normal}, outdoor: {like: flash}}}\nccm:",
         "T014 T004 T014", 3, "did you mean 'scene'?"},
        {"ccm:", "color: {tuning: {normal: {like: outdoor}}}\nccm:", "T004 T004 T004 T004", 3,
         "color.tuning.outdoor is missing"},
    };
    for (const Row& row : kRows) {
        Faults faults;
        Tuning t = read_yaml(edited(kSmall, row.from, row.to), "t.yaml", faults);
        EXPECT_EQ(codes(faults), row.codes) << row.to << '\n' << faults.text();
        ASSERT_FALSE(faults.empty()) << row.to;
        EXPECT_EQ(faults.list()[0].line, row.line) << faults.text();
        EXPECT_EQ(faults.list()[0].file, "t.yaml");
        EXPECT_NE(faults.text().find(row.says), std::string::npos) << faults.text();
        // What was not read has no consequences.
        const std::size_t found = faults.list().size();
        check_tuning(t, faults);
        if (row.from != std::string("ccm:") && row.from != std::string("blend")) continue;
        for (std::size_t i = found; i < faults.list().size(); ++i) {
            EXPECT_NE(faults.list()[i].path, faults.list()[0].path);
        }
    }
}

TEST(Reader, TakesNumbersAsTheyAreWritten) {
    struct Row {
        const char* from;
        const char* to;
        const char* path;
        std::int64_t value;
    };
    constexpr Row kRows[] = {
        {"gain: [700", "gain: [1.53", "ccm.rows.normal.0.gain.R", 783},  // 783.36
        {"gain: [700", "gain: [512/512", "ccm.rows.normal.0.gain.R", 512},
        {"gain: [700", "gain: [0.0009765625", "ccm.rows.normal.0.gain.R", 700},  // too many digits
        {"gain: [700", "gain: [1025/1024", "ccm.rows.normal.0.gain.R", 513},     // 512.5
        {"gain: [700", "gain: [-1.0", "ccm.rows.normal.0.gain.R", -512},
        {"gain: [700", "gain: [0x2bc", "ccm.rows.normal.0.gain.R", 700},
        {"matrix: [832", "matrix: [-1025/1024", "ccm.rows.normal.0.matrix[0]", -513},
        {"matrix: [832", "matrix: [0x1fff", "ccm.rows.normal.0.matrix[0]", -1},
        {"matrix: [832", "matrix: [8.0", "ccm.rows.normal.0.matrix[0]", 4096},
        {"i4PQType: 0", "i4PQType: wide_green", "ccm.i4PQType", 2},
        {"i4Method: blend", "i4Method: 1", "ccm.i4Method", 1},
        {"ct: 2850", "ct: 6500", "ccm.rows.normal.0.ct", 6500},
    };
    for (const Row& row : kRows) {
        Faults faults;
        Tuning t;
        t.ccm.rCTAWBGain[0][0].i4R = 700;
        t = read_yaml(edited(kSmall, row.from, row.to), "t.yaml", faults);
        const bool refused = std::string(row.to).find("0.0009765625") != std::string::npos;
        EXPECT_EQ(faults.empty(), !refused) << faults.text();
        if (!refused) {
            EXPECT_EQ(field(row.path).read(t), row.value) << row.to;
        }
    }
}

TEST(Reader, OddTextsAreFaultsAndNothingElse) {
    for (const char* text : {"", "~", "[]", "x", "{}", "format: imgtune-tuning/2", "a: &a [*a]",
                             "---\n---\n", "\x01\xff\xfe", "{ccm: 1, color: 2}", "ccm: {rows: []}",
                             "color: {images: {normal: [~, ~, ~, ~, ~]}}", "? [a]\n: b\n",
                             "ccm: &a {rows: *a, <<: [*a, 1]}"}) {
        Faults faults;
        read_yaml(text, "t.yaml", faults);
        EXPECT_TRUE(faults.has_errors()) << text;
    }
}

TEST(Reader, TakesTheFirstVersionAndMergeKeys) {
    const char* const text = R"(format: imgtune-tuning/1
ccm: {i4Method: 2, i4PQType: 1, i4NumLV: 1, i4NumFlash: 0, i4NumCT: 2, rows: {low_light: {
  gains: [[600, 512, 1200], [760, 512, 960]],
  matrices: [[512, 0, 0, 0, 512, 0, 0, 0, 512], [0, 512, 0, 512, 0, 0, 0, -1, 513]]}},
  rCCMPoly22: &p {i4R_AVG: 1, i4R_STD: 2, i4B_AVG: 3, i4B_STD: 4, i4P00: [1, 2, 3, 4, 5, 6, 7, 8, 9],
    i4P10: &z [0, 0, 0, 0, 0, 0, 0, 0, 0], i4P01: *z},
  rCCMPoly22Flash: {<<: *p, i4R_STD: 7}}
)";
    Faults faults;
    const Tuning t = read_yaml(text, "t.yaml", faults);
    EXPECT_EQ(faults.text(), "");
    EXPECT_EQ(t.ccm.rCTAWBGain[1][1].i4R, 760);
    EXPECT_EQ(t.ccm.rCCM_Nvram[1][1].u4Word[4], 0x1fff0000U);  // coefficients 6 and 7
    EXPECT_EQ(t.ccm.rCCMPoly22Flash.i4R_STD, 7);
    EXPECT_EQ(t.ccm.rCCMPoly22Flash.i4P00[8], 9);
}

TEST(Like, TakesOverEveryBitAndReplacesWhatIsNamed) {
    Tuning t = starter_tuning();
    t.color[0][1] = t.color[0][0];
    t.color[0][1].u4Word[0] = 0x80100000;  // a bit of no field, and LSP_enable
    t.color[0][1].u4Word[4] = (1024U << 16U) | 9U;
    t.color[0][2] = t.color[0][1];
    const std::string text = to_yaml(t);
    EXPECT_NE(text.find("      - like: normal.0\n"
                        "        Global: {C: 9}\n"
                        "        other_bits:\n"
                        "          0: 0x80000000\n"
                        "      - like: normal.1\n"
                        "      - like: normal.0\n"),
              std::string::npos)
        << text;
    Tuning alike = t;
    alike.color[0][3] = alike.color[0][2];
    EXPECT_NE(to_yaml(alike).find("      - like: normal.1\n      - like: normal.1\n"),
              std::string::npos)
        << "the first of those that are equally near";
    Faults faults;
    // The base may follow.
    const std::string moved = edited(edited(text, "like: normal.1\n", "like: scene.4\n"),
                                     "like: normal.0\n", "like: normal.2\n");
    const Tuning read = from_yaml(moved, faults);
    EXPECT_EQ(faults.text(), "");
    NSIspTuning::ISP_NVRAM_COLOR_T expected = starter_tuning().color[1][4];
    EXPECT_EQ(std::memcmp(&read.color[0][2], &expected, sizeof(expected)), 0);
    expected.u4Word[0] = 0x80100000;
    expected.u4Word[4] = (1024U << 16U) | 9U;
    EXPECT_EQ(std::memcmp(&read.color[0][1], &expected, sizeof(expected)), 0);
}

TEST(Comments, KnowWhatIsQuotedAndWhatIsLost) {
    const char* const text =
        "# head\n\n# more\nname: it's # one\na: 'x # no' # two\nb: \"\\\" # no\" #three\nc: d#no\n";
    EXPECT_EQ(head_comments(text), "# head\n\n# more\n");
    std::string found;
    for (const Comment& c : comments_of(text)) found += fmt::format("{}{};", c.line, c.text);
    EXPECT_EQ(found, "1# head;3# more;4# one;5# two;6#three;");
    const std::vector<Comment> lost = lost_comments(text, "# head\n# more\n #three\n");
    ASSERT_EQ(lost.size(), 2U);
    EXPECT_EQ(lost[1].text, "# two");
}

TEST(ShownText, IsFitForATerminalWhateverTheBytes) {
    struct Row {
        std::string text;
        const char* shown;
    };
    const Row kRows[] = {
        {"T\xc3\xbcr \xe2\x82\xac \xf0\x9f\x93\xb7", "T\xc3\xbcr \xe2\x82\xac \xf0\x9f\x93\xb7"},
        {"\033[31m\n\x7f", "\\x1b[31m\\x0a\\x7f"},
        {"\xff\xc3", "\\xff\\xc3"},
        {"\xc0\xaf\xed\xa0\x80", "\\xc0\\xaf\\xed\\xa0\\x80"},  // too long a form, half a pair
        {"\xc2\x9b\xe2\x80\xae", "\\xc2\\x9b\\xe2\\x80\\xae"},  // control, right to left
    };
    for (const Row& row : kRows) EXPECT_EQ(shown_text(row.text), row.shown);
    EXPECT_EQ(shown_text("abc\xc3\xbc", 4), "abc...");
}

TEST(Faults, TextAndJsonAreSafeForAnyBytes) {
    Faults faults;
    faults.add({.code = "T003",
                .file = "f\033",
                .line = 3,
                .path = "a\xff",
                .message = "is \033[31m",
                .value = "\xff" + std::string(500, 'x')});
    EXPECT_EQ(faults.text(), "f\\x1b:3: error: a\\xff is \\x1b[31m [T003]\n");
    const auto finding = to_json(faults)["findings"][0];
    EXPECT_EQ(finding["line"], 3);
    EXPECT_EQ(finding["message"], "a\\xff is \\x1b[31m");
    EXPECT_EQ(finding["value"].get<std::string>().size(), 86U);
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
