#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "tests/workbench/sample_tuning.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/locus.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/row_writer.h"
#include "workbench/files/tuning_files.h"
#include "workbench/frames/frame_check.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {
namespace {

namespace fs = std::filesystem;

/// A folder of its own for each test.
class Replay : public testing::Test {
  protected:
    Replay() : folder_(fs::temp_directory_path() / ("imgtune_" + std::to_string(getpid()))) {
        fs::create_directory(folder_);
    }
    ~Replay() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return folder_ / name; }

    std::string file(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    std::string content(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(path(name), std::ios::binary).rdbuf();
        return text.str();
    }

    std::size_t files() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    std::vector<Frame> read_all(const std::string& text) const {
        FrameFile frame_file(file("log.csv", text));
        FrameLog& log = frame_file.log();
        std::vector<Frame> frames;
        for (Frame frame; log.next(frame);) frames.push_back(frame);
        return frames;
    }

    /// Runs a verb as the program would; what BadInput says, or empty.
    std::string run(std::vector<std::string> arguments) const {
        CLI::App app;
        std::function<int()> chosen;
        cli::add_replay(cli::Verbs(app, chosen));
        std::ranges::reverse(arguments);
        app.parse(arguments);
        try {
            chosen();
        } catch (const BadInput& error) {
            return error.what();
        }
        return {};
    }

  private:
    fs::path folder_;
};

std::vector<Frame> make_walk(std::size_t count) {
    std::vector<Frame> frames;
    for (std::size_t i = 0; i < count; ++i) {
        const auto n = static_cast<int>(i);
        Frame frame =
            make_frame(static_cast<std::uint32_t>(10 + n % 120),
                       static_cast<std::uint32_t>(2300 + 17 * n), {550 + 3 * n, 512, 1450 - 3 * n});
        frame.state.u4SceneFlag = n % 40 > 30 ? 1 : 0;
        frame.state.u4FlashMode = n % 50 > 45 ? 1 : 0;
        frames.push_back(frame);
    }
    return frames;
}

const std::string kHeader = "lv,cct,awb_r,awb_g,awb_b\n";

TEST_F(Replay, ReaderTakesColumnsInAnyOrderAndFillsInTheRest) {
    const auto frames = read_all(
        "\xef\xbb\xbf# walk\r\n\r\nawb_b, awb_g ,\"awb_r\",x_note,cct,lv,frame,capture\r\n"
        "3,2,1,who knows,5000,-1,1,1\r\n   # pause\r\n+6, 5 ,\"4\",,4294967295,4294967295,2,-7");
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].state.u4RealLV, 0xffffffffU);
    EXPECT_EQ(frames[0].state.u4CCT, 5000U);
    EXPECT_EQ(frames[0].state.rAWBFullGain.i4B, 3);
    EXPECT_EQ(frames[0].state.rAWBGain.i4R, 1);
    EXPECT_EQ(frames[0].capture, 1);
    EXPECT_EQ(frames[0].state.u4FlashMode, 0);
    EXPECT_EQ(frames[1].state.u4CCT, 0xffffffffU);
    EXPECT_EQ(frames[1].state.rAWBGain.i4R, 4);
    EXPECT_EQ(frames[1].capture, -7);
    EXPECT_EQ(read_all("lv,cct,full_r,full_g,full_b\n1,2,7,8,9\n")[0].state.rAWBGain.i4G, 8);
}

