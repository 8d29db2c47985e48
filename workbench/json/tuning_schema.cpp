#include "workbench/json/tuning_schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "workbench/tuning/layout.h"

namespace imgtune::workbench {

namespace {

using Json = nlohmann::ordered_json;

/// A fraction such as 783/512, which YAML takes for a text.
constexpr const char* kFraction = "^[+-]?[0-9]{1,9}/[0-9]{1,9}$";

/// Of a coefficient as a decimal number in stored units, and as the 13-bit field in hex, which
/// cannot be told apart once they are read.
constexpr std::int64_t kLeastCoefficient = -(std::int64_t{1} << kCoefficientBits);
constexpr std::int64_t kMostCoefficient = (std::int64_t{2} << kCoefficientBits) - 1;

/// Whether the library reads the field in every tuning that has the record's part, so that a value
/// out of its range is wrong whatever else the tuning says.
bool is_always_read(const Record& record, const FieldDefinition& field) {
    const RecordDefinition* const kind = record.definition;
    if (kind == &kCallerRecord || kind == &kCcmHeadRecord) return true;
    return kind == &kColorTuningRecord &&
           record.first_word / record.definition->words != kSlotOutdoor &&
           !field.name.starts_with("u4Outdoor");
}

/// A name for what several places of a tuning share; empty: the place has a schema of its own.
std::string shared_name(const LayoutNode& node) {
    if (node.kind != LayoutKind::map) return "";
    if (node.path.starts_with("ccm.rows.") && node.record == nullptr) return "tuned_point";
    if (node.record == nullptr) return "";
    const RecordDefinition* const kind = node.record->definition;
    if (kind == &kPolynomialRecord) return "polynomial";
    if (kind == &kColorImageRecord) return "colour_image";
    if (kind != &kColorTuningRecord) return "";
    return node.name == kSlotNames[kSlotOutdoor] ? "smoothing_not_read" : "smoothing";
}

std::string description_of(const FieldDefinition& field) {
    std::string text = field.meaning;
    if (*field.unit != '\0') text += fmt::format(" [{}]", field.unit);
    if (field.form == Form::coefficient) {
        return text + "; a decimal is in this unit, hex is the stored 13-bit field";
    }
    if (field.scale != 0) text += "; a decimal or a fraction is in this unit";
    // Where the choices stand in the meaning already, they need no second mention.
    if (field.allowed != nullptr && field.choices.empty())
        text += fmt::format("; allowed: {}", field.allowed_text());
    return text;
}

class SchemaMaker {
  public:
    Json make() {
        const LayoutNode& tree = layout_tree(Layout::current);
        Json properties = {{"format",
                            {{"const", "imgtune-tuning/2"},
                             {"description",
                              "The version of this form. 'imgtune convert' turns the first version "
                              "into it."}}},
                           {"name",
                            {{"type", {"string", "number", "boolean"}},
                             {"description", "What the tuning is called."}}}};
        for (const LayoutNode& part : tree.children) properties[part.name] = place(part);
        return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                {"$id", "urn:imgtune:tuning:2"},
                {"title", "imgtune tuning"},
                {"description", "A tuning of a camera's colour correction and colour engine."},
                {"type", "object"},
                {"properties", properties},
                {"required", {"format"}},
                {"anyOf", {{{"required", {"ccm"}}}, {{"required", {"color"}}}}},
                {"additionalProperties", false},
                {"$defs", definitions_}};
    }

  private:
    /// Groups of fields stand below a record that may be `like` another; it says what must be
    /// there.
    enum class Level { record, group };

    Json place(const LayoutNode& node, Level level = Level::record) {
        const std::string name = shared_name(node);
        if (name.empty()) return plain(node, level);
        if (!definitions_.contains(name)) definitions_[name] = plain(node, level);
        return {{"$ref", "#/$defs/" + name}};
    }

    Json plain(const LayoutNode& node, Level level) {
        switch (node.kind) {
            case LayoutKind::field:
                return field(node.own_record(), *node.definition);
            case LayoutKind::values:
                return values(node.own_record());
            case LayoutKind::list:
                return list(node);
            case LayoutKind::map:
                break;
        }
        return map(node, level);
    }

    static Json element(const Record& record, const FieldDefinition& definition, unsigned at) {
        if (!definition.choices.empty()) {
            Json allowed = Json::array();
            for (const Choice& choice : definition.choices) allowed.push_back(choice.name);
            for (const Choice& choice : definition.choices) allowed.push_back(choice.value);
            return {{"enum", allowed}};
        }
        const Json fraction = {{"type", "string"}, {"pattern", kFraction}};
        if (definition.form == Form::coefficient) {
            return {{"anyOf",
                     {{{"type", "number"},
                       {"minimum", kLeastCoefficient},
                       {"maximum", kMostCoefficient}},
                      fraction}}};
        }
        const bool ranged = definition.allowed != nullptr && is_always_read(record, definition);
        const std::int64_t least = ranged ? definition.allowed->min : definition.lowest();
        const std::int64_t most = ranged ? definition.allowed->max : definition.highest(at);
        Json whole = {{"type", "integer"}, {"minimum", least}, {"maximum", most}};
        if (definition.scale == 0) return whole;
        // 1.0 is an integer to a schema: what is in the unit may lie below the least whole number.
        const auto unity = static_cast<double>(definition.scale);
        const Json scaled = {{"type", "number"},
                             {"minimum", static_cast<double>(least) / unity},
                             {"maximum", static_cast<double>(most) / unity}};
        return {{"anyOf", {whole, scaled, fraction}}};
    }

