#ifndef IMGTUNE_WORKBENCH_TUNING_YAML_VALUE_READER_H
#define IMGTUNE_WORKBENCH_TUNING_YAML_VALUE_READER_H

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/tuning/fields.h"
#include "workbench/tuning/number.h"
#include "workbench/tuning/yaml_nodes.h"

namespace imgtune::workbench {

/// Reads the values of fields into a tuning. Values that are refused leave it as it is.
class ValueReader {
  public:
    ValueReader(TextFaults& faults, Tuning& tuning) : faults_(faults), tuning_(tuning) {}

    /// A single value, or a list of all elements, or one number for all where that is allowed.
    void read_field(const Record& record, const FieldDefinition& definition,
                    const std::string& path, const YAML::Node& yaml);
    void read_value(const FieldRef& field, const std::string& path, const YAML::Node& yaml);

    /// A list of exactly `count` entries, or a fault.
    bool is_list_of(std::size_t count, const std::string& path, const YAML::Node& yaml);

    /// Reports the coefficients that did not fit: one by one, or once when it is the codec.
    void finish();

  private:
    /// A coefficient beyond its field.
    struct Misfit {
        std::string path;
        int line;
        std::int64_t value;
        std::string effect;
    };

    void refuse(const FieldRef& field, const std::string& path, const YAML::Node& yaml,
                const std::string& reason);
    bool read_choice(const FieldRef& field, const std::string& name);
    void read_coefficient(const FieldRef& field, const std::string& path, std::int64_t value,
                          int line);
    std::string allowed_text(const FieldRef& field) const;
    std::string coefficient_range() const;
    bool codec_fits() const;

    TextFaults& faults_;
    Tuning& tuning_;
    std::vector<Misfit> misfits_;
};

}  // namespace imgtune::workbench

#endif