TEST_F(Replay, ReaderNamesTheFault) {
    const std::string range = "; allowed are whole numbers -2147483648..";
    const struct {
        std::string text;
        std::string fault;  ///< after the file's name
    } cases[] = {
        {"", ":1: the header line that names the columns is missing"},
        {"# only\n\n", ":2: the header line that names the columns is missing"},
        {"lv,awb_r,awb_g,awb_b\n", ":1: column 'cct' is missing"},
        {"lv,cct\n", ":1: the gain is missing"},
        {"lv,cct,awb_r,awb_g\n", ":1: a gain needs its three columns"},
        {"lv,lv,cct,awb_r,awb_g,awb_b\n", ":1: column 'lv' is named twice"},
        {"lv,cct,awb_r,awb_g,awb_b,falsh\n", "unknown name 'falsh'; did you mean 'flash'?"},
        {"lv,cct,awb_r,awb_g,awb_b,temperature\n", "begin a name with x_"},
        {kHeader + "1,2,3,4\n", ":2: the line has 4 values, the header names 5 columns"},
        {kHeader + "1,2,3,4,5,6\n", ":2: the line has 6 values, the header names 5 columns"},
        {kHeader + ",2,3,4,5\n", ":2: column 'lv': the value is missing" + range + "4294967295"},
        {kHeader + "1,2,3,4,5\n1,2,x,4,5\n", ":3: column 'awb_r': 'x' is not a whole number"},
        {kHeader + "1,2,3.5,4,5\n", ":2: column 'awb_r': '3.5' is not a whole number"},
        {kHeader + "--1,2,3,4,5\n", ":2: column 'lv': '--1' is not a whole number"},
        {kHeader + "+-1,2,3,4,5\n", ":2: column 'lv': '+-1' is not a whole number"},
        {kHeader + "1,4294967296,3,4,5\n", ":2: column 'cct': '4294967296' is out of range"},
        {kHeader + "1,2,2147483648,4,5\n", "'2147483648' is out of range" + range + "2147483647"},
        {kHeader + "99999999999999999999,2,3,4,5\n", ":2: column 'lv'"},
        {kHeader + std::string("1,2,3,4,\0", 9) + "\n", "'\\x00' is not a whole number"},
        {kHeader + std::string(70000, '1'), ":2: the line is longer than 65536 bytes"},
        {kHeader + std::string(70000, '1') + "\n", ":2: the line is longer than 65536 bytes"},
    };
    for (const auto& [text, fault] : cases) {
        try {
            read_all(text);
            FAIL() << "no fault: " << fault;
        } catch (const BadInput& error) {
            EXPECT_EQ(std::string(error.what()).find(path("log.csv") + ":"), 0U) << error.what();
            EXPECT_NE(std::string(error.what()).find(fault), std::string::npos)
                << error.what() << "\nexpected " << fault;
        }
    }
    EXPECT_THROW(FrameFile(path("missing.csv")), BadInput);
    EXPECT_THROW(FrameFile(path("")), BadInput) << "a folder";
}

TEST_F(Replay, ReaderKeepsItsPlaceOverManyBuffers) {
    constexpr std::uint32_t kCount = 200000;
    std::string text = kHeader;
    for (std::uint32_t i = 0; i < kCount; ++i) text += std::to_string(i) + ",4000,600,512,900\n";
    FrameFile long_file(file("long.csv", text + "1,2\n"));
    FrameLog& log = long_file.log();
    Frame frame;
    for (std::uint32_t i = 0; i < kCount; ++i) {
        ASSERT_TRUE(log.next(frame));
        ASSERT_EQ(frame.state.u4RealLV, i);
        ASSERT_EQ(log.line(), i + 2);
    }
    EXPECT_THROW(log.next(frame), BadInput);
    EXPECT_EQ(log.line(), kCount + 2);
}

TEST(FrameCheck, TellsOddValuesOnce) {
    const struct {
        const char* rows;
        const char* codes;
    } cases[] = {
        {"255,1000,1,512,1\n", ""},
        {"256,1000,1,512,1\n255,999,1,512,1\n", "F101 F105"},
        {"-1,0,1,512,1\n", "F102 F103"},
        {"0,-1,0,512,1\n", "F104 F106"},
        {"0,999,1,512,-1\n", "F105 F107"},
        {"0,5000,1,0,1\n", "F108"},
        {"", "F100"},
        {"300,0,1,512,1\nx\n", "F101 F103 F001"},
    };
    for (const auto& c : cases) {
        const std::string text = std::string("lv,cct,awb_r,awb_g,awb_b\n") + c.rows;
        MemorySource source(text);
        Faults faults;
        check_frames("log.csv", source, faults);
        std::string codes;
        for (const Fault& fault : faults.list()) {
            codes += (codes.empty() ? "" : " ") + fault.code;
        }
        EXPECT_EQ(codes, c.codes) << c.rows;
    }
}

