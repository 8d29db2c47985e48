#include "workbench/trace/debug_properties.h"

#include <cutils/properties.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "workbench/findings/faults.h"
#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

const std::vector<std::string>& debug_properties() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> names{"debug.smooth_ccm.enable"};
        for (const char* name :
             {"dump", "lock", "enable", "bypass.yeng", "bypass.heng", "bypass.seng", "bypass.cm"}) {
            names.push_back(fmt::format("debug.smooth_color.{}", name));
        }
        for (const char* block : {"global", "lum", "hue", "sat", "sgy", "lsp"}) {
            names.push_back(fmt::format("debug.smooth_color.lvdump.{}", block));
            names.push_back(fmt::format("debug.smooth_color.dump.{}", block));
        }
        names.emplace_back("debug.smooth_color.dump.cm");
        return names;
    }();
    return all;
}

void set_debug_property(const std::string& name, const std::string& value) {
    const auto& known = debug_properties();
    if (std::find(known.begin(), known.end(), name) == known.end()) {
        const std::string near = nearest_name(name, known);
        throw BadInput(fmt::format("the library reads no property '{}'{}", name,
                                   near.empty() ? "; docs/integration.md lists all 22"
                                                : fmt::format(", did you mean '{}'?", near)));
    }
    if (value.size() >= PROPERTY_VALUE_MAX) {
        throw BadInput(fmt::format("property '{}': the value has {} characters, allowed are {}",
                                   name, value.size(), PROPERTY_VALUE_MAX - 1));
    }
    if (property_set(name.c_str(), value.c_str()) != 0) {
        throw BadInput(fmt::format("property '{}' cannot be set to '{}'", name, value));
    }
}

bool any_debug_property_on() {
    const auto& all = debug_properties();
    return std::any_of(all.begin(), all.end(), [](const std::string& name) {
        char value[PROPERTY_VALUE_MAX] = {};
        property_get(name.c_str(), value, "0");
        return std::strcmp(value, "0") != 0;
    });
}

}  // namespace imgtune::workbench
