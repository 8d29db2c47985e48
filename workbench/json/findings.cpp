#include "workbench/json/findings.h"

namespace imgtune::workbench {

nlohmann::ordered_json to_json(const Faults& faults) {
    nlohmann::ordered_json findings = nlohmann::ordered_json::array();
    for (const Fault& f : faults.list()) {
        findings.push_back({{"severity", severity_name(f.severity)},
                            {"code", f.code},
                            {"file", f.file},
                            {"line", f.line},
                            {"path", f.path},
                            {"message", f.sentence()},
                            {"value", f.value},
                            {"allowed", f.allowed},
                            {"effect", f.effect},
                            {"suggestion", f.suggestion}});
    }
    return {{"findings", findings}};
}

}  // namespace imgtune::workbench
