#include <fmt/format.h>

#include "workbench/findings/faults.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

std::string field_row(const FieldDefinition& f) {
    // The lines of the colour map are alike: one stands for all nine.
    const bool line = f.name.starts_with("ColorMap.W") && f.name.size() > 14 && f.name[13] == '.';
    if (line && !f.name.starts_with("ColorMap.W1.H.")) return "";
    std::string name = f.name;
    if (line) name.replace(0, 13, "ColorMap.W1..W3.H,Y,S");
    const std::string word_text = line ? fmt::format("72 + 15 set + 5 line + {}", f.first.word - 72)
                                       : std::to_string(f.first.word);
    std::string place = fmt::format("{}..{}", f.first.low, f.first.low + f.first.width - 1);
    if (f.count != 0 && f.places == nullptr) place += fmt::format(", every {}", f.stride);
    if (f.places != nullptr) {
        place.clear();
        for (unsigned e = 0; e < f.count; ++e) {
            const BitField at = f.places[e];
            place += fmt::format("{}{}:{}..{}", e == 0 ? "" : ", ", at.word, at.low,
                                 at.low + at.width - 1);
        }
    }
    const std::string allowed = f.form == Form::coefficient
                                    ? "by int_bits and frac_bits; 3, 9: -4095..4096"
                                : f.places != nullptr ? "by width"
                                                      : f.allowed_text();
    return fmt::format("| `{}`{} | {} | {} | {} | {} | {} | {} |\n", name,
                       f.optional ? " (optional)" : "", word_text, place, f.elements(), allowed,
                       f.unit, f.meaning);
}

}  // namespace

std::string describe_fields() {
    static constexpr std::pair<const RecordDefinition*, const char*> kWhere[] = {
        {&kCallerRecord, "`caller`"},
        {&kCcmHeadRecord, "`ccm`"},
        {&kKelvinRecord, "`ct` of each point of `ccm.rows.*`; not in the stored images"},
        {&kGainRecord,
         "`gain` of each point, as a list; row l, point t from word 425 + 24 l + 3 t of the image"},
        {&kMatrixRecord,
         "`matrix` of each point, as a list; row l, point t from word 41 + 48 l + 6 t"},
        {&kPolynomialRecord,
         "`ccm.rCCMPoly22`, from word 681, and `ccm.rCCMPoly22Flash`, from "
         "word 1065"},
        {&kColorTuningRecord, "`color.tuning.*`"},
        {&kColorImageRecord, "each of `color.images.*`"},
    };
    std::string text;
    for (const auto& [record, where] : kWhere) {
        text += fmt::format("\n### {} ({} words): {}\n\n", record->name, record->words, where);
        text += "| field | word | bits | values | allowed | unit | meaning |\n";
        text += "|---|---|---|---|---|---|---|\n";
        for (const FieldDefinition& f : record->fields) {
            text += field_row(f);
        }
    }
    return text;
}

std::string describe_rules() {
    std::string text = "\n| code | | finding |\n|---|---|---|\n";
    for (const Rule& rule : rules()) {
        text +=
            fmt::format("| {} | {} | {} |\n", rule.code, severity_name(rule.severity), rule.title);
    }
    return text;
}

}  // namespace imgtune::workbench
