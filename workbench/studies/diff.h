#ifndef IMGTUNE_WORKBENCH_STUDIES_DIFF_H
#define IMGTUNE_WORKBENCH_STUDIES_DIFF_H

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/camera/register_values.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// A field in which two tunings differ.
struct FieldDifference {
    using Value = std::variant<std::int64_t, std::string>;
    std::string field;  ///< path, or name, ccm, color for the tuning itself
    Value a;
    Value b;
};

/// Field by field, in the order of the format; bits outside all fields as hexadecimal text.
std::vector<FieldDifference> diff_tunings(const Tuning& a, const Tuning& b);

/// One frame in which the registers of a job differ.
struct FrameDifference {
    std::uint64_t frame = 0;  ///< from 1
    std::string field;        ///< where they lie farthest apart
    std::int64_t size = 0;    ///< how far
    std::int64_t a = 0;
    std::int64_t b = 0;
};

/// The largest difference of one field over a log.
struct FieldMaximum {
    std::string field;
    std::int64_t size = 0;
};

/// What two tunings made of the same frames, for one job.
struct JobComparison {
    Job job = Job::ccm;
    std::uint64_t differing = 0;         ///< frames
    std::vector<FrameDifference> worst;  ///< ten at most, the largest first
    std::vector<FieldMaximum> fields;    ///< that differ at all, in the order of the registers
};

struct FramesComparison {
    std::uint64_t frames = 0;
    std::uint64_t differing = 0;
    std::vector<JobComparison> jobs;
};

/// Runs frames through two tunings side by side. Throws BadInput when they have no part in common.
class FrameComparer {
  public:
    /// Told of every value that differs: frame number, field, both values.
    using Told = std::function<void(std::uint64_t, const std::string&, std::int64_t, std::int64_t)>;

    FrameComparer(const Tuning& a, const Tuning& b, Told told = {});

    void add(const Frame& frame);
    FramesComparison result() const;

  private:
    struct Tracked {
        JobComparison comparison;
        std::vector<std::string> names;
        std::vector<std::int64_t> largest;  ///< by value
    };
    bool compare(Tracked& tracked);

    Camera a_;
    Camera b_;
    Told told_;
    std::vector<Tracked> tracked_;
    std::uint64_t frames_ = 0;
    std::uint64_t differing_ = 0;
};

}  // namespace imgtune::workbench

#endif
