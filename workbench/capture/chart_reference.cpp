#include "workbench/capture/chart_reference.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <vector>

#include "workbench/appearance/patches.h"
#include "workbench/calibration/real_number.h"
#include "workbench/text/byte_source.h"
#include "workbench/text/characters.h"
#include "workbench/text/line_reader.h"

namespace imgtune::workbench {

namespace {

// CIE L*a*b* under D50, 2 degrees.
// Before: GretagMacbeth's figures of 2005, as tabulated by D. Pascale, "RGB coordinates of the
// Macbeth ColorChecker", The BabelColor Company, 2006.
constexpr Rgb kBefore[kChartPatches] = {
    {37.986, 13.555, 14.059},  {65.711, 18.130, 17.810},  {49.927, -4.880, -21.925},
    {43.139, -13.095, 21.905}, {55.112, 8.844, -25.399},  {70.719, -33.397, -0.199},
    {62.661, 36.067, 57.096},  {40.020, 10.410, -45.964}, {51.124, 48.239, 16.248},
    {30.325, 22.976, -21.587}, {72.532, -23.709, 57.255}, {71.941, 19.363, 67.857},
    {28.778, 14.179, -50.297}, {55.261, -38.342, 31.370}, {42.101, 53.378, 28.190},
    {81.733, 4.039, 79.819},   {51.935, 49.986, -14.574}, {51.038, -28.631, -28.638},
    {96.539, -0.425, 1.186},   {81.257, -0.638, -0.335},  {66.766, -0.734, -0.504},
    {50.867, -0.153, -0.270},  {35.656, -0.421, -1.231},  {20.461, -0.079, -0.973}};
// After: the colours that X-Rite published for its Classic charts in 2016.
constexpr Rgb kAfter[kChartPatches] = {
    {37.54, 14.37, 14.92},  {64.66, 19.27, 17.50},   {49.32, -3.82, -22.54}, {43.46, -12.74, 22.72},
    {54.94, 9.61, -24.79},  {70.48, -32.26, -0.37},  {62.73, 35.83, 56.50},  {39.43, 10.75, -45.17},
    {50.57, 48.64, 16.67},  {30.10, 22.54, -20.87},  {71.77, -24.13, 58.19}, {71.51, 18.24, 67.37},
    {28.37, 15.42, -49.80}, {54.38, -39.72, 32.27},  {42.43, 51.05, 28.62},  {81.80, 2.67, 80.41},
    {50.63, 51.28, -14.12}, {49.57, -29.71, -28.32}, {95.19, -1.03, 2.93},   {81.29, -0.57, 0.44},
    {66.89, -0.75, -0.06},  {50.76, -0.13, 0.14},    {35.63, -0.46, -0.48},  {20.64, 0.07, -0.46}};

constexpr Rgb kWhiteD50 = {0.96422, 1.0, 0.82521};
// XYZ under D50 to linear sRGB under D65, white adapted as Bradford's method has it.
constexpr double kD50ToSrgb[3][3] = {{3.1338561, -1.6168667, -0.4906146},
                                     {-0.9787684, 1.9161415, 0.0334540},
                                     {0.0719453, -0.2289914, 1.4052427}};

Rgb srgb_of_lab(const Rgb& lab) {
    const double y = (lab[0] + 16.0) / 116.0;
    const Rgb f = {y + lab[1] / 500.0, y, y - lab[2] / 200.0};
    Rgb xyz{};
    for (std::size_t k = 0; k < 3; ++k) {
        const double cube = f[k] * f[k] * f[k];
        xyz[k] =
            kWhiteD50[k] * (cube > 216.0 / 24389.0 ? cube : (116.0 * f[k] - 16.0) * 27.0 / 24389.0);
    }
    Rgb rgb{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t k = 0; k < 3; ++k) rgb[row] += kD50ToSrgb[row][k] * xyz[k];
    }
    return rgb;
}

/// 24 lines of three numbers.
struct PatchTable {
    bool is_lab = false;
    std::vector<Rgb> rows;
    std::vector<int> lines;
};

std::vector<std::string_view> cells_of_line(std::string_view line) {
    std::vector<std::string_view> out;
    while (true) {
        const std::size_t comma = line.find(',');
        out.push_back(trimmed(line.substr(0, comma)));
        if (comma == line.npos) return out;
        line.remove_prefix(comma + 1);
    }
}

class PatchTableReader {
  public:
    PatchTableReader(std::string file, bool takes_lab, Faults& faults)
        : file_(std::move(file)), takes_lab_(takes_lab), faults_(faults) {}

