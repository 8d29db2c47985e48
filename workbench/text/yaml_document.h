#ifndef IMGTUNE_WORKBENCH_TEXT_YAML_DOCUMENT_H
#define IMGTUNE_WORKBENCH_TEXT_YAML_DOCUMENT_H

#include <string>

namespace YAML {
class Node;
}

namespace imgtune::workbench {

/// Null for one document, else what there is. Looks for a second and no further: on some
/// malformed text the parser finds documents without end. Throws YAML::Exception for no YAML.
const char* documents_if_not_one(const std::string& text);

/// The line in which a node begins, from 1.
int line_of(const YAML::Node& node);

}  // namespace imgtune::workbench

#endif
