#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "wasm/engine.h"
#include "workbench/json/smoothing.h"
#include "workbench/judging/smoothing.h"
#include "workbench/tuning/comments.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench::page {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
/// What a choice reaches, as it goes from worker to page and back.
constexpr std::size_t kReachedValues = 4;

void put_reached(std::vector<double>& row, const Reached& reached) {
    for (const auto& value : {reached.settle, reached.step, reached.at_rest, reached.flicker}) {
        row.push_back(value.value_or(kNone));
    }
}

std::vector<Reached> reached_in(std::string_view bytes) {
    std::vector<double> values(bytes.size() / sizeof(double));
    if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * sizeof(double));
    std::vector<Reached> rows;
    for (std::size_t at = 0; at + kReachedValues <= values.size(); at += kReachedValues) {
        const auto value = [&](std::size_t k) {
            return std::isnan(values[at + k]) ? std::nullopt : std::optional(values[at + k]);
        };
        rows.push_back({value(0), value(1), value(2), value(3)});
    }
    return rows;
}

SmoothWish wish_of(const Json& json) {
    SmoothWish wish;
    wish.settle = json.at("settle");
    wish.step = json.at("step");
    wish.at_rest = json.at("at_rest");
    return wish;
}

}  // namespace

/// Choices of "weights" from "begin", "count" of them, as "smoothed" numbers them; the first is the
/// tuning as it is.
Answer Engine::try_weights(const Json& arguments, std::string_view) {
    require_ccm();
    std::vector<RingWeights> choices = ring_weights();
    choices.insert(choices.begin(), tuning().caller.weights);
    Answer answer;
    answer.json["all"] = choices.size();
    std::vector<double> row;
    const auto begin = arguments.at("begin").get<std::size_t>();
    const auto end = std::min(choices.size(), begin + arguments.at("count").get<std::size_t>());
    for (std::size_t i = begin; i < end; ++i) {
        put_reached(row, reached_by(tuning(), choices[i], frames_, SummaryOptions{}));
    }
    answer.add(row);
    return answer;
}

/// One size of one of the colour engine's steps; "all" of them are there.
Answer Engine::try_step(const Json& arguments, std::string_view) {
    const auto step = static_cast<ColorStep>(arguments.at("step").get<std::size_t>());
    const std::span<const std::uint32_t> sizes = color_step_sizes();
    const auto at = arguments.at("at").get<std::size_t>();
    if (at >= sizes.size()) throw BadInput("no such step");
    const StepReached reached = reached_by(tuning(), step, sizes[at], frames_, SummaryOptions{});
    Answer answer;
    answer.json = {{"all", sizes.size()},
                   {"size", sizes[at]},
                   {"settle", reached.settle ? Json(*reached.settle) : Json()},
                   {"neverRests", reached.never_rests}};
    return answer;
}

/// What is chosen of all weights, whose reached values stand in `bytes`, for a wish; "steps" are
/// those that `try_step` found, or null.
Answer Engine::choose_smoothing(const Json& arguments, std::string_view bytes) {
    Smoothing chosen;
    chosen.wish = wish_of(arguments.at("wish"));
    const std::vector<Reached> reached = reached_in(bytes);
    const std::vector<RingWeights> choices = ring_weights();
    if (reached.size() == choices.size() + 1) {
        chosen.before.weights = tuning().caller.weights;
        chosen.before.reached = reached.front();
        chosen.wish.flicker = reached.front().flicker.value_or(0.0);
        chosen.before.strain = strain_under(chosen.before.reached, chosen.wish);
        std::vector<WeightsTried> tried;
        for (std::size_t i = 0; i < choices.size(); ++i) {
            tried.push_back({choices[i], reached[i + 1], {}});
        }
        choose_weights(std::move(tried), chosen);
    }
    const Json& steps = arguments.at("steps");
    for (std::size_t i = 0; i < std::min(kColorSteps, steps.size()); ++i) {
        if (steps[i].is_null()) continue;
        StepTried found{steps[i].at("size").get<std::uint32_t>(), {}};
        if (!steps[i].at("settle").is_null()) found.reached.settle = steps[i].at("settle");
        chosen.steps[i] = found;
    }
    Answer answer;
    answer.json = to_json(chosen);
    return answer;
}

/// The tuning's text, `bytes`, with "weights" and "steps", each or null, in place of its own.
Answer Engine::smoothed_text(const Json& arguments, std::string_view bytes) {
    Smoothing chosen;
    if (const Json& weights = arguments.at("weights"); !weights.is_null()) {
        chosen.weights.emplace();
        chosen.weights->weights = weights.get<RingWeights>();
    }
    const Json& steps = arguments.at("steps");
    for (std::size_t i = 0; i < std::min(kColorSteps, steps.size()); ++i) {
        if (!steps[i].is_null()) chosen.steps[i] = StepTried{steps[i].get<std::uint32_t>(), {}};
    }
    const std::string yaml(bytes);
    const auto text = text_with_smoothing(yaml, tuning(), chosen);
    Answer answer;
    answer.json["comments"] = text.has_value();
    answer.blobs.push_back(
        text ? *text : head_comments(yaml) + write_yaml(with_smoothing(tuning(), chosen), true));
    return answer;
}

}  // namespace imgtune::workbench::page
