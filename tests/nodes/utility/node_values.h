// Building inputs and reading outputs of utility-node evaluations in the offline host.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/plugin_fixture.h"

namespace quillix::test {

using Ints = std::vector<XSI::LONG>;
using Floats = std::vector<float>;
using Strings = std::vector<std::wstring>;
template <class T>
using Written = std::vector<std::optional<T>>;  // per element; nullopt where nothing was written

// A request over `elements` elements with the given inputs (port, values), group instance 0.
inline EvaluationRequest requestOf(ULONG elements,
                                   std::initializer_list<std::pair<ULONG, PortValues>> inputs) {
  EvaluationRequest r;
  r.elements = elements;
  for (const auto& [port, values] : inputs) r.SetInput(port, values);
  return r;
}

// A request over `elements` elements whose group instances of `port` are `instances`, in order.
inline EvaluationRequest instancesOf(ULONG elements, ULONG port,
                                     std::vector<PortValues> instances) {
  EvaluationRequest r;
  r.elements = elements;
  for (ULONG k = 0; k < instances.size(); ++k) r.SetInput(port, instances[k], k);
  return r;
}

// Booleans one per element (std::vector<bool> has no contiguous storage to copy from).
inline PortValues boolSingles(std::initializer_list<bool> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.Resize(static_cast<ULONG>(values.size()));
  std::size_t i = 0;
  for (bool v : values) std::memcpy(p.flat.data() + i++, &v, 1);
  return p;
}

inline PortValues boolArrays(std::initializer_list<std::initializer_list<bool>> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.array = true;
  p.Resize(static_cast<ULONG>(values.size()));
  std::size_t i = 0;
  for (const auto& entries : values) {
    for (bool v : entries) p.arrays[i].push_back(std::byte{v});
    ++i;
  }
  return p;
}

template <class T>
Written<T> writtenSingles(const OutputResult& out) {
  Written<T> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.WasWritten(i) ? std::optional<T>(out.values.Single<T>(i))
                                              : std::nullopt);
  }
  return values;
}

template <class T>
Written<std::vector<T>> writtenArrays(const OutputResult& out) {
  Written<std::vector<T>> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.WasWritten(i) ? std::optional(out.values.ArrayAt<T>(i))
                                              : std::nullopt);
  }
  return values;
}

inline Written<std::wstring> writtenStrings(const OutputResult& out) {
  Written<std::wstring> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.WasWritten(i) ? std::optional(out.values.strings[i])
                                              : std::nullopt);
  }
  return values;
}

inline Written<Strings> writtenStringArrays(const OutputResult& out) {
  Written<Strings> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.WasWritten(i) ? std::optional(out.values.stringArrays[i])
                                              : std::nullopt);
  }
  return values;
}

// Every value type of a fixed size, booleans to shapes (strings excluded).
inline std::vector<ULONG> fixedSizeTypes() {
  std::vector<ULONG> types;
  for (ULONG type = 1; type <= 0x8000; type <<= 1) {
    if (xsihost::ValueSize(type) != 0) types.push_back(type);
  }
  return types;
}

// One element's array of value type `type` holding the three entries 0, 1, 2 in `order`. Each
// entry is one byte value repeated over the type's size, 1, 2 and 3; booleans only take 0 and
// 1, so theirs are 1, 0 and 0.
inline PortValues threeEntryArray(ULONG type, std::initializer_list<int> order) {
  const std::vector<int> fill =
      type == XSI::siICENodeDataBool ? std::vector<int>{1, 0, 0} : std::vector<int>{1, 2, 3};
  PortValues values;
  values.type = type;
  values.array = true;
  values.Resize(1);
  for (int entry : order) {
    values.arrays[0].insert(values.arrays[0].end(), xsihost::ValueSize(type),
                            std::byte(fill[entry]));
  }
  return values;
}

// Floats that tell the classification tests apart: -0, the largest finite float, the smallest
// denormal, +inf, -inf, then a quiet, a signalling and a negative NaN.
inline Floats floatClassSamples() {
  const float inf = std::numeric_limits<float>::infinity();
  return {-0.0f,
          std::numeric_limits<float>::max(),
          std::numeric_limits<float>::denorm_min(),
          inf,
          -inf,
          std::numeric_limits<float>::quiet_NaN(),
          std::bit_cast<float>(0x7F800001u),
          std::bit_cast<float>(0xFFC00000u)};
}

}  // namespace quillix::test
