#include "workbench/calibration/reader.h"

#include <fmt/format.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <optional>

#include "workbench/calibration/real_number.h"
#include "workbench/text/yaml_document.h"

namespace imgtune::workbench {

namespace {

/// A section of the file, "rpi.awb" or "Ccm".
struct Section {
    std::string name;
    int line = 0;
    YAML::Node value;
};

/// The value of a key of a map; not defined when there is none. Other than the map's own operator
/// it takes keys that are maps or lists in its stride.
YAML::Node value_of(const YAML::Node& map, std::string_view key) {
    if (map.IsMap()) {
        for (const auto& entry : map) {
            if (entry.first.IsScalar() && entry.first.Scalar() == key) return entry.second;
        }
    }
    return YAML::Node(YAML::NodeType::Undefined);
}

class SectionReader {
  public:
    SectionReader(Calibration& calibration, Faults& faults)
        : calibration_(calibration), faults_(faults) {}

    void read(const YAML::Node& root) {
        if (!root.IsMap()) {
            fault("C001", 1, "not a calibration",
                  "give a JSON or YAML tuning file of libcamera, or a table with the columns "
                  "ct,r_gain,b_gain,c0..c8");
            return;
        }
        collect(root);
        read_locus();
        read_matrices();
    }

  private:
    void fault(const char* code, int line, std::string message, std::string suggestion = {}) {
        faults_.add({.code = code,
                     .line = line,
                     .message = std::move(message),
                     .suggestion = std::move(suggestion)});
    }

    void collect_from(const YAML::Node& map) {
        if (!map.IsMap()) return;
        for (const auto& entry : map) {
            if (!entry.first.IsScalar()) continue;
            const std::string& name = entry.first.Scalar();
            static constexpr const char* kKnown[] = {"rpi.awb", "rpi.nn.awb", "Awb", "rpi.ccm",
                                                     "Ccm"};
            if (std::find(std::begin(kKnown), std::end(kKnown), name) == std::end(kKnown)) continue;
            if (section(name) != nullptr) {
                fault("C005", line_of(entry.first),
                      fmt::format("a second section {}; left out: the first one counts", name));
                continue;
            }
            sections_.push_back({name, line_of(entry.first), entry.second});
        }
    }

    /// Sections stand in the list `algorithms`, or at top level.
    void collect(const YAML::Node& root) {
        const YAML::Node algorithms = value_of(root, "algorithms");
        collect_from(algorithms.IsDefined() ? algorithms : root);
        if (algorithms.IsDefined() && algorithms.IsSequence()) {
            for (const YAML::Node& entry : algorithms) collect_from(entry);
        }
        const bool pi = section("rpi.awb") != nullptr || section("rpi.nn.awb") != nullptr ||
                        section("rpi.ccm") != nullptr;
        calibration_.form = pi ? "Raspberry Pi form of libcamera" : "YAML form of libcamera";
        if (pi) calibration_.form += algorithms.IsDefined() ? ", version 2" : ", version 1";
    }

    const Section* section(std::string_view name) const {
        for (const Section& section : sections_) {
            if (section.name == name) return &section;
        }
        return nullptr;
    }

    // ---- numbers

    std::optional<double> number(const YAML::Node& node, const std::string& what, bool positive) {
        const std::optional<double> value =
            node.IsDefined() && node.IsScalar() ? parse_real(node.Scalar()) : std::nullopt;
        if (value && (!positive || *value > 0.0)) return value;
        std::string shown = "missing";
        if (node.IsDefined()) shown = node.IsScalar() ? quoted_value(node.Scalar()) : "no number";
        faults_.add({.code = "C003",
                     .line = node.IsDefined() ? line_of(node) : line_,
                     .path = what,
                     .message = "is " + shown,
                     .value = node.IsDefined() && node.IsScalar() ? node.Scalar() : "",
                     .allowed = positive ? "a number above 0" : "a number",
                     .suggestion = positive ? "write a number above 0" : "write a number"});
        return std::nullopt;
    }

    template <std::size_t N>
    bool numbers(const YAML::Node& list, const std::string& what, bool positive,
                 std::array<double, N>& out) {
        if (!list.IsDefined() || !list.IsSequence() || list.size() != N) {
            fault("C004", list.IsDefined() ? line_of(list) : line_,
                  list.IsDefined() && list.IsSequence()
                      ? fmt::format("{} has {} values", what, list.size())
                      : fmt::format("{} is no list", what),
                  fmt::format("write a list of {} numbers", N));
            return false;
        }
        std::size_t k = 0;
        for (const YAML::Node& element : list) {
            const auto value = number(element, fmt::format("{}[{}]", what, k), positive);
            if (!value) return false;
            out[k++] = *value;
        }
        return true;
    }

    bool is_list(const YAML::Node& node, const char* what, std::size_t values_each) {
        if (!node.IsSequence()) {
            fault("C004", line_of(node), fmt::format("{} is no list", what), "write a list");
            return false;
        }
        if (node.size() <= kMostCalibratedPoints * values_each) return true;
        fault("C004", line_of(node), fmt::format("{} has {} values", what, node.size()),
              fmt::format("at most {} points are read; keep fewer", kMostCalibratedPoints));
        return false;
    }

    // ---- the locus

