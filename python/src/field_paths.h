#ifndef IMGTUNE_PYTHON_FIELD_PATHS_H
#define IMGTUNE_PYTHON_FIELD_PATHS_H

#include <string>
#include <vector>

#include "workbench/tuning/fields.h"

namespace imgtune::python {

/// What a path of a tuning names.
struct Selection {
    enum class Kind {
        none,   ///< nothing: the path is misspelt
        value,  ///< one value
        array,  ///< equal values in one or two dimensions
        group,  ///< members that differ
    };
    Kind kind = Kind::none;
    std::vector<const workbench::FieldRef*> values;  ///< row by row
    std::vector<std::size_t> shape;                  ///< of an array
    std::vector<std::string> members;                ///< of a group: names below the path
};

/// "ccm.i4NumCT", "ccm.rows.normal.gains", "color.images.normal.2.Luma.PY[3]", ...
Selection select(const std::string& path);

/// Every path that names a value or an array of one dimension.
const std::vector<std::string>& field_paths();

}  // namespace imgtune::python

#endif
