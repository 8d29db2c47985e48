#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tuning_fixture.h"
#include "workbench/json/findings.h"
#include "workbench/text/shown_text.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/comments.h"
#include "workbench/tuning/starter.h"

namespace imgtune::workbench {
namespace {

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
        {"[700, 512, 1250]", "[100000.000000001, 512, 1250]", "T005", 11, "too many digits"},
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
        {"format:", "---\n---\nformat:", "T001", 1,
         "t.yaml:1: error: holds 2 or more YAML documents"},
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
        check_tables(t, faults);
        if (row.from != std::string("ccm:") && row.from != std::string("blend")) continue;
        for (std::size_t i = found; i < faults.list().size(); ++i) {
            EXPECT_NE(faults.list()[i].path, faults.list()[0].path);
        }
    }
}

TEST(Reader, TellsANulByteWhereverItStandsAndTakesAnyComment) {
    std::string text = edited(kSmall, "format:", "#a: 1\nformat:");
    Faults faults;
    read_yaml(text, "t.yaml", faults);
    EXPECT_TRUE(faults.empty()) << faults.text();
    text.insert(3, 1, '\0');
    read_yaml(text, "t.yaml", faults);
    EXPECT_EQ(faults.text().substr(0, 60),
              "t.yaml:1: error: not readable as YAML: holds a NUL byte [T00");
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

}  // namespace
}  // namespace imgtune::workbench
