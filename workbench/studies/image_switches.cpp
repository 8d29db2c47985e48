#include "workbench/studies/image_switches.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "workbench/camera/mired.h"
#include "workbench/studies/light_watch.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kFirstMapWord = 71;
constexpr int kFlashImages = 2;
constexpr int kSceneImages = 1;

bool same_map(const NSIspTuning::ISP_NVRAM_COLOR_T& a, const NSIspTuning::ISP_NVRAM_COLOR_T& b) {
    return std::memcmp(a.u4Word + kFirstMapWord, b.u4Word + kFirstMapWord,
                       sizeof(a) - kFirstMapWord * sizeof(a.u4Word[0])) == 0;
}

std::uint32_t middle_of(const CtBracket& bracket) {
    if (bracket.lower_kelvin == 0 || bracket.upper_kelvin == 0) return 0;
    return static_cast<std::uint32_t>(
        2e6 / (to_mired(bracket.lower_kelvin) + to_mired(bracket.upper_kelvin)));
}

}  // namespace

double per_second(const ImageSwitches& switches, double frames_per_second) {
    if (switches.frames_between == 0) return 0.0;
    return static_cast<double>(switches.back_and_forth) * frames_per_second /
           static_cast<double>(switches.frames_between);
}

SwitchWatch::SwitchWatch(double frames_per_second)
    : hold_frames_(frames_of_hold(frames_per_second)) {}

StepCause SwitchWatch::next(std::uint64_t number, const Frame& frame, const Camera& camera,
                            bool counts) {
    if (!camera.jobs().color) return StepCause::smoothing;
    const Source now = source_of(frame, camera);
    const std::optional<Source> before = std::exchange(last_, now);
    const bool same = before && same_map(camera.color(), image_);
    if (!same) image_ = camera.color();
    if (!before) return StepCause::smoothing;
    const bool other_slot = before->slot != now.slot;
    if (!same && counts) {
        const CtBracket& a = before->bracket;
        const CtBracket& b = now.bracket;
        if (other_slot) {
            count(number, SwitchCause::slot, 0);
        } else if (a.upper_kelvin != b.upper_kelvin || a.lower_kelvin != b.lower_kelvin) {
            const std::uint32_t kelvin = b.lower_kelvin >= a.upper_kelvin   ? b.lower_kelvin
                                         : b.upper_kelvin <= a.lower_kelvin ? b.upper_kelvin
                                                                            : a.upper_kelvin;
            count(number, SwitchCause::grid_ct, kelvin);
        } else if (before->is_upper != now.is_upper) {
            count(number, SwitchCause::midpoint, middle_of(b));
        } else {
            count(number, SwitchCause::outdoor, 0);
        }
    }
    if (other_slot) return StepCause::slot;
    return frame.capture == 1 ? StepCause::capture : StepCause::smoothing;
}

SwitchWatch::Source SwitchWatch::source_of(const Frame& frame, const Camera& camera) const {
    const auto& state = frame.state;
    Source source;
    source.slot = state.u4FlashMode != 0                              ? kFlashImages
                  : static_cast<std::int32_t>(state.u4SceneFlag) == 1 ? kSceneImages
                                                                      : 0;
    source.bracket = camera.grid().bracket(state.u4CCT);
    const std::uint32_t middle = middle_of(source.bracket);
    source.is_upper = state.u4CCT > middle;
    return source;
}

void SwitchWatch::count(std::uint64_t number, SwitchCause cause, std::uint32_t kelvin) {
    auto found = std::find_if(found_.begin(), found_.end(), [&](const ImageSwitches& s) {
        return s.cause == cause && s.kelvin == kelvin;
    });
    if (found == found_.end()) {
        found_.push_back({cause, kelvin, 1, {number, number}});
        return;
    }
    ++found->count;
    if (number - found->frames.last <= hold_frames_) {
        ++found->back_and_forth;
        found->frames_between += number - found->frames.last;
    }
    found->frames.last = number;
}

std::vector<ImageSwitches> SwitchWatch::switches() const {
    std::vector<ImageSwitches> sorted = found_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.count > b.count; });
    return sorted;
}

}  // namespace imgtune::workbench
