#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>

#include "tuning_fixture.h"
#include "workbench/files/tuning_files.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

/// "path=value path=value": a path that ends above the elements means all of them.
void apply(Tuning& t, const std::string& edits) {
    std::istringstream words(edits);
    for (std::string edit; words >> edit;) {
        const std::size_t equals = edit.find('=');
        const std::string top = edit.substr(0, equals);
        bool found = false;
        for (const FieldRef& f : fields()) {
            const std::string path = f.path();
            if (!path.starts_with(top)) continue;
            const std::string rest = path.substr(top.size());
            if (!rest.empty() && rest[0] != '.' && rest[0] != '[') continue;
            f.write_bits(t, static_cast<std::uint32_t>(std::stoll(edit.substr(equals + 1))));
            found = true;
        }
        EXPECT_TRUE(found) << edit;
    }
}

TEST(Check, EachFaultHasItsCodeAndPlace) {
    struct Row {
        const char* edits;
        const char* codes;
        const char* path;  ///< of the first finding
    };
    constexpr Row kRows[] = {
        {"", "", ""},
        {"ccm.i4Method=3", "T101", "ccm.i4Method"},
        {"ccm.i4NumCT=0", "T102", "ccm.i4NumCT"},
        {"ccm.i4NumCT=9", "T102", "ccm.i4NumCT"},
        {"ccm.i4NumCT=2", "T103 T122", "ccm.i4NumCT"},
        {"ccm.i4NumCT=3", "T122", "ccm.i4NumCT"},
        {"ccm.i4NumCT=8", "T123", "ccm.i4NumCT"},
        {"ccm.rows.flash.3=0", "T123", "ccm.rows.flash"},
        {"ccm.rows.normal.2.ct=4000", "T128", "ccm.rows.normal.2.ct"},
        {"ccm.rows.normal.2.ct=0", "", ""},
        {"ccm.rows.normal.1.gain.G=500", "T125", "ccm.rows.normal.1.gain.G"},
        {"ccm.rows.normal.1.gain.R=700", "T104", "ccm.rows.normal.1.gain.R"},
        {"ccm.rows.flash.2.gain.B=980", "T104", "ccm.rows.flash.2.gain.B"},
        {"ccm.rows.normal.0.gain.B=40000", "T101", "ccm.rows.normal.0.gain.B"},
        {"ccm.rows.row3.1.gain.R=-5", "", ""},
        {"ccm.rows.low_light=0", "T105", "ccm.rows.low_light"},
        {"ccm.rows.low_light=0 ccm.i4NumLV=1", "", ""},
        {"ccm.rows.flash=0", "T106", "ccm.rows.flash"},
        {"ccm.rows.flash=0 ccm.i4NumFlash=0", "", ""},
        {"ccm.rows.normal.2.matrix=0", "T107", "ccm.rows.normal.2.matrix"},
        {"ccm.rows.normal.0.matrix[4]=761", "T108", "ccm.rows.normal.0.matrix[3]"},
        {"ccm.i4Method=1 ccm.rCCMPoly22.i4R_STD=0", "T109", "ccm.rCCMPoly22.i4R_STD"},
        {"ccm.i4Method=1 ccm.rCCMPoly22Flash.i4B_STD=300000", "T121",
         "ccm.rCCMPoly22Flash.i4B_STD"},
        {"ccm.i4Method=1 ccm.rCCMPoly22.i4B_AVG=0", "T110", "ccm.rCCMPoly22.i4B_AVG"},
        {"ccm.rCCMPoly22.i4R_STD=0", "", ""},
        {"ccm.i4Method=1 ccm.rCCMPoly22Flash.i4P00[5]=50000000", "T127 T111",
         "ccm.rCCMPoly22Flash"},
        {"caller.int_bits=4", "T114", "caller.int_bits"},
        {"caller.weights=0", "T116", "caller.weights"},
        {"caller.weights[0]=0", "T117", "caller.weights[0]"},
        {"caller.weights[1]=4 caller.weights[2]=4", "", ""},
        {"caller.weights[1]=5 caller.weights[2]=5", "T118", "caller.weights"},
        {"caller.weights[0]=1 caller.weights[1]=0 caller.weights[2]=3", "T119", "caller.weights"},
        {"caller.ct_grid[2]=2850", "T209", "caller.ct_grid[2]"},
        {"caller.ct_grid[4]=100", "T209", "caller.ct_grid[4]"},
        {"color.tuning.flash.u4RatioLV_Th1=91", "T201", "color.tuning.flash.u4RatioLV_Th2"},
        {"color.tuning.normal.u4RatioLV_Th3=90", "T214", "color.tuning.normal.u4RatioLV_Th3"},
        {"color.tuning.normal.u4RatioLV_Th3=90 color.tuning.normal.u4RatioHighLV=16", "", ""},
        {"color.tuning.scene.u4RatioMidLV=256", "T120", "color.tuning.scene.u4RatioMidLV"},
        {"color.tuning.normal.u4OutdoorLV_End=99", "T203", "color.tuning.normal.u4OutdoorLV_Start"},
        {"color.tuning.normal.u4OutdoorLV_End=300", "T101", "color.tuning.normal.u4OutdoorLV_End"},
        {"color.tuning.normal.u4OutdoorBase=0", "T204", "color.tuning.normal.u4OutdoorBase"},
        {"color.tuning.flash.u4OutdoorBase=0", "", ""},
        {"color.tuning.normal.u4OutdoorEnable=0 color.tuning.normal.u4OutdoorBase=0", "", ""},
        {"color.images.scene.3.Saturation.SP1[7]=131", "T207",
         "color.images.scene.3.Saturation.SP1[7]"},
        {"color.tuning.scene.hue_speed=0", "T208", "color.tuning.scene.hue_speed"},
        {"color.tuning.outdoor=0", "", ""},
        {"color.images.normal.4=0", "T211", "color.images.normal.4"},
        {"color.images.flash.1.control.LSP_enable=0", "T212", "color.images.flash.1.control"},
        {"color.images.outdoor.2.Global.S=911", "T213", "color.images.outdoor.2.Global.S"},
        {"color.images.outdoor.2.Global.S=910", "", ""},
        {"color.tuning.flash.u4SatOffset=-286", "T213", "color.images.flash.0.Global.S"},
        {"color.tuning.flash.u4SatOffset=-285", "", ""},
        {"color.images.flash.2.Luma.PY[5]=70", "T216", "color.images.flash.2.Luma.PY[5]"},
        {"color.images.flash.2.Hue.PH[0]=152", "", ""},
        {"color.images.flash.2.Hue.PH[0]=153", "T217", "color.images.flash.2.Hue.PH[0]"},
        {"color.images.flash.2.Hue.PH[0]=104", "", ""},
        {"color.images.flash.2.Hue.PH[0]=103", "T217", "color.images.flash.2.Hue.PH[0]"},
        {"caller.frac_bits=8", "T115", "caller.frac_bits"},
        {"color.tuning.normal.u4OutdoorLV_End=100", "T215",
         "color.tuning.normal.u4OutdoorLV_Start"},
        {"ccm.i4Method=1 ccm.rCCMPoly22.i4R_AVG=900", "T126", "ccm.rCCMPoly22.i4R_AVG"},
        {"ccm.i4Method=1 ccm.rCCMPoly22Flash.i4B_AVG=950", "T126", "ccm.rCCMPoly22Flash.i4B_AVG"},
        {"ccm.i4Method=1 ccm.rCCMPoly22.i4R_STD=140", "T126", "ccm.rCCMPoly22.i4R_STD"},
        {"ccm.i4Method=1 ccm.rCCMPoly22.i4P00=0", "T127", "ccm.rCCMPoly22"},
        {"ccm.rCCMPoly22.i4R_AVG=900", "", ""},
    };
    const Tuning starter = starter_tuning();
    for (const Row& row : kRows) {
        Tuning t = starter;
        apply(t, row.edits);
        Faults faults;
        check_tables(t, faults);
        EXPECT_EQ(codes(faults), row.codes) << row.edits << '\n' << faults.text();
        if (!faults.empty()) {
            EXPECT_EQ(faults.list()[0].path, row.path);
        }
        for (const Fault& f : faults.list()) {
            EXPECT_NE(f.effect, "") << f.code;
            ASSERT_NE(find_rule(f.code), nullptr);
            EXPECT_EQ(f.severity, find_rule(f.code)->severity);
        }
    }
}

