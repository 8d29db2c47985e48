#include "workbench/files/capture_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>

#include "workbench/capture/capture_tables.h"
#include "workbench/capture/corner_page.h"
#include "workbench/files/chart_locator.h"
#include "workbench/files/text_file.h"

namespace imgtune::workbench {

namespace {

constexpr double kLowestLight = 1000.0;  // kelvin, as a calibration takes it
constexpr double kHighestLight = 1000000.0;
constexpr const char* kWriteCorners =
    "write a line 'file,x1,y1,x2,y2,x3,y3,x4,y4' for it into the table of --corners: "
    "the outer corners of patches 1, 6, 24 and 19";

bool is_table(const std::string& path) {
    return path.ends_with(".csv") || path.ends_with(".CSV");
}

/// Reads what belongs together once.
class CaptureReader {
  public:
    CaptureReader(const CaptureFiles& files, const CaptureChoices& choices, Faults& faults)
        : files_(files), choices_(choices), faults_(faults) {
        if (!files.corners.empty()) {
            corners_ =
                read_corners(read_text(files.corners, kLargestCaptureTable), files.corners, faults);
        }
        if (!files.kelvins.empty()) {
            kelvins_ =
                read_kelvins(read_text(files.kelvins, kLargestCaptureTable), files.kelvins, faults);
        }
        tell_unused();
        if (!files.dark.empty()) {
            dark_ = std::make_unique<Picture>(read_picture(files.dark, files.pictures));
        }
    }

    /// The kelvin of a capture; none, and told: nothing gives it.
    std::optional<double> kelvin(std::size_t index) {
        const std::string& file = files_.captures[index];
        std::optional<double> kelvin = kelvin_of_name(file);
        for (const KelvinLine& line : kelvins_) {
            if (names_file(line.file, file)) kelvin = line.kelvin;
        }
        if (!files_.kelvin.empty()) kelvin = files_.kelvin[index];
        if (!kelvin) {
            tell("P001", file, "nothing says the kelvin of its light, and no picture shows it",
                 "put it into the name (d65_6500k.dng), or give --kelvin or --kelvins");
        } else if (!(*kelvin >= kLowestLight && *kelvin <= kHighestLight)) {
            tell("P001", file, fmt::format("a light of {:g} K", *kelvin),
                 fmt::format("allowed are {:g}..{:g} K", kLowestLight, kHighestLight));
            return std::nullopt;
        }
        return kelvin;
    }

    std::optional<CapturedPicture> capture(const std::string& file, double kelvin) {
        if (is_table(file)) {
            const bool had_errors = faults_.has_errors();
            const auto patches =
                read_patch_means(read_text(file, kLargestPatchTable), file, faults_);
            if (faults_.has_errors() && !had_errors) return std::nullopt;
            return measured_table(file, patches);
        }
        const auto at = std::find_if(corners_.begin(), corners_.end(),
                                     [&](const auto& line) { return names_file(line.file, file); });
        const bool given = at != corners_.end();
        if (!given && !can_find_charts()) {
            tell("P101", file, "no corners are given", kWriteCorners);
            return std::nullopt;
        }
        const Picture picture = read_picture(file, files_.pictures);
        const std::optional<Quad> corners = given ? at->corners : find_chart(picture);
        if (!corners) {
            tell("P101", file, "no chart is found in it, and no corners are given", kWriteCorners);
            return std::nullopt;
        }
        PictureAids aids;
        aids.dark = dark_.get();
        if (!files_.flats.empty()) {
            aids.flat = flat(kelvin, file);
            if (aids.flat == nullptr) return std::nullopt;
        }
        Faults faults;
        auto measured = measure_picture(picture, aids, *corners, choices_, faults);
        if (!given) faults.allow({"P103"});  // what is found has no order
        for (const Fault& fault : faults.list()) faults_.add(fault);
        return measured;
    }

  private:
    void tell(const char* code, const std::string& file, std::string what, std::string advice) {
        faults_.add({.code = code,
                     .file = file,
                     .message = std::move(what),
                     .suggestion = std::move(advice)});
    }