TEST(Locus, IsLinearInMiredAndEndsAtItsEnds) {
    const LightLocus locus(
        {{2500, {500, 512, 1000}}, {5000, {1000, 512, 500}}, {2500, {600, 512, 1000}}});
    EXPECT_EQ(locus.at(2400).i4R, 500);
    EXPECT_EQ(locus.at(4000).i4R, 857);  // 250 mired: 1 / (1/4 / 600 + 3/4 / 1000)
    EXPECT_EQ(locus.at(4000).i4B, 571);
    EXPECT_EQ(locus.at(9000).i4B, 500);
}

TEST(Locus, OfATuningLiesAtTheKelvinOfItsPoints) {
    Tuning tuning = make_tuning();
    AWB_GAIN_T* const gains = tuning.ccm.rCTAWBGain[0];
    std::uint32_t* const kelvin = tuning.kelvin[0];
    tuning.ccm.i4NumCT = 4;
    for (int t = 0; t < 4; ++t) {
        gains[t] = {600 + 100 * t, 512, 1500 - 200 * t};
        kelvin[t] = 2700U + 1300U * static_cast<std::uint32_t>(t);
    }
    for (AWB_GAIN_T& low_light : tuning.ccm.rCTAWBGain[1]) low_light = {1, 2, 3};
    tuning.caller.ct_grid = {1000, 1500, 2000, 2500, 3000};  // says nothing of the gains
    EXPECT_EQ(assumed_locus(tuning), "");
    for (int t = 0; t < tuning.ccm.i4NumCT; ++t) {
        EXPECT_EQ(tuned_locus(tuning).at(kelvin[t]).i4R, gains[t].i4R);
        EXPECT_EQ(tuned_locus(tuning).at(kelvin[t]).i4B, gains[t].i4B);
    }
    tuning.kelvin[0][1] = 0;
    EXPECT_NE(assumed_locus(tuning).find("1000 to 3000 K"), std::string::npos);
    EXPECT_EQ(tuned_locus(tuning).at(1000).i4R, gains[0].i4R);
    EXPECT_EQ(tuned_locus(tuning).at(3000).i4B, gains[tuning.ccm.i4NumCT - 1].i4B);
}

TEST(Camera, BracketsTheCtInTheGrid) {
    const std::array<std::uint32_t, 5> rising{2300, 2850, 4000, 5000, 6500};
    const std::array<std::uint32_t, 5> falling{6500, 5000, 4000, 2850, 2300};
    const std::array<std::uint32_t, 5> mixed{4000, 4000, 6500, 2300, 2300};
    const struct {
        const std::array<std::uint32_t, 5>& grid;
        std::uint32_t cct, upper_kelvin, lower_kelvin;
        int upper, lower;
    } cases[] = {
        {rising, 0, 2300, 2300, 0, 0},     {rising, 2299, 2300, 2300, 0, 0},
        {rising, 2300, 2850, 2300, 1, 0},  {rising, 2849, 2850, 2300, 1, 0},
        {rising, 2850, 4000, 2850, 2, 1},  {rising, 6499, 6500, 5000, 4, 3},
        {rising, 6500, 6500, 6500, 4, 4},  {rising, 0xffffffff, 6500, 6500, 4, 4},
        {falling, 2000, 2300, 2300, 4, 4}, {falling, 4500, 5000, 4000, 1, 2},
        {falling, 9000, 6500, 6500, 0, 0}, {mixed, 3000, 4000, 2300, 0, 4},
        {mixed, 5000, 6500, 4000, 2, 1},
    };
    for (const auto& c : cases) {
        const CtBracket bracket = CtGrid(c.grid).bracket(c.cct);
        EXPECT_EQ(bracket.upper_kelvin, c.upper_kelvin) << c.cct;
        EXPECT_EQ(bracket.lower_kelvin, c.lower_kelvin) << c.cct;
        EXPECT_EQ(bracket.upper, c.upper) << c.cct;
        EXPECT_EQ(bracket.lower, c.lower) << c.cct;
    }
}

