#ifndef IMGTUNE_WORKBENCH_TUNING_LIKENESS_H
#define IMGTUNE_WORKBENCH_TUNING_LIKENESS_H

#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

/// All elements of a field hold the same in two records of a kind.
bool same_field(const Tuning& tuning, const FieldDefinition& definition, const Record& a,
                const Record& b);

/// The earlier record of the same kind with the most values in common, the first of several; null
/// when none has enough of them.
const Record* nearest_record(const Tuning& tuning, const Record& record);

}  // namespace imgtune::workbench

#endif
