#include "binding.h"

namespace imgtune::python {

void bind_studies(py::module_&) {}

}  // namespace imgtune::python
