#ifndef IMGTUNE_WORKBENCH_TUNING_FIELDS_H
#define IMGTUNE_WORKBENCH_TUNING_FIELDS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/arithmetic.h"
#include "workbench/tuning/tuning.h"

// The one description of a tuning: which fields each record has, where they stand, what they mean,
// and where the records stand in the YAML form. Reading, writing, checking, diffing and the
// documentation of the format walk it.

namespace imgtune::workbench {

/// The parts of a Tuning that are made of 32-bit words.
enum class Part { caller, ccm, color, pca };

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
    bool warning = false;
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
    bool optional = false;  ///< may be missing in YAML: keeps its default

    unsigned elements() const { return count == 0 ? 1 : count; }
    BitField place(unsigned element) const;
    /// What the field's bits can hold.
    std::int64_t lowest() const;
    std::int64_t highest() const;
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
extern const RecordDefinition kGainRecord;
extern const RecordDefinition kMatrixRecord;
extern const RecordDefinition kPolynomialRecord;
extern const RecordDefinition kSmoothingRecord;
extern const RecordDefinition kColorImageRecord;

inline constexpr const char* kRowNames[8] = {"normal", "low_light", "row2",  "row3",
                                             "row4",   "row5",      "flash", "row7"};
inline constexpr const char* kSlotNames[4] = {"normal", "scene", "flash", "outdoor"};

/// A record at its place in a tuning.
struct Record {
    const RecordDefinition* definition;
    Part part;
    std::size_t first_word;
    std::string path;  ///< "color.images.normal.2"
};

/// Every record of a tuning, in the order of the YAML form.
const std::vector<Record>& records();

/// One value of a tuning.
struct FieldRef {
    const Record* record;
    const FieldDefinition* definition;
    unsigned element;

    std::string path()
        const;  ///< "color.images.normal.2.Luma.PY[3]", "ccm.rows.normal.matrices.0[8]"
    /// As stored: sign-extended if signed; a coefficient decoded with the tuning's codec.
    std::int64_t read(const Tuning& tuning) const;
    /// The bits alone.
    std::uint32_t read_bits(const Tuning& tuning) const;
    void write_bits(Tuning& tuning, std::uint32_t bits) const;
};

/// Every value of every record, in the order of records().
const std::vector<FieldRef>& fields();

/// The YAML form of a tuning: maps and lists down to records, and their fields.
struct FormatNode {
    enum class Kind {
        map,     ///< children by name
        list,    ///< children by index
        values,  ///< a record shown as a list of its values
        field,
    };
    Kind kind = Kind::map;
    std::string name;  ///< key or index
    std::string path;
    bool optional = false;
    const Record* record = nullptr;               ///< values, field
    const FieldDefinition* definition = nullptr;  ///< field
    const Record* opaque = nullptr;               ///< the map has other_bits, of this record's part
    std::vector<FormatNode> children;
};
const FormatNode& format_tree();

/// A word's bits that belong to no field of any record.
struct OpaqueWord {
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

}  // namespace imgtune::workbench

#endif
