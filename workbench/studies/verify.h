#ifndef IMGTUNE_WORKBENCH_STUDIES_VERIFY_H
#define IMGTUNE_WORKBENCH_STUDIES_VERIFY_H

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/studies/trace_cause.h"
#include "workbench/trace/trace_capture.h"
#include "workbench/trace/trace_comparison.h"
#include "workbench/trace/traced_frames.h"

namespace imgtune::workbench {

/// Where a phone and the desk differ first.
struct TraceDifference {
    std::uint64_t frame = 0;  ///< from 1
    std::uint64_t line = 0;   ///< of the phone's log, from 1: where the call's trace begins
    std::string time;         ///< as the log writes it; empty where it does not
    std::string value;        ///< "InterParamPartialY PY_Out[5]"
    std::string phone;
    std::string desk;  ///< empty: the desk traces no such line
    LikelyCause cause;
};

/// A field of the tuning that the phone tells otherwise.
struct TracedField {
    std::string field;  ///< as in the tuning's YAML form
    std::string phone;
    std::string desk;
    std::uint64_t frame = 0;  ///< the first that tells it, from 1
};

/// How a phone's trace and the desk's agree.
struct Verification {
    std::uint64_t frames = 0;
    std::uint64_t ccm_calls = 0;  ///< held against the desk's
    std::uint64_t color_calls = 0;
    std::uint64_t without_tuning = 0;  ///< calls of a job that the tuning lacks
    std::uint64_t lines = 0;           ///< compared
    std::uint64_t missing_lines = 0;   ///< not in the phone's log though their switch was on
    std::uint64_t state_taken = 0;  ///< times, after the start, that the log's own state was taken
    std::uint64_t differing_frames = 0;
    bool other_grid = false;  ///< the phone brackets CTs by another grid than the tuning's
    std::optional<TraceDifference> first;
    std::vector<TracedField> fields;  ///< every one that was seen, in the order of the log
    /// Parts of the tuning that no compared frame used, as paths such as "color.images.normal.0|1":
    /// a difference there shows nowhere.
    std::vector<std::string> unused;
};

/// Runs the library on the frames of a phone's log, with its traces on, and holds them against the
/// phone's. The state that the phone's camera had before the log begins, and wherever the log
/// reports lost lines, the camera starts anew or a difference was found, is taken from the trace as
/// far as that says: the ring from its own lines, the colour engine's values from the last frame's.
/// The traces are on while a frame is added and at no other time.
class Verifier {
  public:
    explicit Verifier(const Tuning& tuning);

    void add(const TracedFrame& frame);
    /// Of the frames so far.
    Verification result() const;
    /// The same without what no frame used, at no cost.
    const Verification& so_far() const { return result_; }

  private:
    /// The two lines of a call that tell the ring.
    struct Ring {
        std::array<std::array<std::int32_t, 9>, 2> matrices{};
    };

    /// Which parts of the tuning frames used.
    struct Used {
        std::array<bool, 8> rows{};        ///< of gains
        std::array<bool, 2> polynomial{};  ///< the other: with flash
        std::array<bool, 4> slots{};
        std::array<std::array<bool, 5>, 4> images{};  ///< by slot and CT index
    };

    bool verify_ccm(const TracedFrame& traced, const Frame& frame);
    bool verify_color(const TracedFrame& traced, const Frame& frame);
    bool enter_ring(const TracedCall& call);
    bool fits(const CameraState& state, const Ring& ring) const;
    void take_outputs(const TracedCall& call, bool all);
    bool compare(const TracedCall& call, const std::function<bool(const TraceLine&)>& left_out);
    void find_fields(const TracedCall& call, const LinesComparison& comparison);
    void note_use(const TracedCall& call, const ColorInputs& inputs);

    Tuning tuning_;
    Camera ccm_;
    Camera color_;
    TraceCapture* capture_ = nullptr;  ///< of the frame that is being added
    bool ring_known_ = false;
    std::optional<CameraState> other_ring_;  ///< if the phone's ring index is the other one
    std::array<bool, std::size(kColorLines)> output_known_{};  ///< of those that move
    std::set<std::string> told_;  ///< differing lines whose fields are known
    Used used_;
    Verification result_;
};

}  // namespace imgtune::workbench

#endif
