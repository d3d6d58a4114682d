// Helpers shared by node evaluations: port queries and element-wise loops over the four
// single/array combinations of two inputs.
#pragma once

#include <algorithm>
#include <optional>
#include <span>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>

namespace quillix::plugin {

using XSI::ULONG;

struct PortInfo {
  XSI::siICENodeDataType type = XSI::siICENodeDataLong;
  XSI::siICENodeStructureType structure = XSI::siICENodeStructureSingle;
  XSI::siICENodeContextType context = XSI::siICENodeContextSingleton;

  bool isArray() const { return structure == XSI::siICENodeStructureArray; }
};

// Resolved type, structure and context of `port`; nullopt when the host cannot tell.
inline std::optional<PortInfo> queryPortInfo(const XSI::ICENodeContext& context, ULONG port,
                                             ULONG instance = 0) {
  PortInfo info;
  if (context.GetPortInfo(port, info.type, info.structure, info.context, instance) !=
      XSI::CStatus::OK)
    return std::nullopt;
  return info;
}

// One input (instance `instance` of a group port) read as an array per element. A
// single-valued input reads as one entry that stands for every entry of the other operand (it
// "repeats"); a missing input reads as an empty array.
template <class T>
class ElementView {
 public:
  ElementView(XSI::ICENodeContext& context, ULONG port, bool array, ULONG instance = 0)
      : m_array(array) {
    if (array)
      m_arrays.emplace(context, port, instance);
    else
      m_singles.emplace(context, port, instance);
  }

  bool repeats() const { return !m_array; }

  std::span<const T> at(ULONG element) const {
    if (m_array) {
      const auto entries = (*m_arrays)[element];
      return {entries.GetData(), entries.GetCount()};
    }
    if (m_singles->GetCount() == 0) return {};
    return {&(*m_singles)[element], 1};
  }

 private:
  bool m_array;
  std::optional<XSI::CDataArray<T>> m_singles;
  std::optional<XSI::CDataArray2D<T>> m_arrays;
};

// Evaluates result = op(a, b) for every element of the batch, over the four combinations of
// single and array inputs: single × single gives a single value; array × array an array as
// long as the shorter one; a single value against an array applies to each of its entries.
// Writes nothing when a port query fails.
template <class A, class B, class R, class Op>
void evaluateElementwise(XSI::ICENodeContext& context, ULONG portA, ULONG portB, Op op) {
  const auto infoA = queryPortInfo(context, portA);
  const auto infoB = queryPortInfo(context, portB);
  if (!infoA || !infoB) return;
  XSI::CIndexSet indexSet(context);

  if (!infoA->isArray() && !infoB->isArray()) {
    XSI::CDataArray<A> a(context, portA);
    XSI::CDataArray<B> b(context, portB);
    XSI::CDataArray<R> result(context);
    if (a.GetCount() == 0 || b.GetCount() == 0 || result.GetCount() == 0) return;
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      result[it] = op(a[it], b[it]);
    return;
  }

  const ElementView<A> a(context, portA, infoA->isArray());
  const ElementView<B> b(context, portB, infoB->isArray());
  XSI::CDataArray2D<R> result(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const std::span<const A> as = a.at(it);
    const std::span<const B> bs = b.at(it);
    std::size_t count = std::min(as.size(), bs.size());
    if (a.repeats() && !as.empty()) count = bs.size();
    if (b.repeats() && !bs.empty()) count = as.size();
    auto out = result.Resize(it, static_cast<ULONG>(count));
    for (std::size_t j = 0; j < out.GetCount(); ++j)
      out[static_cast<ULONG>(j)] = op(as[a.repeats() ? 0 : j], bs[b.repeats() ? 0 : j]);
  }
}

}  // namespace quillix::plugin
