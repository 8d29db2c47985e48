#include <fmt/format.h>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::int64_t kMaxWord = 0xffffffff;

// Allowed ranges and what values beyond them do.
constexpr RangeRule kWhichGain{0, 1, "T120", "any value but 1 means the plain AWB gain"};
constexpr RangeRule kCodecBits{0, 12, "T114",
                               "coefficients do not fit their 13-bit fields and wrap"};
constexpr RangeRule kWeight{0, 100000, "T101", "the temporal average wraps: wrong colours"};
constexpr RangeRule kKelvinRange{1000, 1000000, "T101",
                                 "beyond 1000000 the CT counts as unknown: no interpolation"};
constexpr RangeRule kMethod{1, 2, "T101",
                            "no matrix is generated: the identity, pale and tinted colours"};
constexpr RangeRule kPqType{0, 2, "T120", "no output gamut matrix is applied"};
constexpr RangeRule kNumLv{1, 8, "T101", "below 2 the low-light matrices are never used"};
constexpr RangeRule kNumFlash{0, 8, "T120", "only traced; 0 also says that flash is not tuned"};
constexpr RangeRule kNumCt{1, 8, "T102", "gains and matrices are taken from outside the row"};
constexpr RangeRule kGain{1, 32767, "T101",
                          "the projection on the line of tuned gains wraps: matrix of a wrong CT"};
constexpr RangeRule kMean{1, 409600, "T110",
                          "the gains lie many deviations off: extreme coefficients"};
constexpr RangeRule kDeviation{100, 204800, "T121",
                               "the gains have far too much weight in the polynomial, or none: "
                               "colours run away, or never follow the light"};
constexpr RangeRule kRatio{1, 255, "T120",
                           "only the low 8 bits count; 0 leaves the saturation offset alone: grey"};
constexpr RangeRule kThreshold{0, 255, "T101", "only the low 8 bits count"};
constexpr RangeRule kOutdoorLv{0, 255, "T101",
                               "light values end at 255: the outdoor images never get there"};
constexpr RangeRule kSpeed{1, kMaxWord, "T208",
                           "0 never settles: the values of the first frame stay for ever"};
constexpr RangeRule kOutdoorBase{0, 29343, "T101", "the outdoor blend wraps: wild values"};

constexpr Choice kMethods[] = {{1, "polynomial"}, {2, "blend"}};
constexpr Choice kGamuts[] = {{0, "none"}, {1, "display_p3"}, {2, "wide_green"}};

constexpr std::int64_t kRatioUnity = 16;

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

FieldDefinition scaled(std::int64_t scale, FieldDefinition f) {
    f.scale = scale;
    return f;
}

FieldDefinition named(std::span<const Choice> choices, FieldDefinition f) {
    f.choices = choices;
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
    f.level = true;
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
            word("full_gain", 0, "", "1: CCM smoothing uses the full AWB gain", &kWhichGain))),
        as_optional(as_signed_field(
            word("int_bits", 1, "bits", "integer bits of a coefficient", &kCodecBits))),
        as_optional(as_signed_field(
            word("frac_bits", 2, "bits", "fraction bits of a coefficient", &kCodecBits))),
        as_optional(words("weights", 3, 3, "",
                          "temporal average: new matrix, first and second kept one", &kWeight)),
        as_optional(words("ct_grid", 6, 5, "K", "colour temperatures of the five colour images",
                          &kKelvinRange)),
    };
}

std::vector<FieldDefinition> ccm_head_fields() {
    return {
        named(kMethods,
              as_signed_field(word(
                  "i4Method", 0, "",
                  "1, polynomial, of the AWB gain; 2, blend, of the tuned matrices", &kMethod))),
        named(kGamuts, as_signed_field(word("i4PQType", 37, "",
                                            "gamut of the output; 0, none, is that of the matrices",
                                            &kPqType))),
        as_signed_field(word("i4NumLV", 38, "",
                             "tuned rows; from 2 on low_light is blended in below LV 50", &kNumLv)),
        as_signed_field(word("i4NumFlash", 39, "", "flash tables", &kNumFlash)),
        as_signed_field(word("i4NumCT", 40, "",
                             "tuned CTs in each row, the lowest CT first; at least 3 to blend",
                             &kNumCt)),
    };
}

std::vector<FieldDefinition> gain_fields() {
    return {
        scaled(kGainUnity,
               as_signed_field(word("R", 0, "512 = 1.0",
                                    "red AWB gain at this CT; rises with the CT", &kGain))),
        scaled(kGainUnity, as_signed_field(word("G", 1, "512 = 1.0", "green AWB gain; not read"))),
        scaled(kGainUnity,
               as_signed_field(word("B", 2, "512 = 1.0",
                                    "blue AWB gain at this CT; falls with the CT", &kGain)))};
}

std::vector<FieldDefinition> kelvin_fields() {
    return {word("ct", 0, "K", "colour temperature at which the point was tuned; 0: not known")};
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
    for (FieldDefinition& f : fields) {
        f.is_signed = true;
        f.scale = f.count == 0 ? kHundredths : kTenThousandths;
    }
    return fields;
}

std::vector<FieldDefinition> color_tuning_fields() {
    return {
        scaled(kRatioUnity,
               word("u4RatioHighLV", 0, "16 = x1", "saturation ratio in bright light", &kRatio)),
        scaled(kRatioUnity,
               word("u4RatioMidLV", 1, "16 = x1", "saturation ratio in middle light", &kRatio)),
        scaled(kRatioUnity,
               word("u4RatioLowLV", 2, "16 = x1", "saturation ratio in low light", &kRatio)),
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

}  // namespace

const RecordDefinition kCallerRecord{"caller settings", 11, caller_fields(), false, true};
const RecordDefinition kCcmHeadRecord{"CCM", 41, ccm_head_fields()};
const RecordDefinition kKelvinRecord{"tuned CT", 1, kelvin_fields(), true, true};
const RecordDefinition kGainRecord{"tuned gain", 3, gain_fields(), true, true};
const RecordDefinition kMatrixRecord{"tuned matrix", 6, matrix_fields(), true, true};
const RecordDefinition kPolynomialRecord{"polynomial", 37, polynomial_fields(), false, true};
const RecordDefinition kColorTuningRecord{"colour tuning", 17, color_tuning_fields()};
const RecordDefinition kColorImageRecord{"colour image", 117, color_image_fields()};

}  // namespace imgtune::workbench
