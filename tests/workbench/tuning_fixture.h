#ifndef IMGTUNE_TESTS_WORKBENCH_TUNING_FIXTURE_H
#define IMGTUNE_TESTS_WORKBENCH_TUNING_FIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "workbench/findings/faults.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::workbench {

/// The field of this path.
inline const FieldRef& field(const std::string& path) {
    const auto found = std::find_if(fields().begin(), fields().end(),
                                    [&](const FieldRef& f) { return f.path() == path; });
    EXPECT_NE(found, fields().end()) << path;
    return *found;
}

/// "T003 T004": the codes of all findings.
inline std::string codes(const Faults& faults) {
    std::string list;
    for (const Fault& f : faults.list()) list += (list.empty() ? "" : " ") + f.code;
    return list;
}

inline std::string to_yaml(const Tuning& tuning, bool comments = false) {
    return write_yaml(tuning, comments);
}

inline Tuning from_yaml(const std::string& text, Faults& faults) {
    return read_yaml(text, "t.yaml", faults);
}

}  // namespace imgtune::workbench

#endif
