// The text cores a Python user may want: value and number formatting as the to-string nodes
// write it (Quillix_btoa / itoa / ftoa, Quillix_ntoa), string joining (Quillix_jstr) and
// string packing (Quillix_stoi).
#include <string>
#include <vector>

#include <pybind11/stl.h>

#include "core/text/number_text.h"
#include "core/text/string_join.h"
#include "core/text/string_pack.h"
#include "python/src/arrays.h"

namespace quillix::python {

namespace {

// The most text one entry of an array can take (a float's digits, sign, exponent, padding
// and its comma) in wide characters: what a long array's text is refused against up front.
constexpr std::size_t kEntryTextBytes = 40 * sizeof(wchar_t);

// One value or a 1-D array of bools, ints or floats, rendered as the nodes render their
// input: a single entry bare, "0" for none, "<e0,e1,...>" for several.
std::wstring ToText(py::handle value) {
  static constexpr const char* kExpected = "a bool, int or float, or a 1-D array of them";
  std::wstring out;
  if (py::isinstance<py::bool_>(value)) {
    const bool entry = value.cast<bool>();
    AppendBoolListText({&entry, 1}, out);
    return out;
  }
  const py::array array = py::array::ensure(value);
  if (!array || array.ndim() > 1) throw py::type_error(std::string("value: expected ") + kExpected);
  RequireMemory("value", std::size_t(array.size()), kEntryTextBytes);
  const char kind = array.dtype().kind();
  if (kind == 'b') {
    const BoolArray entries = ToBoolArray(array, "value", kExpected);
    GilRelease release(std::size_t(entries.size()) >= kReleaseThreshold);
    AppendBoolListText({entries.data(), std::size_t(entries.size())}, out);
  } else if (kind == 'i' || kind == 'u') {
    const IntArray entries = ToIntArray(array, "value", kExpected);
    GilRelease release(std::size_t(entries.size()) >= kReleaseThreshold);
    AppendIntListText({entries.data(), std::size_t(entries.size())}, out);
  } else {
    const FloatArray entries = ToFloatArray(array, "value", kExpected);
    GilRelease release(std::size_t(entries.size()) >= kReleaseThreshold);
    AppendFloatListText({entries.data(), std::size_t(entries.size())}, out);
  }
  return out;
}

std::wstring NumberText(py::handle value, std::int32_t precision, bool treatAsInteger,
                        std::int32_t leadingZeros) {
  const FloatArray entries =
      ToFloatArray(value, "value", "a float or a 1-D array of float32 values");
  RequireMemory("value", std::size_t(entries.size()), kEntryTextBytes);
  const NumberTextOptions options{precision, treatAsInteger, leadingZeros};
  std::wstring out;
  if (entries.ndim() == 0) {
    AppendNumberText(entries.data()[0], options, out);
  } else {
    RequireShape(entries, "value", "a float or a 1-D array of float32 values", {-1});
    GilRelease release(std::size_t(entries.size()) >= kReleaseThreshold);
    AppendNumberArrayText({entries.data(), std::size_t(entries.size())}, options, out);
  }
  return out;
}

std::wstring JoinStringsBinding(py::handle entriesValue, const std::wstring& delimiter) {
  const std::vector<std::wstring> entries =
      SequenceArg<std::wstring>(entriesValue, "entries", "a list of strings");
  const std::vector<std::wstring_view> views(entries.begin(), entries.end());
  return JoinStrings(views, delimiter);
}

IntArray PackStringBinding(const std::wstring& text, bool active) {
  const std::size_t length = active ? text.size() : 0;
  // The offline host's narrow conversion: characters beyond 8 bits become '?'.
  std::string narrow;
  narrow.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    narrow.push_back(text[i] < 256 ? static_cast<char>(text[i]) : '?');
  }
  IntArray out(py::ssize_t(PackedStringLength(active, length)));
  PackString(active, length, narrow, {out.mutable_data(), std::size_t(out.size())});
  return out;
}

}  // namespace

void BindText(py::module_& m) {
  m.def("to_text", &ToText, py::arg("value"),
        R"(A bool, int or float, or a 1-D array of them, as Quillix_btoa / itoa / ftoa write it.

Booleans print as 1 / 0, ints in decimal (int32), floats as "%g" of the float32 value; an
array prints "0" when empty, its one entry bare, else "<e0,e1,...>".)");
  m.def("number_text", &NumberText, py::arg("value"), py::arg("precision") = 0,
        py::arg("treat_as_integer") = false, py::arg("leading_zeros") = 0,
        R"(A float32 value, or a 1-D array of them, as Quillix_ntoa writes it.

precision > 0: "%.*g" with that many significant digits (at most 24); treat_as_integer rounds
half away from zero and pads with zeros to leading_zeros characters (0..16). An array is
always bracketed ("<e0>"), "0" when empty.)");
  m.def("join_strings", &JoinStringsBinding, py::arg("entries"),
        py::arg("delimiter") = std::wstring(),
        R"(Joins the non-empty entries with the delimiter, as Quillix_jstr does.

An empty entry is skipped with the delimiter after it, but the last index never gets one:
["a", "b", ""] with "-" gives "a-b-".)");
  m.def("pack_string", &PackStringBinding, py::arg("text"), py::arg("active") = true,
        R"(Packs text into int32 words, as Quillix_stoi does.

Returns the signature (4 words), the data word count W, W words of 8-bit characters (four per
word, lowest byte first, characters beyond 8 bits as '?') and the end mark -1. Inactive
gives W = 0.)");
}

}  // namespace quillix::python
