#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

using Matrix = NSIspTuning::ISP_CCM_T;

// ---- how many points there are

void report_missing(Checked& checked, std::size_t row) {
    const bool low_light = row == kRowLowLight;
    const bool flash = row == kRowFlash;
    checked.report(
        {.code = low_light ? "T105"
                 : flash   ? "T106"
                           : "T107",
         .path = row_path(row),
         .message =
             fmt::format("has no {}; it needs {} points",
                         checked.has_gains(row) ? "matrices" : "gains", checked.ccm().i4NumCT),
         .effect = low_light ? "below LV 50 the matrix turns into a wrong one"
                   : flash   ? "every flash frame gets a wrong matrix"
                             : "every frame without flash gets a wrong matrix",
         .suggestion = low_light ? "fill the row, or set i4NumLV: 1"
                       : flash   ? "fill the row, or set i4NumFlash: 0 for a camera without flash"
                                 : "fill the row"});
}

void report_short(Checked& checked, const std::string& path, const std::string& message) {
    checked.report({.code = "T123",
                    .path = path,
                    .message = message,
                    .effect = "gains of 0 count as tuned: matrices of a wrong CT",
                    .suggestion = "fill in the points, or lower i4NumCT"});
}

/// i4NumCT against the points of the used rows: one finding where all rows agree.
void check_counts(Checked& checked, const std::vector<std::size_t>& rows) {
    const auto declared = static_cast<std::size_t>(checked.ccm().i4NumCT);
    std::size_t fewest = 8;
    std::size_t most = 0;
    std::size_t fullest = kRowNormal;
    for (const std::size_t row : rows) {
        const std::size_t filled = checked.filled_points(row);
        fewest = std::min(fewest, filled);
        if (filled > most) fullest = row;
        most = std::max(most, filled);
    }
    if (rows.empty()) return;
    if (most > declared) {
        checked.report({.code = "T122",
                        .path = "ccm.i4NumCT",
                        .message = fmt::format("is {}, but row {} holds {} points", declared,
                                               kRowNames[fullest], most),
                        .value = std::to_string(declared),
                        .allowed = std::to_string(most),
                        .effect = "the points of the highest CTs are not used",
                        .suggestion = fmt::format("i4NumCT: {}", most)});
    }
    if (fewest >= declared) return;
    if (fewest == most) {
        report_short(checked, "ccm.i4NumCT",
                     fmt::format("is {}, but the rows hold {} points", declared, most));
        return;
    }
    for (const std::size_t row : rows) {
        const std::size_t filled = checked.filled_points(row);
        if (filled >= declared) continue;
        report_short(checked, row_path(row),
                     fmt::format("holds {} points, but i4NumCT is {}", filled, declared));
    }
}

// ---- gains

void check_order(Checked& checked, std::size_t row, std::size_t ct) {
    const AWB_GAIN_T& before = checked.ccm().rCTAWBGain[row][ct - 1];
    const AWB_GAIN_T& gain = checked.ccm().rCTAWBGain[row][ct];
    const auto report = [&](const char* name, const char* rule, std::int32_t value,
                            std::int32_t other) {
        if (checked.is_suppressed(fmt::format("{}.gain.{}", point_path(row, ct - 1), name))) return;
        checked.report(
            {.code = "T104",
             .path = fmt::format("{}.gain.{}", point_path(row, ct), name),
             .message = fmt::format("is {} after {}; it must {} with the CT", value, other, rule),
             .value = std::to_string(value),
             .allowed = fmt::format("{} {}", *name == 'R' ? "above" : "below", other),
             .effect = "gains are clipped to a wrong end and placed at a wrong CT: "
                       "colours jump in mixed light",
             .suggestion = "order the points from the lowest CT to the highest"});
    };
    if (gain.i4R <= before.i4R) report("R", "rise", gain.i4R, before.i4R);
    if (gain.i4B >= before.i4B) report("B", "fall", gain.i4B, before.i4B);
}

