#include <fmt/format.h>

#include <string_view>

#include "workbench/tuning/checked.h"

namespace imgtune::workbench {

namespace {

bool is_gain_used(const Checked& checked, const FieldRef& field) {
    const std::size_t word = field.record->first_word - 425;
    const std::size_t row = word / 24;
    return checked.rows_matter() && checked.is_row_used(row) &&
           word % 24 / 3 < checked.points(row) && !checked.is_row_missing(row);
}

/// Whether the library gets to see the field.
bool is_used(const Checked& checked, const FieldRef& field) {
    const Tuning& tuning = checked.tuning();
    const RecordDefinition* const kind = field.record->definition;
    if (kind == &kCallerRecord) {
        return field.definition->name == "ct_grid" ? tuning.has_color : tuning.has_ccm;
    }
    if (field.record->part == Part::ccm && !tuning.has_ccm) return false;
    if (field.record->part != Part::ccm && !tuning.has_color) return false;
    if (kind == &kGainRecord) return is_gain_used(checked, field);
    if (kind == &kPolynomialRecord) {
        const bool flash = field.record->path == "ccm.rCCMPoly22Flash";
        return tuning.ccm.i4Method == kPolynomialMethod &&
               (!flash || checked.is_row_used(kRowFlash));
    }
    if (kind == &kColorTuningRecord) {
        const std::size_t slot = field.record->first_word / 17;
        const bool outdoor = field.definition->name.starts_with("u4Outdoor");
        return slot != kSlotOutdoor &&
               (!outdoor || (slot == kSlotNormal && checked.uses_outdoor()));
    }
    return true;
}

void check_range(Checked& checked, const FieldRef& field) {
    const RangeRule* const rule = field.definition->allowed;
    if (rule == nullptr || !is_used(checked, field)) return;
    const std::int64_t value = field.read(checked.tuning());
    if (value >= rule->min && value <= rule->max) return;
    const std::string path = field.path();
    const std::string allowed = field.definition->allowed_text(field.element);
    const bool zero_deviation = value == 0 && std::string_view(rule->code) == "T121";
    checked.report({.code = zero_deviation ? "T109" : rule->code,
                    .path = path,
                    .message = fmt::format("is {}; allowed are {}", value, allowed),
                    .value = std::to_string(value),
                    .allowed = allowed,
                    .effect = zero_deviation
                                  ? "division by zero: coefficients of 0 or beyond all bounds"
                                  : rule->effect});
    checked.suppress(path);
}

}  // namespace

void check_ranges(Checked& checked) {
    for (const FieldRef& field : fields()) check_range(checked, field);
}

}  // namespace imgtune::workbench
