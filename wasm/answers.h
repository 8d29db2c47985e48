#ifndef IMGTUNE_WASM_ANSWERS_H
#define IMGTUNE_WASM_ANSWERS_H

#include <algorithm>
#include <cstdint>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbench/appearance/color_difference.h"
#include "workbench/appearance/patches.h"
#include "workbench/camera/camera.h"
#include "workbench/findings/faults.h"
#include "workbench/frames/frame_log.h"
#include "workbench/tuning/images.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench::page {

using Json = nlohmann::ordered_json;

/// A command's answer: JSON, and arrays beside it.
struct Answer {
    Json json = Json::object();
    std::vector<std::string> blobs;

    template <class Value>
    void add(const std::vector<Value>& values) {
        blobs.emplace_back(reinterpret_cast<const char*>(values.data()),
                           values.size() * sizeof(Value));
    }
};

/// A file that cannot be used: its findings.
class Refused : public std::exception {
  public:
    explicit Refused(Faults found) : faults(std::move(found)) {}
    Faults faults;
};

inline Jobs jobs_of(const Tuning& tuning) {
    return {tuning.has_ccm, tuning.has_color};
}

inline Frame frame_of(const Json& values) {
    return to_frame(values.get<FrameValues>());
}

inline std::vector<std::int32_t> words(const std::vector<std::int64_t>& values) {
    std::vector<std::int32_t> out;
    out.reserve(values.size());
    for (const std::int64_t value : values) out.push_back(static_cast<std::int32_t>(value));
    return out;
}

inline RealMatrix real_matrix(const std::vector<std::int64_t>& coefficients, double unity) {
    RealMatrix matrix{};
    for (std::size_t k = 0; k < 9; ++k) {
        matrix[k] = static_cast<double>(coefficients[k]) / unity;
    }
    return matrix;
}

/// The files of a tuning, one behind the other in `bytes`: a YAML text, or stored images.
inline Tuning read_tuning(const Json& files, std::string_view bytes, Faults& faults) {
    const auto names = stored_image_names();
    std::vector<StoredImage> images;
    for (const Json& file : files) {
        const std::string name = file.at("name");
        const auto size = file.at("size").get<std::size_t>();
        const std::string text(bytes.substr(0, size));
        bytes.remove_prefix(size);
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            return read_yaml(text, name, faults);
        }
        images.push_back({name, text});
    }
    return from_images(images, "stored images", faults);
}

inline Json lab_json(const Lab& lab) {
    return Json::array({lab.lightness, lab.a, lab.b});
}

inline Json chart_json(const ChartError& error) {
    Json list = Json::array();
    for (std::size_t i = 0; i < error.patches.size(); ++i) {
        const auto& patch = error.patches[i];
        list.push_back({{"name", chart_patches()[i].name},
                        {"reference", lab_json(patch.reference)},
                        {"shown", lab_json(patch.actual)},
                        {"difference", patch.difference}});
    }
    return {{"patches", list}, {"mean", error.mean}, {"largest", error.largest}};
}

}  // namespace imgtune::workbench::page

#endif
