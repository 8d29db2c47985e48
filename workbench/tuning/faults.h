#ifndef IMGTUNE_WORKBENCH_TUNING_FAULTS_H
#define IMGTUNE_WORKBENCH_TUNING_FAULTS_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace imgtune::workbench {

enum class Severity { warning, error };

/// One finding about a tuning.
struct Fault {
    Severity severity = Severity::error;
    std::string code = {};     ///< stable: "T012"
    std::string file = {};     ///< filled in by Faults::add when empty
    int line = 0;              ///< from 1; 0: none
    std::string path = {};     ///< field, "ccm.rows.normal.gains.2"
    std::string message = {};  ///< what is wrong
    std::string value = {};
    std::string allowed = {};
    std::string effect = {};      ///< what it does on the camera
    std::string suggestion = {};  ///< what to do
};

/// The findings about one tuning, and where its fields stand in the files it came from.
class Faults {
  public:
    void add(Fault fault);

    /// Fields at or below `path` came from this line of `file`.
    void set_place(const std::string& path, const std::string& file, int line);

    const std::vector<Fault>& list() const { return list_; }
    bool empty() const { return list_.empty(); }
    bool has_errors() const;

    /// By file and line, errors before warnings on the same line.
    void sort();

    /// "file:line: error: ..." and indented details, one finding after the other.
    std::string text(bool color = false) const;
    std::string json() const;

  private:
    struct Place {
        std::string file;
        int line;
    };
    std::map<std::string, Place, std::less<>> places_;
    std::vector<Fault> list_;
};

/// The candidate nearest to a misspelt name, or empty when none is near.
std::string nearest_name(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace imgtune::workbench

#endif