TEST(Check, NamesWrongUnits) {
    const auto text_of = [](const Tuning& t) {
        Faults faults;
        check_tables(t, faults);
        return faults.text();
    };
    const auto holds = [](const std::string& text, const char* piece) {
        EXPECT_NE(text.find(piece), std::string::npos) << piece << '\n' << text;
    };
    Tuning terms = starter_tuning();
    terms.ccm.i4Method = 1;
    for (std::int32_t& term : terms.ccm.rCCMPoly22.i4P00) term /= 10000;
    for (std::int32_t& term : terms.ccm.rCCMPoly22.i4P10) term /= 10000;
    holds(text_of(terms),
          "rCCMPoly22.i4P00 is -275, but the tuned matrices of row normal reach or "
          "change by 330: it looks as if its factor 10000 were missing");
    holds(text_of(terms), "rCCMPoly22.i4P10 is 12, but ");

    Tuning gains = starter_tuning();
    for (auto& row : gains.ccm.rCTAWBGain) {
        for (AWB_GAIN_T& gain : row) gain = {2 * gain.i4R, 2 * gain.i4G, 2 * gain.i4B};
    }
    holds(text_of(gains), "gain.G is 1024 in every point: gains that take 1024 as 1.0");
    holds(text_of(gains), "multiply all gains by 512/1024");

    Tuning mired = starter_tuning();
    mired.caller.ct_grid = {435, 350, 250, 200, 154};
    EXPECT_EQ(text_of(mired).find("T101"), std::string::npos);
    holds(text_of(mired), "caller.ct_grid starts with 435: that looks like mired");
    holds(text_of(mired), "[2298, 2857, 4000, 5000, 6493]");
}

