#include "workbench/studies/summary.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "workbench/studies/resting.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostListed = 1000;
constexpr std::size_t kMostWaiting = 64;

void keep_farthest_behind(SettlingTotals& totals, std::uint64_t frames, const LightChange& change,
                          bool moves) {
    if (totals.most_behind && *totals.most_behind >= frames) return;
    totals.most_behind = frames;
    totals.farthest_behind = {change.first, change.last};
    totals.still_moved = moves;
}

void note_settled(SettlingTotals& totals, std::uint64_t frames, std::uint64_t behind,
                  const LightChange& change) {
    ++totals.settled;
    keep_farthest_behind(totals, behind, change, false);
    if (totals.most_frames && *totals.most_frames >= frames) return;
    totals.most_frames = frames;
    totals.slowest = {change.first, change.last};
}

void note_unmoved(SettlingTotals& totals, const LightChange& change) {
    ++totals.unmoved;
    keep_farthest_behind(totals, 0, change, false);
}

void note_moving(SettlingTotals& totals, const LightChange& change) {
    ++totals.moving;
    keep_farthest_behind(totals, change.held + 1, change, true);
}

}  // namespace

double per_second(const SummaryRecord& record, std::uint64_t count) {
    if (record.frames == 0) return 0.0;
    return static_cast<double>(count) * record.frames_per_second /
           static_cast<double>(record.frames);
}

