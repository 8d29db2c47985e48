#ifndef IMGTUNE_WORKBENCH_JSON_DIFF_H
#define IMGTUNE_WORKBENCH_JSON_DIFF_H

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "workbench/studies/diff.h"

namespace imgtune::workbench {

/// [{field, a, b}]
nlohmann::ordered_json to_json(const std::vector<FieldDifference>& differences);

/// {frames, differing, ccm: {differing, worst: [{frame, field, a, b}], fields: {name: size}},
/// color}
nlohmann::ordered_json to_json(const FramesComparison& comparison);

}  // namespace imgtune::workbench

#endif
