#ifndef IMGTUNE_WORKBENCH_TEXT_BAD_INPUT_H
#define IMGTUNE_WORKBENCH_TEXT_BAD_INPUT_H

#include <stdexcept>

namespace imgtune::workbench {

/// What the user gave cannot be used, or the output cannot be written: exit status 2. The text is
/// complete as it stands (file, line or field, value, what is allowed).
class BadInput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace imgtune::workbench

#endif
