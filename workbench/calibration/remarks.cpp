#include "workbench/calibration/remarks.h"

#include <fmt/format.h>

namespace imgtune::workbench {

std::string Remarks::text() const {
    std::string text;
    for (const Remark& remark : list_) {
        const std::string place =
            remark.line > 0 ? fmt::format("{}:{}", file_, remark.line) : file_;
        text += fmt::format("{}: {}: {}; {}\n", place, remark.is_error ? "error" : "warning",
                            remark.what, remark.advice);
    }
    return text;
}

}  // namespace imgtune::workbench