    void read_locus() {
        const Section* missing = nullptr;
        for (const char* name : {"rpi.awb", "rpi.nn.awb", "Awb"}) {
            const Section* found = section(name);
            if (found == nullptr) continue;
            line_ = calibration_.locus_line = found->line;
            const bool pi = found->name != "Awb";
            const YAML::Node points = value_of(found->value, pi ? "ct_curve" : "colourGains");
            if (!points.IsDefined()) {
                if (missing == nullptr) missing = found;
                continue;
            }
            if (missing != nullptr) {
                fault("C005", missing->line,
                      fmt::format("{} has no ct_curve; that of {} is taken", missing->name, name));
            }
            calibration_.locus_line = line_of(points);
            pi ? read_curve(points) : read_gains(points);
            return;
        }
        fault(
            "C002", missing == nullptr ? 1 : missing->line,
            "no grey locus: neither rpi.awb with a ct_curve nor Awb with colourGains",
            "calibrate white balance first, or give a table; sensors without a locus (monochrome, "
            "or without an infrared filter) cannot be imported");
    }

    void read_curve(const YAML::Node& curve) {
        if (!is_list(curve, "ct_curve", 3)) return;
        std::vector<double> values;
        std::vector<int> lines;
        for (const YAML::Node& element : curve) {
            const auto value = number(element, fmt::format("ct_curve[{}]", values.size()), true);
            if (!value) return;
            values.push_back(*value);
            lines.push_back(line_of(element));
        }
        if (values.size() % 3 != 0) {
            fault("C004", line_of(curve), fmt::format("ct_curve has {} values", values.size()),
                  "write three a point: CT, R/G, B/G");
            return;
        }
        for (std::size_t i = 0; i < values.size(); i += 3) {
            calibration_.locus.push_back({values[i], values[i + 1], values[i + 2], lines[i]});
        }
    }

    void read_gains(const YAML::Node& list) {
        if (!is_list(list, "colourGains", 1)) return;
        for (const YAML::Node& point : list) {
            line_ = line_of(point);
            const auto kelvin = number(value_of(point, "ct"), "ct", true);
            std::array<double, 2> gains{};
            if (!kelvin || !numbers(value_of(point, "gains"), "gains", true, gains)) continue;
            calibration_.locus.push_back({*kelvin, 1.0 / gains[0], 1.0 / gains[1], line_});
        }
    }

    // ---- the matrices

    void read_matrices() {
        const Section* found = section("rpi.ccm") != nullptr ? section("rpi.ccm") : section("Ccm");
        if (found != nullptr) line_ = calibration_.matrices_line = found->line;
        const YAML::Node list = found == nullptr ? YAML::Node(YAML::NodeType::Undefined)
                                                 : value_of(found->value, "ccms");
        if (!list.IsDefined()) {
            fault("C002", calibration_.matrices_line,
                  "no colour matrices: neither rpi.ccm nor Ccm with ccms",
                  "calibrate the colour matrices first, or give a table; monochrome sensors have "
                  "none and cannot be imported");
            return;
        }
        if (!is_list(list, "ccms", 1)) return;
        for (const YAML::Node& entry : list) read_matrix(entry);
    }

    void read_matrix(const YAML::Node& entry) {
        CalibratedMatrix matrix;
        matrix.line = line_ = line_of(entry);
        const auto kelvin = number(value_of(entry, "ct"), "ct", true);
        if (!kelvin || !numbers(value_of(entry, "ccm"), "ccm", false, matrix.coefficients)) return;
        const YAML::Node offsets = value_of(entry, "offsets");
        if (offsets.IsDefined() && !numbers(offsets, "offsets", false, matrix.offsets)) return;
        matrix.kelvin = *kelvin;
        calibration_.matrices.push_back(matrix);
    }

    Calibration& calibration_;
    Faults& faults_;
    std::vector<Section> sections_;
    int line_ = 1;  ///< of what is being read
};

/// The first character that is neither blank nor in a comment line; 0: none.
char opening_character(const std::string& text) {
    bool comment = false;
    for (const char c : text) {
        if (c == '#') comment = true;
        if (c == '\n') comment = false;
        const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!comment && !blank) return c;
    }
    return '\0';
}

bool is_table(const std::string& text) {
    std::size_t at = 0;
    while (at < text.size() && (text[at] == '#' || text[at] == '\r' || text[at] == '\n')) {
        at = text[at] == '#' ? text.find('\n', at) : at + 1;
    }
    if (at >= text.size()) return false;
    const std::string_view line = std::string_view(text).substr(at, text.find('\n', at) - at);
    return line.find(',') != line.npos && line.find_first_of("{[:/") == line.npos;
}

}  // namespace

Calibration read_calibration(const std::string& text, const std::string& file, Faults& faults) {
    Calibration calibration;
    faults.set_place("", file, 0);
    if (text.size() > kLargestCalibrationText) {
        faults.add(
            {.code = "C001", .message = "more than 16 MiB", .suggestion = "give a calibration"});
        return calibration;
    }
    const std::string plain = text.substr(text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0);
    if (is_table(plain)) return read_calibration_table(plain, faults);
    const std::string blanked = blank_json_comments(plain);
    const bool json = opening_character(blanked) == '{';
    try {
        const std::string& yaml = json ? blanked : plain;
        if (const char* count = documents_if_not_one(yaml)) {
            faults.add({.code = "C001",
                        .line = 1,
                        .message = count,
                        .suggestion = "give a file with one calibration"});
            return calibration;
        }
        SectionReader(calibration, faults).read(YAML::Load(yaml));
    } catch (const YAML::Exception& error) {
        faults.add(
            {.code = "C001",
             .line = error.mark.is_null() ? 1 : error.mark.line + 1,
             .message = fmt::format("not readable as {}: {}", json ? "JSON" : "YAML", error.msg),
             .suggestion = "fix the syntax error"});
    }
    return calibration;
}

}  // namespace imgtune::workbench
