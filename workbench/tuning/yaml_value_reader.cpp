#include "workbench/tuning/yaml_value_reader.h"

#include <fmt/format.h>

#include <optional>

#include "ccm/codec.h"

namespace imgtune::workbench {

namespace {

/// More coefficients than this that do not fit say that the codec is wrong.
constexpr std::size_t kMostSingleMisfits = 3;

bool in_range(std::int64_t value, std::int64_t lowest, std::int64_t highest) {
    return value >= lowest && value <= highest;
}

}  // namespace

bool ValueReader::codec_fits() const {
    const CallerSettings& c = tuning_.caller;
    return in_range(c.int_bits, 0, kCoefficientBits) &&
           in_range(c.frac_bits, 0, kCoefficientBits) &&
           c.int_bits + c.frac_bits <= kCoefficientBits;
}

std::string ValueReader::coefficient_range() const {
    if (!codec_fits()) return "by caller.int_bits and caller.frac_bits";
    const std::int64_t largest = std::int64_t{1}
                                 << (tuning_.caller.int_bits + tuning_.caller.frac_bits);
    return fmt::format("{}..{}", 1 - largest, largest);
}

std::string ValueReader::allowed_text(const FieldRef& field) const {
    return field.definition->form == Form::coefficient
               ? coefficient_range() + ", or 0x0..0x1fff as stored"
               : field.definition->allowed_text(field.element);
}

bool ValueReader::is_list_of(std::size_t count, const std::string& path, const YAML::Node& yaml) {
    if (yaml.IsSequence() && yaml.size() == count) return true;
    faults_.add(line_of(yaml),
                {.code = yaml.IsSequence() ? "T006" : "T005",
                 .path = path,
                 .message = fmt::format("is {}; it must be a list of {}", shown(yaml), count),
                 .value = shown(yaml),
                 .allowed = fmt::format("a list of {}", count)});
    return false;
}

void ValueReader::read_field(const Record& record, const FieldDefinition& definition,
                             const std::string& path, const YAML::Node& yaml) {
    if (definition.count == 0) {
        read_value({&record, &definition, 0}, path, yaml);
        return;
    }
    if (definition.level && yaml.IsScalar()) {
        const FieldRef first{&record, &definition, 0};
        read_value(first, path, yaml);
        for (unsigned i = 1; i < definition.count; ++i) {
            FieldRef{&record, &definition, i}.write_bits(tuning_, first.read_bits(tuning_));
        }
        return;
    }
    if (!is_list_of(definition.count, path, yaml)) return;
    unsigned i = 0;
    for (const auto& each : yaml) {
        read_value({&record, &definition, i}, fmt::format("{}[{}]", path, i), each);
        ++i;
    }
}

void ValueReader::refuse(const FieldRef& field, const std::string& path, const YAML::Node& yaml,
                         const std::string& reason) {
    const std::string allowed = allowed_text(field);
    faults_.add(line_of(yaml),
                {.code = "T005",
                 .path = path,
                 .message = fmt::format("is {}{}; allowed are {}", shown(yaml),
                                        reason.empty() ? "" : ", which " + reason, allowed),
                 .value = shown(yaml),
                 .allowed = allowed});
}

bool ValueReader::read_choice(const FieldRef& field, const std::string& name) {
    for (const Choice& choice : field.definition->choices) {
        if (name != choice.name) continue;
        field.write_bits(tuning_, static_cast<std::uint32_t>(choice.value));
        return true;
    }
    return false;
}

void ValueReader::read_value(const FieldRef& field, const std::string& path,
                             const YAML::Node& yaml) {
    const FieldDefinition& definition = *field.definition;
    const bool coefficient = definition.form == Form::coefficient;
    if (yaml.IsScalar() && read_choice(field, yaml.Scalar())) return;
    std::string reason;
    const std::optional<Number> number =
        yaml.IsScalar() ? parse_number(yaml.Scalar(), reason) : std::nullopt;
    if (!number) {
        refuse(field, path, yaml, reason);
        return;
    }
    const bool scaled = number->kind == Number::Kind::scaled;
    if (scaled && coefficient && !codec_fits()) {
        misfits_.push_back({path, line_of(yaml), 0, ""});
        return;
    }
    const std::int64_t scale =
        coefficient && scaled ? std::int64_t{1} << tuning_.caller.frac_bits : definition.scale;
    if (scaled && scale == 0) {
        refuse(field, path, yaml, "is no whole number");
        return;
    }
    const std::int64_t value = number->times(scale);
    if (coefficient && number->kind != Number::Kind::hex) {
        read_coefficient(field, path, value, line_of(yaml));
        return;
    }
    if (in_range(value, definition.lowest(), definition.highest(field.element))) {
        field.write_bits(tuning_, static_cast<std::uint32_t>(value));
        return;
    }
    const std::string allowed = allowed_text(field);
    faults_.add(line_of(yaml),
                {.code = "T007",
                 .path = path,
                 .message = fmt::format("is {}; allowed are {}", shown(yaml), allowed),
                 .value = shown(yaml),
                 .allowed = allowed,
                 .effect = fmt::format("only its low {} bits would be stored",
                                       definition.place(field.element).width)});
}

void ValueReader::read_coefficient(const FieldRef& field, const std::string& path,
                                   std::int64_t value, int line) {
    const CoefficientCodec codec(tuning_.caller.int_bits, tuning_.caller.frac_bits);
    const bool fits32 = value == static_cast<std::int32_t>(value);
    const std::uint32_t stored =
        fits32 ? codec.encode(static_cast<std::int32_t>(value)) & 0x1fffU : 0;
    if (fits32 && codec.decode(stored) == value) {
        field.write_bits(tuning_, stored);
        return;
    }
    misfits_.push_back(
        {path, line, value,
         fits32 ? fmt::format("it wraps: the camera would read {}", codec.decode(stored))
                : std::string("it wraps")});
}

void ValueReader::finish() {
    if (misfits_.empty()) return;
    for (const Misfit& misfit : misfits_) faults_.suppress(misfit.path);
    const bool codec_unread =
        faults_.is_suppressed("caller.int_bits") || faults_.is_suppressed("caller.frac_bits");
    if (codec_unread) return;
    const CallerSettings& caller = tuning_.caller;
    const std::string codec =
        fmt::format("is {}, with frac_bits {}", caller.int_bits, caller.frac_bits);
    if (!codec_fits()) {
        faults_.add(0, {.code = "T114",
                        .path = "caller.int_bits",
                        .message = codec + "; allowed are 0..12 for each and for their sum",
                        .value = std::to_string(caller.int_bits),
                        .effect = "coefficients do not fit their 13-bit fields and wrap",
                        .suggestion = "int_bits: 3 with frac_bits: 9"});
        return;
    }
    const Misfit& first = misfits_.front();
    if (misfits_.size() > kMostSingleMisfits) {
        faults_.add(first.line,
                    {.code = "T008",
                     .path = "caller.int_bits",
                     .message = fmt::format("{}: {} coefficients do not fit their fields, the "
                                            "first {} with {}; allowed are {}",
                                            codec, misfits_.size(), first.path, first.value,
                                            coefficient_range()),
                     .value = std::to_string(caller.int_bits),
                     .allowed = coefficient_range(),
                     .effect = "they wrap: wild colours",
                     .suggestion = "int_bits: 3 with frac_bits: 9, or smaller coefficients"});
        return;
    }
    for (const Misfit& misfit : misfits_) {
        faults_.add(misfit.line, {.code = "T008",
                                  .path = misfit.path,
                                  .message = fmt::format("is {}; allowed are {}", misfit.value,
                                                         coefficient_range()),
                                  .value = std::to_string(misfit.value),
                                  .allowed = coefficient_range(),
                                  .effect = misfit.effect});
    }
}

}  // namespace imgtune::workbench
