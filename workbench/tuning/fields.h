#ifndef IMGTUNE_WORKBENCH_TUNING_FIELDS_H
#define IMGTUNE_WORKBENCH_TUNING_FIELDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/arithmetic.h"
#include "workbench/tuning/tuning.h"

// The one description of a tuning: which fields each record has, where they stand and what they
// mean. Reading, writing, checking, diffing and the documentation of the format walk it.

namespace imgtune::workbench {

/// The parts of a Tuning that are made of 32-bit words.
enum class Part { caller, kelvin, ccm, color, color_tuning };
inline constexpr Part kParts[] = {Part::caller, Part::kelvin, Part::ccm, Part::color,
                                  Part::color_tuning};

std::size_t part_words(Part part);
std::uint32_t load_word(const Tuning& tuning, Part part, std::size_t word);
void store_word(Tuning& tuning, Part part, std::size_t word, std::uint32_t value);

enum class Form {
    integer,      ///< unsigned, or two's complement of the field's width
    coefficient,  ///< 13-bit coefficient; its meaning depends on the caller's codec
};

/// A finding of `check` for values outside a field's allowed range.
struct RangeRule {
    std::int64_t min;
    std::int64_t max;
    const char* code = "T101";
    const char* effect = "";  ///< on the camera
};

/// A value that has a name.
struct Choice {
    std::int64_t value;
    const char* name;
};

/// A field of a record, or a row of equal ones.
struct FieldDefinition {
    std::string name;     ///< below the record, groups separated by dots: "Luma.PY"
    BitField first;       ///< word counted from the record's start; width 1..32
    unsigned count = 0;   ///< 0: a single value; else a list of that many
    unsigned stride = 0;  ///< bits from one element to the next
    const char* unit = "";
    const char* meaning = "";
    const RangeRule* allowed = nullptr;  ///< none: whatever the bits hold
    bool is_signed = false;
    const BitField* places = nullptr;  ///< elements without a regular stride
    Form form = Form::integer;
    bool optional = false;              ///< may be missing in YAML: keeps its default
    std::int64_t scale = 0;             ///< stored for 1.0 of its unit; 0: whole numbers only
    std::span<const Choice> choices{};  ///< all allowed values, by name
    bool level = false;                 ///< YAML may give one number for a list of equal ones

    unsigned elements() const { return count == 0 ? 1 : count; }
    BitField place(unsigned element) const;
    /// What the bits of an element can hold.
    std::int64_t lowest() const;
    std::int64_t highest(unsigned element = 0) const;
    /// What an element may be, for a sentence: "1, polynomial, and 2, blend", "0..255".
    std::string allowed_text(unsigned element = 0) const;
};

/// A kind of record.
struct RecordDefinition {
    const char* name;
    unsigned words;
    std::vector<FieldDefinition> fields;
    bool as_list = false;   ///< YAML shows its values as one list without names
    bool optional = false;  ///< may be missing in YAML: zero, or the caller's defaults
};

extern const RecordDefinition kCallerRecord;
extern const RecordDefinition kCcmHeadRecord;
extern const RecordDefinition kKelvinRecord;
extern const RecordDefinition kGainRecord;
extern const RecordDefinition kMatrixRecord;
extern const RecordDefinition kPolynomialRecord;
extern const RecordDefinition kColorTuningRecord;
extern const RecordDefinition kColorImageRecord;

inline constexpr const char* kRowNames[8] = {"normal", "low_light", "row2",  "row3",
                                             "row4",   "row5",      "flash", "row7"};
inline constexpr const char* kSlotNames[4] = {"normal", "scene", "flash", "outdoor"};

/// Those that the library picks by name.
inline constexpr std::size_t kRowNormal = 0;
inline constexpr std::size_t kRowLowLight = 1;
inline constexpr std::size_t kRowFlash = 6;
inline constexpr std::size_t kSlotNormal = 0;
inline constexpr std::size_t kSlotScene = 1;
inline constexpr std::size_t kSlotFlash = 2;
inline constexpr std::size_t kSlotOutdoor = 3;

/// Coefficients of a matrix that a tuning chooses freely; the diagonals close the rows.
inline constexpr std::array<std::size_t, 6> kOffDiagonals = {1, 2, 3, 5, 6, 7};

/// Stored for 1.0 of an AWB gain.
inline constexpr std::int32_t kGainUnity = 512;
/// Stored for 1 of a polynomial's means and deviations, and of its terms.
inline constexpr std::int32_t kHundredths = 100;
inline constexpr std::int32_t kTenThousandths = 10000;
/// Of a coefficient, without its sign.
inline constexpr std::int64_t kCoefficientBits = 12;

/// A record at its place in a tuning.
struct Record {
    const RecordDefinition* definition;
    Part part;
    std::size_t first_word;
    std::string path;  ///< "color.images.normal.2", "ccm.rows.normal.0.gain"
};

/// Every record of a tuning, in the order of the YAML form.
const std::vector<Record>& records();

/// One value of a tuning.
struct FieldRef {
    const Record* record;
    const FieldDefinition* definition;
    unsigned element;

    /// "color.images.normal.2.Luma.PY[3]", "ccm.rows.normal.0.matrix[8]"
    std::string path() const;
    /// As stored: sign-extended if signed; a coefficient decoded with the tuning's codec.
    std::int64_t read(const Tuning& tuning) const;
    /// The bits alone.
    std::uint32_t read_bits(const Tuning& tuning) const;
    void write_bits(Tuning& tuning, std::uint32_t bits) const;
};

/// Every value of every record, in the order of records().
const std::vector<FieldRef>& fields();

/// A word's bits that belong to no field of any record.
struct OpaqueWord {
    const Record* record;  ///< whose other_bits show them
    Part part;
    std::size_t word;  ///< in the part
    std::uint32_t mask;
    std::string path;  ///< "ccm.other_bits.17", "color.images.normal.2.other_bits.0"
};
const std::vector<OpaqueWord>& opaque_words();

/// A field of one colour image, every element by itself: what replay writes, in a fixed order.
struct ColorField {
    std::string name;  ///< "Global.B", "Luma.PY[3]", "ColorMap.W1.H.PL"
    unsigned word;
    unsigned lsb;
    unsigned width;

    std::uint32_t read(const NSIspTuning::ISP_NVRAM_COLOR_T& image) const {
        return BitField{word, lsb, width}.read(image.u4Word);
    }
};
std::span<const ColorField> color_fields();

/// The table of fields as Markdown, for docs/tuning-format.md.
std::string describe_fields();

/// The table of findings as Markdown, likewise.
std::string describe_rules();

}  // namespace imgtune::workbench

#endif
