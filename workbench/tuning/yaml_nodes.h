#ifndef IMGTUNE_WORKBENCH_TUNING_YAML_NODES_H
#define IMGTUNE_WORKBENCH_TUNING_YAML_NODES_H

#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "workbench/findings/faults.h"
#include "workbench/text/yaml_document.h"

// What reading a YAML text stands on: findings with their line, and the entries of its maps.

namespace imgtune::workbench {

/// The findings about one text.
class TextFaults {
  public:
    TextFaults(std::string file, Faults& faults) : file_(std::move(file)), faults_(faults) {}

    /// What stands at the fault's path is suppressed. Line 0: that of the path.
    void add(int line, Fault fault);
    void set_place(const std::string& path, int line) { faults_.set_place(path, file_, line); }
    void suppress(const std::string& path) { faults_.suppress(path); }
    bool is_suppressed(const std::string& path) const { return faults_.is_suppressed(path); }

  private:
    std::string file_;
    Faults& faults_;
};

/// What a node is, for a sentence: "17", "a map", "a list of 3".
std::string shown(const YAML::Node& node);

/// "ccm" and "i4Method": "ccm.i4Method".
std::string joined(const std::string& path, const std::string& key);

struct Entry {
    std::string key;
    int line = 0;
    YAML::Node value;
    bool merged = false;  ///< from a map that `<<` names
};

/// Takes maps apart, those that their merge keys (`<<`) name included.
class MapOpener {
  public:
    explicit MapOpener(TextFaults& faults) : faults_(faults) {}

    /// The entries of a map, its own before merged ones; keys that are unknown or stand twice are
    /// reported and left out.
    std::vector<Entry> open(const YAML::Node& map, const std::string& path,
                            const std::vector<std::string>& known);

  private:
    struct Collected;
    void collect(const YAML::Node& map, const std::string& path, int depth, Collected& into);
    void merge(const YAML::Node& base, int line, const std::string& path, int depth,
               Collected& into);

    TextFaults& faults_;
    std::size_t merged_ = 0;  ///< entries so far, in the whole text
};

/// The entry of this key, or null.
const Entry* find_entry(const std::vector<Entry>& entries, std::string_view key);

}  // namespace imgtune::workbench

#endif
