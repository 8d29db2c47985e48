#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/register_values.h"
#include "workbench/files/file_source.h"
#include "workbench/files/output_file.h"
#include "workbench/files/tuning_files.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"

namespace imgtune::cli {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostWorst = 10;
constexpr std::array<const char*, 2> kJobNames = {"ccm", "color"};

struct Options {
    std::string a;
    std::string b;
    std::string frames;
    std::string output;
    bool json = false;
};

/// Differences of the tunings, field by field, as [{field, a, b}].
Json tuning_differences(const Tuning& a, const Tuning& b) {
    Json all = Json::array();
    const auto add = [&](const std::string& field, const Json& in_a, const Json& in_b) {
        if (in_a != in_b) all.push_back({{"field", field}, {"a", in_a}, {"b", in_b}});
    };
    add("name", a.name, b.name);
    add("ccm", a.has_ccm ? "present" : "missing", b.has_ccm ? "present" : "missing");
    add("color", a.has_color ? "present" : "missing", b.has_color ? "present" : "missing");
    const auto in_both = [&](Part part) {
        if (part == Part::ccm) return a.has_ccm && b.has_ccm;
        return part == Part::caller || (a.has_color && b.has_color);
    };
    for (const FieldRef& field : fields()) {
        if (!in_both(field.record->part)) continue;
        if (field.read_bits(a) == field.read_bits(b)) continue;
        add(field.path(), field.read(a), field.read(b));
    }
    for (const OpaqueWord& word : opaque_words()) {
        if (!in_both(word.part)) continue;
        const auto bits = [&](const Tuning& tuning) {
            return fmt::format("0x{:X}", load_word(tuning, word.part, word.word) & word.mask);
        };
        add(word.path, bits(a), bits(b));
    }
    return all;
}

std::string value_text(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/// One frame in which the registers of a job differ.
struct FrameDifference {
    std::uint64_t number = 0;
    Difference largest;
    std::int64_t a = 0;
    std::int64_t b = 0;
};

/// Runs a log through both tunings, and gathers where their registers differ.
class FrameComparison {
  public:
    FrameComparison(const Tuning& a, const Tuning& b)
        : jobs_{a.has_ccm && b.has_ccm, a.has_color && b.has_color},
          a_(a, jobs_),
          b_(b, jobs_),
          names_{value_names(Job::ccm), value_names(Job::color)} {
        if (!jobs_.ccm && !jobs_.color) {
            throw BadInput("the tunings have no part in common: nothing to run the frames through");
        }
        for (std::size_t job = 0; job < 2; ++job) largest_[job].resize(names_[job].size());
    }

    /// Rows "frame,field,a,b" go to `rows`, if any.
    void run(FrameLog& log, OutputFile* rows) {
        if (rows != nullptr) rows->write("frame,field,a,b\n");
        Frame frame;
        while (log.next(frame)) {
            ++frames_;
            a_.run(frame);
            b_.run(frame);
            bool differs = false;
            if (jobs_.ccm) differs |= compare(Job::ccm, rows);
            if (jobs_.color) differs |= compare(Job::color, rows);
            if (differs) ++differing_;
        }
    }

    std::uint64_t differing() const { return differing_; }

    Json json() const {
        Json out = {{"frames", frames_}, {"differing", differing_}};
        for (std::size_t job = 0; job < 2; ++job) {
            if (job == 0 ? !jobs_.ccm : !jobs_.color) continue;
            Json worst = Json::array();
            for (const FrameDifference& frame : worst_[job]) {
                worst.push_back({{"frame", frame.number},
                                 {"field", names_[job][frame.largest.value]},
                                 {"a", frame.a},
                                 {"b", frame.b}});
            }
            Json by_field = Json::object();
            for (std::size_t k = 0; k < largest_[job].size(); ++k) {
                if (largest_[job][k] > 0) by_field[names_[job][k]] = largest_[job][k];
            }
            out[kJobNames[job]] = {
                {"differing", counts_[job]}, {"worst", worst}, {"largest_by_field", by_field}};
        }
        return out;
    }

    std::string text() const {
        std::string out =
            fmt::format("{} of {} frames differ in their registers\n", differing_, frames_);
        for (std::size_t job = 0; job < 2; ++job) {
            if (worst_[job].empty()) continue;
            out += fmt::format("\n{}: {} frames differ; the worst:\n",
                               job == 0 ? "matrix" : "colour", counts_[job]);
            for (const FrameDifference& frame : worst_[job]) {
                out += fmt::format("  frame {:<10}{:<24}{:>6} -> {}\n", frame.number,
                                   names_[job][frame.largest.value], frame.a, frame.b);
            }
        }
        return out;
    }

  private:
    bool compare(Job job, OutputFile* rows) {
        const Registers& a = a_.registers();
        const Registers& b = b_.registers();
        const bool same = job == Job::ccm ? std::memcmp(&a.ccm, &b.ccm, sizeof(a.ccm)) == 0
                                          : std::memcmp(&a.color, &b.color, sizeof(a.color)) == 0;
        // Equal words mean equal values only under one codec.
        const CallerSettings& caller_a = a_.tuning().caller;
        const CallerSettings& caller_b = b_.tuning().caller;
        if (same && caller_a.int_bits == caller_b.int_bits &&
            caller_a.frac_bits == caller_b.frac_bits) {
            return false;
        }
        const auto index = static_cast<std::size_t>(job);
        const auto in_a = values_of(job, a, caller_a);
        const auto in_b = values_of(job, b, caller_b);
        const Difference largest = largest_difference(in_a, in_b);
        if (largest.size == 0) return false;
        ++counts_[index];
        for (std::size_t k = 0; k < in_a.size(); ++k) {
            if (in_a[k] == in_b[k]) continue;
            largest_[index][k] = std::max(largest_[index][k], std::abs(in_a[k] - in_b[k]));
            if (rows != nullptr) {
                rows->write(
                    fmt::format("{},{},{},{}\n", frames_, names_[index][k], in_a[k], in_b[k]));
            }
        }
        keep_if_among_worst(worst_[index],
                            {frames_, largest, in_a[largest.value], in_b[largest.value]});
        return true;
    }

    static void keep_if_among_worst(std::vector<FrameDifference>& worst,
                                    const FrameDifference& frame) {
        const auto at =
            std::ranges::upper_bound(worst, frame.largest.size, std::ranges::greater(),
                                     [](const FrameDifference& kept) { return kept.largest.size; });
        worst.insert(at, frame);
        if (worst.size() > kMostWorst) worst.pop_back();
    }

    Jobs jobs_;
    Camera a_;
    Camera b_;
    std::array<std::vector<std::string>, 2> names_;
    std::array<std::vector<std::int64_t>, 2> largest_;  ///< by value
    std::array<std::vector<FrameDifference>, 2> worst_;
    std::array<std::uint64_t, 2> counts_{};
    std::uint64_t frames_ = 0;
    std::uint64_t differing_ = 0;
};

int run(const Options& options) {
    if (options.a == "-" && options.b == "-") {
        throw BadInput("only one of the tunings can be standard input");
    }
    const Tuning a = require_tuning(options.a);
    const Tuning b = require_tuning(options.b);
    const Json differences = tuning_differences(a, b);
    std::optional<FrameComparison> comparison;
    if (!options.frames.empty()) {
        FrameFile file(options.frames);
        FrameLog& log = file.log();
        comparison.emplace(a, b);
        if (options.output.empty()) {
            comparison->run(log, nullptr);
        } else {
            OutputFile rows(options.output);
            comparison->run(log, &rows);
            rows.commit();
        }
    }

    std::string text;
    if (options.json) {
        Json out = {{"differences", differences}};
        if (comparison) out["frames"] = comparison->json();
        text = out.dump(2) + "\n";
    } else {
        for (const Json& difference : differences) {
            text += fmt::format("{}: {} -> {}\n", difference["field"].get<std::string>(),
                                value_text(difference["a"]), value_text(difference["b"]));
        }
        if (differences.empty()) text += "the tunings are equal\n";
        if (comparison) text += "\n" + comparison->text();
    }
    if (options.output == "-") {
        std::fputs(text.c_str(), stderr);  // the rows have standard output
    } else {
        write_file("-", text);
    }
    const bool frames_differ = comparison && comparison->differing() > 0;
    return differences.empty() && !frames_differ ? kFine : kFindings;
}

}  // namespace

void add_diff(CLI::App& app, Context& context) {
    auto options = std::make_shared<Options>();
    CLI::App* verb = app.add_subcommand("diff", "Tell what differs between two tunings");
    verb->add_option("A", options->a, "tuning: YAML file, '-', or folder of images")->required();
    verb->add_option("B", options->b, "the other tuning")->required();
    CLI::Option* frames = verb->add_option("--frames", options->frames,
                                           "run this frame log through both, compare registers");
    verb->add_option("-o,--output", options->output,
                     "write every difference of the registers as CSV: frame,field,a,b")
        ->needs(frames);
    verb->add_flag("--json", options->json, "as JSON");
    verb->footer(
        "Exit status 0: equal; 1: they differ.\n"
        "\n"
        "Example:\n"
        "  imgtune diff old.yaml new.yaml --frames walk.csv");
    verb->callback([options, &context] { context.run = [options] { return run(*options); }; });
}

}  // namespace imgtune::cli
