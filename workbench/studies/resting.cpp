#include "workbench/studies/resting.h"

#include <cstring>

#include "workbench/camera/register_values.h"

namespace imgtune::workbench {

namespace {

constexpr std::uint64_t kMostFrames = 65536;

template <class Image>
bool same(const Image& a, const Image& b) {
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

/// Runs frames and remembers when each job's registers moved last.
class Runner {
  public:
    Runner(Camera& camera, const Frame& frame) : camera_(camera), frame_(frame) {}

    void run() {
        const Registers before = camera_.registers();
        camera_.run(frame_);
        ++frames_;
        if (frames_ == 1 || !same(before.ccm, camera_.ccm())) ccm_moved_ = frames_;
        if (frames_ == 1 || !same(before.color, camera_.color())) color_moved_ = frames_;
    }

    std::uint64_t frames() const { return frames_; }
    std::uint64_t ccm_moved() const { return ccm_moved_; }
    std::uint64_t color_moved() const { return color_moved_; }

  private:
    Camera& camera_;
    const Frame& frame_;
    std::uint64_t frames_ = 0;
    std::uint64_t ccm_moved_ = 0;
    std::uint64_t color_moved_ = 0;
};

/// Frames after which the state repeats, 0 when it does not: each state is compared with one that
/// is kept, and a new one is kept at every power of two.
std::uint64_t find_period(Camera& camera, Runner& runner) {
    std::uint64_t lap = 1;
    while (runner.frames() + lap <= kMostFrames) {
        const CameraState kept = camera.state();
        for (std::uint64_t n = 1; n <= lap; ++n) {
            runner.run();
            if (camera.state() == kept) return n;
        }
        lap *= 2;
    }
    return 0;
}

std::vector<RestingValue> compare(Job job, const Registers& target, const Registers& resting,
                                  const CallerSettings& caller) {
    const auto names = value_names(job);
    const auto wanted = values_of(job, target, caller);
    const auto reached = values_of(job, resting, caller);
    std::vector<RestingValue> values;
    for (std::size_t k = 0; k < names.size(); ++k) {
        if (job == Job::color && wanted[k] == reached[k]) continue;
        values.push_back({names[k], wanted[k], reached[k], wanted[k] - reached[k]});
    }
    return values;
}

}  // namespace

Rest run_to_rest(Camera& camera, const Frame& frame) {
    Runner runner(camera, frame);
    runner.run();
    Rest rest;
    rest.period = find_period(camera, runner);
    // A state may repeat while its registers move: one lap more tells.
    const std::uint64_t before = runner.frames();
    for (std::uint64_t n = 0; n < rest.period; ++n) runner.run();
    rest.ccm = {rest.period > 0 && runner.ccm_moved() <= before, runner.ccm_moved()};
    rest.color = {rest.period > 0 && runner.color_moved() <= before, runner.color_moved()};
    rest.frames_run = runner.frames();
    return rest;
}

void aim(Camera& camera, const Frame& frame) {
    camera.set_weights({1, 0, 0});
    camera.set_state({});
    camera.run(frame);
}

Registers target_registers(Camera camera, const Frame& frame) {
    aim(camera, frame);
    return camera.registers();
}

RestingStudy study_resting(Camera camera, const Frame& frame) {
    const Registers target = target_registers(camera, frame);
    RestingStudy study;
    study.rest = run_to_rest(camera, frame);
    study.state = camera.state();
    const CallerSettings& caller = camera.tuning().caller;
    if (camera.jobs().ccm) study.ccm = compare(Job::ccm, target, camera.registers(), caller);
    if (camera.jobs().color) study.color = compare(Job::color, target, camera.registers(), caller);
    return study;
}

}  // namespace imgtune::workbench
