// The compiled part of the `quillix` package: the cores and the offline host on NumPy arrays.
// Each domain's functions are bound in their own file; this one holds the module, the kernel's
// exception and status texts.
#include <limits>
#include <string>

#include <pybind11/stl.h>

#include "kernel/status.h"
#include "python/src/arrays.h"

namespace quillix::python {

namespace {

py::handle kernelErrorType;

// A status as Python passes it: a signed or unsigned 32-bit number (-2 and 4294967294 are
// the same code).
QRVStatus StatusArg(std::int64_t code) {
  if (code < std::numeric_limits<std::int32_t>::min() ||
      code > std::numeric_limits<std::uint32_t>::max()) {
    throw py::value_error("code: expected a 32-bit status code");
  }
  return static_cast<QRVStatus>(code);
}

std::string StatusMessageBinding(std::int64_t code, bool withCode,
                                 const std::optional<std::string>& prefix) {
  std::string buffer(kStatusMessageBufferSize + (prefix ? prefix->size() : 0), '\0');
  return StatusMessage(StatusArg(code), buffer.data(), withCode,
                       prefix ? prefix->c_str() : nullptr);
}

}  // namespace

void ThrowKernelError(std::uint32_t status) {
  char text[kStatusMessageBufferSize];
  StatusMessage(status, text, true);
  py::object error = py::reinterpret_borrow<py::object>(kernelErrorType)(text);
  error.attr("status") = static_cast<std::int32_t>(status);
  PyErr_SetObject(kernelErrorType.ptr(), error.ptr());
  throw py::error_already_set();
}

}  // namespace quillix::python

PYBIND11_MODULE(_quillix, m) {
  namespace qp = quillix::python;
  m.doc() = "Compiled core of the quillix package; import quillix instead.";
  // Kept for the life of the process: the functions raise it until the interpreter exits.
  qp::kernelErrorType = PyErr_NewExceptionWithDoc(
      "quillix.KernelError",
      "A geometry kernel failure: .status is the code, the message StatusMessage's text.",
      PyExc_RuntimeError, nullptr);
  m.attr("KernelError") = qp::kernelErrorType;
  m.def("status_message", &qp::StatusMessageBinding, qp::py::arg("code"),
        qp::py::arg("with_code") = false, qp::py::arg("prefix") = qp::py::none(),
        R"(The kernel's message for a status code (StatusMessage).

with_code puts "error <code>: " first (the code as a signed 32-bit number); prefix goes before
everything. Codes 180 and above give "unknown error.".)");
  qp::BindCurve(m);
  qp::BindSpatial(m);
  qp::BindMesh(m);
  qp::BindText(m);
  qp::BindMatching(m);
  qp::BindHost(m);
}
