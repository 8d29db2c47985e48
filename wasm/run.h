#ifndef IMGTUNE_WASM_RUN_H
#define IMGTUNE_WASM_RUN_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "wasm/answers.h"
#include "workbench/camera/camera.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/visible.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench::page {

constexpr std::size_t kFramesBetweenStates = 256;

/// A coefficient or a field of the colour engine.
struct Field {
    std::string name;
    std::optional<std::size_t> coefficient = {};
    const ColorField* color = nullptr;
};

/// Fields over frames.
struct Columns {
    std::vector<Field> fields;
    std::vector<std::vector<std::int32_t>> values = {};

    /// The registers of the next frame.
    void add(const Camera& camera) {
        values.resize(fields.size());
        const auto matrix = decode(camera.ccm(), camera.tuning().caller);
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const Field& field = fields[i];
            values[i].push_back(field.coefficient
                                    ? matrix[*field.coefficient]
                                    : static_cast<std::int32_t>(field.color->read(camera.color())));
        }
    }

    void append(Columns other) {
        other.values.resize(other.fields.size());
        for (std::size_t i = 0; i < other.fields.size(); ++i) {
            fields.push_back(std::move(other.fields[i]));
            values.push_back(std::move(other.values[i]));
        }
    }

    const std::vector<std::int32_t>* find(const std::string& name) const {
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (fields[i].name == name) return &values[i];
        }
        return nullptr;
    }
};

/// What a viewer sees of each frame, in CIEDE2000; not a number where it is not measured.
struct VisibleColumns {
    std::vector<float> step_mean;
    std::vector<float> step_worst;
    std::vector<float> rest_mean;
    std::vector<float> rest_worst;

    void add(const VisibleFrame& frame) {
        const auto put = [](const std::optional<ChartDifference>& difference,
                            std::vector<float>& mean, std::vector<float>& worst) {
            mean.push_back(difference ? static_cast<float>(difference->mean) : kNotMeasured);
            worst.push_back(difference ? static_cast<float>(difference->worst) : kNotMeasured);
        };
        put(frame.step, step_mean, step_worst);
        put(frame.from_rest, rest_mean, rest_worst);
    }

    void add_to(Answer& answer) const {
        for (const auto* const column : {&step_mean, &step_worst, &rest_mean, &rest_worst}) {
            answer.add(*column);
        }
    }

    static constexpr float kNotMeasured = std::numeric_limits<float>::quiet_NaN();
};

/// The matrix at rest in the light held, where one is known.
class RestOverLog {
  public:
    void add(std::size_t frame, const std::optional<ChartView>& rest) {
        const bool same = rest ? !matrices_.empty() && matrices_.back() == rest->matrix() : !known_;
        if (same && rest.has_value() == known_) return;
        known_ = rest.has_value();
        if (!same) matrices_.push_back(rest->matrix());
        begins_.push_back({frame, known_ ? matrices_.size() : 0});
    }

    const RealMatrix* at(std::size_t frame) const {
        const auto after = std::upper_bound(
            begins_.begin(), begins_.end(), frame,
            [](std::size_t wanted, const Begin& begin) { return wanted < begin.frame; });
        if (after == begins_.begin() || std::prev(after)->rest == 0) return nullptr;
        return &matrices_[std::prev(after)->rest - 1];
    }

  private:
    struct Begin {
        std::size_t frame = 0;
        std::size_t rest = 0;  ///< in matrices_, from 1; 0: none
    };
    std::vector<Begin> begins_;
    std::vector<RealMatrix> matrices_;
    bool known_ = false;
};

/// A log's frames, one after the other.
struct Run {
    Run(const Camera& start, std::vector<Field> fields)
        : camera(start),
          summary(start, SummaryOptions{}),
          watch(start),
          columns{std::move(fields)} {}

    void add(const Frame& frame) {
        if (frames % kFramesBetweenStates == 0) states.push_back(camera.state());
        camera.run(frame);
        summary.add(before + ++frames, frame, camera);
        columns.add(camera);
        const VisibleFrame seen = watch.next(frame, camera);
        visible.add(seen);
        rests.add(before + frames - 1, seen.from_rest ? watch.rest() : std::nullopt);
    }

    Camera camera;
    Summary summary;
    VisibleWatch watch;
    Columns columns;
    VisibleColumns visible;
    RestOverLog rests;
    std::vector<CameraState> states;
    std::size_t before = 0;  ///< frames that it does not know, for their numbers
    std::size_t frames = 0;
};

}  // namespace imgtune::workbench::page

#endif