    bool is_a_capture(const std::string& name) const {
        return std::any_of(files_.captures.begin(), files_.captures.end(),
                           [&](const std::string& file) { return names_file(name, file); });
    }

    void tell_unused() {
        const auto tell_line = [this](const std::string& table, const std::string& name, int line) {
            if (is_a_capture(name)) return;
            faults_.add({.code = "P004",
                         .file = table,
                         .line = line,
                         .message = fmt::format("no capture is called {}", name),
                         .suggestion = "the line is passed over"});
        };
        for (const CornersLine& line : corners_) tell_line(files_.corners, line.file, line.line);
        for (const KelvinLine& line : kelvins_) tell_line(files_.kelvins, line.file, line.line);
    }

    /// The flat frame of a light; null, and told: there is none that can be used.
    const FlatField* flat(double kelvin, const std::string& file) {
        std::string wanted;
        for (const std::string& path : files_.flats) {
            if (files_.flats.size() == 1 || kelvin_of_name(path) == kelvin) wanted = path;
        }
        if (wanted.empty()) {
            tell("P107", file, fmt::format("no flat frame has {:g} K in its name", kelvin),
                 "give one a light, or one alone for all");
            return nullptr;
        }
        const auto known = flats_.find(wanted);
        if (known != flats_.end()) return known->second ? &*known->second : nullptr;
        Picture picture = read_picture(wanted, files_.pictures);
        const auto level = find_clipping_levels(picture);
        for (const auto& each : level) {
            if (each) picture.white = std::min(*each, picture.white.value_or(*each));
        }
        auto& made = flats_[wanted];
        made = FlatField::fit(picture, dark_.get(), faults_);
        return made ? &*made : nullptr;
    }

    const CaptureFiles& files_;
    const CaptureChoices& choices_;
    Faults& faults_;
    std::vector<CornersLine> corners_;
    std::vector<KelvinLine> kelvins_;
    std::unique_ptr<Picture> dark_;
    std::map<std::string, std::optional<FlatField>> flats_;
};

}  // namespace

std::vector<std::string> files_of(const CaptureFiles& files) {
    std::vector<std::string> all = files.captures;
    all.insert(all.end(), files.flats.begin(), files.flats.end());
    for (const std::string& file : {files.dark, files.corners, files.kelvins}) {
        if (!file.empty()) all.push_back(file);
    }
    return all;
}

CaptureStudy study_capture_files(const CaptureFiles& files, const CaptureChoices& choices,
                                 Faults& faults) {
    CaptureReader reader(files, choices, faults);
    std::vector<LightInput> lights;
    for (std::size_t i = 0; i < files.captures.size(); ++i) {
        const std::string& file = files.captures[i];
        const auto kelvin = reader.kelvin(i);
        if (!kelvin) continue;
        auto picture = reader.capture(file, *kelvin);
        if (!picture) continue;
        auto light = std::find_if(lights.begin(), lights.end(),
                                  [&](const LightInput& each) { return each.kelvin == *kelvin; });
        if (light == lights.end()) {
            lights.push_back({std::filesystem::path(file).stem().string(), *kelvin, {}});
            light = lights.end() - 1;
        }
        light->pictures.push_back(std::move(*picture));
    }
    return study_captures(std::move(lights), choices, faults);
}

std::string corner_page_of(const CaptureFiles& files) {
    constexpr double kShownSide = 1000.0;
    std::vector<ShownPicture> pictures;
    for (const std::string& file : files.captures) {
        if (is_table(file)) continue;
        pictures.push_back({std::filesystem::path(file).filename().string(),
                            picture_thumbnail(read_picture(file, files.pictures), kShownSide)});
    }
    return corner_page(pictures);
}

ChartReference read_reference_file(const std::string& path, Faults& faults) {
    return read_reference(read_text(path, kLargestPatchTable), path, faults);
}

}  // namespace imgtune::workbench