TEST(Check, CopiedSlotsAreFoundWhereTheyAreUsed) {
    Tuning t = starter_tuning();
    std::memcpy(t.color[3], t.color[1], sizeof(t.color[3]));
    Faults faults;
    check_tables(t, faults);
    EXPECT_EQ(codes(faults), "T210");
    EXPECT_EQ(faults.list()[0].path, "color.images.outdoor");
    t.pca[0].u4OutdoorEnable = 0;
    Faults unused;
    check_tables(t, unused);
    EXPECT_EQ(unused.text(), "");
}

TEST(Check, FindingsPointIntoTheText) {
    std::string text = write_yaml(starter_tuning(), true);
    const std::size_t at = text.find("[860, 512, 980]");
    text.replace(at, 4, "[690");
    const auto line =
        1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    Faults faults;
    check_tables(read_yaml(text, "t.yaml", faults), faults);
    EXPECT_EQ(faults.text().substr(0, faults.text().find('\n')),
              "t.yaml:" + std::to_string(line) +
                  ": error: ccm.rows.normal.1.gain.R is 690 after "
                  "700; it must rise with the CT [T104]");
    faults.allow({"T104"});
    EXPECT_TRUE(faults.empty());
}

TEST(Check, SamplesAreClean) {
    for (const auto& file : std::filesystem::directory_iterator(IMGTUNE_EXAMPLES)) {
        if (file.path().extension() != ".yaml") continue;
        Faults faults;
        check_tables(load_tuning(file.path().string(), faults), faults);
        EXPECT_EQ(faults.text(), "");
    }
}

}  // namespace
}  // namespace imgtune::workbench
