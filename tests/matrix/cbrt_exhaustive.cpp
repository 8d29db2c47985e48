// Walks all 2^32 bit patterns of a float through the cube-root iteration: does it end for every
// finite one, after how many rounds, and where on minus infinity. Takes minutes, so it is run on
// demand. Exit status 1: an argument for which it does not end, or a result that cbrt_stats does
// not return.

#include <imgtune/matrix.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <thread>
#include <vector>

#include "matrix/cube_root.h"

namespace {

using imgtune::cube_root_half_step;
using imgtune::kMaxCubeRootRounds;

constexpr std::uint64_t kPatterns = std::uint64_t{1} << 32;
constexpr std::uint32_t kLanes = 32;     // consecutive patterns, iterated side by side
constexpr std::uint32_t kSampling = 61;  // every so many batches are compared with cbrt_stats

struct Findings {
    std::uint64_t finite = 0;
    std::uint64_t compared = 0;
    std::uint64_t unsettled = 0;
    std::uint64_t mismatches = 0;
    int max_rounds = 0;
    float max_rounds_at = 0;
    double max_error = 0;  // relative, of the compared results that are finite
    std::vector<float> minus_infinity;

    void add(const Findings& other) {
        finite += other.finite;
        compared += other.compared;
        unsettled += other.unsettled;
        mismatches += other.mismatches;
        if (other.max_rounds > max_rounds) max_rounds_at = other.max_rounds_at;
        max_rounds = std::max(max_rounds, other.max_rounds);
        max_error = std::max(max_error, other.max_error);
        minus_infinity.insert(minus_infinity.end(), other.minus_infinity.begin(),
                              other.minus_infinity.end());
    }
};

struct Batch {
    std::array<float, kLanes> R{}, x{};
    std::array<std::int32_t, kLanes> settled{}, rounds{};

    explicit Batch(std::uint32_t first) {
        for (std::uint32_t i = 0; i < kLanes; ++i) R[i] = std::bit_cast<float>(first + i);
        x.fill(1.0f);
    }

    /// A settled lane may go on with the others: its result no longer changes.
    bool round() {
        std::int32_t all_settled = 1;
        for (std::uint32_t i = 0; i < kLanes; ++i) {
            const float y = cube_root_half_step(x[i], R[i]);
            const float next = cube_root_half_step(y, R[i]);
            rounds[i] += 1 - settled[i];
            settled[i] |=
                static_cast<std::int32_t>(x[i] == next) | static_cast<std::int32_t>(y == next);
            x[i] = next;
            all_settled &= settled[i];
        }
        return all_settled != 0;
    }
};

void compare(float R, float found, Findings& findings) {
    ++findings.compared;
    const float returned = cbrt_stats(R);
    if (std::bit_cast<std::uint32_t>(returned) != std::bit_cast<std::uint32_t>(found)) {
        ++findings.mismatches;
    }
    if (!std::isfinite(returned)) return;
    const double exact = std::cbrt(static_cast<double>(R));
    const double error = std::fabs((static_cast<double>(returned) - exact) / exact);
    findings.max_error = std::max(findings.max_error, error);
}

void walk(std::uint64_t begin, std::uint64_t end, Findings& findings) {
    for (std::uint64_t first = begin; first < end; first += kLanes) {
        Batch batch(static_cast<std::uint32_t>(first));
        if (!std::isfinite(batch.R[0])) continue;  // kLanes divides the run of each exponent
        for (int n = 0; n < kMaxCubeRootRounds && !batch.round();) ++n;
        for (std::uint32_t i = 0; i < kLanes; ++i) {
            ++findings.finite;
            if (batch.R[i] == 0.0f) continue;
            if (batch.settled[i] == 0) ++findings.unsettled;
            if (batch.rounds[i] > findings.max_rounds) {
                findings.max_rounds = batch.rounds[i];
                findings.max_rounds_at = batch.R[i];
            }
            const bool minus_infinity = batch.x[i] == -std::numeric_limits<float>::infinity();
            if (minus_infinity) findings.minus_infinity.push_back(batch.R[i]);
            if (minus_infinity || first / kLanes % kSampling == 0) {
                compare(batch.R[i], batch.x[i], findings);
            }
        }
    }
}

}  // namespace

int main() {
    const std::uint64_t workers = std::max(1U, std::thread::hardware_concurrency());
    std::vector<Findings> parts(workers);
    std::vector<std::thread> threads;
    for (std::uint64_t i = 0; i < workers; ++i) {
        const auto bound = [&](std::uint64_t k) {
            return kPatterns / kLanes * k / workers * kLanes;
        };
        threads.emplace_back(walk, bound(i), bound(i + 1), std::ref(parts[i]));
    }
    Findings all;
    for (std::uint64_t i = 0; i < workers; ++i) {
        threads[i].join();
        all.add(parts[i]);
    }
    std::printf("finite arguments: %llu, unsettled after %d rounds: %llu\n",
                static_cast<unsigned long long>(all.finite), kMaxCubeRootRounds,
                static_cast<unsigned long long>(all.unsettled));
    std::printf("most rounds: %d, first for %.9g (%a)\n", all.max_rounds,
                static_cast<double>(all.max_rounds_at), static_cast<double>(all.max_rounds_at));
    std::printf("ending on minus infinity: %zu\n", all.minus_infinity.size());
    for (const float R : all.minus_infinity) {
        std::printf("  %.9g (%a)\n", static_cast<double>(R), static_cast<double>(R));
    }
    std::printf("compared with cbrt_stats: %llu, different: %llu; largest relative error: %.3g\n",
                static_cast<unsigned long long>(all.compared),
                static_cast<unsigned long long>(all.mismatches), all.max_error);
    return all.unsettled == 0 && all.mismatches == 0 ? 0 : 1;
}
