#include "workbench/tuning/fields.h"

#include <fmt/format.h>

#include <cstring>
#include <iterator>

#include "ccm/codec.h"

namespace imgtune::workbench {

namespace {

static_assert(sizeof(CallerSettings) == 11 * 4);
static_assert(sizeof(ISP_NVRAM_MULTI_CCM_STRUCT) == 1102 * 4);
static_assert(sizeof(Tuning::color) == 4 * 5 * 117 * 4);
static_assert(sizeof(Tuning::pca) == 4 * 17 * 4);
static_assert(sizeof(Tuning::kelvin) == 8 * 8 * 4);

template <class T>
T* words_of(std::conditional_t<std::is_const_v<T>, const Tuning, Tuning>& t, Part part) {
    switch (part) {
        case Part::caller:
            return reinterpret_cast<T*>(&t.caller);
        case Part::kelvin:
            return reinterpret_cast<T*>(&t.kelvin);
        case Part::ccm:
            return reinterpret_cast<T*>(&t.ccm);
        case Part::color:
            return reinterpret_cast<T*>(&t.color);
        case Part::color_tuning:
            return reinterpret_cast<T*>(&t.pca);
    }
    return nullptr;
}

constexpr std::uint32_t mask_of(unsigned width) {
    return width >= 32 ? ~0U : (1U << width) - 1U;
}

std::uint32_t word_mask(const BitField& place) {
    return mask_of(place.width) << place.low;
}

CoefficientCodec codec_of(const Tuning& tuning) {
    return {tuning.caller.int_bits, tuning.caller.frac_bits};
}

}  // namespace

std::size_t part_words(Part part) {
    switch (part) {
        case Part::caller:
            return sizeof(CallerSettings) / 4;
        case Part::kelvin:
            return sizeof(Tuning::kelvin) / 4;
        case Part::ccm:
            return sizeof(Tuning::ccm) / 4;
        case Part::color:
            return sizeof(Tuning::color) / 4;
        case Part::color_tuning:
            return sizeof(Tuning::pca) / 4;
    }
    return 0;
}

std::uint32_t load_word(const Tuning& tuning, Part part, std::size_t word) {
    std::uint32_t value;
    std::memcpy(&value, words_of<const char>(tuning, part) + 4 * word, 4);
    return value;
}

void store_word(Tuning& tuning, Part part, std::size_t word, std::uint32_t value) {
    std::memcpy(words_of<char>(tuning, part) + 4 * word, &value, 4);
}

BitField FieldDefinition::place(unsigned element) const {
    if (places != nullptr) return places[element];
    const unsigned bit = first.low + stride * element;
    return {first.word + bit / 32, bit % 32, first.width};
}

std::int64_t FieldDefinition::lowest() const {
    return is_signed ? -(std::int64_t{1} << (first.width - 1)) : 0;
}

std::int64_t FieldDefinition::highest(unsigned element) const {
    const unsigned width = place(element).width;
    return (std::int64_t{1} << (is_signed ? width - 1 : width)) - 1;
}

std::string FieldDefinition::allowed_text(unsigned element) const {
    if (choices.empty()) {
        return allowed != nullptr ? fmt::format("{}..{}", allowed->min, allowed->max)
                                  : fmt::format("{}..{}", lowest(), highest(element));
    }
    std::string text;
    for (const Choice& choice : choices) {
        const bool last = &choice == &choices.back();
        text += fmt::format("{}{}{}, {}", text.empty() ? "" : ", ", last ? "and " : "",
                            choice.value, choice.name);
    }
    return text;
}

const std::vector<Record>& records() {
    static const std::vector<Record> all = [] {
        std::vector<Record> list;
        list.push_back({&kCallerRecord, Part::caller, 0, "caller"});
        list.push_back({&kCcmHeadRecord, Part::ccm, 0, "ccm"});
        for (std::size_t row = 0; row < 8; ++row) {
            for (std::size_t t = 0; t < 8; ++t) {
                const std::string path = fmt::format("ccm.rows.{}.{}.", kRowNames[row], t);
                list.push_back({&kKelvinRecord, Part::kelvin, 8 * row + t, path + "ct"});
                list.push_back({&kGainRecord, Part::ccm, 425 + 24 * row + 3 * t, path + "gain"});
                list.push_back({&kMatrixRecord, Part::ccm, 41 + 48 * row + 6 * t, path + "matrix"});
            }
        }
        list.push_back({&kPolynomialRecord, Part::ccm, 681, "ccm.rCCMPoly22"});
        list.push_back({&kPolynomialRecord, Part::ccm, 1065, "ccm.rCCMPoly22Flash"});
        for (std::size_t slot = 0; slot < 4; ++slot) {
            list.push_back({&kColorTuningRecord, Part::color_tuning, 17 * slot,
                            fmt::format("color.tuning.{}", kSlotNames[slot])});
        }
        for (std::size_t slot = 0; slot < 4; ++slot) {
            for (std::size_t ct = 0; ct < 5; ++ct) {
                list.push_back({&kColorImageRecord, Part::color, 117 * (5 * slot + ct),
                                fmt::format("color.images.{}.{}", kSlotNames[slot], ct)});
            }
        }
        return list;
    }();
    return all;
}

std::string FieldRef::path() const {
    // A list of a single kind of value shows no name.
    const bool named = !record->definition->as_list || record->definition->fields.size() > 1;
    std::string text = named ? record->path + '.' + definition->name : record->path;
    if (definition->count != 0) text += fmt::format("[{}]", element);
    return text;
}

std::uint32_t FieldRef::read_bits(const Tuning& tuning) const {
    const BitField at = definition->place(element);
    return (load_word(tuning, record->part, record->first_word + at.word) >> at.low) &
           mask_of(at.width);
}

void FieldRef::write_bits(Tuning& tuning, std::uint32_t value) const {
    const BitField at = definition->place(element);
    const std::size_t word = record->first_word + at.word;
    const std::uint32_t kept = load_word(tuning, record->part, word) & ~word_mask(at);
    store_word(tuning, record->part, word, kept | ((value & mask_of(at.width)) << at.low));
}

std::int64_t FieldRef::read(const Tuning& tuning) const {
    const std::uint32_t value = read_bits(tuning);
    if (definition->form == Form::coefficient) return codec_of(tuning).decode(value);
    const unsigned width = definition->place(element).width;
    if (definition->is_signed && (value >> (width - 1)) != 0) {
        return std::int64_t{value} - (std::int64_t{1} << width);
    }
    return value;
}

const std::vector<FieldRef>& fields() {
    static const std::vector<FieldRef> all = [] {
        std::vector<FieldRef> list;
        for (const Record& record : records()) {
            for (const FieldDefinition& definition : record.definition->fields) {
                for (unsigned e = 0; e < definition.elements(); ++e)
                    list.push_back({&record, &definition, e});
            }
        }
        return list;
    }();
    return all;
}

const std::vector<OpaqueWord>& opaque_words() {
    static const std::vector<OpaqueWord> all = [] {
        std::vector<std::uint32_t> known[std::size(kParts)];
        for (const Part part : kParts) {
            known[static_cast<std::size_t>(part)].resize(part_words(part));
        }
        for (const FieldRef& field : fields()) {
            const BitField at = field.definition->place(field.element);
            known[static_cast<std::size_t>(field.record->part)]
                 [field.record->first_word + at.word] |= word_mask(at);
        }
        std::vector<OpaqueWord> list;
        for (const Record& record : records()) {
            const bool whole_ccm = record.definition == &kCcmHeadRecord;
            if (!whole_ccm && record.definition != &kColorImageRecord) continue;
            const std::size_t count = whole_ccm ? part_words(Part::ccm) : record.definition->words;
            for (std::size_t w = 0; w < count; ++w) {
                const std::size_t word = record.first_word + w;
                const std::uint32_t mask = ~known[static_cast<std::size_t>(record.part)][word];
                if (mask == 0) continue;
                list.push_back({&record, record.part, word, mask,
                                fmt::format("{}.other_bits.{}", record.path, w)});
            }
        }
        return list;
    }();
    return all;
}

std::span<const ColorField> color_fields() {
    static const std::vector<ColorField> all = [] {
        std::vector<ColorField> list;
        for (const FieldDefinition& definition : kColorImageRecord.fields) {
            for (unsigned e = 0; e < definition.elements(); ++e) {
                const BitField at = definition.place(e);
                list.push_back({definition.count == 0 ? definition.name
                                                      : fmt::format("{}[{}]", definition.name, e),
                                at.word, at.low, at.width});
            }
        }
        return list;
    }();
    return all;
}

}  // namespace imgtune::workbench
