#include "workbench/studies/diff.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "workbench/text/bad_input.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostWorst = 10;

Jobs common_jobs(const Tuning& a, const Tuning& b) {
    const Jobs jobs{a.has_ccm && b.has_ccm, a.has_color && b.has_color};
    if (!jobs.ccm && !jobs.color) {
        throw BadInput("the tunings have no part in common: nothing to run the frames through");
    }
    return jobs;
}

/// Equal words mean equal values only under one codec.
bool same_registers(Job job, const Camera& a, const Camera& b) {
    if (job == Job::color) {
        return std::memcmp(&a.color(), &b.color(), sizeof(a.color())) == 0;
    }
    const CallerSettings& in_a = a.tuning().caller;
    const CallerSettings& in_b = b.tuning().caller;
    return in_a.int_bits == in_b.int_bits && in_a.frac_bits == in_b.frac_bits &&
           std::memcmp(&a.ccm(), &b.ccm(), sizeof(a.ccm())) == 0;
}

void keep_if_among_worst(std::vector<FrameDifference>& worst, FrameDifference frame) {
    const auto at = std::find_if(worst.begin(), worst.end(), [&](const FrameDifference& kept) {
        return kept.size < frame.size;
    });
    worst.insert(at, std::move(frame));
    if (worst.size() > kMostWorst) worst.pop_back();
}

}  // namespace

std::vector<FieldDifference> diff_tunings(const Tuning& a, const Tuning& b) {
    std::vector<FieldDifference> all;
    const auto add = [&](std::string field, FieldDifference::Value in_a,
                         FieldDifference::Value in_b) {
        if (in_a != in_b) all.push_back({std::move(field), std::move(in_a), std::move(in_b)});
    };
    const auto presence = [](bool present) { return present ? "present" : "missing"; };
    add("name", a.name, b.name);
    add("ccm", presence(a.has_ccm), presence(b.has_ccm));
    add("color", presence(a.has_color), presence(b.has_color));
    const auto in_both = [&](Part part) {
        if (part == Part::ccm || part == Part::kelvin) return a.has_ccm && b.has_ccm;
        return part == Part::caller || (a.has_color && b.has_color);
    };
    for (const FieldRef& field : fields()) {
        if (!in_both(field.record->part) || field.read_bits(a) == field.read_bits(b)) continue;
        all.push_back({field.path(), field.read(a), field.read(b)});
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

FrameComparer::FrameComparer(const Tuning& a, const Tuning& b, Told told)
    : a_(a, common_jobs(a, b)), b_(b, common_jobs(a, b)), told_(std::move(told)) {
    for (const Job job : {Job::ccm, Job::color}) {
        if (job == Job::ccm ? !a_.jobs().ccm : !a_.jobs().color) continue;
        Tracked tracked;
        tracked.comparison.job = job;
        tracked.names = value_names(job);
        tracked.largest.resize(tracked.names.size());
        tracked_.push_back(std::move(tracked));
    }
}

void FrameComparer::add(const Frame& frame) {
    ++frames_;
    a_.run(frame);
    b_.run(frame);
    bool differs = false;
    for (Tracked& tracked : tracked_) differs |= compare(tracked);
    if (differs) ++differing_;
}

bool FrameComparer::compare(Tracked& tracked) {
    const Job job = tracked.comparison.job;
    if (same_registers(job, a_, b_)) return false;
    const auto in_a = values_of(job, a_.registers(), a_.tuning().caller);
    const auto in_b = values_of(job, b_.registers(), b_.tuning().caller);
    const Difference largest = largest_difference(in_a, in_b);
    if (largest.size == 0) return false;
    ++tracked.comparison.differing;
    for (std::size_t k = 0; k < in_a.size(); ++k) {
        if (in_a[k] == in_b[k]) continue;
        tracked.largest[k] = std::max(tracked.largest[k], std::abs(in_a[k] - in_b[k]));
        if (told_) told_(frames_, tracked.names[k], in_a[k], in_b[k]);
    }
    keep_if_among_worst(tracked.comparison.worst,
                        {frames_, tracked.names[largest.value], largest.size, in_a[largest.value],
                         in_b[largest.value]});
    return true;
}

FramesComparison FrameComparer::result() const {
    FramesComparison result{frames_, differing_, {}};
    for (const Tracked& tracked : tracked_) {
        JobComparison job = tracked.comparison;
        for (std::size_t k = 0; k < tracked.names.size(); ++k) {
            if (tracked.largest[k] > 0)
                job.fields.push_back({tracked.names[k], tracked.largest[k]});
        }
        result.jobs.push_back(std::move(job));
    }
    return result;
}

}  // namespace imgtune::workbench
