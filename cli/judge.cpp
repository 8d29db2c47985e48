#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "workbench/files/judge_files.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/json/judging.h"
#include "workbench/judging/junit.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/counted.h"
#include "workbench/text/shown_text.h"

namespace imgtune::cli {

namespace {

struct JudgeOptions {
    std::string tuning;
    std::string old;
    std::string limits;
    std::vector<std::string> logs;
    std::string junit;
    unsigned workers = 0;
    bool json = false;
    bool starter = false;
    bool force = false;
    SummaryOptions measured_by;  ///< of the limits
};

constexpr std::size_t kMostTold = 50;  ///< broken limits in the text; JSON has all

/// A word of a shell's command.
std::string quoted(const std::string& word) {
    constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./=+:,@%-";
    if (!word.empty() && word.find_first_not_of(kPlain) == word.npos) return word;
    std::string text = "'";
    for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

/// The options of `replay --summary` with which it measures as the limits do.
std::string summary_flags(const SummaryOptions& options) {
    const SummaryOptions usual;
    std::string flags;
    const auto add = [&](const char* name, double value, double standard) {
        if (value != standard) flags += fmt::format(" {} {}", name, value);
    };
    add("--fps", options.frames_per_second, usual.frames_per_second);
    add("--noise", options.noise_percent, usual.noise_percent);
    add("--settled", options.visible.settled, usual.visible.settled);
    add("--flicker-patch", options.visible.flicker_patch, usual.visible.flicker_patch);
    add("--flicker-mean", options.visible.flicker_mean, usual.visible.flicker_mean);
    return flags;
}

/// What shows a broken limit: what goes on over many frames the summary, else the frame.
std::string command_for(const JudgeOptions& options, const Verdict& verdict,
                        const LimitVerdict& limit) {
    const std::string tuning = quoted(options.tuning);
    const std::string log = quoted(verdict.log);
    switch (limit.measured) {
        case Measured::check_errors:
        case Measured::check_warnings:
            return "imgtune check " + tuning;
        case Measured::steepest_step:
            return "imgtune sweep --steepest " + tuning;
        case Measured::calibration_mean:
        case Measured::calibration_worst:
            return "";
        case Measured::settling_frames:
        case Measured::settling_seconds:
        case Measured::flicker_strength:
        case Measured::flicker_share:
            return fmt::format("imgtune replay {} {} --summary --only ccm{}", tuning, log,
                               summary_flags(options.measured_by));
        case Measured::color_settling_frames:
            return fmt::format("imgtune replay {} {} --summary{}", tuning, log,
                               summary_flags(options.measured_by));
        default:
            return fmt::format("imgtune explain {} --log {} --frame {} --only ccm", tuning, log,
                               limit.value->frame);
    }
}

/// "3.41!": a value as it stands in the table.
std::string cell(const LimitVerdict* limit) {
    if (limit == nullptr) return "";
    if (!limit->value) return "- ";
    return fmt::format("{:.3g}{}", limit->value->value, limit->is_broken() ? '!' : ' ');
}

const LimitVerdict* find_limit(const Verdict& verdict, Measured measured) {
    const auto found =
        std::find_if(verdict.limits.begin(), verdict.limits.end(),
                     [&](const LimitVerdict& limit) { return limit.measured == measured; });
    return found == verdict.limits.end() ? nullptr : &*found;
}

std::string table_text(const Judgement& judgement) {
    std::vector<const LimitKind*> columns;
    for (const LimitKind& kind : limit_kinds()) {
        if (std::any_of(judgement.logs.begin(), judgement.logs.end(), [&](const Verdict& verdict) {
                return find_limit(verdict, kind.measured) != nullptr;
            })) {
            columns.push_back(&kind);
        }
    }
    std::size_t widest = 3;
    for (const Verdict& verdict : judgement.logs)
        widest = std::max(widest, shown_text(verdict.log).size());
    std::string text = fmt::format("{:<{}}  {:>8}  {:<8}", "log", widest, "frames", "verdict");
    for (const LimitKind* const kind : columns) text += fmt::format("{:>11} ", kind->title);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
    for (const Verdict& verdict : judgement.logs) {
        std::string row =
            fmt::format("{:<{}}  {:>8}  {:<8}", shown_text(verdict.log), widest, verdict.frames,
                        verdict.is_accepted() ? "accepted" : "refused");
        for (const LimitKind* const kind : columns)
            row += fmt::format("{:>12}", cell(find_limit(verdict, kind->measured)));
        row.erase(row.find_last_not_of(' ') + 1);
        text += row + '\n';
    }
    return text;
}

/// Every broken limit with its place and the command that shows it.
std::string broken_text(const Judgement& judgement, const JudgeOptions& options) {
    std::string text;
    std::size_t told = 0;
    std::size_t left = 0;
    const auto tell_one = [&](const std::string& line) {
        if (told++ < kMostTold) {
            text += line;
        } else {
            ++left;
        }
    };
    const auto tell_all = [&](const Verdict& verdict, const std::string& name) {
        if (!verdict.error.empty())
            tell_one(fmt::format("{}: cannot be judged: {}\n", name, verdict.error));
        for (const LimitVerdict& limit : verdict.limits) {
            if (!limit.is_broken()) continue;
            const std::string command = command_for(options, verdict, limit);
            tell_one(fmt::format("{}: {} is {}\n{}", name, kind_of(limit.measured).name,
                                 sentence_of(limit),
                                 command.empty() ? "" : fmt::format("    {}\n", command)));
        }
    };
    tell_all(judgement.tuning, options.tuning);
    for (const Verdict& verdict : judgement.logs) tell_all(verdict, verdict.log);
    if (left > 0) text += fmt::format("... and {} more; --json tells all\n", left);
    return text.empty() ? text : '\n' + text;
}

std::string tuning_text(const Verdict& verdict, const std::string& name) {
    if (verdict.limits.empty()) return "";
    std::string text = fmt::format("{}: {}", name, verdict.is_accepted() ? "accepted" : "refused");
    for (const LimitVerdict& limit : verdict.limits) {
        const std::string value = cell(&limit);
        text += fmt::format(", {} {}", kind_of(limit.measured).title,
                            value.substr(0, value.find_last_not_of(' ') + 1));
    }
    return text + '\n';
}

/// What a '-' of the table means.
std::string unmeasured_text(const Judgement& judgement) {
    std::string text;
    for (const LimitKind& kind : limit_kinds()) {
        const auto count = std::count_if(
            judgement.logs.begin(), judgement.logs.end(), [&](const Verdict& verdict) {
                const LimitVerdict* const limit = find_limit(verdict, kind.measured);
                return limit != nullptr && !limit->value;
            });
        const bool of_tuning = [&] {
            const LimitVerdict* const limit = find_limit(judgement.tuning, kind.measured);
            return limit != nullptr && !limit->value;
        }();
        if (count > 0) {
            text += fmt::format("{} is not measured in {}: {}\n", kind.name,
                                counted(static_cast<std::size_t>(count), "log"), kind.unmeasured);
        }
        if (of_tuning) text += fmt::format("{} is not measured: {}\n", kind.name, kind.unmeasured);
    }
    return text.empty() ? text : '\n' + text;
}

std::string judgement_totals(const Judgement& judgement) {
    std::string broken;
    for (const LimitKind& kind : limit_kinds()) {
        const std::size_t count = judgement.broken(kind.measured);
        if (count > 0)
            broken += fmt::format("{}{} {}", broken.empty() ? "" : ", ", kind.name, count);
    }
    return fmt::format("\n{}: {} of {} refused, {} in all{}\n",
                       judgement.is_accepted() ? "accepted" : "refused", judgement.refused_logs(),
                       counted(judgement.logs.size(), "log"), counted(judgement.frames(), "frame"),
                       broken.empty() ? "" : "; broken: " + broken);
}

std::string judgement_text(const Judgement& judgement, const JudgeOptions& options) {
    return table_text(judgement) + tuning_text(judgement.tuning, options.tuning) +
           broken_text(judgement, options) + unmeasured_text(judgement) +
           judgement_totals(judgement);
}

int run_judge(JudgeOptions& options) {
    if (options.starter) {
        write_file("-", starter_limits());
        return kFine;
    }
    if (options.tuning.empty() || options.limits.empty() || options.logs.empty()) {
        throw BadInput(
            "needs a tuning, --limits and logs; 'imgtune judge --starter > limits.yaml' writes "
            "limits to start from");
    }
    std::vector<std::string> inputs = options.logs;
    inputs.insert(inputs.end(), {options.tuning, options.old, options.limits});
    guard_output(options.junit, inputs, or_anything(Replaces::report, options.force));
    if (options.junit == "-" && options.json)
        throw BadInput("--junit - and --json both go to standard output; name a file for one");
    const Limits limits = require_limits(options.limits);
    options.measured_by = limits.options;
    if (limits.needs_old() && options.old.empty()) {
        throw BadInput(options.limits +
                       ": no_worse_by compares with an old tuning; name it with --against");
    }
    const Tuning tuning = tuning_to_run(options.tuning);
    std::optional<Tuning> old;
    if (!options.old.empty()) old = tuning_to_run(options.old);
    const Tuning* const before = old ? &*old : nullptr;

    Verdict of_tuning = judge_tuning(tuning, before, limits, options.limits);
    ProgressLine progress;
    const JudgeRequest request{tuning, before, limits};
    std::vector<Verdict> verdicts = judge_logs(
        request, options.logs, options.workers, [&](std::size_t logs, std::uint64_t frames) {
            progress.show(fmt::format("{} of {}, {} frames", logs,
                                      counted(options.logs.size(), "log"), frames));
        });
    progress.clear();
    const Judgement judgement = judgement_of(std::move(of_tuning), std::move(verdicts));
    if (!options.junit.empty()) {
        write_file(options.junit, junit_of(judgement, options.tuning,
                                           [&](const Verdict& verdict, const LimitVerdict& limit) {
                                               return command_for(options, verdict, limit);
                                           }));
    }
    if (options.junit != "-") {
        print_report(options.json ? dumped(to_json(judgement)) : judgement_text(judgement, options),
                     "");
    }
    return judgement.is_accepted() ? kFine : kFindings;
}

}  // namespace

void add_judge(const Verbs& verbs) {
    const auto options = std::make_shared<JudgeOptions>();
    const Verb verb =
        verbs.add("judge", "Say yes or no to a tuning, by limits that logs must hold");
    verb.option("TUNING", options->tuning, kTuningHelp);
    verb.option("LOG", options->logs, "frame logs: CSV files");
    verb.option("--limits", options->limits, "limits: YAML file");
    verb.option("--against", options->old, "the old tuning, for limits with no_worse_by");
    verb.option("--junit", options->junit,
                "write the verdicts as JUnit XML, too; - is standard output, instead")
        .type_name("FILE");
    verb.option("--workers", options->workers, "logs that run at the same time (0: one a core)")
        .shows_default()
        .range(0U, 64U);
    verb.flag("--json", options->json, "as JSON");
    verb.flag("--starter", options->starter, "write commented limits to start from, and end");
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.footer(
        "The worst log comes first; ! marks a broken limit, - what could not be measured. A log\n"
        "that cannot be read is refused, and the others are judged.\n"
        "Exit status: 0 accepted, 1 refused, 2 bad input.\n"
        "\n"
        "Example:\n"
        "  imgtune judge --starter > limits.yaml\n"
        "  imgtune judge new.yaml --against old.yaml --limits limits.yaml logs/*.csv");
    verb.run([options] { return run_judge(*options); });
}

}  // namespace imgtune::cli
