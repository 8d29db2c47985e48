#include <fmt/format.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/progress.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/smooth_files.h"
#include "workbench/files/tuning_files.h"
#include "workbench/json/smoothing.h"
#include "workbench/text/counted.h"
#include "workbench/text/shown_text.h"
#include "workbench/tuning/comments.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::cli {

namespace {

struct SmoothOptions {
    std::string tuning;
    std::vector<std::string> logs;
    std::string output;
    SmoothRequest request;
    bool json = false;
    bool force = false;
};

std::string weights_text(const RingWeights& weights) {
    return fmt::format("{}, {}, {}", weights[0], weights[1], weights[2]);
}

std::string number_or_dash(const std::optional<double>& value, const char* form) {
    return value ? fmt::format(fmt::runtime(form), *value) : "-";
}

std::string smoothing_row(const std::string& name, const WeightsTried& tried) {
    const Reached& reached = tried.reached;
    return fmt::format(
        "  {:<10} {:<14} {:>7} {:>7} {:>8} {:>8}\n", name, weights_text(tried.weights),
        number_or_dash(reached.settle, "{:.0f}"), number_or_dash(reached.step, "{:.2f}"),
        number_or_dash(reached.at_rest, "{:.2f}"), number_or_dash(reached.flicker, "{:.2f}"));
}

/// "a step of 1.56, the wish 1.20"
std::string beyond_text(const WeightsTried& tried, const SmoothWish& wish) {
    const Reached& reached = tried.reached;
    switch (tried.strain.binds) {
        case Binding::settle:
            return fmt::format("{:.0f} frames to settle, the wish {:.0f}", *reached.settle,
                               wish.settle);
        case Binding::step:
            return fmt::format("a step of {:.2f}, the wish {:.2f}", *reached.step, wish.step);
        case Binding::at_rest:
            return fmt::format("{:.2f} short at rest, the wish {:.2f}", *reached.at_rest,
                               wish.at_rest);
        case Binding::flicker:
            return fmt::format("flicker of {:.2f}, as the tuning is {:.2f}", *reached.flicker,
                               wish.flicker);
        case Binding::none:
            break;
    }
    return "";
}

/// What the front says of a wish for settling and step that do not go together.
std::string conflict_text(const Smoothing& answer) {
    const WeightsTried* in_time = nullptr;     // the smallest step
    const WeightsTried* small_step = nullptr;  // the fewest frames
    for (const WeightsTried& each : answer.front) {
        if (each.reached.settle.value_or(0.0) <= answer.wish.settle) in_time = &each;
        if (small_step == nullptr && each.reached.step.value_or(0.0) <= answer.wish.step)
            small_step = &each;
    }
    std::string text;
    if (in_time != nullptr) {
        text += fmt::format("  settling in {:.0f} frames takes a step of {:.2f}\n",
                            answer.wish.settle, in_time->reached.step.value_or(0.0));
    }
    if (small_step != nullptr) {
        text += fmt::format("  a step of {:.2f} takes {:.0f} frames\n", answer.wish.step,
                            small_step->reached.settle.value_or(0.0));
    }
    if (answer.front.empty()) {
        text += fmt::format(
            "  no weights keep within {:.2f} at rest without stronger flicker than the tuning\n",
            answer.wish.at_rest);
    }
    return text;
}

std::string binding_text(const Smoothing& answer) {
    const WeightsTried& chosen = *answer.weights;
    if (chosen.strain.binds == Binding::none) return "  nothing binds: no log asks for smoothing\n";
    if (answer.met) {
        return fmt::format("  the wish is met; what binds is {}, at {:.0f} % of its limit\n",
                           binding_name(chosen.strain.binds), 100.0 * chosen.strain.most);
    }
    return fmt::format("  nothing meets the wish; the nearest has {}\n",
                       beyond_text(chosen, answer.wish)) +
           conflict_text(answer);
}

std::string answer_text(const Smoothing& answer, const Tuning& tuning) {
    std::string text;
    if (answer.weights) {
        const SmoothWish& wish = answer.wish;
        text += fmt::format(
            "Matrix average, {} weights tried; CIEDE2000 of the patch that shows it most\n"
            "  {:<10} {:<14} {:>7} {:>7} {:>8} {:>8}\n",
            answer.tried, "", "weights", "frames", "step", "at rest", "flicker");
        text += fmt::format("  {:<10} {:<14} {:>7.0f} {:>7.2f} {:>8.2f} {:>8.2f}\n", "wish", "",
                            wish.settle, wish.step, wish.at_rest, wish.flicker);
        text += smoothing_row("as it is", answer.before);
        text += smoothing_row(answer.met ? "chosen" : "nearest", *answer.weights);
        text += binding_text(answer);
        if (!answer.front.empty()) {
            text += "\nSmallest step for the frames it takes\n";
            for (const WeightsTried& each : answer.front) text += smoothing_row("", each);
        }
    }
    if (!tuning.has_color) return text;
    text += text.empty() ? "" : "\n";
    text += "Colour engine, smallest step a frame with which its registers settle in time\n";
    for (std::size_t i = 0; i < kColorSteps; ++i) {
        const char* const field = field_of(static_cast<ColorStep>(i));
        const auto& step = answer.steps[i];
        text += step ? fmt::format("  {:<10} {:<14} {:>7}\n", field, step->size,
                                   number_or_dash(step->reached.settle, "{:.0f}"))
                     : fmt::format("  {:<10} no step settles in time; left as it is\n", field);
    }
    return text;
}

void write_tuning(const SmoothOptions& options, const Tuning& tuning, const std::string& yaml,
                  const Smoothing& answer) {
    const Tuning changed = with_smoothing(tuning, answer);
    if (!yaml.empty()) {
        if (const auto text = text_with_smoothing(yaml, tuning, answer)) {
            write_file(options.output, *text);
            return;
        }
    }
    const std::string text = head_comments(yaml) + write_yaml(changed, true);
    write_file(options.output, text);
    const std::vector<Comment> lost = lost_comments(yaml, text);
    if (!lost.empty()) {
        say(
            fmt::format("imgtune: {} of {} left out: the values do not stand where they can be "
                        "replaced\n",
                        counted(lost.size(), "comment"), shown_text(options.tuning)));
    }
}

int run_smooth(const SmoothOptions& options) {
    std::vector<std::string> inputs = options.logs;
    inputs.push_back(options.tuning);
    guard_output(options.output, inputs, or_anything(Replaces::nothing, options.force));
    const Tuning checked = tuning_to_run(options.tuning);
    std::string yaml;
    const Tuning tuning = options.tuning == "-" ? checked : require_tuning(options.tuning, &yaml);
    SmoothRequest request = options.request;
    request.jobs = jobs_to_run(options.tuning, tuning, "");
    std::vector<std::vector<Frame>> logs;
    for (const std::string& log : options.logs) logs.push_back(read_log(log));

    ProgressLine progress;
    const Smoothing answer =
        find_smoothing(tuning, logs, request, [&](std::size_t tried, std::size_t all) {
            progress.show(fmt::format("{} of {} choices tried", tried, all));
        });
    progress.clear();
    if (!options.output.empty()) write_tuning(options, tuning, yaml, answer);
    print_report(options.json ? dumped(to_json(answer)) : answer_text(answer, tuning),
                 options.output);
    const bool met = !answer.weights || answer.met;
    return met ? kFine : kFindings;
}

}  // namespace

