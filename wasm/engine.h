#ifndef IMGTUNE_WASM_ENGINE_H
#define IMGTUNE_WASM_ENGINE_H

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "wasm/answers.h"
#include "wasm/run.h"
#include "workbench/appearance/color_difference.h"
#include "workbench/camera/camera.h"

namespace imgtune::workbench::page {

/// What the page calls of library and workbench: commands as JSON with bytes beside it, answers
/// likewise. Keeps a tuning, a log and its last run; computes nothing.
class Engine {
  public:
    Answer run(const std::string& command, const Json& arguments, std::string_view bytes);

  private:
    using Method = Answer (Engine::*)(const Json& arguments, std::string_view bytes);
    static const std::pair<const char*, Method> kCommands[];

    // Tunings.
    Answer load_tuning(const Json& arguments, std::string_view bytes);
    Answer save_tuning(const Json& arguments, std::string_view bytes);
    Answer gain(const Json& arguments, std::string_view bytes);
    /// The tuned points row by row.
    Answer plane(const Json& arguments, std::string_view bytes);
    Answer diff(const Json& arguments, std::string_view bytes);

    // A log, frame by frame; its columns go into the answer unless they are not wanted.
    Answer load_frames(const Json& arguments, std::string_view bytes);
    /// Frames begin..begin + count; a log's first chunk begins a new run, its last makes it the
    /// one that others ask about. The run keeps the columns of these names.
    Answer replay(const Json& arguments, std::string_view bytes);
    /// Columns that the run did not keep take another pass over the log.
    Answer columns(const Json& arguments, std::string_view bytes);
    Answer targets(std::vector<Field> names);
    Answer values(const Json& arguments, std::string_view bytes);
    Answer summary(const Json& arguments, std::string_view bytes);
    /// Frames of a live log behind those that there are: their columns, and all about the newest.
    Answer append(const Json& arguments, std::string_view bytes);
    /// What a viewer sees of each frame of the run: mean and worst of the chart against the frame
    /// before, and against rest.
    Answer visible(const Json& arguments, std::string_view bytes);
    /// The same of one patch: another pass over the log.
    Answer patch_over_log(const Json& arguments, std::string_view bytes);

    // One light, or a frame of the log.
    Answer explain(const Json& arguments, std::string_view bytes);
    /// Target and rest of a light after power-on.
    Answer light(const Json& arguments, std::string_view bytes);
    Answer grid(const Json& arguments, std::string_view bytes);
    /// Where a small change of the light changes the colours most.
    Answer steepest(const Json& arguments, std::string_view bytes);
    /// The chart through a frame's matrix, against the matrix at rest in the light held, or, "held"
    /// false, in the frame's own; of a light, through the matrix at rest, against what it asks for.
    Answer patches(const Json& arguments, std::string_view bytes);

    // The smoothing that meets a wish over the log: choices are tried in parts, which workers
    // share.
    Answer try_weights(const Json& arguments, std::string_view bytes);
    Answer try_step(const Json& arguments, std::string_view bytes);
    Answer choose_smoothing(const Json& arguments, std::string_view bytes);
    Answer smoothed_text(const Json& arguments, std::string_view bytes);

    /// As after power-on.
    const Camera& camera() const;
    const Tuning& tuning() const;
    void require_ccm() const;
    void forget_runs();
    void forget_frames_before(std::size_t frame);
    /// As before the first frame that there is.
    Camera first_camera() const;
    std::vector<Field> fields(const Json& names) const;
    RealMatrix matrix_of(const Registers& registers) const;
    Answer answer_values(const Registers& registers) const;
    /// As the frames before this one leave it.
    Camera camera_before(std::size_t frame) const;

    std::unique_ptr<Camera> camera_;  ///< as after power-on
    std::array<std::vector<std::string>, 2> names_;
    std::vector<Frame> frames_;
    std::size_t first_frame_ =
        0;  ///< number of frames_[0]; of a live log, older ones were forgotten
    // Of the last whole run.
    std::vector<CameraState> states_;  ///< before every kFramesBetweenStates-th frame
    Columns columns_;
    VisibleColumns visible_;
    RestOverLog rests_;
    Json summary_;
    std::unique_ptr<Run> running_;
    std::unique_ptr<Run> live_;  ///< a run without an end
};

}  // namespace imgtune::workbench::page

#endif
