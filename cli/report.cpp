#include "workbench/files/report.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "cli/common.h"
#include "cli/follow.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/text/bad_input.h"

namespace imgtune::cli {

namespace {

struct ReportOptions {
    std::string tuning;
    std::string frames;
    std::string against;
    std::string output;
    std::string page;
    std::uint64_t frame = 1;
    bool force = false;
    FollowOptions follow;  ///< of view alone
};

std::string report_with(const ReportOptions& options, const std::string& ahead = {}) {
    std::optional<ReportFile> against;
    if (!options.against.empty()) against = tuning_for_report(options.against);
    const ReportFile tuning = tuning_for_report(options.tuning);
    const ReportFile frames = frames_for_report(options.frames, ahead, options.frame);
    return make_report(options.page.empty() ? find_page() : options.page, tuning, against, frames);
}

int run_report(const ReportOptions& options) {
    guard_output(options.output, {options.tuning, options.frames, options.against, options.page},
                 or_anything(Replaces::nothing, options.force));
    write_file(options.output, report_with(options));
    return kFine;
}

/// Starts the desktop's browser on a file.
void open_in_browser(const std::string& path) {
    std::string command = "xdg-open";
    std::string argument = path;
    const std::array<char*, 3> words = {command.data(), argument.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, "xdg-open", nullptr, nullptr, words.data(), environ) != 0) {
        throw BadInput(
            fmt::format("no desktop here to open it (xdg-open is missing); it is {}", path));
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        throw BadInput(fmt::format("the desktop's browser did not open; the report is {}", path));
    }
}

int run_view(ReportOptions& options) {
    options.follow.tuning = options.tuning;
    options.follow.against = options.against;
    options.follow.page = options.page;
    options.follow.input.log.path = options.frames;
    std::string ahead;
    if (options.follow.input.demo || is_live(options.frames, ahead)) {
        return run_follow(options.follow, std::move(ahead));
    }
    const std::string report = report_with(options, ahead);
    std::string path = (std::filesystem::temp_directory_path() / "imgtune-XXXXXX.html").string();
    const int file = mkstemps(path.data(), 5);
    if (file < 0) throw BadInput(path + ": cannot be made");
    close(file);
    write_file(path, report);
    say(fmt::format("imgtune: {}\n", path));
    open_in_browser(path);
    return kFine;
}

void add_inputs(const Verb& verb, ReportOptions& options) {
    verb.option("--against", options.against, "a second tuning, shown as B");
    verb.option("--page", options.page, "the page to put it into (default: the installed one)");
}

void add_frame(const Verb& verb, ReportOptions& options) {
    verb.option("--frame", options.frame,
                "the frame of a frame log that the page begins with, from 1")
        .range(std::uint64_t{1}, std::uint64_t{1000000000000});
}

}  // namespace

void add_report(const Verbs& verbs) {
    const auto options = std::make_shared<ReportOptions>();
    const Verb verb = verbs.add("report", "Put a tuning and a log into a page that shows them");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("FRAMES", options->frames, kFramesHelp).required();
    add_inputs(verb, *options);
    add_frame(verb, *options);
    verb.option("-o,--output", options->output, "HTML file, - is standard output").required();
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer(
        "One file that opens in a browser, without a network, and runs the library itself.\n"
        "\n"
        "Example:\n"
        "  imgtune report phone.yaml walk.csv --against candidate.yaml -o walk.html");
    verb.run([options] { return run_report(*options); });
}

void add_view(const Verbs& verbs) {
    const auto options = std::make_shared<ReportOptions>();
    const Verb verb = verbs.add("view", "Show a tuning and a log in the desktop's browser");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("FRAMES", options->frames,
                "frame log: CSV file or '-'; or what adb logcat prints, to be followed");
    add_inputs(verb, *options);
    add_frame(verb, *options);
    add_live_input(verb, options->follow.input);
    verb.option("--port", options->follow.port, "where to serve the page that follows (0: any)")
        .shows_default()
        .range(0, 65535);
    verb.flag("--no-browser", options->follow.no_browser, "tell the address of the page alone");
    verb.footer(
        "Of a frame log: writes a report to the folder for temporary files, says where, and opens\n"
        "it. Of a phone's log: serves a page that follows it to browsers of this machine alone,\n"
        "until the log ends or Ctrl-C.\n"
        "\n"
        "Example:\n"
        "  imgtune view phone.yaml walk.csv\n"
        "  imgtune props | sh; adb logcat -v threadtime | imgtune view phone.yaml -\n"
        "  imgtune view phone.yaml --demo");
    verb.run([options] { return run_view(*options); });
}

}  // namespace imgtune::cli