void add_smooth(const Verbs& verbs) {
    const auto options = std::make_shared<SmoothOptions>();
    SmoothWish& wish = options->request.wish;
    const Verb verb = verbs.add("smooth", "Find the smoothing that meets a wish over logs");
    verb.option("TUNING", options->tuning, kTuningHelp).required();
    verb.option("LOG", options->logs, "frame logs: CSV files").required();
    verb.option("--settle", wish.settle, "frames in which the picture is at rest after a change")
        .shows_default()
        .range(1.0, 100000.0);
    verb.option("--step", wish.step, "CIEDE2000, largest step from one frame to the next")
        .shows_default()
        .range(0.0, 200.0);
    verb.option("--at-rest", wish.at_rest,
                "CIEDE2000, what the average may leave for ever of what the light asks for")
        .shows_default()
        .range(0.0, 200.0);
    verb.option("--fps", options->request.options.frames_per_second,
                "frames per second of the logs")
        .shows_default()
        .range(SummaryOptions::kLeastFramesPerSecond, SummaryOptions::kMostFramesPerSecond);
    verb.option("--noise", options->request.options.noise_percent,
                "noise that is no change of light, as for replay --summary")
        .shows_default()
        .range(0.0, SummaryOptions::kMostNoisePercent);
    verb.option("--workers", options->request.workers,
                "choices that run at the same time (0: one a core)")
        .shows_default()
        .range(0U, 64U);
    verb.option("-o,--output", options->output,
                "write the tuning with what was chosen, comments kept; - is standard output");
    verb.flag("--json", options->json, "as JSON");
    verb.flag("--force", options->force, "replace whatever file is there");
    verb.footer(
        "Every share of the ring's weights up to 8 is run over every log through the library, and\n"
        "the smallest step that meets the wish is chosen; flicker must be no stronger than with "
        "the\n"
        "tuning as it is. When nothing meets the wish, the nearest is told, and why.\n"
        "Exit status: 0 the wish is met, 1 it is not, 2 bad input.\n"
        "\n"
        "Example:\n"
        "  imgtune smooth phone.yaml logs/*.csv --settle 25 --step 1.2 -o smoother.yaml");
    verb.run([options] { return run_smooth(*options); });
}

}  // namespace imgtune::cli
