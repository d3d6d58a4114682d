// Inputs for any registered node, built from its port definitions: every input port gets
// values of a type and structure it accepts, filled in one of the ways a user's graph can
// degenerate. Used by the degenerate-input table and the threaded comparisons.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <xsi_vector3f.h>

#include "support/plugin_fixture.h"

namespace quillix::test {

using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

enum class Fill {
  Ordinary,           // small random values, a few entries per array
  EmptyArrays,        // every array empty
  SingleEntries,      // every array of one entry
  NaN,                // floats NaN
  Infinite,           // floats +inf and -inf
  Zero,               // zero values, zero matrices
  Singular,           // matrices with equal rows, vectors along one line
  Negative,           // negative counts and sizes
  Huge,               // huge counts, sizes and magnitudes
  IntMin,             // -2147483648 wherever an integer goes
  WideStrings,        // characters beyond 8 bits (and beyond 16)
  MismatchedLengths,  // arrays of different lengths per port and element
};

inline const char* fillName(Fill f) {
  static const char* const kNames[] = {"ordinary",    "empty arrays", "single entries",
                                       "NaN",         "infinite",     "zero",
                                       "singular",    "negative",     "huge",
                                       "-2147483648", "wide strings", "mismatched lengths"};
  return kNames[static_cast<int>(f)];
}

inline bool accepts(const PortRecord& port, ULONG type) { return (port.dataTypes & type) != 0; }

// The data type a port is fed: what the fill is about when the port takes it, else the
// lowest type the port accepts.
inline ULONG typeFor(const PortRecord& port, Fill fill) {
  auto prefer = [&](std::initializer_list<ULONG> types) -> ULONG {
    for (ULONG t : types)
      if (accepts(port, t)) return t;
    return 0;
  };
  ULONG t = 0;
  switch (fill) {
    case Fill::WideStrings:
      t = prefer({XSI::siICENodeDataString});
      break;
    case Fill::NaN:
    case Fill::Infinite:
    case Fill::Zero:
    case Fill::Singular:
      t = prefer({XSI::siICENodeDataMatrix44, XSI::siICENodeDataVector3, XSI::siICENodeDataFloat});
      break;
    case Fill::Negative:
    case Fill::Huge:
    case Fill::IntMin:
      t = prefer({XSI::siICENodeDataLong, XSI::siICENodeDataFloat});
      break;
    default:
      break;
  }
  if (t != 0) return t;
  for (ULONG bit = 1; bit != 0; bit <<= 1)
    if ((port.dataTypes & bit) && xsihost::IsValueType(bit)) return bit;
  return XSI::siICENodeDataLong;
}

inline bool arrayFor(const PortRecord& port, Fill fill) {
  if (port.structures == XSI::siICENodeStructureArray) return true;
  if (port.structures == XSI::siICENodeStructureSingle) return false;
  return fill == Fill::EmptyArrays || fill == Fill::SingleEntries ||
         fill == Fill::MismatchedLengths;
}

class InputMaker {
 public:
  explicit InputMaker(unsigned seed) : rng_(seed) {}

  // Values for `port` (the k-th input of its node) over `elements` elements.
  xsihost::PortValues make(const PortRecord& port, std::size_t k, Fill fill, ULONG elements) {
    xsihost::PortValues p;
    p.type = typeFor(port, fill);
    p.array = arrayFor(port, fill);
    p.Resize(elements);
    for (ULONG e = 0; e < elements; ++e) {
      if (!p.array) {
        if (p.IsString())
          p.strings[e] = text(fill);
        else
          fillValue(p.type, fill, p.flat.data() + e * xsihost::ValueSize(p.type));
        continue;
      }
      std::size_t n = 4;
      if (fill == Fill::EmptyArrays) n = 0;
      if (fill == Fill::SingleEntries) n = 1;
      if (fill == Fill::MismatchedLengths) n = (k * 3 + e) % 6;
      if (fill == Fill::Ordinary) n = std::uniform_int_distribution<std::size_t>(0, 7)(rng_);
      if (p.IsString()) {
        p.stringArrays[e].assign(n, text(fill));
      } else {
        const std::size_t size = xsihost::ValueSize(p.type);
        p.arrays[e].assign(n * size, std::byte{0});
        for (std::size_t i = 0; i < n; ++i) fillValue(p.type, fill, p.arrays[e].data() + i * size);
      }
    }
    return p;
  }

