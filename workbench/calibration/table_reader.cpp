#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "workbench/calibration/reader.h"
#include "workbench/calibration/real_number.h"
#include "workbench/text/byte_source.h"
#include "workbench/text/characters.h"
#include "workbench/text/line_reader.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kColumns = 12;
constexpr std::array<std::string_view, kColumns> kNames = {
    "ct", "r_gain", "b_gain", "c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7", "c8"};
constexpr const char* kHeader = "ct,r_gain,b_gain,c0,c1,c2,c3,c4,c5,c6,c7,c8";

std::vector<std::string_view> cells(std::string_view line) {
    std::vector<std::string_view> out;
    while (true) {
        const std::size_t comma = line.find(',');
        out.push_back(trimmed(line.substr(0, comma)));
        if (comma == line.npos) return out;
        line.remove_prefix(comma + 1);
    }
}

using Order = std::array<std::size_t, kColumns>;

/// Where each of the twelve columns stands.
std::optional<Order> read_header(const std::vector<std::string_view>& names, int line,
                                 Faults& faults) {
    Order order{};
    for (std::size_t k = 0; k < kColumns; ++k) {
        const auto found = std::find(names.begin(), names.end(), kNames[k]);
        if (found == names.end() || names.size() != kColumns) {
            faults.add({.code = "C004",
                        .line = line,
                        .message = names.size() != kColumns
                                       ? fmt::format("the header has {} columns", names.size())
                                       : fmt::format("the header has no column {}", kNames[k]),
                        .suggestion = fmt::format("start the table with {}", kHeader)});
            return std::nullopt;
        }
        order[k] = static_cast<std::size_t>(found - names.begin());
    }
    return order;
}

void read_row(const std::vector<std::string_view>& row, const Order& order, int line,
              Calibration& calibration, Faults& faults) {
    if (row.size() != kColumns) {
        faults.add({.code = "C004",
                    .line = line,
                    .message = fmt::format("a line of {} values", row.size()),
                    .suggestion = fmt::format("write a line of {}", kHeader)});
        return;
    }
    std::array<double, kColumns> values{};
    for (std::size_t k = 0; k < kColumns; ++k) {
        const std::optional<double> value = parse_real(row[order[k]]);
        if (!value || (k < 3 && *value <= 0.0)) {
            faults.add({.code = "C003",
                        .line = line,
                        .path = std::string(kNames[k]),
                        .message = "is " + quoted_value(row[order[k]]),
                        .value = std::string(row[order[k]]),
                        .allowed = k < 3 ? "a number above 0" : "a number",
                        .suggestion = k < 3 ? "write a number above 0" : "write a number"});
            return;
        }
        values[k] = *value;
    }
    calibration.locus.push_back({values[0], 1.0 / values[1], 1.0 / values[2], line});
    CalibratedMatrix& matrix = calibration.matrices.emplace_back();
    matrix.kelvin = values[0];
    matrix.line = line;
    std::copy(values.begin() + 3, values.end(), matrix.coefficients.begin());
}

}  // namespace

Calibration read_calibration_table(const std::string& text, Faults& faults) {
    Calibration calibration;
    calibration.form = "table of gains and matrices";
    MemorySource source(text);
    LineReader lines(source);
    std::optional<Order> order;
    for (std::string_view line; lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#') continue;
        const auto number = static_cast<int>(lines.line());
        if (!order) {
            order = read_header(cells(line), number, faults);
            if (!order) return calibration;
            calibration.locus_line = calibration.matrices_line = number;
            continue;
        }
        if (calibration.locus.size() == kMostCalibratedPoints) {
            faults.add({.code = "C004",
                        .line = number,
                        .message = fmt::format("more than {} points", kMostCalibratedPoints),
                        .suggestion = "keep fewer"});
            return calibration;
        }
        read_row(cells(line), *order, number, calibration, faults);
        if (faults.list().size() >= kMostCalibratedPoints) return calibration;
    }
    return calibration;
}

}  // namespace imgtune::workbench
