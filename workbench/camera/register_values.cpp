#include "workbench/camera/register_values.h"

#include <fmt/format.h>

#include <cstdlib>

#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

std::vector<std::string> value_names(Job job) {
    std::vector<std::string> names;
    if (job == Job::ccm) {
        for (int k = 0; k < 9; ++k) names.push_back(fmt::format("c{}", k));
        return names;
    }
    for (const ColorField& field : color_fields()) names.push_back(field.name);
    return names;
}

std::vector<std::int64_t> values_of(Job job, const Registers& registers,
                                    const CallerSettings& caller) {
    if (job == Job::ccm) {
        const auto coefficients = decode(registers.ccm, caller);
        return {coefficients.begin(), coefficients.end()};
    }
    std::vector<std::int64_t> values;
    values.reserve(color_fields().size());
    for (const ColorField& field : color_fields()) values.push_back(field.read(registers.color));
    return values;
}

Difference largest_difference(const std::vector<std::int64_t>& a,
                              const std::vector<std::int64_t>& b) {
    Difference largest;
    for (std::size_t k = 0; k < a.size(); ++k) {
        const std::int64_t size = std::abs(a[k] - b[k]);
        if (size > largest.size) largest = {size, k};
    }
    return largest;
}

}  // namespace imgtune::workbench
