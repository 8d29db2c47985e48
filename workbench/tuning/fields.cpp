#include "workbench/tuning/fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "ccm/codec.h"

namespace imgtune::workbench {

namespace {

static_assert(sizeof(CallerSettings) == 11 * 4);
static_assert(sizeof(ISP_NVRAM_MULTI_CCM_STRUCT) == 1102 * 4);
static_assert(sizeof(Tuning::color) == 4 * 5 * 117 * 4);
static_assert(sizeof(Tuning::pca) == 4 * 17 * 4);

constexpr std::int64_t kMaxWord = 0xffffffff;

// Allowed ranges and what values beyond them do.
constexpr RangeRule kFullGain{0, 1, "T101", "any value but 1 means the plain AWB gain", true};
constexpr RangeRule kCodecBits{0, 12, "T114",
                               "coefficients do not fit their 13-bit fields and wrap"};
constexpr RangeRule kWeight{0, 100000, "T101", "the temporal average wraps: wrong colours"};
constexpr RangeRule kKelvin{1000, 1000000, "T101",
                            "beyond 1000000 the CT counts as unknown: no interpolation"};
constexpr RangeRule kMethod{1, 2, "T101",
                            "no matrix is generated: the identity, pale and tinted colours"};
constexpr RangeRule kPqType{0, 2, "T101", "no output gamut matrix is applied", true};
constexpr RangeRule kNumLv{1, 8, "T101", "below 2 the low-light matrices are never used"};
constexpr RangeRule kNumFlash{0, 8, "T101", "only traced; 0 also says that flash is not tuned",
                              true};
constexpr RangeRule kNumCt{1, 8, "T102", "gains and matrices are taken from outside the row"};
constexpr RangeRule kGain{1, 32767, "T101",
                          "the projection on the line of tuned gains wraps: matrix of a wrong CT"};
constexpr RangeRule kMean{1, 409600, "T110",
                          "the gains lie many deviations off: extreme coefficients"};
constexpr RangeRule kDeviation{100, 204800, "T109",
                               "the gains count as many deviations, or none, off the mean", true};
constexpr RangeRule kRatio{
    1, 255, "T101", "only the low 8 bits count; 0 leaves the saturation offset alone: grey", true};
constexpr RangeRule kThreshold{0, 255, "T101", "only the low 8 bits count"};
constexpr RangeRule kOutdoorLv{0, 255, "T101",
                               "light values end at 255: the outdoor images never get there"};
constexpr RangeRule kSpeed{1, kMaxWord, "T208",
                           "0 never settles: the values of the first frame stay for ever"};
constexpr RangeRule kOutdoorBase{0, 29343, "T101", "the outdoor blend wraps: wild values"};

// Makers of table rows.
FieldDefinition word(std::string name, unsigned at, const char* unit, const char* meaning,
                     const RangeRule* allowed = nullptr) {
    FieldDefinition f;
    f.name = std::move(name);
    f.first = {at, 0, 32};
    f.unit = unit;
    f.meaning = meaning;
    f.allowed = allowed;
    return f;
}

FieldDefinition words(std::string name, unsigned at, unsigned count, const char* unit,
                      const char* meaning, const RangeRule* allowed = nullptr) {
    FieldDefinition f = word(std::move(name), at, unit, meaning, allowed);
    f.count = count;
    f.stride = 32;
    return f;
}

FieldDefinition as_signed_field(FieldDefinition f) {
    f.is_signed = true;
    return f;
}

FieldDefinition as_optional(FieldDefinition f) {
    f.optional = true;
    return f;
}

FieldDefinition bits(std::string name, BitField place, const char* meaning) {
    FieldDefinition f;
    f.name = std::move(name);
    f.first = place;
    f.meaning = meaning;
    return f;
}

/// Bytes packed densely (stride 8) or one in each 16 bits.
FieldDefinition bytes(std::string name, unsigned at, unsigned count, unsigned stride,
                      const char* meaning) {
    FieldDefinition f = bits(std::move(name), {at, 0, 8}, meaning);
    f.count = count;
    f.stride = stride;
    return f;
}

FieldDefinition placed(std::string name, const BitField* places, unsigned count,
                       const char* meaning) {
    FieldDefinition f = bits(std::move(name), places[0], meaning);
    f.count = count;
    f.places = places;
    return f;
}

constexpr BitField kLsp1[4] = {{69, 22, 7}, {69, 14, 8}, {69, 7, 7}, {69, 0, 7}};
constexpr BitField kLsp2[4] = {{70, 23, 7}, {70, 16, 7}, {70, 8, 7}, {70, 0, 7}};

std::vector<FieldDefinition> caller_fields() {
    return {
        as_optional(as_signed_field(
            word("full_gain", 0, "", "1: CCM smoothing uses the full AWB gain", &kFullGain))),
        as_optional(as_signed_field(
            word("int_bits", 1, "bits", "integer bits of a coefficient", &kCodecBits))),
        as_optional(as_signed_field(
            word("frac_bits", 2, "bits", "fraction bits of a coefficient", &kCodecBits))),
        as_optional(words("weights", 3, 3, "",
                          "temporal average: new matrix, first and second kept one", &kWeight)),
        as_optional(
            words("ct_grid", 6, 5, "K", "colour temperatures of the five colour images", &kKelvin)),
    };
}

std::vector<FieldDefinition> ccm_head_fields() {
    return {
        as_signed_field(word("i4Method", 0, "",
                             "1: polynomial of the AWB gain; 2: blend of the tuned matrices",
                             &kMethod)),
        as_signed_field(word("i4PQType", 37, "", "output gamut matrix 1 or 2; 0: none", &kPqType)),
        as_signed_field(word("i4NumLV", 38, "",
                             "tuned rows; from 2 on low_light is blended in below LV 50", &kNumLv)),
        as_signed_field(word("i4NumFlash", 39, "", "flash tables", &kNumFlash)),
        as_signed_field(word("i4NumCT", 40, "",
                             "tuned CTs in each row, the lowest CT first; at least 3 to blend",
                             &kNumCt)),
    };
}

std::vector<FieldDefinition> gain_fields() {
    return {as_signed_field(
                word("R", 0, "512 = 1.0", "red AWB gain at this CT; rises with the CT", &kGain)),
            as_signed_field(word("G", 1, "512 = 1.0", "green AWB gain; not read")),
            as_signed_field(
                word("B", 2, "512 = 1.0", "blue AWB gain at this CT; falls with the CT", &kGain))};
}

std::vector<FieldDefinition> matrix_fields() {
    FieldDefinition f = placed("C", kCoefficientFields.data(), 9, "coefficients, row after row");
    f.form = Form::coefficient;
    f.unit = "2^frac_bits = 1.0";
    return {f};
}

std::vector<FieldDefinition> polynomial_fields() {
    std::vector<FieldDefinition> fields{
        word("i4R_AVG", 0, "1/100", "mean of the red gain, 512 = 1.0 before the factor", &kMean),
        word("i4R_STD", 1, "1/100", "its standard deviation", &kDeviation),
        word("i4B_AVG", 2, "1/100", "mean of the blue gain, 512 = 1.0 before the factor", &kMean),
        word("i4B_STD", 3, "1/100", "its standard deviation", &kDeviation),
        words("i4P00", 10, 9, "1/10000", "constant term of each coefficient; the last is not used"),
        words("i4P10", 19, 9, "1/10000", "term in the red gain, per deviation from the mean"),
        words("i4P01", 28, 9, "1/10000", "term in the blue gain, per deviation from the mean"),
    };
    for (FieldDefinition& f : fields) f.is_signed = true;
    return fields;
}

std::vector<FieldDefinition> smoothing_fields() {
    return {
        word("u4RatioHighLV", 0, "16 = x1", "saturation ratio in bright light", &kRatio),
        word("u4RatioMidLV", 1, "16 = x1", "saturation ratio in middle light", &kRatio),
        word("u4RatioLowLV", 2, "16 = x1", "saturation ratio in low light", &kRatio),
        word("u4RatioLV_Th0", 3, "LV", "below: u4RatioLowLV", &kThreshold),
        word("u4RatioLV_Th1", 4, "LV", "from here: u4RatioMidLV", &kThreshold),
        word("u4RatioLV_Th2", 5, "LV", "from here: away from u4RatioMidLV", &kThreshold),
        word("u4RatioLV_Th3", 6, "LV", "from here: u4RatioHighLV", &kThreshold),
        word("u4SatOffset", 7, "", "added to the global saturation, modulo 2^32"),
        word("lum_speed", 8, "per frame", "largest step of luma, brightness and contrast", &kSpeed),
        word("hue_speed", 9, "per frame", "largest step of hue", &kSpeed),
        word("sat_speed", 10, "per frame", "largest step of the saturation gains and of S",
             &kSpeed),
        word("u4LSPMaxLV", 11, "LV", "highest light value at which LSP stays on"),
        word("u4OutdoorEnable", 12, "", "not 0: normal images blend with the outdoor ones"),
        word("u4OutdoorLV_Start", 13, "LV", "the outdoor weight leaves 0", &kOutdoorLv),
        word("u4OutdoorLV_End", 14, "LV", "the outdoor weight reaches u4OutdoorBase", &kOutdoorLv),
        word("u4PcaWord15", 15, "", "carried along, not used"),
        word("u4OutdoorBase", 16, "", "full scale of the outdoor weight", &kOutdoorBase),
    };
}

/// The colour map's sets W1..W3: enable bits in word 71, then lines H, Y, S of five words.
void append_color_map(std::vector<FieldDefinition>& fields) {
    struct LineField {
        const char* name;
        BitField place;
    };
    static constexpr LineField kLine[] = {
        {"PL", {0, 0, 10}},  {"PU", {0, 10, 10}},  {"P0", {0, 20, 10}},   {"P1", {1, 0, 10}},
        {"P2", {1, 10, 10}}, {"P3", {1, 20, 10}},  {"P4", {2, 0, 10}},    {"S0", {2, 10, 8}},
        {"S1", {2, 20, 8}},  {"S2", {3, 0, 8}},    {"S3", {3, 8, 8}},     {"S4", {3, 16, 8}},
        {"S5", {3, 24, 8}},  {"WGTL", {4, 0, 10}}, {"WGTU", {4, 16, 10}},
    };
    fields.push_back(bits("ColorMap.BYPASS", {71, 0, 1}, "1: the colour map does nothing"));
    fields.push_back(bits("ColorMap.INK_DELTA", {71, 10, 1}, "copied as it is"));
    fields.push_back(bits("ColorMap.INK_CH", {71, 12, 2}, "copied as it is"));
    for (unsigned set = 0; set < 3; ++set) {
        const std::string prefix = fmt::format("ColorMap.W{}.", set + 1);
        fields.push_back(bits(prefix + "EN", {71, 3 * set + 1, 1}, "1: set enabled"));
        fields.push_back(bits(prefix + "WGR_EN", {71, 3 * set + 2, 1}, "copied as it is"));
        fields.push_back(bits(prefix + "INK_EN", {71, 3 * set + 3, 1}, "copied as it is"));
        for (unsigned line = 0; line < 3; ++line) {
            const unsigned start = 72 + 15 * set + 5 * line;
            for (const LineField& f : kLine) {
                fields.push_back(bits(prefix + "HYS"[line] + '.' + f.name,
                                      {start + f.place.word, f.place.low, f.place.width},
                                      "copied as it is"));
            }
        }
    }
}

std::vector<FieldDefinition> color_image_fields() {
    std::vector<FieldDefinition> fields{
        bits("control.yeng_bypass", {0, 2, 1}, "1: luma engine off"),
        bits("control.seng_bypass", {0, 3, 1}, "1: saturation engine off"),
        bits("control.heng_bypass", {0, 4, 1}, "1: hue engine off"),
        bits("control.LSP_enable", {0, 20, 1}, "1: local saturation on, up to u4LSPMaxLV"),
        bits("Global.B", {4, 16, 11}, "brightness"),
        bits("Global.C", {4, 0, 10}, "contrast"),
        bits("Global.S", {5, 0, 10}, "saturation"),
        bytes("Luma.PY", 6, 16, 16, "luma curve"),
        bytes("Hue.PH", 14, 20, 8, "hue values"),
        bytes("Saturation.SG1", 19, 20, 8, "slope of each curve from 0 to SP1"),
        bytes("Saturation.SG2", 24, 20, 8, "slope from SP1 to SP2"),
        bytes("Saturation.SG3", 29, 20, 8, "slope from SP2 on"),
        bytes("Saturation.SP1", 34, 20, 8, "first knot, not above SP2"),
        bytes("Saturation.SP2", 39, 20, 8, "second knot"),
        bytes("SGainByY.SGY0", 44, 20, 8, "saturation gains at luma 0"),
        bytes("SGainByY.SGY64", 49, 20, 8, "saturation gains at luma 64"),
        bytes("SGainByY.SGY128", 54, 20, 8, "saturation gains at luma 128"),
        bytes("SGainByY.SGY192", 59, 20, 8, "saturation gains at luma 192"),
        bytes("SGainByY.SGY256", 64, 20, 8, "saturation gains at luma 256"),
        placed("LSP.LSP1", kLsp1, 4, "local saturation, first word; 7, 8, 7 and 7 bits"),
        placed("LSP.LSP2", kLsp2, 4, "local saturation, second word"),
    };
    append_color_map(fields);
    return fields;
}

template <class T>
T* words_of(std::conditional_t<std::is_const_v<T>, const Tuning, Tuning>& t, Part part) {
    switch (part) {
        case Part::caller:
            return reinterpret_cast<T*>(&t.caller);
        case Part::ccm:
            return reinterpret_cast<T*>(&t.ccm);
        case Part::color:
            return reinterpret_cast<T*>(&t.color);
        case Part::pca:
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

const RecordDefinition kCallerRecord{"caller settings", 11, caller_fields(), false, true};
const RecordDefinition kCcmHeadRecord{"CCM", 41, ccm_head_fields()};
const RecordDefinition kGainRecord{"tuned gain", 3, gain_fields(), true, true};
const RecordDefinition kMatrixRecord{"tuned matrix", 6, matrix_fields(), true, true};
const RecordDefinition kPolynomialRecord{"polynomial", 37, polynomial_fields(), false, true};
const RecordDefinition kSmoothingRecord{"colour smoothing", 17, smoothing_fields()};
const RecordDefinition kColorImageRecord{"colour image", 117, color_image_fields()};

std::size_t part_words(Part part) {
    switch (part) {
        case Part::caller:
            return sizeof(CallerSettings) / 4;
        case Part::ccm:
            return sizeof(Tuning::ccm) / 4;
        case Part::color:
            return sizeof(Tuning::color) / 4;
        case Part::pca:
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

std::int64_t FieldDefinition::highest() const {
    return (std::int64_t{1} << (is_signed ? first.width - 1 : first.width)) - 1;
}

const std::vector<Record>& records() {
    static const std::vector<Record> all = [] {
        std::vector<Record> list;
        list.push_back({&kCallerRecord, Part::caller, 0, "caller"});
        list.push_back({&kCcmHeadRecord, Part::ccm, 0, "ccm"});
        for (std::size_t row = 0; row < 8; ++row) {
            const std::string path = fmt::format("ccm.rows.{}.", kRowNames[row]);
            for (std::size_t t = 0; t < 8; ++t) {
                list.push_back({&kGainRecord, Part::ccm, 425 + 24 * row + 3 * t,
                                fmt::format("{}gains.{}", path, t)});
            }
            for (std::size_t t = 0; t < 8; ++t) {
                list.push_back({&kMatrixRecord, Part::ccm, 41 + 48 * row + 6 * t,
                                fmt::format("{}matrices.{}", path, t)});
            }
        }
        list.push_back({&kPolynomialRecord, Part::ccm, 681, "ccm.rCCMPoly22"});
        list.push_back({&kPolynomialRecord, Part::ccm, 1065, "ccm.rCCMPoly22Flash"});
        for (std::size_t slot = 0; slot < 4; ++slot) {
            list.push_back({&kSmoothingRecord, Part::pca, 17 * slot,
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

namespace {

std::vector<std::string_view> split(std::string_view path) {
    std::vector<std::string_view> parts;
    for (std::size_t dot; (dot = path.find('.')) != path.npos; path.remove_prefix(dot + 1)) {
        parts.push_back(path.substr(0, dot));
    }
    parts.push_back(path);
    return parts;
}

/// The node at `path` below `node`, made where it is missing.
FormatNode& node_at(FormatNode& node, std::string_view path) {
    FormatNode* at = &node;
    for (const std::string_view name : split(path)) {
        auto child = std::ranges::find(at->children, name, &FormatNode::name);
        if (child == at->children.end()) {
            if (name[0] >= '0' && name[0] <= '9') at->kind = FormatNode::Kind::list;
            FormatNode made;
            made.name = name;
            made.path = at->path.empty() ? std::string(name) : at->path + '.' + std::string(name);
            child = at->children.insert(at->children.end(), std::move(made));
        }
        at = &*child;
    }
    return *at;
}

/// What has only optional children is optional.
void settle(FormatNode& node) {
    for (FormatNode& child : node.children) settle(child);
    if (!node.children.empty() && node.record == nullptr) {
        node.optional = std::ranges::all_of(node.children, &FormatNode::optional);
    }
}

}  // namespace

const FormatNode& format_tree() {
    static const FormatNode tree = [] {
        FormatNode root;
        for (const Record& record : records()) {
            FormatNode& at = node_at(root, record.path);
            if (record.definition->as_list) {
                at.kind = FormatNode::Kind::values;
                at.record = &record;
                at.optional = record.definition->optional;
                continue;
            }
            for (const FieldDefinition& definition : record.definition->fields) {
                FormatNode& leaf = node_at(node_at(root, record.path), definition.name);
                leaf.kind = FormatNode::Kind::field;
                leaf.record = &record;
                leaf.definition = &definition;
                leaf.optional = definition.optional;
            }
            FormatNode& map = node_at(root, record.path);
            if (record.definition->optional) {
                map.record = &record;
                map.optional = true;
            }
            if (record.definition == &kCcmHeadRecord || record.definition == &kColorImageRecord) {
                map.opaque = &record;
            }
        }
        settle(root);
        return root;
    }();
    return tree;
}

const std::vector<OpaqueWord>& opaque_words() {
    static const std::vector<OpaqueWord> all = [] {
        std::vector<std::uint32_t> known[4];
        for (const Part part : {Part::caller, Part::ccm, Part::color, Part::pca}) {
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
                list.push_back(
                    {record.part, word, mask, fmt::format("{}.other_bits.{}", record.path, w)});
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

std::string describe_fields() {
    static constexpr std::pair<const RecordDefinition*, const char*> kWhere[] = {
        {&kCallerRecord, "`caller`"},
        {&kCcmHeadRecord, "`ccm`"},
        {&kGainRecord,
         "each of `ccm.rows.*.gains`, as a list; row l, CT t from word 425 + 24 l + "
         "3 t of the image"},
        {&kMatrixRecord,
         "each of `ccm.rows.*.matrices`, as a list; row l, CT t from word 41 + 48 l "
         "+ 6 t"},
        {&kPolynomialRecord,
         "`ccm.rCCMPoly22`, from word 681, and `ccm.rCCMPoly22Flash`, from "
         "word 1065"},
        {&kSmoothingRecord, "`color.tuning.*`"},
        {&kColorImageRecord, "each of `color.images.*`"},
    };
    std::string text;
    for (const auto& [record, where] : kWhere) {
        text += fmt::format("\n### {} ({} words): {}\n\n", record->name, record->words, where);
        text += "| field | word | bits | values | allowed | unit | meaning |\n";
        text += "|---|---|---|---|---|---|---|\n";
        for (const FieldDefinition& f : record->fields) {
            // The lines of the colour map are alike: one stands for all nine.
            const bool line =
                f.name.starts_with("ColorMap.W") && f.name.size() > 14 && f.name[13] == '.';
            if (line && !f.name.starts_with("ColorMap.W1.H.")) continue;
            std::string name = f.name;
            if (line) name.replace(0, 13, "ColorMap.W1..W3.H,Y,S");
            const std::string word_text =
                line ? fmt::format("72 + 15 set + 5 line + {}", f.first.word - 72)
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
            std::string allowed =
                f.allowed != nullptr ? fmt::format("{}..{}", f.allowed->min, f.allowed->max)
                : f.form == Form::coefficient
                    ? std::string("by int_bits and frac_bits; 3, 9: -4095..4096")
                : f.places != nullptr ? std::string("by width")
                                      : fmt::format("{}..{}", f.lowest(), f.highest());
            text += fmt::format("| `{}`{} | {} | {} | {} | {} | {} | {} |\n", name,
                                f.optional ? " (optional)" : "", word_text, place, f.elements(),
                                allowed, f.unit, f.meaning);
        }
    }
    return text;
}

}  // namespace imgtune::workbench
