#include "workbench/tuning/likeness.h"

#include <cstddef>

namespace imgtune::workbench {

bool same_field(const Tuning& tuning, const FieldDefinition& definition, const Record& a,
                const Record& b) {
    for (unsigned e = 0; e < definition.elements(); ++e) {
        if (FieldRef{&a, &definition, e}.read_bits(tuning) !=
            FieldRef{&b, &definition, e}.read_bits(tuning)) {
            return false;
        }
    }
    return true;
}

namespace {

/// Records with fewer values in common are written out.
constexpr std::size_t kFewestInCommon = 8;

/// The values that YAML shows of a field.
std::size_t shown_values(const Tuning& tuning, const FieldDefinition& definition,
                         const Record& record) {
    const std::uint32_t first = FieldRef{&record, &definition, 0}.read_bits(tuning);
    bool level = definition.level;
    for (unsigned e = 1; e < definition.elements(); ++e) {
        level = level && FieldRef{&record, &definition, e}.read_bits(tuning) == first;
    }
    return level ? 1 : definition.elements();
}

}  // namespace

const Record* nearest_record(const Tuning& tuning, const Record& record) {
    const Record* nearest = nullptr;
    std::size_t most = kFewestInCommon - 1;
    for (const Record& other : records()) {
        if (&other == &record) break;
        if (other.definition != record.definition) continue;
        std::size_t in_common = 0;
        for (const FieldDefinition& definition : record.definition->fields) {
            if (same_field(tuning, definition, record, other)) {
                in_common += shown_values(tuning, definition, record);
            }
        }
        if (in_common <= most) continue;
        most = in_common;
        nearest = &other;
    }
    return nearest;
}

}  // namespace imgtune::workbench
