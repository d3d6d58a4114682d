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
#include <string>
#include <vector>

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

// Raises ValueError naming `name` when `count` items of `itemBytes` bytes each (the product
// checked for overflow) need more memory than the machine has, before anything is allocated:
// such a call could only end in MemoryError or in the system killing the process.
void RequireMemory(const char* name, std::size_t count, std::size_t itemBytes);

// `value` as float32: real and integer dtypes are rounded to the nearest float32, as the host
// does with its float ports. `expected` completes "expected ..." in messages.
FloatArray ToFloatArray(py::handle value, const char* name, const char* expected);
// The same in double precision, for the float64 fields of the matching's features.
py::array_t<double, py::array::c_style> ToDoubleArray(py::handle value, const char* name,
                                                      const char* expected);
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

// The items of a Python sequence (list, tuple, array ...; not a string) as T, converted as
// pybind11 converts T. Unlike pybind11's own list conversion, a sequence claiming more items
// than memory holds is refused (ValueError) before anything is reserved, and an item of the
// wrong type raises TypeError naming its place.
template <class T>
std::vector<T> SequenceArg(py::handle value, const char* name, const char* expected) {
  if (!py::isinstance<py::sequence>(value) || py::isinstance<py::str>(value) ||
      py::isinstance<py::bytes>(value)) {
    throw py::type_error(std::string(name) + ": expected " + expected + ", got " +
                         std::string(py::str(py::type::of(value).attr("__name__"))));
  }
  const auto items = py::reinterpret_borrow<py::sequence>(value);
  const std::size_t count = py::len(items);
  RequireMemory(name, count, sizeof(T));
  std::vector<T> out;
  out.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const py::object item = items[i];
    // None loads as a null reference, which pybind11 reports apart from other cast failures.
    bool converted = !item.is_none();
    if (converted) {
      try {
        out.push_back(item.cast<T>());
      } catch (const py::cast_error&) {
        converted = false;
      }
    }
    if (!converted) {
      throw py::type_error(std::string(name) + "[" + std::to_string(i) + "]: expected " + expected +
                           ", got " + std::string(py::str(py::type::of(item).attr("__name__"))));
    }
  }
  return out;
}

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
