#ifndef IMGTUNE_WASM_RUN_H
#define IMGTUNE_WASM_RUN_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/studies/summary.h"
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

/// A log's frames, one after the other.
struct Run {
    Run(const Camera& start, std::vector<Field> fields)
        : camera(start), summary(start, SummaryOptions{}), columns{std::move(fields)} {}

    void add(const Frame& frame) {
        if (frames % kFramesBetweenStates == 0) states.push_back(camera.state());
        camera.run(frame);
        summary.add(before + ++frames, frame, camera);
        columns.add(camera);
    }

    Camera camera;
    Summary summary;
    Columns columns;
    std::vector<CameraState> states;
    std::size_t before = 0;  ///< frames that it does not know, for their numbers
    std::size_t frames = 0;
};

}  // namespace imgtune::workbench::page

#endif
