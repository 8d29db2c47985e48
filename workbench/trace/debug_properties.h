#ifndef IMGTUNE_WORKBENCH_TRACE_DEBUG_PROPERTIES_H
#define IMGTUNE_WORKBENCH_TRACE_DEBUG_PROPERTIES_H

#include <string>
#include <vector>

namespace imgtune::workbench {

/// Every property that the library reads, in the order in which a colour frame outdoors reads them.
const std::vector<std::string>& debug_properties();

/// Sets a property of that list with the device's limits. Throws BadInput for an unknown name, with
/// the nearest known one, and for a value that a device would refuse.
void set_debug_property(const std::string& name, const std::string& value);

/// Whether any of them is set to anything but "0".
bool any_debug_property_on();

}  // namespace imgtune::workbench

#endif
