#include "cli/common.h"

#include <fmt/format.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "workbench/files/output_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/shown_text.h"
#include "workbench/tuning/check.h"

namespace imgtune::cli {

using namespace workbench;

Tuning tuning_to_run(const std::string& path) {
    Faults faults;
    Tuning tuning = load_tuning(path, faults);
    faults.sort();
    if (faults.has_errors()) {
        std::string text = faults.text();
        text.pop_back();
        throw BadInput("the tuning cannot be used\n" + text);
    }
    Faults found;
    check_tables(tuning, found);
    Faults errors;
    for (Fault fault : found.list()) {
        if (fault.severity != Severity::error) continue;
        if (fault.file.empty()) fault.file = path;
        errors.add(std::move(fault));
    }
    tell(errors);
    return tuning;
}

Jobs jobs_to_run(const std::string& path, const Tuning& tuning, const std::string& only) {
    const Jobs jobs{tuning.has_ccm && only != "color", tuning.has_color && only != "ccm"};
    if (jobs.ccm || jobs.color) return jobs;
    if (only.empty()) throw BadInput(path + ": the tuning has neither part 'ccm' nor part 'color'");
    throw BadInput(
        fmt::format("{}: the tuning has no part '{}'; leave out --only or add it", path, only));
}

void tell(const Faults& faults) {
    if (!faults.empty()) say(faults.text());
}

void say(const std::string& text) {
    std::fputs(shown_lines(text).c_str(), stderr);
}

std::string dumped(const nlohmann::ordered_json& json) {
    return shown_json(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) +
           "\n";
}

void print_report(const std::string& text, const std::string& rows_output) {
    if (rows_output == "-") {
        say(text);
    } else {
        write_file("-", shown_lines(text));
    }
}

}  // namespace imgtune::cli
