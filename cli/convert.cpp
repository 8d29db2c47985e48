#include <fmt/format.h>

#include <memory>
#include <string>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/counted.h"
#include "workbench/text/shown_text.h"
#include "workbench/tuning/comments.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

struct ConvertOptions {
    std::string tuning;
    std::string output = "-";
    bool bare = false;
    bool force = false;
};

void tell_lost_comments(const std::string& name, const std::string& from, const std::string& to) {
    constexpr std::size_t kLongest = 60;
    const std::vector<Comment> lost = lost_comments(from, to);
    if (lost.empty()) return;
    say(fmt::format("imgtune: {} of {} {} not carried over, the first in line {}: {}\n",
                    counted(lost.size(), "comment"), name, lost.size() == 1 ? "is" : "are",
                    lost[0].line, shown_text(lost[0].text, kLongest)));
}

int run_convert(const ConvertOptions& options) {
    if (!options.force) guard_output(options.output, {options.tuning}, Replaces::nothing);
    std::string before;
    const Tuning tuning = require_tuning(options.tuning, &before);
    const std::string after = head_comments(before) + write_yaml(tuning, !options.bare);
    write_file(options.output, after);
    tell_lost_comments(options.tuning, before, after);
    return kFine;
}

}  // namespace

void add_convert(const Verbs& verbs) {
    const auto options = std::make_shared<ConvertOptions>();
    const Verb verb = verbs.add("convert", "Write a tuning in the current YAML form");
    verb.option("TUNING", options->tuning, "YAML file, folder of stored images, or -").required();
    verb.option("-o,--output", options->output, "YAML file; - is standard output").shows_default();
    verb.flag("--bare", options->bare, "Without explanations of the fields");
    verb.flag("--force", options->force, "Overwrite a file that holds something");
    verb.footer(
        "Example:\n  imgtune convert old.yaml -o new.yaml\n"
        "Comments at the top are kept; others are not, and standard error says so.");
    verb.run([options] { return run_convert(*options); });
}

}  // namespace imgtune::cli
