// Building inputs and reading outputs of utility-node evaluations in the offline host.
#pragma once

#include <cstring>
#include <initializer_list>
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
  for (const auto& [port, values] : inputs) r.setInput(port, values);
  return r;
}

// Booleans one per element (std::vector<bool> has no contiguous storage to copy from).
inline PortValues boolSingles(std::initializer_list<bool> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.resize(static_cast<ULONG>(values.size()));
  std::size_t i = 0;
  for (bool v : values) std::memcpy(p.flat.data() + i++, &v, 1);
  return p;
}

inline PortValues boolArrays(std::initializer_list<std::initializer_list<bool>> values) {
  PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.array = true;
  p.resize(static_cast<ULONG>(values.size()));
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
    values.push_back(out.values.wasWritten(i) ? std::optional<T>(out.values.single<T>(i))
                                              : std::nullopt);
  }
  return values;
}

template <class T>
Written<std::vector<T>> writtenArrays(const OutputResult& out) {
  Written<std::vector<T>> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.wasWritten(i) ? std::optional(out.values.arrayAt<T>(i))
                                              : std::nullopt);
  }
  return values;
}

inline Written<std::wstring> writtenStrings(const OutputResult& out) {
  Written<std::wstring> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.wasWritten(i) ? std::optional(out.values.strings[i])
                                              : std::nullopt);
  }
  return values;
}

inline Written<Strings> writtenStringArrays(const OutputResult& out) {
  Written<Strings> values;
  for (ULONG i = 0; i < out.values.count; ++i) {
    values.push_back(out.values.wasWritten(i) ? std::optional(out.values.stringArrays[i])
                                              : std::nullopt);
  }
  return values;
}

}  // namespace quillix::test