TEST(Camera, CarriesAllOfItsStateInItself) {
    const Tuning tuning = make_tuning();
    const auto frames = make_walk(300);
    std::vector<Registers> whole(frames.size());
    Camera camera(tuning, {});
    replay(camera, frames, whole);
    // The log in pieces, each by another camera that goes on from the state before.
    CameraState state;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        Camera piece(tuning, {});
        piece.set_state(state);
        piece.run(frames[i]);
        state = piece.state();
        ASSERT_EQ(std::memcmp(&whole[i], &piece.registers(), sizeof(whole[i])), 0) << "frame " << i;
    }
    EXPECT_TRUE(state == camera.state());
    EXPECT_FALSE(state == CameraState{});
}

TEST(Camera, StartsLikeAfterPowerOn) {
    Camera camera(make_tuning(), {});
    camera.run(make_frame(100, 2500, {600, 512, 1400}));
    // Half of the lowest CT's matrix: the ring is empty. The working image is taken at once.
    EXPECT_EQ(decode(camera.ccm(), camera.tuning().caller)[1], -50);
    EXPECT_EQ(camera.color().u4Word[6], 100U);
    Frame scene = make_frame(100, 2500, {600, 512, 1400});
    scene.state.u4SceneFlag = 1;
    camera.run(scene);
    EXPECT_EQ(camera.color().u4Word[6], 110U);
}

TEST_F(Replay, OutputIsWholeOrNotThere) {
    file("out", "before");
    { OutputFile(path("out")).write("half"); }
    EXPECT_EQ(content("out"), "before");
    EXPECT_EQ(files(), 1U);
    chmod(path("out").c_str(), 0640);
    fs::create_symlink("out", path("link"));
    write_file(path("link"), "after");
    EXPECT_EQ(content("out"), "after");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    struct stat status = {};
    stat(path("out").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);

    EXPECT_THROW(OutputFile(path("none/out")), BadInput);
    EXPECT_THROW(OutputFile(path("")), BadInput);
    // No room: a limit on the size of files, which also holds for root.
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            write_file(path("out"), std::string(8192, 'x'));
        } catch (const BadInput& error) {
            _exit(std::string(error.what()) == path("out") + ": cannot write: File too large" ? 7
                                                                                              : 8);
        }
        _exit(9);
    }
    int status_of_child = 0;
    waitpid(child, &status_of_child, 0);
    EXPECT_TRUE(WIFEXITED(status_of_child) && WEXITSTATUS(status_of_child) == 7) << status_of_child;
    EXPECT_EQ(content("out"), "after");
    EXPECT_EQ(files(), 2U);
}

TEST_F(Replay, SignalLeavesNoHalfWrittenFile) {
    file("out", "before");
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t child = fork();
        if (child == 0) {
            struct sigaction present = {};
            sigaction(number, nullptr, &present);  // a shell may have left it ignored
            if (present.sa_handler == SIG_IGN) signal(number, SIG_DFL);
            OutputFile output(path("out"));
            output.write("half");
            raise(number);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number);
        EXPECT_EQ(content("out"), "before");
        EXPECT_EQ(files(), 1U);
    }
}

/// Digits grouped and separated in ways that must not show.
struct OddPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST_F(Replay, RowsShowTheRegistersInEveryLocale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new OddPunctuation));
    const CallerSettings caller;
    std::mt19937 engine(7);
    const auto random = [&] { return static_cast<std::uint32_t>(engine()); };
    std::string expected;
    {
        OutputFile output(path("rows.csv"));
        RowWriter writer(output, {caller, {}});
        writer.write_header(",more");
        Registers registers;
        for (std::uint64_t number = 1; number <= 300; ++number) {
            // Some words change, some stay, now and then all stay.
            for (auto& word : registers.ccm.u4Word) word = random();
            if (number % 5 != 0) {
                for (auto& word : registers.color.u4Word) {
                    if (random() % 3 == 0) word = random();
                }
            }
            Frame frame = make_frame(random(), random() % 10000, {-4096, -4097, 2147483647});
            frame.capture = -2147483647 - 1;
            writer.write(number, to_values(frame), registers, ",x");
            std::string row = std::to_string(number) + "," + std::to_string(frame.state.u4RealLV) +
                              "," + std::to_string(frame.state.u4CCT) +
                              ",-4096,-4097,2147483647,-4096,-4097,2147483647,0,0,0,-2147483648";
            for (const std::int32_t c : decode(registers.ccm, caller)) {
                row += "," + std::to_string(c);
            }
            for (const std::uint32_t word : registers.ccm.u4Word) {
                char hex[16];
                std::snprintf(hex, sizeof(hex), ",0x%08X", word);
                row += hex;
            }
            for (const ColorField& field : color_fields()) {
                row += "," + std::to_string(field.read(registers.color));
            }
            expected += row + ",x\n";
        }
        writer.finish();
        output.commit();
    }
    std::locale::global(before);
    const std::string text = content("rows.csv");
    const std::size_t first_row = text.find('\n') + 1;
    EXPECT_EQ(text.substr(0, 15), "frame,lv,cct,fu");
    EXPECT_EQ(text.substr(first_row - 6, 6), ",more\n");
    EXPECT_TRUE(text.substr(first_row) == expected);
}

