#include "python/src/arrays.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace quillix::python {

namespace {

std::string ShapeText(const py::array& array) {
  std::string text = "(";
  for (py::ssize_t d = 0; d < array.ndim(); ++d) {
    if (d > 0) text += ", ";
    text += std::to_string(array.shape(d));
  }
  return text + (array.ndim() == 1 ? ",)" : ")");
}

// np.asarray(value), or TypeError when NumPy cannot make one array of it (ragged lists).
py::array AsArray(py::handle value, const char* name, const char* expected) {
  py::array array = py::array::ensure(value);
  if (!array) {
    throw py::type_error(std::string(name) + ": expected " + expected + ", got " +
                         std::string(py::str(py::type::of(value).attr("__name__"))));
  }
  return array;
}

[[noreturn]] void ThrowDtype(const py::array& array, const char* name, const char* expected) {
  throw py::type_error(std::string(name) + ": expected " + expected + ", got dtype " +
                       std::string(py::str(array.dtype())));
}

// Checks that every value of an integer array fits int32 before the forced cast; NumPy's own
// reductions read any layout without a copy.
void RequireInt32Range(const py::array& array, const char* name) {
  if (array.size() == 0) return;
  const py::int_ largest(array.attr("max")()), smallest(array.attr("min")());
  for (const py::int_& value : {largest, smallest}) {
    if (value > py::int_(std::numeric_limits<std::int32_t>::max()) ||
        value < py::int_(std::numeric_limits<std::int32_t>::min())) {
      throw py::value_error(std::string(name) + ": value " +
                            std::string(py::str(py::handle(value))) +
                            " does not fit a 32-bit index");
    }
  }
}

// The memory a call may count on: the machine's physical memory, or less when the process's
// address space is limited (ulimit -v).
std::size_t MachineMemoryBytes() {
  static const std::size_t bytes = [] {
    const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGESIZE);
    std::size_t total =
        pages > 0 && pageSize > 0 ? std::size_t(pages) * std::size_t(pageSize) : SIZE_MAX;
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
      total = std::min<std::size_t>(total, limit.rlim_cur);
    return total;
  }();
  return bytes;
}

// `array` converted to a C-contiguous array of T; the caller has checked that the conversion
// loses nothing the contract allows to keep.
template <class T>
py::array_t<T, py::array::c_style> ForceCast(const py::array& array, const char* name) {
  RequireMemory(name, std::size_t(array.size()), sizeof(T));
  // The converting constructor keeps NumPy's own error (ensure would clear it).
  const py::array_t<T, py::array::c_style | py::array::forcecast> converted(array);
  return py::reinterpret_borrow<py::array_t<T, py::array::c_style>>(converted);
}

// `value` as a C-contiguous array of the floating type T, from real and integer dtypes.
template <class T>
py::array_t<T, py::array::c_style> ToRealArray(py::handle value, const char* name,
                                               const char* expected) {
  using Array = py::array_t<T, py::array::c_style>;
  if (Array::check_(value)) return py::reinterpret_borrow<Array>(value);
  const py::array array = AsArray(value, name, expected);
  const char kind = array.dtype().kind();
  if (kind != 'f' && kind != 'i' && kind != 'u') ThrowDtype(array, name, expected);
  return ForceCast<T>(array, name);
}

}  // namespace

void RequireMemory(const char* name, std::size_t count, std::size_t itemBytes) {
  std::size_t bytes = 0;
  if (!__builtin_mul_overflow(count, itemBytes, &bytes) && bytes <= MachineMemoryBytes()) return;
  throw py::value_error(std::string(name) + ": " + std::to_string(count) + " items of " +
                        std::to_string(itemBytes) +
                        " bytes need more memory than the machine gives this process (" +
                        std::to_string(MachineMemoryBytes() >> 20) + " MiB)");
}

FloatArray ToFloatArray(py::handle value, const char* name, const char* expected) {
  return ToRealArray<float>(value, name, expected);
}

py::array_t<double, py::array::c_style> ToDoubleArray(py::handle value, const char* name,
                                                      const char* expected) {
  return ToRealArray<double>(value, name, expected);
}

IntArray ToIntArray(py::handle value, const char* name, const char* expected) {
  if (IntArray::check_(value)) return py::reinterpret_borrow<IntArray>(value);
  const py::array array = AsArray(value, name, expected);
  const char kind = array.dtype().kind();
  // An empty list comes out as float64; it holds no value that could be wrong.
  if (array.size() == 0 && kind == 'f') return ForceCast<std::int32_t>(array, name);
  if (kind != 'i' && kind != 'u') ThrowDtype(array, name, expected);
  // Before the range check, which reads every value.
  RequireMemory(name, std::size_t(array.size()), sizeof(std::int32_t));
  if (array.itemsize() > 4 || (kind == 'u' && array.itemsize() == 4))
    RequireInt32Range(array, name);
  return ForceCast<std::int32_t>(array, name);
}

BoolArray ToBoolArray(py::handle value, const char* name, const char* expected) {
  const py::array array = AsArray(value, name, expected);
  if (array.dtype().kind() != 'b') ThrowDtype(array, name, expected);
  return ForceCast<bool>(array, name);
}

void RequireShape(const py::array& array, const char* name, const char* expected,
                  std::initializer_list<py::ssize_t> shape) {
  bool fits = array.ndim() == py::ssize_t(shape.size());
  py::ssize_t d = 0;
  for (py::ssize_t extent : shape) {
    if (!fits) break;
    fits = extent < 0 || array.shape(d) == extent;
    ++d;
  }
  if (!fits) {
    throw py::value_error(std::string(name) + ": expected " + expected + ", got shape " +
                          ShapeText(array));
  }
}

PointsArg ToPoints(py::handle value, const char* name) {
  static constexpr const char* kExpected = "an (N, 3) array of float32 positions";
  FloatArray array = ToFloatArray(value, name, kExpected);
  if (array.ndim() == 1 && array.size() == 0) array = NewPoints(0);
  RequireShape(array, name, kExpected, {-1, 3});
  const auto* points = reinterpret_cast<const Vec3f*>(array.data());
  return {array, {points, std::size_t(array.shape(0))}};
}

MatricesArg ToMatrices(py::handle value, const char* name) {
  static constexpr const char* kExpected = "a (4, 4) or (N, 4, 4) array of float32 matrices";
  FloatArray array = ToFloatArray(value, name, kExpected);
  const bool single = array.ndim() == 2;
  if (single)
    RequireShape(array, name, kExpected, {4, 4});
  else
    RequireShape(array, name, kExpected, {-1, 4, 4});
  const auto* matrices = reinterpret_cast<const Mat4f*>(array.data());
  return {array, {matrices, single ? 1 : std::size_t(array.shape(0))}, single};
}

FloatArray NewPoints(std::size_t count) {
  return FloatArray(std::vector<py::ssize_t>{py::ssize_t(count), 3});
}

FloatArray NewMatrices(std::size_t count) {
  return FloatArray(std::vector<py::ssize_t>{py::ssize_t(count), 4, 4});
}

IntArray NewIntArray(std::span<const std::int32_t> values) {
  IntArray array(py::ssize_t(values.size()));
  if (!values.empty()) std::memcpy(array.mutable_data(), values.data(), values.size_bytes());
  return array;
}

}  // namespace quillix::python