  // A request over `elements` elements with every input port of `node` filled.
  EvaluationRequest request(const NodeDefinitionRecord& node, Fill fill, ULONG elements) {
    EvaluationRequest r;
    r.elements = elements;
    for (std::size_t k = 0; k < node.inputs.size(); ++k)
      r.SetInput(node.inputs[k].id, make(node.inputs[k], k, fill, elements));
    return r;
  }

 private:
  static std::wstring text(Fill fill) {
    if (fill == Fill::WideStrings) return L"\u00e9\u0100\u4e2d\U0001F600z";
    if (fill == Fill::EmptyArrays || fill == Fill::Zero) return L"";
    return L"ab 12";
  }

  float number(Fill fill) {
    switch (fill) {
      case Fill::NaN:
        return std::numeric_limits<float>::quiet_NaN();
      case Fill::Infinite:
        flip_ ^= 1;
        return flip_ ? std::numeric_limits<float>::infinity()
                     : -std::numeric_limits<float>::infinity();
      case Fill::Zero:
        return 0.0f;
      case Fill::Negative:
        return -3.5f;
      case Fill::Huge:
        return 3.0e38f;
      case Fill::IntMin:
        return -2147483648.0f;
      default:
        return std::uniform_real_distribution<float>(-10.0f, 10.0f)(rng_);
    }
  }

  std::int32_t integer(Fill fill) {
    switch (fill) {
      case Fill::Zero:
        return 0;
      case Fill::Negative:
        return -1 - std::int32_t(rng_() % 5);
      case Fill::Huge:
        flip_ ^= 1;
        return flip_ ? std::numeric_limits<std::int32_t>::max() : 1 << 30;
      case Fill::IntMin:
        return std::numeric_limits<std::int32_t>::min();
      default:
        return std::uniform_int_distribution<std::int32_t>(-3, 12)(rng_);
    }
  }

  void fillValue(ULONG type, Fill fill, std::byte* out) {
    const std::size_t size = xsihost::ValueSize(type);
    if (type == XSI::siICENodeDataBool) {
      const bool b = (rng_() & 1) != 0;
      std::memcpy(out, &b, 1);
    } else if (type == XSI::siICENodeDataLong) {
      const std::int32_t v = integer(fill);
      std::memcpy(out, &v, 4);
    } else if (type == XSI::siICENodeDataShape || type == XSI::siICENodeDataRotation) {
      std::memset(out, 0, size);  // enumerations inside: only the zero pattern is valid for sure
    } else if (fill == Fill::Singular) {
      // Every row the same (1, 2, 3, ...): rank one, no inverse; vectors all on one line.
      const std::size_t floats = size / 4, width = type == XSI::siICENodeDataMatrix44   ? 4
                                                   : type == XSI::siICENodeDataMatrix33 ? 3
                                                                                        : floats;
      for (std::size_t i = 0; i < floats; ++i) {
        const float v = float(i % width + 1);
        std::memcpy(out + 4 * i, &v, 4);
      }
    } else {
      for (std::size_t i = 0; i < size / 4; ++i) {
        const float v = number(fill);
        std::memcpy(out + 4 * i, &v, 4);
      }
    }
  }

  std::mt19937 rng_;
  int flip_ = 0;
};

// Every output port ID of `node`.
inline std::vector<ULONG> outputPorts(const NodeDefinitionRecord& node) {
  std::vector<ULONG> ports;
  for (const auto& p : node.outputs) ports.push_back(p.id);
  return ports;
}

// A request over `elements` elements with the given inputs.
inline EvaluationRequest requestFor(
    std::initializer_list<std::pair<ULONG, xsihost::PortValues>> inputs, ULONG elements = 1) {
  EvaluationRequest r;
  r.elements = elements;
  for (const auto& [port, values] : inputs) r.SetInput(port, values);
  return r;
}

inline xsihost::PortValues boolSingle(bool value) {
  xsihost::PortValues p;
  p.type = XSI::siICENodeDataBool;
  p.Resize(1);
  std::memcpy(p.flat.data(), &value, 1);
  return p;
}

inline std::string narrow(const std::wstring& w) { return std::string(w.begin(), w.end()); }

}  // namespace quillix::test
