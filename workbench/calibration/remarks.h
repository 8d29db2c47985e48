#ifndef IMGTUNE_WORKBENCH_CALIBRATION_REMARKS_H
#define IMGTUNE_WORKBENCH_CALIBRATION_REMARKS_H

#include <string>
#include <vector>

namespace imgtune::workbench {

/// What is said about a calibration.
struct Remark {
    bool is_error = false;  ///< the calibration cannot be used; else what was done about it
    int line = 0;           ///< from 1; 0: the whole file
    std::string what;
    std::string advice;  ///< what to do, or what was done
};

/// Everything that is said about one file.
class Remarks {
  public:
    explicit Remarks(std::string file) : file_(std::move(file)) {}

    void error(int line, std::string what, std::string advice) {
        list_.push_back({true, line, std::move(what), std::move(advice)});
        has_errors_ = true;
    }
    void warning(int line, std::string what, std::string advice) {
        list_.push_back({false, line, std::move(what), std::move(advice)});
    }

    bool has_errors() const { return has_errors_; }
    const std::vector<Remark>& list() const { return list_; }
    const std::string& file() const { return file_; }

    /// "file:line: error: what; advice", a line each.
    std::string text() const;

  private:
    std::string file_;
    std::vector<Remark> list_;
    bool has_errors_ = false;
};

}  // namespace imgtune::workbench

#endif
