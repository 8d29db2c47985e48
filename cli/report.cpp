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
    bool force = false;
};

std::string report_with(const ReportOptions& options) {
    std::optional<ReportFile> against;
    if (!options.against.empty()) against = tuning_for_report(options.against);
    const ReportFile tuning = tuning_for_report(options.tuning);
    const ReportFile frames = frames_for_report(options.frames);
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

int run_view(const ReportOptions& options) {
    const std::string report = report_with(options);
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
    verb.option("TUNING", options.tuning, kTuningHelp).required();
    verb.option("FRAMES", options.frames, kFramesHelp).required();
    verb.option("--against", options.against, "a second tuning, shown as B");
    verb.option("--page", options.page, "the page to put it into (default: the installed one)");
}

}  // namespace

void add_report(const Verbs& verbs) {
    const auto options = std::make_shared<ReportOptions>();
    const Verb verb = verbs.add("report", "Put a tuning and a log into a page that shows them");
    add_inputs(verb, *options);
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
    add_inputs(verb, *options);
    verb.footer(
        "Writes a report to the folder for temporary files, says where, and opens it.\n"
        "\n"
        "Example:\n"
        "  imgtune view phone.yaml walk.csv");
    verb.run([options] { return run_view(*options); });
}

}  // namespace imgtune::cli
