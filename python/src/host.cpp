// The offline host from Python: loading the plug-in, listing it and evaluating requests.
#include "python/src/arrays.h"

namespace quillix::python {

void BindHost(py::module_&) {}

}  // namespace quillix::python
