// PortValues: the data of one port of one evaluation, as the host holds it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_decl.h>

namespace xsihost {

using XSI::ULONG;

// Size in bytes of one value of data type `type` (one bit); 0 for strings and unknown types.
std::size_t ValueSize(ULONG type);
// True for the thirteen value types (strings included) that ports can carry.
bool IsValueType(ULONG type);
// "bool", "int", "float", "vector2", "vector3", "vector4", "quaternion", "matrix33",
// "matrix44", "color4", "rotation", "shape", "string"; empty for anything else.
const char* TypeName(ULONG type);
ULONG TypeFromName(const std::string& name);  // 0 when unknown

// One item per element (one in all when constant). Non-string single values are contiguous
// in `flat`; arrays and strings are held per item. Outputs also record which items were
// written.
struct PortValues {
  ULONG type = XSI::siICENodeDataLong;
  bool array = false;
  bool constant = false;
  ULONG count = 0;
  std::vector<std::byte> flat;                          // single, non-string: count × size
  std::vector<std::vector<std::byte>> arrays;           // array, non-string
  std::vector<std::wstring> strings;                    // single string
  std::vector<std::vector<std::wstring>> stringArrays;  // array of strings
  std::vector<char> written;                            // outputs only
  // ContentHash() as EvaluationRequest::SetInput computed it, so that evaluations recognise an
  // unchanged input without reading it. Whoever changes the data afterwards resets it.
  std::optional<std::uint64_t> contentHash;

  /// True when the port carries wide strings (held in `strings` or `stringArrays`).
  bool IsString() const { return type == XSI::siICENodeDataString; }
  // Allocates `items` zero-valued items of the current type and structure.
  void Resize(ULONG items);

  /// One single value per element, of the data type matching `T` (bool, LONG, float, the
  /// XSI::MATH vector, matrix, colour, rotation and shape types).
  template <class T>
  static PortValues Singles(const std::vector<T>& values) {
    PortValues p;
    p.type = XSI::CDataTypeOf<T>::value;
    p.Resize(static_cast<ULONG>(values.size()));
    // Value by value, so that std::vector<bool> (which has no data()) works too.
    for (std::size_t i = 0; i < values.size(); ++i) {
      const T value = values[i];
      std::memcpy(p.flat.data() + i * sizeof(T), &value, sizeof(T));
    }
    return p;
  }
  /// One array per element, entries of the data type matching `T`.
  template <class T>
  static PortValues ArraysOf(const std::vector<std::vector<T>>& values) {
    PortValues p;
    p.type = XSI::CDataTypeOf<T>::value;
    p.array = true;
    p.Resize(static_cast<ULONG>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
      p.arrays[i].resize(values[i].size() * sizeof(T));
      for (std::size_t k = 0; k < values[i].size(); ++k) {
        const T value = values[i][k];
        std::memcpy(p.arrays[i].data() + k * sizeof(T), &value, sizeof(T));
      }
    }
    return p;
  }
  /// One string per element, or one string array per element.
  static PortValues Strings1D(const std::vector<std::wstring>& values);
  static PortValues Strings2D(const std::vector<std::vector<std::wstring>>& values);
  /// Marks the data as one value shared by every element (an input's first item is read for
  /// every index).
  PortValues& AsConstant() {
    constant = true;
    return *this;
  }

  /// Item `i` of single-valued, non-string data as `T` (the caller picks the matching type).
  template <class T>
  T Single(ULONG i) const {
    T value;
    std::memcpy(&value, flat.data() + i * sizeof(T), sizeof(T));
    return value;
  }
  /// The array of item `i` of array data, its entries as `T`.
  template <class T>
  std::vector<T> ArrayAt(ULONG i) const {
    std::vector<T> values(arrays[i].size() / sizeof(T));
    if (!values.empty()) std::memcpy(values.data(), arrays[i].data(), values.size() * sizeof(T));
    return values;
  }
  /// Whether the node wrote output item `i` (false beyond the count).
  bool WasWritten(ULONG i) const { return i < written.size() && written[i] != 0; }

  /// Same type, structure, constancy, count and bytes; what is written is not compared.
  bool SameData(const PortValues& other) const;
  /// A 64-bit hash of what SameData compares: equal data give equal hashes, and different
  /// data practically never do. Reads every byte once.
  std::uint64_t ContentHash() const;
};

}  // namespace xsihost
