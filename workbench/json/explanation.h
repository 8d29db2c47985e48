#ifndef IMGTUNE_WORKBENCH_JSON_EXPLANATION_H
#define IMGTUNE_WORKBENCH_JSON_EXPLANATION_H

#include <nlohmann/json.hpp>

#include "workbench/studies/explanation.h"

namespace imgtune::workbench {

/// Sections frame, ccm, color, resting and registers; the colour blocks and every register field
/// stand under the name they have in a frame's row: "Global.B", "Luma.PY[3]".
nlohmann::ordered_json to_json(const Explanation& told);

}  // namespace imgtune::workbench

#endif
