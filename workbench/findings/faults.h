#ifndef IMGTUNE_WORKBENCH_FINDINGS_FAULTS_H
#define IMGTUNE_WORKBENCH_FINDINGS_FAULTS_H

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/findings/rules.h"

namespace imgtune::workbench {

/// One finding about a tuning, a frame log or a calibration, or a file that should hold one.
struct Fault {
    std::string code = {};        ///< of the rules: "T101"
    std::string file = {};        ///< filled in by Faults::add when empty
    int line = 0;                 ///< from 1; 0: none, or that of the field's place
    std::string path = {};        ///< field, "ccm.rows.normal.2.gain"; empty: the whole file
    std::string message = {};     ///< what is said of the path: "is 3; allowed are 1..2"
    std::string value = {};       ///< the value alone, for programs
    std::string allowed = {};     ///< what is allowed alone, for programs
    std::string effect = {};      ///< what it does on the camera
    std::string suggestion = {};  ///< what to do
    Severity severity = Severity::error;  ///< filled in by Faults::add, from the rule

    /// "ccm.i4Method is 3; allowed are 1, polynomial, and 2, blend"
    std::string sentence() const;
};

/// The findings about inputs, and where fields stand in the files they came from. Texts are fit
/// for a terminal whatever bytes they were made of.
class Faults {
  public:
    void add(Fault fault);

    /// Fields at or below `path` came from this line of `file`.
    void set_place(const std::string& path, const std::string& file, int line);

    /// An earlier finding says why what stands at `path`, or below it, has no sensible value.
    void suppress(const std::string& path) { suppressed_.insert(path); }
    /// Something at, above or below `path` is suppressed: what follows from it is no finding.
    bool is_suppressed(std::string_view path) const;

    const std::vector<Fault>& list() const { return list_; }
    bool empty() const { return list_.empty(); }
    bool has_errors() const;

    /// Leaves out the findings of these codes.
    void allow(const std::set<std::string>& codes);

    /// By file and line, errors before warnings on the same line.
    void sort();

    /// "file:line: error: ..." and indented details, one finding after the other.
    std::string text(bool color = false) const;

  private:
    struct Place {
        std::string file;
        int line;
    };
    std::map<std::string, Place, std::less<>> places_;
    std::set<std::string, std::less<>> suppressed_;
    std::vector<Fault> list_;
};

/// The candidate nearest to a misspelt name, or empty when none is near.
std::string nearest_name(std::string_view name, const std::vector<std::string>& candidates);

/// Severity as a word: "error", "warning".
const char* severity_name(Severity severity);

}  // namespace imgtune::workbench

#endif
