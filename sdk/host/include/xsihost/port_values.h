// PortValues: the data of one port of one evaluation, as the host holds it.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_decl.h>

namespace xsihost {

using XSI::ULONG;

// Size in bytes of one value of data type `type` (one bit); 0 for strings and unknown types.
std::size_t valueSize(ULONG type);
// True for the thirteen value types (strings included) that ports can carry.
bool isValueType(ULONG type);
// "bool", "int", "float", "vector2", "vector3", "vector4", "quaternion", "matrix33",
// "matrix44", "color4", "rotation", "shape", "string"; empty for anything else.
const char* typeName(ULONG type);
ULONG typeFromName(const std::string& name);  // 0 when unknown

// One item per element (one in all when constant). Non-string single values are contiguous
// in `flat`; arrays and strings are held per item. Outputs also record which items were
// written.
struct PortValues {
  ULONG type = XSI::siICENodeDataLong;
  bool array = false;
  bool constant = false;
  ULONG count = 0;
  std::vector<std::byte> flat;                         // single, non-string: count × size
  std::vector<std::vector<std::byte>> arrays;          // array, non-string
  std::vector<std::wstring> strings;                   // single string
  std::vector<std::vector<std::wstring>> stringArrays; // array of strings
  std::vector<char> written;                           // outputs only

  bool isString() const { return type == XSI::siICENodeDataString; }
  // Allocates `items` zero-valued items of the current type and structure.
  void resize(ULONG items);
  // Number of entries of item `i`'s array (1 for single values).
  ULONG arrayLength(ULONG i) const;

  template <class T>
  static PortValues singles(const std::vector<T>& values) {
    PortValues p;
    p.type = XSI::CDataTypeOf<T>::value;
    p.resize(static_cast<ULONG>(values.size()));
    // Value by value, so that std::vector<bool> (which has no data()) works too.
    for (std::size_t i = 0; i < values.size(); ++i) {
      const T value = values[i];
      std::memcpy(p.flat.data() + i * sizeof(T), &value, sizeof(T));
    }
    return p;
  }
  template <class T>
  static PortValues arraysOf(const std::vector<std::vector<T>>& values) {
    PortValues p;
    p.type = XSI::CDataTypeOf<T>::value;
    p.array = true;
    p.resize(static_cast<ULONG>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
      p.arrays[i].resize(values[i].size() * sizeof(T));
      for (std::size_t k = 0; k < values[i].size(); ++k) {
        const T value = values[i][k];
        std::memcpy(p.arrays[i].data() + k * sizeof(T), &value, sizeof(T));
      }
    }
    return p;
  }
  static PortValues strings1D(const std::vector<std::wstring>& values);
  static PortValues strings2D(const std::vector<std::vector<std::wstring>>& values);
  PortValues& asConstant() {
    constant = true;
    return *this;
  }

  template <class T>
  T single(ULONG i) const {
    T value;
    std::memcpy(&value, flat.data() + i * sizeof(T), sizeof(T));
    return value;
  }
  template <class T>
  std::vector<T> arrayAt(ULONG i) const {
    std::vector<T> values(arrays[i].size() / sizeof(T));
    if (!values.empty()) std::memcpy(values.data(), arrays[i].data(), values.size() * sizeof(T));
    return values;
  }
  bool wasWritten(ULONG i) const { return i < written.size() && written[i] != 0; }

  bool sameData(const PortValues& other) const;
};

}  // namespace xsihost
