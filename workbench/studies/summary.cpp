#include "workbench/studies/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <numeric>

#include "workbench/camera/trace_capture.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMatrix = 0;
constexpr std::size_t kColor = 1;
constexpr std::array<const char*, 2> kJobNames = {"matrix", "colour"};
constexpr std::size_t kCoefficients = 9;
constexpr std::size_t kMostListed = 1000;
constexpr std::size_t kMostShown = 12;
constexpr std::size_t kMostSettleFrames = 4096;  ///< counted one by one; longer ones together

bool same(const AWB_GAIN_T& a, const AWB_GAIN_T& b) {
    return a.i4R == b.i4R && a.i4G == b.i4G && a.i4B == b.i4B;
}

bool same_light(const Frame& a, const Frame& b) {
    return a.state.u4RealLV == b.state.u4RealLV && a.state.u4CCT == b.state.u4CCT &&
           same(a.state.rAWBGain, b.state.rAWBGain) &&
           same(a.state.rAWBFullGain, b.state.rAWBFullGain) &&
           a.state.u4FlashMode == b.state.u4FlashMode &&
           a.state.u4SceneFlag == b.state.u4SceneFlag && a.capture == b.capture;
}

/// Clipping depends on nothing else.
bool same_for_clipping(const Frame& a, const Frame& b) {
    return same(a.state.rAWBGain, b.state.rAWBGain) &&
           same(a.state.rAWBFullGain, b.state.rAWBFullGain) &&
           (a.state.u4FlashMode != 0) == (b.state.u4FlashMode != 0);
}

/// The tuning with what only costs time left out.
Tuning for_clipping(Tuning tuning) {
    tuning.ccm.i4Method = 0;
    tuning.ccm.i4NumLV = 0;
    return tuning;
}

std::string settled_text(const std::optional<std::uint64_t>& frames) {
    return frames ? fmt::format("{}", *frames) : "moving";
}

std::string frames_text(const LightChange& change) {
    return change.first == change.last ? fmt::format("{}", change.first)
                                       : fmt::format("{}-{}", change.first, change.last);
}

nlohmann::json to_json(const std::optional<std::uint64_t>& frames) {
    return frames ? nlohmann::json(*frames) : nlohmann::json();
}

}  // namespace

Summary::Summary(const Tuning& tuning, Jobs jobs, double frames_per_second)
    : jobs_(jobs),
      frames_per_second_(frames_per_second),
      probe_(for_clipping(tuning), {jobs.ccm, false}) {
    const auto color = color_fields();
    motions_.resize(kCoefficients + color.size());
    for (std::size_t k = 0; k < kCoefficients; ++k) motions_[k].name = fmt::format("c{}", k);
    for (std::size_t k = 0; k < color.size(); ++k) {
        motions_[kCoefficients + k].name = color[k].name;
    }
    for (auto* values : {&now_, &value_, &start_, &low_, &high_}) values->resize(motions_.size());
    direction_.resize(motions_.size());
    for (auto& counts : settle_counts_) counts.resize(kMostSettleFrames + 1);
}

bool Summary::is_clipped(const Frame& frame) {
    TraceCapture trace(kCcmSwitches);
    probe_.run(frame);
    return std::ranges::any_of(trace.lines(), [](const std::string& line) {
        return line.starts_with("Clipped low") || line.starts_with("Clipped high");
    });
}

void Summary::add(std::uint64_t number, const Frame& frame, const Registers& registers) {
    const bool first = frames_ == 0;
    const bool changed = first || !same_light(frame, last_frame_);
    if (jobs_.ccm) {
        if (first || !same_for_clipping(frame, last_frame_)) last_clipped_ = is_clipped(frame);
        if (last_clipped_ && clipped_++ == 0) first_clipped_ = number;
    }
    if (changed) {
        if (!first && change_.held > 0) {
            close_change();
            change_ = {};
        }
        if (change_.first == 0) change_.first = number;
        change_.last = number;
        last_motion_ = {};
        start_ = low_ = high_ = value_;
    } else {
        ++change_.held;
    }
    ++frames_;
    number_ = number;
    last_frame_ = frame;

    const std::array<bool, 2> moved = {
        jobs_.ccm && (first || std::memcmp(&registers.ccm, &last_ccm_, sizeof(last_ccm_)) != 0),
        jobs_.color &&
            (first || std::memcmp(&registers.color, &last_color_, sizeof(last_color_)) != 0)};
    for (std::size_t job = 0; job < moved.size(); ++job) {
        if (moved[job]) last_motion_[job] = change_.held;
    }
    if (moved[kMatrix]) {
        last_ccm_ = registers.ccm;
        std::ranges::copy(decode(last_ccm_, probe_.tuning().caller), now_.begin());
        note_motion(0, kCoefficients, first);
    }
    if (moved[kColor]) {
        last_color_ = registers.color;
        const auto fields = color_fields();
        for (std::size_t k = 0; k < fields.size(); ++k) {
            now_[kCoefficients + k] = fields[k].read(last_color_);
        }
        note_motion(kCoefficients, motions_.size(), first);
    }
    if (first) start_ = low_ = high_ = value_;
}