    static Json field(const Record& record, const FieldDefinition& definition) {
        Json schema = element(record, definition, 0);
        if (definition.count != 0) schema = elements(record, definition, schema);
        schema["description"] = description_of(definition);
        return schema;
    }

    static Json elements(const Record& record, const FieldDefinition& definition,
                         const Json& first) {
        Json each = Json::array();
        for (unsigned e = 0; e < definition.count; ++e)
            each.push_back(element(record, definition, e));
        const bool alike = std::all_of(each.begin(), each.end(),
                                       [&](const Json& schema) { return schema == first; });
        Json list = {{"type", "array"}, {"minItems", definition.count}};
        if (alike) {
            list["items"] = first;
        } else {
            list["prefixItems"] = each;
            list["items"] = false;
        }
        list["maxItems"] = definition.count;
        return definition.level ? Json{{"anyOf", {first, list}}} : list;
    }

    static Json values(const Record& record) {
        const std::vector<FieldDefinition>& definitions = record.definition->fields;
        if (definitions.size() == 1) return field(record, definitions[0]);
        Json each = Json::array();
        for (const FieldDefinition& definition : definitions)
            each.push_back(field(record, definition));
        return {{"type", "array"},
                {"prefixItems", each},
                {"items", false},
                {"minItems", each.size()},
                {"maxItems", each.size()}};
    }

    Json list(const LayoutNode& node) {
        const std::size_t most = node.children.size();
        Json schema = {{"type", "array"},
                       {"items", place(node.children[0])},
                       {"minItems", node.children[0].optional ? 0 : most},
                       {"maxItems", most}};
        describe(node, schema);
        return schema;
    }

    Json map(const LayoutNode& node, Level level) {
        const Level below = level_below(node, level);
        Json properties = Json::object();
        if (!node.likes.empty()) properties["like"] = like(node);
        for (const LayoutNode& child : node.children) properties[child.name] = place(child, below);
        if (node.has_other_bits) properties["other_bits"] = other_bits();
        Json schema = {{"type", "object"}};
        describe(node, schema);
        schema["properties"] = properties;
        schema["additionalProperties"] = false;
        if (level == Level::group) return schema;
        if (node.likes.empty()) {
            schema.update(requirements(node, level));
        } else {
            schema["if"] = {{"required", {"like"}}};
            schema["else"] = requirements(node, level);
        }
        return schema;
    }

    static Level level_below(const LayoutNode& node, Level level) {
        return level == Level::group || !node.likes.empty() ? Level::group : Level::record;
    }

    static Json like(const LayoutNode& node) {
        Json names = Json::array();
        for (const Record& record : records()) {
            if (record.definition == node.own_record().definition)
                names.push_back(record.path.substr(node.likes.size()));
        }
        return {{"enum", names},
                {"description",
                 "Takes over all of that record; the keys beside it replace what "
                 "they name."}};
    }

    /// The keys that must be there, down to the groups of fields.
    static Json requirements(const LayoutNode& node, Level level) {
        const Level below = level_below(node, level);
        Json names = Json::array();
        Json groups = Json::object();
        for (const LayoutNode& child : node.children) {
            if (!child.optional) names.push_back(child.name);
            if (below == Level::group && child.kind == LayoutKind::map)
                groups[child.name] = requirements(child, below);
        }
        Json schema = Json::object();
        if (!names.empty()) schema["required"] = names;
        if (!groups.empty()) schema["properties"] = groups;
        return schema;
    }

    static Json other_bits() {
        return {{"type", "object"},
                {"description",
                 "Bits that belong to no field: words, counted from the start of "
                 "the record, and their bits in hex."},
                {"patternProperties",
                 {{"^(0x[0-9a-fA-F]+|[0-9]+)$",
                   {{"type", "integer"}, {"minimum", 0}, {"maximum", 0xffffffff}}}}},
                {"additionalProperties", false}};
    }

    static void describe(const LayoutNode& node, Json& schema) {
        const std::string text = section_text(node.path);
        if (!text.empty()) schema["description"] = text;
    }

    Json definitions_ = Json::object();
};

}  // namespace

Json tuning_schema() {
    return SchemaMaker().make();
}

}  // namespace imgtune::workbench
