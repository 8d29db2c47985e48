#ifndef IMGTUNE_WORKBENCH_CAPTURE_CAPTURE_TABLES_H
#define IMGTUNE_WORKBENCH_CAPTURE_CAPTURE_TABLES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/capture/capture_study.h"
#include "workbench/findings/faults.h"

// The tables that go with photographs.

namespace imgtune::workbench {

/// The longest table that is read, in bytes, and its most lines.
inline constexpr std::size_t kLargestCaptureTable = 1U << 20U;
inline constexpr std::size_t kMostCaptures = 1024;

/// Where the chart stands in a photograph.
struct CornersLine {
    std::string file;
    Quad corners{};
    int line = 0;
};

/// Lines of file,x1,y1,x2,y2,x3,y3,x4,y4: the outer corners of patches 1, 6, 24 and 19. A header
/// line may begin the table. Faults are told.
std::vector<CornersLine> read_corners(const std::string& text, const std::string& file,
                                      Faults& faults);

struct KelvinLine {
    std::string file;
    double kelvin = 0.0;
    int line = 0;
};

/// Lines of file,kelvin, likewise.
std::vector<KelvinLine> read_kelvins(const std::string& text, const std::string& file,
                                     Faults& faults);

/// The kelvin in a file's name, as in d65_6500k.dng: a number of three to six digits before a k,
/// set apart by other than letters and digits. Of several the last.
std::optional<double> kelvin_of_name(std::string_view path);

/// Whether a name in a table means this path: the same, or its file name.
bool names_file(std::string_view name, std::string_view path);

}  // namespace imgtune::workbench

#endif
