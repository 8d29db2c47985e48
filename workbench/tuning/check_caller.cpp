#include <fmt/format.h>

#include <algorithm>

#include "workbench/tuning/checked.h"
#include "workbench/tuning/stall.h"

namespace imgtune::workbench {

namespace {

constexpr std::int32_t kUnityBits = 9;  // the temporal average and the output take 512 as 1.0
/// In 1/512: with this, diagonals stop up to 1.6 % short.
constexpr std::int32_t kMostStall = 4;
constexpr std::uint32_t kMiredPerKelvin = 1000000;

void check_codec(Checked& checked) {
    const CallerSettings& caller = checked.tuning().caller;
    if (!checked.codec_fits() && caller.int_bits >= 0 && caller.int_bits <= 12 &&
        caller.frac_bits >= 0 && caller.frac_bits <= 12) {
        checked.report(
            {.code = "T114",
             .path = "caller.int_bits",
             .message = fmt::format("is {}, with frac_bits {}; allowed are sums up to 12",
                                    caller.int_bits, caller.frac_bits),
             .value = std::to_string(caller.int_bits),
             .effect = "the sign is cut off: negative coefficients turn positive",
             .suggestion = "int_bits: 3 with frac_bits: 9"});
    }
    if (caller.frac_bits != kUnityBits) {
        checked.report({.code = "T115",
                        .path = "caller.frac_bits",
                        .message = fmt::format("is {}, but the output takes 512, 9 bits, as 1.0",
                                               caller.frac_bits),
                        .value = std::to_string(caller.frac_bits),
                        .allowed = "9",
                        .effect = "diagonals of another scale: a picture too dark or too bright",
                        .suggestion = "frac_bits: 9"});
        // Coefficients for another unity would each be a finding.
        checked.suppress("caller.frac_bits");
    }
}

/// The ring's entries are places, not ages: each is replaced every second frame.
void check_ring(Checked& checked) {
    const auto& w = checked.tuning().caller.weights;
    if (w[1] == w[2]) return;
    checked.report(
        {.code = "T119",
         .path = "caller.weights",
         .message = fmt::format("is [{}, {}, {}]: the two frames before weigh differently", w[0],
                                w[1], w[2]),
         .value = fmt::format("[{}, {}, {}]", w[0], w[1], w[2]),
         .allowed = "weights[1] equal to weights[2]",
         .effect = fmt::format("large and small steps of the matrix take turns, and it rests up to "
                               "{}/512 short of the tuned one",
                               2 * worst_stall(w)),
         .suggestion =
             fmt::format("[{}, {}, {}]", w[0], (w[1] + w[2] + 1) / 2, (w[1] + w[2] + 1) / 2)});
}

void check_weights(Checked& checked) {
    const auto& w = checked.tuning().caller.weights;
    if (w[0] + w[1] + w[2] == 0) {
        checked.report({.code = "T116",
                        .path = "caller.weights",
                        .message = fmt::format("is [{}, {}, {}], a sum of 0; it must be above 0",
                                               w[0], w[1], w[2]),
                        .value = fmt::format("[{}, {}, {}]", w[0], w[1], w[2]),
                        .allowed = "a sum above 0",
                        .effect = "the matrix is always the identity: pale and tinted colours",
                        .suggestion = "[2, 1, 1]; [1, 0, 0] averages nothing"});
    } else if (w[0] == 0) {
        checked.report({.code = "T117",
                        .path = "caller.weights[0]",
                        .message = "is 0: the new matrix has no weight; it must be above 0",
                        .value = "0",
                        .allowed = "above 0",
                        .effect = "the matrix never follows the light",
                        .suggestion = "[2, 1, 1]"});
    } else if (const std::int32_t stall = worst_stall(w); stall > kMostStall) {
        checked.report(
            {.code = "T118",
             .path = "caller.weights",
             .message = fmt::format("is [{}, {}, {}]: the truncating average can stop {}/512 short "
                                    "of the matrix, a diagonal {}/512",
                                    w[0], w[1], w[2], stall, 2 * stall),
             .value = fmt::format("[{}, {}, {}]", w[0], w[1], w[2]),
             .allowed = fmt::format("stops up to {}/512", kMostStall),
             .effect = "in steady light the colours stay slightly off the tuned ones, by how much "
                       "depends on the light before",
             .suggestion = "a larger first weight, such as [2, 1, 1]"});
    } else {
        check_ring(checked);
    }
}

/// False: nothing more is to be said of the grid.
bool is_in_kelvin(Checked& checked) {
    const auto& grid = checked.tuning().caller.ct_grid;
    if (!std::all_of(grid.begin(), grid.end(),
                     [](std::uint32_t ct) { return ct >= 50 && ct < 1000; })) {
        return true;
    }
    std::string kelvin;
    for (const std::uint32_t mired : grid) {
        kelvin += fmt::format("{}{}", kelvin.empty() ? "[" : ", ", kMiredPerKelvin / mired);
    }
    checked.report(
        {.code = "T218",
         .path = "caller.ct_grid",
         .message = fmt::format("starts with {}: that looks like mired; it is in kelvin", grid[0]),
         .value = std::to_string(grid[0]),
         .allowed = "1000..1000000",
         .effect = "every frame lies beyond one end of the grid: one image for all",
         .suggestion = kelvin + "]"});
    checked.suppress("caller.ct_grid");
    return false;
}

void check_grid(Checked& checked) {
    if (!is_in_kelvin(checked)) return;
    const auto& grid = checked.tuning().caller.ct_grid;
    bool rises = true;
    bool falls = true;
    std::size_t last_good = 0;
    for (std::size_t i = 1; i < grid.size(); ++i) {
        rises = rises && grid[i] > grid[i - 1];
        falls = falls && grid[i] < grid[i - 1];
        if (rises || falls) last_good = i;
    }
    if (rises || falls) return;
    const std::string path = fmt::format("caller.ct_grid[{}]", last_good + 1);
    checked.report({.code = "T209",
                    .path = path,
                    .message = fmt::format("is {} after {}: the grid neither rises nor falls "
                                           "throughout",
                                           grid[last_good + 1], grid[last_good]),
                    .value = std::to_string(grid[last_good + 1]),
                    .allowed = "five different CTs in order",
                    .effect = "a wrong pair of images is blended around this CT",
                    .suggestion = "sort ct_grid together with the images of every slot"});
    checked.suppress(path);
}

}  // namespace

void check_caller(Checked& checked) {
    if (checked.tuning().has_ccm) {
        check_codec(checked);
        check_weights(checked);
    }
    if (checked.tuning().has_color) check_grid(checked);
}

}  // namespace imgtune::workbench
