#include "workbench/json/diff.h"

#include <fmt/format.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/studies/diff.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"

namespace imgtune::cli {

namespace {

struct DiffOptions {
    std::string a;
    std::string b;
    std::string frames;
    std::string output;
    bool force = false;
    bool json = false;
};

FramesComparison compare_frames(const Tuning& a, const Tuning& b, const DiffOptions& options) {
    FrameFile file(options.frames);
    std::optional<OutputFile> rows;
    FrameComparer::Told told;
    if (!options.output.empty()) {
        rows.emplace(options.output);
        rows->write("frame,field,a,b\n");
        told = [&](std::uint64_t frame, const std::string& field, std::int64_t in_a,
                   std::int64_t in_b) {
            rows->write(fmt::format("{},{},{},{}\n", frame, field, in_a, in_b));
        };
    }
    FrameComparer comparer(a, b, told);
    for (Frame frame; file.log().next(frame);) comparer.add(frame);
    if (rows) rows->commit();
    return comparer.result();
}

std::string value_text(const FieldDifference::Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    return std::get<std::string>(value);
}

std::string value_text(const FramesComparison& comparison) {
    std::string out = fmt::format("\n{} of {} frames differ in their registers\n",
                                  comparison.differing, comparison.frames);
    for (const JobComparison& job : comparison.jobs) {
        if (job.worst.empty()) continue;
        out +=
            fmt::format("\n{} differs in {}; the worst:\n",
                        job.job == Job::ccm ? "matrix" : "colour", counted(job.differing, "frame"));
        for (const FrameDifference& frame : job.worst) {
            out += fmt::format("  frame {:<10}{:<24}{:>6} -> {}\n", frame.frame, frame.field,
                               frame.a, frame.b);
        }
    }
    return out;
}

int run_diff(const DiffOptions& options) {
    if (options.a == "-" && options.b == "-") {
        throw BadInput("only one of the tunings can be standard input");
    }
    guard_output(options.output, {options.a, options.b, options.frames},
                 or_anything(Replaces::differences, options.force));
    const Tuning a = require_tuning(options.a);
    const Tuning b = require_tuning(options.b);
    const std::vector<FieldDifference> differences = diff_tunings(a, b);
    std::optional<FramesComparison> comparison;
    if (!options.frames.empty()) comparison = compare_frames(a, b, options);

    std::string text;
    if (options.json) {
        nlohmann::ordered_json out = {{"differences", to_json(differences)}};
        if (comparison) out["frames"] = to_json(*comparison);
        text = dumped(out);
    } else {
        for (const FieldDifference& difference : differences) {
            text += fmt::format("{}: {} -> {}\n", difference.field, value_text(difference.a),
                                value_text(difference.b));
        }
        if (differences.empty()) text += "the tunings are equal\n";
        if (comparison) text += value_text(*comparison);
    }
    print_report(text, options.output);
    const bool frames_differ = comparison && comparison->differing > 0;
    return differences.empty() && !frames_differ ? kFine : kFindings;
}

}  // namespace

void add_diff(const Verbs& verbs) {
    auto options = std::make_shared<DiffOptions>();
    const Verb verb = verbs.add("diff", "Tell what differs between two tunings");
    verb.option("A", options->a, kTuningHelp).required();
    verb.option("B", options->b, "the other tuning").required();
    const Option frames = verb.option("--frames", options->frames,
                                      "run this frame log through both, compare registers");
    verb.option("-o,--output", options->output,
                "write every difference of the registers as CSV: frame,field,a,b; an earlier "
                "table of differences is replaced")
        .needs(frames);
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.flag("--json", options->json, "as JSON");
    verb.footer(
        "Exit status 0: equal; 1: they differ; 2: bad input.\n"
        "\n"
        "Example:\n"
        "  imgtune diff old.yaml new.yaml --frames walk.csv");
    verb.run([options] { return run_diff(*options); });
}

}  // namespace imgtune::cli