double share_of_flicker(const SummaryRecord& record) {
    if (record.frames == 0) return 0.0;
    return static_cast<double>(record.visible.flicker_frames) / static_cast<double>(record.frames);
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
      before_(watch_),
      motions_(camera.tuning().caller, camera.jobs()),
      judge_(camera, motions_, frames_of_hold(options.frames_per_second)),
      visible_(camera, options.visible, options.frames_per_second),
      swings_(options.frames_per_second),
      switches_(options.frames_per_second),
      with_registers_(options.registers) {
    record_.frames_per_second = options.frames_per_second;
    record_.noise_percent = options.noise_percent;
    record_.hold_frames = frames_of_hold(options.frames_per_second);
    record_.jobs = camera.jobs();
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
    // Where the light changes, its hold before is judged by what the watch knew of it.
    if (with_registers_ && !judge_.is_judged()) before_ = watch_;
    const Event event = watch_.next(frame);
    if (event == Event::begins) {
        if (record_.frames > 1) close_change(before_);
        const std::uint64_t first = number - watch_.held();
        change_ = {};
        change_.first = change_.last = first;
        visible_.begin_change(first);
        moved_ = {};
    }
    const bool is_cold = record_.frames <= record_.cold_start_frames;
    const Phase phase = is_cold                 ? Phase::cold_start
                        : event == Event::holds ? Phase::light_holds
                                                : Phase::light_moves;
    if (with_registers_) {
        const StepCause cause = switches_.next(number, frame, camera, !is_cold);
        const bool turned = motions_.next(number, camera.registers(), phase, cause);
        for (std::size_t job = 0; job < moved_.size(); ++job) {
            moved_[job] = moved_[job] || motions_.moved()[job];
        }
        if (turned && phase == Phase::light_holds) note_turn(number);
    }
    swings_.add(number, frame, watch_);
    visible_.add(number, frame, camera, watch_, event, is_cold);
    if (event != Event::holds) change_.last = number - watch_.held();
    change_.held = watch_.held();
    if (!with_registers_) return;
    if (event == Event::holds) {
        judge_.next();
        if (!judge_.is_judged() && watch_.held() >= record_.hold_frames) judge_.judge_by(watch_);
    } else {
        judge_.begin(camera.state(), watch_.held());
    }
}

SummaryRecord Summary::finish() {
    if (record_.frames > 0) close_change(watch_);
    swings_.finish();
    settle_accounts_but(0);
    record_.fields = motions_.motions();
    record_.image_switches = switches_.switches();
    record_.light_swings = swings_.spans();
    record_.light_swing_count = swings_.count();
    record_.visible = visible_.finish();
    for (std::size_t job = 0; job < settle_counts_.size(); ++job) {
        record_.settling[job].median_frames = settle_counts_[job].median();
    }
    record_.visible_settling.median_frames = visible_counts_[0].median();
    record_.visible_settling_with_gains.median_frames = visible_counts_[1].median();
    return std::move(record_);
}

void Summary::tell_settling() {
    change_.settling = judge_.verdicts();
    for (std::size_t job = 0; job < moved_.size(); ++job) {
        JobSettling& settling = change_.settling[job];
        if (settling.state != Settling::settled || moved_[job]) continue;
        settling.state = Settling::unmoved;
        settling.frames.reset();
    }
}

const LightChange& Summary::change() {
    if (judge_.is_judged()) tell_settling();
    return change_;
}

SummaryRecord Summary::so_far() const {
    SummaryRecord record = record_;
    record.fields = motions_.motions();
    record.image_switches = switches_.switches();
    record.light_swings = swings_.spans();
    record.light_swing_count = swings_.count();
    for (std::size_t job = 0; job < settle_counts_.size(); ++job) {
        record.settling[job].median_frames = settle_counts_[job].median();
    }
    for (const LightChange& change : waiting_) {
        if (swings_.cover({change.first, change.last})) continue;
        ++record.change_count;
        if (record.changes.size() < kMostListed) record.changes.push_back(change);
    }
    record.visible = VisibleStudy(visible_).finish();
    return record;
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
    if (with_registers_) {
        if (!judge_.is_judged() && change_.held > 0) judge_.judge_by(hold);
        tell_settling();
    }
    change_.visible = visible_.close_change();
    if (in_cold_start_) {
        record_.cold_start = change_;
        in_cold_start_ = false;
        return;
    }
    waiting_.push_back(change_);
    settle_accounts_but(kMostWaiting);
}

void Summary::settle_accounts_but(std::size_t kept) {
    while (waiting_.size() > kept) {
        const LightChange& change = waiting_.front();
        if (!swings_.cover({change.first, change.last})) settle_accounts(change);
        waiting_.pop_front();
    }
}

void Summary::settle_accounts(const LightChange& change) {
    ++record_.change_count;
    if (record_.changes.size() < kMostListed) record_.changes.push_back(change);
    for (std::size_t job = 0; job < change.settling.size(); ++job) {
        count(change.settling[job], change, record_.settling[job], settle_counts_[job]);
    }
    if (!record_.jobs.ccm) return;
    count(change.visible.matrix, change, record_.visible_settling, visible_counts_[0]);
    count(change.visible.with_gains, change, record_.visible_settling_with_gains,
          visible_counts_[1]);
    keep_larger(record_.overshoot, change.visible.overshoot);
    keep_larger(record_.stall, change.visible.stall);
}

void Summary::count(const JobSettling& verdict, const LightChange& change, SettlingTotals& totals,
                    FrameCounts& counts) {
    switch (verdict.state) {
        case Settling::not_run:
            return;
        case Settling::not_held:
            ++totals.not_measured;
            return;
        case Settling::unmoved:
            note_unmoved(totals, change);
            return;
        case Settling::moving:
            note_moving(totals, change);
            return;
        case Settling::never_rests:
            ++totals.never_rests;
            return;
        case Settling::settled:
            counts.add(*verdict.frames);
            note_settled(totals, *verdict.frames, *verdict.frames, change);
    }
}

void Summary::count(const VisibleWay& way, const LightChange& change, SettlingTotals& totals,
                    FrameCounts& counts) {
    switch (way.state) {
        case VisibleSettling::not_measured:
            ++totals.not_measured;
            return;
        case VisibleSettling::unmoved:
            note_unmoved(totals, change);
            return;
        case VisibleSettling::moving:
            note_moving(totals, change);
            return;
        case VisibleSettling::settled:
            counts.add(*way.frames);
            note_settled(totals, *way.frames,
                         *way.frames - std::min(*way.frames, change.last - change.first), change);
    }
}

Summary::FrameCounts::FrameCounts() : counts_(kMost + 1) {}

/// The frames to settle of the change in the middle.
std::optional<std::uint64_t> Summary::FrameCounts::median() const {
    const std::uint64_t total = std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
    std::uint64_t seen = 0;
    for (std::size_t frames = 0; frames < counts_.size() && total > 0; ++frames) {
        seen += counts_[frames];
        if (2 * seen >= total) return frames;
    }
    return std::nullopt;
}

}  // namespace imgtune::workbench
