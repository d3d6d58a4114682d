// Conversion of Python arguments to the arrays the cores take, shared by every binding file.
//
// An argument that is already a C-contiguous array of the wanted dtype is viewed in place;
// anything else NumPy can read (lists, other real dtypes, strided views) is converted once. A
// dtype that cannot stand for the wanted one (bool or complex for coordinates, floats for
// indices, integers beyond 32 bits for indices) raises TypeError or ValueError naming the
// argument and what it expected; so does a wrong shape.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <span>

#include "core/math/math_types.h"

namespace quillix::python {

namespace py = pybind11;

using FloatArray = py::array_t<float, py::array::c_style>;
using IntArray = py::array_t<std::int32_t, py::array::c_style>;
using BoolArray = py::array_t<bool, py::array::c_style>;

// Below this many elements a call keeps the GIL: giving it up and taking it back costs more
// than such a call takes.
inline constexpr std::size_t kReleaseThreshold = 2048;

// Lets other Python threads run for its lifetime when `release` is set.
class GilRelease {
 public:
  explicit GilRelease(bool release) {
    if (release) release_.emplace();
  }

 private:
  std::optional<py::gil_scoped_release> release_;
};

// `value` as float32: real and integer dtypes are rounded to the nearest float32, as the host
// does with its float ports. `expected` completes "expected ..." in messages.
FloatArray ToFloatArray(py::handle value, const char* name, const char* expected);
// `value` as int32: other integer dtypes are converted when every value fits 32 bits.
IntArray ToIntArray(py::handle value, const char* name, const char* expected);
// `value` as a boolean array; only the bool dtype is accepted.
BoolArray ToBoolArray(py::handle value, const char* name, const char* expected);

// Raises ValueError unless `array` has exactly the dimensions of `shape`, where -1 matches any
// extent.
void RequireShape(const py::array& array, const char* name, const char* expected,
                  std::initializer_list<py::ssize_t> shape);

// An (N, 3) float32 array of points (an empty 1-D array counts as (0, 3)) and its view.
struct PointsArg {
  FloatArray array;
  std::span<const Vec3f> points;
};
PointsArg ToPoints(py::handle value, const char* name);

// One (4, 4) matrix or an (N, 4, 4) stack, float32, in the row-vector convention.
struct MatricesArg {
  FloatArray array;
  std::span<const Mat4f> matrices;
  bool single = false;
};
MatricesArg ToMatrices(py::handle value, const char* name);

// A new float32 array of `count` points (shape (count, 3)) or matrices ((count, 4, 4)).
FloatArray NewPoints(std::size_t count);
FloatArray NewMatrices(std::size_t count);
inline Vec3f* MutablePoints(FloatArray& array) {
  return reinterpret_cast<Vec3f*>(array.mutable_data());
}

// A new int32 array holding `values`.
IntArray NewIntArray(std::span<const std::int32_t> values);

// Registration of each domain's functions on the module.
void BindCurve(py::module_& m);
void BindSpatial(py::module_& m);
void BindMesh(py::module_& m);
void BindText(py::module_& m);
void BindMatching(py::module_& m);
void BindHost(py::module_& m);

// Raises quillix.KernelError for a failed kernel status: .status holds the code (as a signed
// 32-bit number) and the message is StatusMessage's text with the code.
[[noreturn]] void ThrowKernelError(std::uint32_t status);

}  // namespace quillix::python
