#include "workbench/studies/summary.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "workbench/studies/resting.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostListed = 1000;
constexpr std::size_t kMostSettleFrames = 4096;  ///< counted one by one; longer ones together

/// The frames to settle of the change in the middle.
std::optional<std::uint64_t> median(const std::vector<std::uint64_t>& counts) {
    const std::uint64_t total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
    std::uint64_t seen = 0;
    for (std::size_t frames = 0; frames < counts.size() && total > 0; ++frames) {
        seen += counts[frames];
        if (2 * seen >= total) return frames;
    }
    return std::nullopt;
}

}  // namespace

double per_second(const SummaryRecord& record, std::uint64_t count) {
    if (record.frames == 0) return 0.0;
    return static_cast<double>(count) * record.frames_per_second /
           static_cast<double>(record.frames);
}

std::vector<FieldMotion> restless_fields(const SummaryRecord& record, Restlessness by) {
    const auto size = [by](const FieldMotion& motion) {
        return by == Restlessness::step ? motion.largest_step
                                        : static_cast<std::int64_t>(motion.sign_changes);
    };
    std::vector<FieldMotion> moved;
    std::copy_if(record.fields.begin(), record.fields.end(), std::back_inserter(moved),
                 [&](const FieldMotion& motion) { return size(motion) > 0; });
    std::stable_sort(moved.begin(), moved.end(),
                     [&](const FieldMotion& a, const FieldMotion& b) { return size(a) > size(b); });
    return moved;
}

Summary::Summary(const Camera& camera, const SummaryOptions& options)
    : probe_(camera),
      watch_(camera.tuning().caller, camera.jobs(), options.noise_percent,
             frames_of_hold(options.frames_per_second)),
      motions_(camera.tuning().caller, camera.jobs()),
      judge_(camera, motions_, frames_of_hold(options.frames_per_second)) {
    record_.frames_per_second = options.frames_per_second;
    record_.noise_percent = options.noise_percent;
    record_.hold_frames = frames_of_hold(options.frames_per_second);
    record_.jobs = camera.jobs();
    for (auto& counts : settle_counts_) counts.resize(kMostSettleFrames + 1);
}

void Summary::add(std::uint64_t number, const Frame& frame, const Camera& camera) {
    using Phase = FieldMotions::Phase;
    using Event = LightWatch::Event;
    if (record_.frames++ == 0) {
        const Rest rest = run_to_rest(probe_, frame);
        record_.cold_start_frames = std::max(rest.ccm.still ? rest.ccm.frames : 1,
                                             rest.color.still ? rest.color.frames : 1);
    }
    if (record_.jobs.ccm) note_clipping(number, frame);
    const LightWatch hold = watch_;
    const Event event = watch_.next(frame);
    if (event == Event::begins) {
        if (record_.frames > 1) close_change(hold);
        change_ = {number, number, 0, {}};
    }
    if (event != Event::holds) motions_.begin_hold();
    const Phase phase = record_.frames <= record_.cold_start_frames ? Phase::cold_start
                        : event == Event::holds                     ? Phase::light_holds
                                                                    : Phase::light_moves;
    const bool turned = motions_.next(number, camera.registers(), phase);
    if (turned && phase == Phase::light_holds) note_turn(number);
    if (event == Event::holds) {
        judge_.next();
        change_.held = watch_.held();
        if (watch_.held() == record_.hold_frames) judge_.judge_by(watch_);
    } else {
        change_.last = number;
        change_.held = 0;
        judge_.begin(camera.state());
    }
}

SummaryRecord Summary::finish() {
    if (record_.frames > 0) close_change(watch_);
    record_.fields = motions_.motions();
    for (std::size_t job = 0; job < settle_counts_.size(); ++job) {
        record_.settling[job].median_frames = median(settle_counts_[job]);
    }
    return std::move(record_);
}

void Summary::note_clipping(std::uint64_t number, const Frame& frame) {
    const Clipping end = find_clipping(probe_.tuning(), frame);
    if (end != Clipping::none) {
        ++record_.clipped_frames;
        if (end != last_clipping_) {
            ++record_.clipped_span_count;
            if (record_.clipped.size() < kMostListed)
                record_.clipped.push_back({{number, number}, end});
        } else if (record_.clipped_span_count <= kMostListed) {
            record_.clipped.back().frames.last = number;
        }
    }
    last_clipping_ = end;
}

void Summary::note_turn(std::uint64_t number) {
    if (record_.flicker_span_count > 0 && number - last_turn_ <= record_.hold_frames) {
        if (record_.flicker_span_count <= kMostListed) {
            record_.flicker.back().frames.last = number;
            ++record_.flicker.back().turns;
        }
    } else {
        ++record_.flicker_span_count;
        if (record_.flicker.size() < kMostListed) record_.flicker.push_back({{number, number}, 1});
    }
    last_turn_ = number;
}

/// The light has changed again, or the log has ended.
void Summary::close_change(const LightWatch& hold) {
    if (!judge_.is_judged() && change_.held > 0) judge_.judge_by(hold);
    change_.settling = judge_.verdicts();
    if (in_cold_start_) {
        record_.cold_start = change_;
        in_cold_start_ = false;
        return;
    }
    ++record_.change_count;
    if (record_.changes.size() < kMostListed) record_.changes.push_back(change_);
    for (std::size_t job = 0; job < change_.settling.size(); ++job) {
        count(job, change_.settling[job]);
        if (!judge_.is_judged()) continue;
        const std::size_t first = job == 0 ? 0 : FieldMotions::kFirstColorField;
        motions_.end_hold(first, judge_.bands(job), change_.last);
    }
}

void Summary::count(std::size_t job, const JobSettling& verdict) {
    SettlingTotals& totals = record_.settling[job];
    if (verdict.state == Settling::moving) ++totals.moving;
    if (verdict.state == Settling::never_rests) ++totals.never_rests;
    if (verdict.state == Settling::not_held) ++totals.not_measured;
    if (verdict.state != Settling::settled) return;
    ++totals.settled;
    ++settle_counts_[job][static_cast<std::size_t>(
        std::min<std::uint64_t>(*verdict.frames, kMostSettleFrames))];
    if (totals.most_frames && *totals.most_frames >= *verdict.frames) return;
    totals.most_frames = verdict.frames;
    totals.slowest = {change_.first, change_.last};
}

}  // namespace imgtune::workbench
