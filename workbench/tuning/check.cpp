#include "workbench/tuning/check.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

/// In this order: a value out of its range keeps quiet what follows from it.
constexpr void (*kChecks[])(Checked&) = {check_caller,      check_ranges,    check_rows,
                                         check_polynomials, check_smoothing, check_images};

}  // namespace

Checked::Checked(const Tuning& tuning, Faults& faults)
    : tuning_(tuning),
      faults_(faults),
      codec_(tuning.caller.int_bits, tuning.caller.frac_bits),
      rows_matter_(tuning.has_ccm && ccm().i4NumCT >= 1 && ccm().i4NumCT <= 8 &&
                   (ccm().i4Method == kPolynomialMethod || ccm().i4Method == kBlendMethod) &&
                   !is_suppressed("ccm.i4NumCT") && !is_suppressed("ccm.i4Method")) {}

void Checked::report(Fault fault) {
    if (!is_suppressed(fault.path)) faults_.add(std::move(fault));
}

bool Checked::is_row_used(std::size_t row) const {
    return row == kRowNormal ||
           (row == kRowLowLight && ccm().i4NumLV >= 2 && !is_suppressed("ccm.i4NumLV")) ||
           (row == kRowFlash && ccm().i4NumFlash != 0 && !is_suppressed("ccm.i4NumFlash"));
}

std::size_t Checked::filled_points(std::size_t row) const {
    for (std::size_t count = 8; count > 0; --count) {
        const AWB_GAIN_T& gain = ccm().rCTAWBGain[row][count - 1];
        if (gain.i4R != 0 || gain.i4B != 0 || has_matrix(row, count - 1)) return count;
    }
    return 0;
}

std::size_t Checked::points(std::size_t row) const {
    return std::min(static_cast<std::size_t>(ccm().i4NumCT), filled_points(row));
}

bool Checked::has_gains(std::size_t row) const {
    return std::any_of(ccm().rCTAWBGain[row], ccm().rCTAWBGain[row] + points(row),
                       [](const AWB_GAIN_T& gain) { return gain.i4R != 0 || gain.i4B != 0; });
}

bool Checked::has_matrix(std::size_t row, std::size_t ct) const {
    const auto& words = ccm().rCCM_Nvram[row][ct].u4Word;
    return std::any_of(kCoefficientFields.begin(), kCoefficientFields.end(),
                       [&](const BitField& field) { return field.read(words) != 0; });
}

bool Checked::has_matrices(std::size_t row) const {
    for (std::size_t ct = 0; ct < points(row); ++ct) {
        if (has_matrix(row, ct)) return true;
    }
    return false;
}

bool Checked::is_row_missing(std::size_t row) const {
    return !has_gains(row) || (ccm().i4Method == kBlendMethod && !has_matrices(row));
}

NSIspTuning::ISP_CCM_T Checked::matrix(std::size_t row, std::size_t ct) const {
    return codec_.decode(ccm().rCCM_Nvram[row][ct]);
}

bool Checked::codec_fits() const {
    const CallerSettings& c = tuning_.caller;
    return c.int_bits >= 0 && c.frac_bits >= 0 &&
           std::int64_t{c.int_bits} + c.frac_bits <= kCoefficientBits &&
           !is_suppressed("caller.int_bits") && !is_suppressed("caller.frac_bits");
}

std::int32_t Checked::unity() const {
    return as_signed(shift_left(1, tuning_.caller.frac_bits));
}

std::string row_path(std::size_t row) {
    return fmt::format("ccm.rows.{}", kRowNames[row]);
}

std::string point_path(std::size_t row, std::size_t ct) {
    return fmt::format("ccm.rows.{}.{}", kRowNames[row], ct);
}

std::string slot_path(std::size_t slot, const char* field) {
    return fmt::format("color.tuning.{}.{}", kSlotNames[slot], field);
}

std::string image_path(std::size_t slot, std::size_t ct) {
    return fmt::format("color.images.{}.{}", kSlotNames[slot], ct);
}

void check_tables(const Tuning& tuning, Faults& faults) {
    Checked checked(tuning, faults);
    for (const auto check : kChecks) check(checked);
}

}  // namespace imgtune::workbench
