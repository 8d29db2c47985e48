#include "workbench/files/smooth_files.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "workbench/files/file_source.h"
#include "workbench/files/replay_files.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

using Logs = std::vector<std::vector<Frame>>;

/// The worst of all logs.
template <class ReachedByLog>
auto over(const Logs& logs, const ReachedByLog& reached_by_log) {
    decltype(reached_by_log(logs[0])) worst;
    for (const std::vector<Frame>& log : logs) worst.take(reached_by_log(log));
    return worst;
}

/// The smallest step with which the colour registers settle in time.
std::optional<StepTried> find_step(const Tuning& tuning, ColorStep step, const Logs& logs,
                                   const SmoothRequest& request,
                                   const std::function<void()>& tried) {
    for (const std::uint32_t size : color_step_sizes()) {
        const StepReached reached = over(logs, [&](const std::vector<Frame>& log) {
            return reached_by(tuning, step, size, log, request.options);
        });
        tried();
        if (!reached.never_rests && reached.settle.value_or(0.0) <= request.wish.settle)
            return StepTried{size, reached};
    }
    return std::nullopt;
}

}  // namespace

std::vector<Frame> read_log(const std::string& path) {
    FrameFile file(path);
    std::vector<Frame> frames;
    for (Frame frame; file.log().next(frame);) frames.push_back(frame);
    if (frames.empty()) throw BadInput(file.log().name() + ": the log has no frames");
    return frames;
}

Smoothing find_smoothing(const Tuning& tuning, const Logs& logs, const SmoothRequest& request,
                         const ChoicesTried& tried) {
    Smoothing answer;
    answer.wish = request.wish;
    const std::vector<RingWeights> weights =
        request.jobs.ccm ? ring_weights() : std::vector<RingWeights>{};
    const std::size_t steps = request.jobs.color ? kColorSteps : 0;
    const std::size_t all = weights.size() + steps * color_step_sizes().size();

    std::mutex telling;
    std::size_t count = 0;
    const auto tell = [&] {
        const std::lock_guard lock(telling);
        if (tried) tried(++count, all);
    };
    const auto reached_with = [&](const RingWeights& choice) {
        return over(logs, [&](const std::vector<Frame>& log) {
            return reached_by(tuning, choice, log, request.options);
        });
    };
    if (request.jobs.ccm) {
        answer.before.weights = tuning.caller.weights;
        answer.before.reached = reached_with(tuning.caller.weights);
        answer.wish.flicker = answer.before.reached.flicker.value_or(0.0);
        answer.before.strain = strain_under(answer.before.reached, answer.wish);
    }
    std::vector<WeightsTried> results(weights.size());
    // The few long searches first, so that no core is left with one at the end.
    in_parallel(steps + weights.size(), request.workers, [&](std::size_t i) {
        if (i < steps) {
            const auto step = static_cast<ColorStep>(i);
            answer.steps[i] = find_step(tuning, step, logs, request, tell);
            return;
        }
        WeightsTried& result = results[i - steps];
        result.weights = weights[i - steps];
        result.reached = reached_with(result.weights);
        tell();
    });
    choose_weights(std::move(results), answer);
    return answer;
}

}  // namespace imgtune::workbench