/// Green is not read, but tells the scale that a row was written in. One finding for all rows.
void check_green(Checked& checked, const std::vector<std::size_t>& rows) {
    const std::int32_t first = checked.ccm().rCTAWBGain[rows.front()][0].i4G;
    bool alike = true;
    std::string off;
    std::int32_t value = 0;
    for (const std::size_t row : rows) {
        for (std::size_t ct = 0; ct < checked.points(row); ++ct) {
            const std::int32_t green = checked.ccm().rCTAWBGain[row][ct].i4G;
            alike = alike && green == first;
            if (green == kGainUnity || !off.empty()) continue;
            off = point_path(row, ct) + ".gain.G";
            value = green;
        }
    }
    if (off.empty()) return;
    if (alike && first > 0) {
        checked.report(
            {.code = "T124",
             .path = off,
             .message = fmt::format("is {0} in every point: gains that take {0} as 1.0; "
                                    "tuned gains take 512",
                                    value),
             .value = std::to_string(value),
             .allowed = "512",
             .effect = "every frame's gain lies beyond the tuned ones: one matrix for all",
             .suggestion = fmt::format("multiply all gains by 512/{}", value)});
        return;
    }
    checked.report(
        {.code = "T125",
         .path = off,
         .message = fmt::format("is {}; tuned gains are relative to a green of 512", value),
         .value = std::to_string(value),
         .allowed = "512",
         .effect = "green itself is not read; red and blue may be on its scale",
         .suggestion = "scale the gain so that green is 512"});
}

void check_kelvin(Checked& checked, std::size_t row) {
    std::uint32_t before = 0;
    for (std::size_t ct = 0; ct < checked.points(row); ++ct) {
        const std::uint32_t kelvin = checked.tuning().kelvin[row][ct];
        if (kelvin != 0 && kelvin <= before) {
            checked.report({.code = "T128",
                            .path = point_path(row, ct) + ".ct",
                            .message = fmt::format("is {} after {}; points stand from the lowest "
                                                   "CT to the highest",
                                                   kelvin, before),
                            .value = std::to_string(kelvin),
                            .allowed = fmt::format("above {}", before),
                            .effect = "the library goes by the gains alone; tools show a wrong CT",
                            .suggestion = "correct the CT, or order the points"});
        }
        before = std::max(before, kelvin);
    }
}

// ---- matrices

void check_sums(Checked& checked, std::size_t row, std::size_t ct) {
    const Matrix m = checked.matrix(row, ct);
    const std::int64_t unity = checked.unity();
    for (std::size_t i = 0; i < 3; ++i) {
        const std::int32_t* const c = m.i4Coef + 3 * i;
        const std::int64_t sum = std::int64_t{c[0]} + c[1] + c[2];
        if (sum == unity) continue;
        const std::int64_t diagonal = unity - sum + c[i];
        checked.report(
            {.code = "T108",
             .path = fmt::format("{}.matrix[{}]", point_path(row, ct), 3 * i),
             .message = fmt::format("starts a row that sums to {}; it must sum to {}", sum, unity),
             .value = std::to_string(sum),
             .allowed = std::to_string(unity),
             .effect = fmt::format("the diagonal {} is replaced by {}", c[i], diagonal),
             .suggestion = fmt::format("set the diagonal to {}", diagonal)});
    }
}

void check_matrix(Checked& checked, std::size_t row, std::size_t ct) {
    const std::string path = point_path(row, ct) + ".matrix";
    if (checked.is_suppressed(path)) return;
    if (!checked.has_matrix(row, ct)) {
        checked.report({.code = "T107",
                        .path = path,
                        .message = "is missing: all coefficients are 0",
                        .effect = "uncorrected colours at this CT",
                        .suggestion = "add the matrix, or lower i4NumCT"});
        return;
    }
    check_sums(checked, row, ct);
}

}  // namespace

void check_rows(Checked& checked) {
    if (!checked.rows_matter()) return;
    const bool blend = checked.ccm().i4Method == kBlendMethod;
    if (blend && checked.ccm().i4NumCT < 3) {
        checked.report({.code = "T103",
                        .path = "ccm.i4NumCT",
                        .message = fmt::format("is {}; allowed are 3..8 for i4Method blend",
                                               checked.ccm().i4NumCT),
                        .value = std::to_string(checked.ccm().i4NumCT),
                        .allowed = "3..8 for i4Method blend",
                        .effect = "matrices are taken from outside the row between the end points",
                        .suggestion = "tune a third CT, or use i4Method: polynomial"});
    }
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < 8; ++row) {
        if (!checked.is_row_used(row)) continue;
        if (checked.is_row_missing(row)) {
            report_missing(checked, row);
        } else {
            rows.push_back(row);
        }
    }
    if (rows.empty()) return;
    check_counts(checked, rows);
    check_green(checked, rows);
    for (const std::size_t row : rows) {
        for (std::size_t ct = 1; ct < checked.points(row); ++ct) check_order(checked, row, ct);
        check_kelvin(checked, row);
        if (!blend || !checked.codec_fits()) continue;
        for (std::size_t ct = 0; ct < checked.points(row); ++ct) check_matrix(checked, row, ct);
    }
}

}  // namespace imgtune::workbench