TEST_F(Replay, RunsTheJobsThatItsColumnsShow) {
    const Jobs both, ccm{true, false}, color{false, true};
    const std::string first = color_fields().front().name, last = color_fields().back().name;
    const struct {
        std::vector<std::string> patterns;
        Jobs of, shown;
    } cases[] = {
        {{}, both, both},
        {{"lv", "capture"}, both, {false, false}},
        {{"c0"}, both, ccm},
        {{"ccm5"}, both, ccm},
        {{first}, both, color},
        {{"lv", last}, both, color},
        {{"c8", last}, both, both},
        {{}, ccm, ccm},
        {{}, color, color},
        {{first}, color, color},
        {{"profile"}, ccm, {false, false}},
    };
    for (const auto& c : cases) {
        const Jobs shown = jobs_shown({{}, c.of, c.patterns});
        EXPECT_EQ(shown.ccm, c.shown.ccm) << testing::PrintToString(c.patterns);
        EXPECT_EQ(shown.color, c.shown.color) << testing::PrintToString(c.patterns);
    }
}

TEST_F(Replay, FailingRunHarmsNoOutput) {
    std::ofstream tuning(path("tuning.yaml"));
    tuning << write_yaml(make_tuning());
    tuning.close();
    std::string log = kHeader;
    for (int i = 0; i < 50000; ++i) log += "60,4000,800,512,1200\n";
    file("good.csv", log);
    file("bad.csv", log + "60,4000,oops,512,1200\n");
    file("rows.csv", "frame,before");
    const auto replay = [&](const std::string& frames, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"replay", path("tuning.yaml"), path(frames), "-o",
                                           path("rows.csv")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    };
    EXPECT_EQ(replay("bad.csv"),
              path("bad.csv") +
                  ":50002: column 'awb_r': 'oops' is not a whole number; allowed are "
                  "whole numbers -2147483648..2147483647");
    EXPECT_NE(replay("good.csv", {"--set", "novalue"}).find("name=value"), std::string::npos);
    EXPECT_NE(
        replay("good.csv", {"--set", "debug.smooth_color.lock=" + std::string(92, '1')}).find("91"),
        std::string::npos);
    EXPECT_EQ(content("rows.csv"), "frame,before");
    EXPECT_EQ(files(), 4U);

    EXPECT_EQ(replay("good.csv", {"--every", "20000", "--only", "ccm"}), "");
    std::istringstream rows(content("rows.csv"));
    std::vector<std::string> starts;
    for (std::string row; std::getline(rows, row);) starts.push_back(row.substr(0, 9));
    EXPECT_EQ(starts,
              (std::vector<std::string>{"frame,lv,", "1,60,4000", "20001,60,", "40001,60,"}));
    EXPECT_EQ(content("rows.csv").find("Luma"), std::string::npos);

    // The properties reach the library: a locked colour image keeps its zeros.
    file("short.csv", kHeader + "60,4000,800,512,1200\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(replay("short.csv", {"--set", "debug.smooth_color.lock=1", "--only", "color"}), "");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Force Lock"), std::string::npos);
    EXPECT_EQ(content("rows.csv").find(",100,"), std::string::npos);
    EXPECT_EQ(replay("short.csv", {"--set", "debug.smooth_color.lock=0", "--only", "color"}), "");
    EXPECT_NE(content("rows.csv").find(",100,"), std::string::npos);
}

}  // namespace
}  // namespace imgtune::workbench
