#include "workbench/findings/rules.h"

namespace imgtune::workbench {

namespace {

constexpr Severity kError = Severity::error;
constexpr Severity kWarning = Severity::warning;

constexpr Rule kRules[] = {
    {"C001", kError, "text that is no calibration"},
    {"C002", kError, "calibration without a grey locus, or without matrices"},
    {"C003", kError, "value that is missing, or no number, or not above 0"},
    {"C004", kError, "list, table or line with too few or too many values"},
    {"C005", kWarning, "section left out"},
    {"C101", kError, "CT that is no light's kelvin"},
    {"C102", kWarning, "second point at a CT"},
    {"C103", kError, "locus that does not rise in red gain and fall in blue gain"},
    {"C104", kWarning, "locus point out of order"},
    {"C105", kError, "gain that the library cannot hold"},
    {"C106", kError, "locus too short"},
    {"C107", kWarning, "matrix outside the locus"},
    {"C108", kError, "no matrix within the locus"},
    {"C109", kError, "matrix row whose sum is far from 1"},
    {"C110", kWarning, "matrix row that does not sum to 1"},
    {"C111", kWarning, "offsets, which the library has no place for"},
    {"C112", kError, "coefficient that the library cannot hold"},
    {"C113", kWarning, "fewer than three matrices"},
    {"C114", kWarning, "points whose gains are equal once rounded"},
    {"C201", kError, "choice outside its allowed range"},
    {"C202", kError, "named CT that is not calibrated, or named twice"},
    {"C203", kWarning, "named CT between the calibrated ones"},
    {"C301", kError, "tuning without gains or matrices to write"},
    {"C302", kError, "CT of a tuned point unknown, or not rising"},
    {"C303", kWarning, "what a calibration has no place for"},
    {"F001", kError, "frame log that cannot be read on"},
    {"F100", kWarning, "frame log without frames"},
    {"F101", kWarning, "light value beyond 255"},
    {"F102", kWarning, "negative light value"},
    {"F103", kWarning, "colour temperature of 0"},
    {"F104", kWarning, "negative colour temperature"},
    {"F105", kWarning, "colour temperature that is no light's kelvin"},
    {"F106", kWarning, "red or blue gain of 0"},
    {"F107", kWarning, "negative red or blue gain"},
    {"F108", kWarning, "green gain of 0 or less"},
    {"T001", kError, "not one YAML document"},
    {"T002", kError, "`format` missing or unknown"},
    {"T003", kError, "unknown key"},
    {"T004", kError, "missing key"},
    {"T005", kError, "value of the wrong kind"},
    {"T006", kError, "wrong number of entries"},
    {"T007", kError, "number that its field cannot hold"},
    {"T008", kError, "coefficient beyond its 13-bit field"},
    {"T009", kError, "key twice in one map"},
    {"T010", kError, "file missing, unreadable or of a wrong size"},
    {"T011", kError, "`other_bits` that belong to a field, or to no word"},
    {"T013", kError, "merge key that is no map, or nested too deep"},
    {"T014", kError, "`like` that leads nowhere, or in a circle"},
    {"T101", kError, "value outside its allowed range"},
    {"T102", kError, "number of CTs outside 1..8"},
    {"T103", kError, "fewer than 3 CTs to blend"},
    {"T104", kError, "gains that do not rise in red and fall in blue"},
    {"T105", kError, "low-light row missing though `i4NumLV` uses it"},
    {"T106", kError, "flash row missing though `i4NumFlash` is not 0"},
    {"T107", kError, "normal row or a matrix missing"},
    {"T108", kWarning, "matrix row that does not sum to the unity"},
    {"T109", kError, "polynomial deviation of zero"},
    {"T110", kError, "polynomial mean out of range"},
    {"T111", kError, "polynomial that leaves the coefficient field"},
    {"T112", kWarning, "step of the matrix between neighbouring lights that is seen"},
    {"T114", kError, "coefficient format wider than its field"},
    {"T115", kWarning, "`frac_bits` other than 9"},
    {"T116", kError, "temporal weights that sum to 0"},
    {"T117", kError, "temporal weight of the new matrix 0"},
    {"T118", kWarning, "temporal weights that stop more than 4/512 short of the matrix"},
    {"T119", kWarning, "temporal weights of the two frames before that differ"},
    {"T120", kWarning, "unusual value, without effect or with little"},
    {"T121", kWarning, "absurd polynomial deviation"},
    {"T122", kWarning, "more points filled in than `i4NumCT` declares"},
    {"T123", kError, "fewer points filled in than `i4NumCT` declares"},
    {"T124", kWarning, "tuned gains on another scale than 512 = 1.0"},
    {"T125", kWarning, "green gain other than 512"},
    {"T126", kError, "polynomial on a wrong scale, by its tuned gains and matrices"},
    {"T127", kWarning, "polynomial far from the tuned matrices of its row"},
    {"T128", kWarning, "kelvin of tuned points that do not rise"},
    {"T201", kError, "ratio thresholds that do not ascend"},
    {"T203", kError, "outdoor ramp that starts after its end"},
    {"T204", kError, "outdoor base 0 with outdoor enabled"},
    {"T207", kError, "saturation knots out of order"},
    {"T208", kError, "step of 0: never settles"},
    {"T209", kError, "CT grid neither rising nor falling"},
    {"T210", kWarning, "slots that are copies of each other"},
    {"T211", kError, "colour image of zeros"},
    {"T212", kWarning, "control words that differ within a slot"},
    {"T213", kError, "saturation target beyond its 10 bits"},
    {"T214", kWarning, "ratio that jumps: a ramp without length"},
    {"T215", kWarning, "outdoor ramp without length"},
    {"T216", kWarning, "luma curve that falls"},
    {"T217", kWarning, "hue entry far from both neighbours"},
    {"T218", kError, "CT grid in mired"},
};

}  // namespace

std::span<const Rule> rules() {
    return kRules;
}

const Rule* find_rule(std::string_view code) {
    for (const Rule& rule : kRules) {
        if (rule.code == code) return &rule;
    }
    return nullptr;
}

}  // namespace imgtune::workbench