/// Takes over the fields of now_ from `begin` to `end`.
void Summary::note_motion(std::size_t begin, std::size_t end, bool first) {
    for (std::size_t k = begin; k < end; ++k) {
        const std::int64_t step = now_[k] - value_[k];
        if (step == 0) continue;
        value_[k] = now_[k];
        if (first) continue;
        low_[k] = std::min(low_[k], now_[k]);
        high_[k] = std::max(high_[k], now_[k]);
        FieldMotion& motion = motions_[k];
        if (std::abs(step) > motion.largest_step) {
            motion.largest_step = std::abs(step);
            motion.step_frame = number_;
        }
        const std::int8_t direction = step > 0 ? 1 : -1;
        if (direction_[k] == -direction) {
            ++motion.sign_changes;
            if (change_.held > 0) ++motion.steady_sign_changes;
        }
        direction_[k] = direction;
    }
}

/// The light has changed again, or the log has ended.
void Summary::close_change() {
    ++change_count_;
    const std::array<bool, 2> runs = {jobs_.ccm, jobs_.color};
    for (std::size_t job = 0; job < runs.size(); ++job) {
        if (!runs[job]) continue;
        if (last_motion_[job] >= change_.held) {
            ++unsettled_[job];
            continue;
        }
        change_.settled_after[job] = last_motion_[job];
        ++settle_counts_[job][std::min<std::size_t>(last_motion_[job], kMostSettleFrames)];
        const auto& slowest = slowest_[job].settled_after[job];
        if (!slowest || last_motion_[job] > *slowest) slowest_[job] = change_;
        const std::size_t begin = job == kMatrix ? 0 : kCoefficients;
        const std::size_t end = job == kMatrix ? kCoefficients : motions_.size();
        for (std::size_t k = begin; k < end; ++k) {
            const std::int64_t final = value_[k];
            const std::int64_t above = final >= start_[k] ? high_[k] - final : 0;
            const std::int64_t below = final <= start_[k] ? final - low_[k] : 0;
            const std::int64_t overshoot = std::max(above, below);
            if (overshoot > motions_[k].overshoot) {
                motions_[k].overshoot = overshoot;
                motions_[k].overshoot_frame = change_.last;
            }
        }
    }
    if (changes_.size() < kMostListed) changes_.push_back(change_);
}

void Summary::finish() {
    if (frames_ > 0) close_change();
}

double Summary::per_second(std::uint64_t count) const {
    return frames_ == 0
               ? 0.0
               : static_cast<double>(count) * frames_per_second_ / static_cast<double>(frames_);
}

/// The median over the changes that settled.
std::uint64_t Summary::median_settle_frames(std::size_t job) const {
    const auto& counts = settle_counts_[job];
    const std::uint64_t total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
    std::uint64_t seen = 0;
    for (std::size_t frames = 0; frames < counts.size(); ++frames) {
        seen += counts[frames];
        if (2 * seen >= total) return frames;
    }
    return 0;
}

/// Fields that moved, the most restless first: by step, or by sign changes.
std::vector<const FieldMotion*> Summary::moved_fields(bool by_flicker) const {
    std::vector<const FieldMotion*> moved;
    for (const FieldMotion& motion : motions_) {
        if (by_flicker ? motion.sign_changes > 0 : motion.largest_step > 0)
            moved.push_back(&motion);
    }
    std::ranges::stable_sort(moved, std::ranges::greater(), [&](const FieldMotion* motion) {
        return by_flicker ? static_cast<std::int64_t>(motion->sign_changes) : motion->largest_step;
    });
    return moved;
}