    PatchTable read(const std::string& text) {
        PatchTable table;
        MemorySource source(text);
        LineReader lines(source);
        for (std::string_view line; lines.next(line);) {
            line = trimmed(line);
            if (line.empty() || line.front() == '#') continue;
            line_ = static_cast<int>(lines.line());
            const auto cells = cells_of_line(line);
            if (columns_ == 0) {
                if (!read_header(cells, table)) return {};
            } else if (!read_row(cells, table)) {
                return {};
            }
        }
        if (table.rows.size() != kChartPatches) {
            line_ = 0;
            fail(fmt::format("{} patches", table.rows.size()),
                 fmt::format("write a header, {}, and a line for each of the {} patches", forms(),
                             kChartPatches));
            return {};
        }
        return table;
    }

  private:
    std::string forms() const { return takes_lab_ ? "r,g,b or L,a,b" : "r,g,b"; }

    void fail(std::string what, std::string advice) {
        faults_.add({.code = "P002",
                     .file = file_,
                     .line = line_,
                     .message = std::move(what),
                     .suggestion = std::move(advice)});
    }

    bool read_header(const std::vector<std::string_view>& names, PatchTable& table) {
        const bool named = !names.empty() && names.front() == "patch";
        const std::vector<std::string_view> rest(names.begin() + (named ? 1 : 0), names.end());
        table.is_lab = takes_lab_ && rest == std::vector<std::string_view>{"L", "a", "b"};
        if (!table.is_lab && rest != std::vector<std::string_view>{"r", "g", "b"}) {
            fail("the first line names other columns",
                 fmt::format("start with {}, and a column patch before it where they are named",
                             forms()));
            return false;
        }
        columns_ = names.size();
        return true;
    }

    bool read_row(const std::vector<std::string_view>& cells, PatchTable& table) {
        if (cells.size() != columns_) {
            fail(fmt::format("a line of {} values", cells.size()),
                 fmt::format("write {}, as the header does", columns_));
            return false;
        }
        if (table.rows.size() == kChartPatches) {
            fail("a 25th patch", "give the 24 patches of the chart");
            return false;
        }
        if (columns_ == 4 && patch_index(std::string(cells[0])) != table.rows.size()) {
            fail(fmt::format("the patch {} where {} is expected", quoted_value(cells[0]),
                             patch_name(table.rows.size())),
                 "give the patches in the chart's order, from dark skin to black");
            return false;
        }
        Rgb& row = table.rows.emplace_back();
        table.lines.push_back(line_);
        for (std::size_t k = 0; k < 3; ++k) {
            const std::string_view cell = cells[columns_ - 3 + k];
            const auto value = parse_real(cell);
            if (!value || std::abs(*value) > 1e9) {
                fail(fmt::format("{} is no number of use", quoted_value(cell)), "write a number");
                return false;
            }
            row[k] = *value;
        }
        return true;
    }

    std::string file_;
    bool takes_lab_;
    Faults& faults_;
    int line_ = 0;
    std::size_t columns_ = 0;
};

}  // namespace

ChartReference chart_reference(ChartEdition edition) {
    const bool before = edition == ChartEdition::before_2014;
    ChartReference reference;
    reference.name = before ? "before November 2014" : "after November 2014";
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        reference.rgb[i] = srgb_of_lab(before ? kBefore[i] : kAfter[i]);
    }
    return reference;
}

ChartReference read_reference(const std::string& text, const std::string& file, Faults& faults) {
    const PatchTable table = PatchTableReader(file, true, faults).read(text);
    ChartReference reference;
    reference.name = file;
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        const Rgb rgb = table.is_lab ? srgb_of_lab(table.rows[i]) : table.rows[i];
        if (*std::max_element(rgb.begin(), rgb.end()) > 2.0 || rgb[1] <= 0.0) {
            faults.add({.code = "P002",
                        .file = file,
                        .line = table.lines[i],
                        .message = fmt::format("{} has no colour of a chart", patch_name(i)),
                        .suggestion = "give linear sRGB with 1.0 = white, or L*a*b* under D50"});
            break;
        }
        reference.rgb[i] = rgb;
    }
    return reference;
}

std::array<PatchMeasure, kChartPatches> read_patch_means(const std::string& text,
                                                         const std::string& file, Faults& faults) {
    const PatchTable table = PatchTableReader(file, false, faults).read(text);
    std::array<PatchMeasure, kChartPatches> patches;
    for (std::size_t i = 0; i < table.rows.size(); ++i) patches[i].mean = table.rows[i];
    return patches;
}

std::size_t patch_index(const std::string& name) {
    for (std::size_t i = 0; i < kChartPatches; ++i) {
        if (name == chart_patches()[i].name) return i;
    }
    std::size_t number = 0;
    const char* const end = name.data() + name.size();
    const auto [at, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc() || at != end || number < 1 || number > kChartPatches) {
        return kChartPatches;
    }
    return number - 1;
}

std::string patch_name(std::size_t index) {
    return fmt::format("patch {}, {}", index + 1, chart_patches()[index].name);
}

}  // namespace imgtune::workbench
