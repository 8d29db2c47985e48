#include "workbench/studies/check.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/text_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/frames/frame_check.h"
#include "workbench/json/findings.h"
#include "workbench/json/sarif.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"
#include "workbench/text/shown_text.h"

namespace imgtune::cli {

namespace {

struct CheckOptions {
    std::vector<std::string> inputs;
    std::vector<std::string> allowed;
    std::string sarif;
    bool json = false;
    bool force = false;
};

/// Lines of the files that findings are about, each file read once.
class FileLines {
  public:
    std::string operator()(const std::string& file, int line) {
        const auto [found, is_new] = lines_.try_emplace(file);
        if (is_new) read(file, found->second);
        const auto index = static_cast<std::size_t>(line - 1);
        return index < found->second.size() ? found->second[index] : "";
    }

  private:
    /// Standard input has been read, and what cannot be read is a finding of its own.
    static void read(const std::string& file, std::vector<std::string>& lines) {
        constexpr std::size_t kLongestText = std::size_t{1} << 28;
        std::error_code error;
        if (!std::filesystem::is_regular_file(file, error)) return;
        std::istringstream text(read_text(file, kLongestText));
        for (std::string line; std::getline(text, line);) lines.push_back(std::move(line));
    }

    std::map<std::string, std::vector<std::string>> lines_;
};

/// A file that cannot be read, or is no YAML at all, says nothing about a tuning; nor does a frame
/// log about the frames behind a bad line.
bool means_unreadable(const std::string& code) {
    return code == "T001" || code == "T010" || code == "F001";
}

bool is_unreadable(const Faults& faults) {
    return std::any_of(faults.list().begin(), faults.list().end(),
                       [](const Fault& fault) { return means_unreadable(fault.code); });
}

std::string summary(const std::string& input, const Faults& faults) {
    const std::string name = shown_text(input);
    if (faults.empty()) return name + ": no findings\n";
    const auto errors = static_cast<std::size_t>(
        std::count_if(faults.list().begin(), faults.list().end(),
                      [](const Fault& fault) { return fault.severity == Severity::error; }));
    return fmt::format("{}: {}, {}\n", name, counted(errors, "error"),
                       counted(faults.list().size() - errors, "warning"));
}

std::set<std::string> known_codes(const std::vector<std::string>& codes) {
    for (const std::string& code : codes) {
        if (find_rule(code) == nullptr) {
            throw BadInput(
                fmt::format("--allow {}: there is no such code; codes stand in brackets "
                            "behind each finding, as T112",
                            shown_text(code)));
        }
        if (means_unreadable(code)) {
            throw BadInput(
                fmt::format("--allow {}: an input that cannot be read cannot be allowed", code));
        }
    }
    return {codes.begin(), codes.end()};
}

Faults findings_of(const std::string& input) {
    Faults faults;
    if (holds_frame_log(input)) {
        FileSource source(input);
        check_frames(source.name(), source, faults);
        return faults;
    }
    const Tuning tuning = load_tuning(input, faults);
    if (!is_unreadable(faults)) check_tuning(tuning, faults);
    return faults;
}

int run_check(const CheckOptions& options) {
    const std::set<std::string> allowed = known_codes(options.allowed);
    guard_output(options.sarif, options.inputs, or_anything(Replaces::report, options.force));
    const bool color = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    std::string text;
    Faults all;
    bool unreadable = false;
    for (const std::string& input : options.inputs) {
        Faults faults = findings_of(input);
        unreadable |= is_unreadable(faults);
        faults.allow(allowed);
        faults.sort();
        text += faults.text(color) + summary(input, faults);
        for (const Fault& fault : faults.list()) all.add(fault);
    }
    if (!options.sarif.empty()) {
        FileLines lines;
        write_file(options.sarif, dumped(sarif_of(all, std::ref(lines))));
    }
    if (options.sarif != "-") write_file("-", options.json ? dumped(to_json(all)) : text);
    if (unreadable) return kBadInput;
    if (all.has_errors()) return kErrors;
    return all.empty() ? kFine : kFindings;
}

}  // namespace

void add_check(const Verbs& verbs) {
    const auto options = std::make_shared<CheckOptions>();
    const Verb verb = verbs.add("check", "Report every fault of tunings and frame logs");
    verb.option("FILE", options->inputs,
                "tunings (YAML files, folders of stored images, or -) and frame logs (CSV)")
        .required();
    verb.option("--allow", options->allowed, "Leave out findings of this code (repeatable)")
        .type_name("CODE")
        .one_value_each();
    verb.flag("--json", options->json, "Write the findings as JSON");
    verb.option("--sarif", options->sarif,
                "Write the findings as SARIF 2.1.0 for code reviews, too; - is standard output, "
                "instead")
        .type_name("FILE");
    verb.flag("--force", options->force, "Replace whatever file is there");
    verb.footer(
        "Example:\n  imgtune check day.yaml night.yaml walk.csv --allow T112\n"
        "Exit status: 0 no findings, 1 warnings alone, 2 an input cannot be read, 3 errors.");
    verb.run([options] { return run_check(*options); });
}

}  // namespace imgtune::cli
