#ifndef IMGTUNE_CLI_PROGRESS_H
#define IMGTUNE_CLI_PROGRESS_H

#include <chrono>
#include <string>

namespace imgtune::cli {

/// One line on standard error that says how far a long run has come: on a terminal alone, after
/// the first second, five times a second at most.
class ProgressLine {
  public:
    ProgressLine();
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const std::string& text);
    /// Makes room for what is printed next.
    void clear();

  private:
    bool on_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace imgtune::cli

#endif