std::string Summary::text() const {
    std::string out =
        fmt::format("frames            {} ({:.1f} s at {:g} frames a second)\n", frames_,
                    static_cast<double>(frames_) / frames_per_second_, frames_per_second_);
    if (jobs_.ccm) {
        out += fmt::format("gain clipped      {} frames", clipped_);
        if (clipped_ > 0) {
            out += fmt::format(" ({:.1f} %), first frame {}",
                               100.0 * static_cast<double>(clipped_) / static_cast<double>(frames_),
                               first_clipped_);
        }
        out += '\n';
    }
    out += fmt::format("changes of light  {}\n", change_count_);
    for (std::size_t job = 0; job < kJobNames.size(); ++job) {
        if (job == kMatrix ? !jobs_.ccm : !jobs_.color) continue;
        out += fmt::format("{:<18}settled after {} of them", kJobNames[job],
                           change_count_ - unsettled_[job]);
        if (const auto& longest = slowest_[job].settled_after[job]) {
            out += fmt::format(", in {} frames (median), at most {} (change at frame {})",
                               median_settle_frames(job), *longest, frames_text(slowest_[job]));
        }
        out +=
            unsettled_[job] == 0 ? "\n" : fmt::format("; still moving after {}\n", unsettled_[job]);
    }

    out += fmt::format("\n{:<20}{:>8}{:>18}{:>18}\n", "change at frame", "held for",
                       "matrix settles in", "colour settles in");
    for (std::size_t i = 0; i < std::min(kMostShown, changes_.size()); ++i) {
        const LightChange& change = changes_[i];
        out += fmt::format("{:<20}{:>8}{:>18}{:>18}\n", frames_text(change), change.held,
                           jobs_.ccm ? settled_text(change.settled_after[kMatrix]) : "-",
                           jobs_.color ? settled_text(change.settled_after[kColor]) : "-");
    }
    if (change_count_ > kMostShown) {
        out += fmt::format("and {} more (--json lists {})\n", change_count_ - kMostShown,
                           change_count_ > kMostListed ? "the first thousand" : "all");
    }

    const auto table = [&](const char* title, bool by_flicker) {
        const auto fields = moved_fields(by_flicker);
        out += fmt::format("\n{}: {} fields\n", title, fields.size());
        if (fields.empty()) return;
        out += fmt::format("{:<22}{:>12}{:>10}{:>11}{:>10}{:>14}{:>14}\n", "field", "largest step",
                           "at frame", "overshoot", "at frame", "sign changes", "in steady");
        out += fmt::format("{:<22}{:>12}{:>10}{:>11}{:>10}{:>14}{:>14}\n", "", "", "", "", "",
                           "a second", "light");
        for (std::size_t i = 0; i < std::min(kMostShown, fields.size()); ++i) {
            const FieldMotion& motion = *fields[i];
            out += fmt::format(
                "{:<22}{:>12}{:>10}{:>11}{:>10}{:>14.2f}{:>14.2f}\n", motion.name,
                motion.largest_step, motion.step_frame, motion.overshoot,
                motion.overshoot > 0 ? fmt::format("{}", motion.overshoot_frame) : "-",
                per_second(motion.sign_changes), per_second(motion.steady_sign_changes));
        }
    };
    table("fields that moved, largest steps first", false);
    table("fields that changed direction, most often first", true);
    return out;
}

nlohmann::json Summary::json() const {
    nlohmann::json out = {{"frames", frames_},
                          {"frames_per_second", frames_per_second_},
                          {"changes_of_light", change_count_}};
    if (jobs_.ccm) {
        out["frames_clipped"] = clipped_;
        if (clipped_ > 0) out["first_clipped_frame"] = first_clipped_;
    }
    for (std::size_t job = 0; job < kJobNames.size(); ++job) {
        if (job == kMatrix ? !jobs_.ccm : !jobs_.color) continue;
        nlohmann::json& settle = out["settle"][job == kMatrix ? "ccm" : "color"];
        settle["settled"] = change_count_ - unsettled_[job];
        settle["still_moving"] = unsettled_[job];
        settle["median_frames"] = median_settle_frames(job);
        settle["most_frames"] = to_json(slowest_[job].settled_after[job]);
    }
    out["changes"] = nlohmann::json::array();
    for (const LightChange& change : changes_) {
        nlohmann::json entry = {
            {"first", change.first}, {"last", change.last}, {"held", change.held}};
        if (jobs_.ccm) entry["ccm_settled_after"] = to_json(change.settled_after[kMatrix]);
        if (jobs_.color) entry["color_settled_after"] = to_json(change.settled_after[kColor]);
        out["changes"].push_back(std::move(entry));
    }
    out["changes_not_listed"] = change_count_ - changes_.size();
    out["fields"] = nlohmann::json::object();
    for (const FieldMotion* motion : moved_fields(false)) {
        out["fields"][motion->name] = {
            {"largest_step", motion->largest_step},
            {"step_frame", motion->step_frame},
            {"overshoot", motion->overshoot},
            {"sign_changes_per_second", per_second(motion->sign_changes)},
            {"steady_sign_changes_per_second", per_second(motion->steady_sign_changes)}};
        if (motion->overshoot > 0) {
            out["fields"][motion->name]["overshoot_frame"] = motion->overshoot_frame;
        }
    }
    return out;
}

}  // namespace imgtune::workbench
