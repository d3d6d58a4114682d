// Evaluation shared by the nodes that compare two 4×4 matrix inputs pair by pair
// (Quillix_cdbte, Quillix_iotb, Quillix_iotmb).
//
// The four single/array combinations follow the element-wise rule of the other nodes: single
// × single gives one value per element, array × array an array as long as the shorter one,
// and a single matrix against an array is paired with each of its entries. What differs is
// the cost of a pair: each matrix is first prepared (turned into a record, inverted), and a
// matrix that stands for many pairs — a constant single input, or the single side against an
// array — is prepared once instead of once per pair.
#pragma once

#include <array>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_matrix4f.h>

#include "core/math/math_types.h"
#include "plugin/evaluation.h"
#include "plugin/host_arrays.h"
#include "plugin/registration.h"

namespace quillix::spatial {

using XSI::ULONG;

// The ports the three nodes share: the mode, two 4×4 matrix inputs of either structure and
// any context, and the result, the last three linked by structure and context.
inline constexpr ULONG kModePort = 1000;
inline constexpr ULONG kMatrixAPort = 1010;
inline constexpr ULONG kMatrixBPort = 1020;
inline constexpr ULONG kResultPort = 2010;

constexpr std::array<plugin::PortDef, 4> matrixPairPorts(int defaultMode, const wchar_t* displayA,
                                                         const wchar_t* displayB, ULONG resultType,
                                                         const wchar_t* resultDisplay) {
  using namespace plugin;
  return {{
      {kModePort, PortDirection::In, XSI::siICENodeDataLong, XSI::siICENodeStructureSingle,
       XSI::siICENodeContextSingleton, L"mode", L"Mode", DefaultInt(defaultMode), kNoLink, kNoLink,
       kNoLink},
      {kMatrixAPort, PortDirection::In, XSI::siICENodeDataMatrix44, XSI::siICENodeStructureAny,
       XSI::siICENodeContextAny, L"tmA", displayA, DefaultMatrix44Zero(), kNoLink, kLinkStructure,
       kLinkContext},
      {kMatrixBPort, PortDirection::In, XSI::siICENodeDataMatrix44, XSI::siICENodeStructureAny,
       XSI::siICENodeContextAny, L"tmB", displayB, DefaultMatrix44Zero(), kNoLink, kLinkStructure,
       kLinkContext},
      {kResultPort, PortDirection::Out, resultType, XSI::siICENodeStructureAny,
       XSI::siICENodeContextAny, L"result", resultDisplay, NoDefault(), kNoLink, kLinkStructure,
       kLinkContext},
  }};
}

// The first value of the mode port, or `fallback` when the host supplies none.
inline XSI::LONG readMode(XSI::ICENodeContext& context, XSI::LONG fallback) {
  const XSI::CDataArray<XSI::LONG> mode(context, kModePort);
  return mode.GetCount() > 0 ? mode[0] : fallback;
}

using plugin::ToMat4f;

// A pair kernel offers:
//   Prepared prepare(const Mat4f& matrix, bool reused) const;  // reused: met in many pairs
//   Result pair(const Prepared& a, const Prepared& b) const;
template <class Kernel>
using PreparedOf = decltype(std::declval<const Kernel&>().prepare(Mat4f{}, true));

// One side of a pair: either a value prepared once and shared, or prepared per pair.
template <class Kernel>
class PairOperand {
 public:
  void share(const Kernel& kernel, const XSI::MATH::CMatrix4f& matrix) {
    m_shared.emplace(kernel.prepare(ToMat4f(matrix), true));
  }

  template <class Use>
  auto with(const Kernel& kernel, const XSI::MATH::CMatrix4f& matrix, Use&& use) const {
    if (m_shared) return use(*m_shared);
    return use(kernel.prepare(ToMat4f(matrix), false));
  }

 private:
  std::optional<PreparedOf<Kernel>> m_shared;
};

template <class Kernel>
auto pairOf(const Kernel& kernel, const PairOperand<Kernel>& a, const XSI::MATH::CMatrix4f& ma,
            const PairOperand<Kernel>& b, const XSI::MATH::CMatrix4f& mb) {
  return a.with(kernel, ma, [&](const auto& pa) {
    return b.with(kernel, mb, [&](const auto& pb) { return kernel.pair(pa, pb); });
  });
}

// Writes kernel.pair(A, B) for every element of the batch into the evaluated output, of
// data type R. Writes nothing when the host cannot report either input's structure.
template <class R, class Kernel>
void evaluateMatrixPairs(XSI::ICENodeContext& context, ULONG portA, ULONG portB,
                         const Kernel& kernel) {
  using XSI::MATH::CMatrix4f;
  const auto infoA = plugin::QueryPortInfo(context, portA);
  const auto infoB = plugin::QueryPortInfo(context, portB);
  if (!infoA || !infoB) return;
  XSI::CIndexSet indexSet(context);
  PairOperand<Kernel> a;
  PairOperand<Kernel> b;

  if (!infoA->IsArray() && !infoB->IsArray()) {
    const XSI::CDataArray<CMatrix4f> matricesA(context, portA);
    const XSI::CDataArray<CMatrix4f> matricesB(context, portB);
    XSI::CDataArray<R> result(context);
    if (matricesA.GetCount() == 0 || matricesB.GetCount() == 0 || result.GetCount() == 0) return;
    if (matricesA.IsConstant()) a.share(kernel, matricesA[0]);
    if (matricesB.IsConstant()) b.share(kernel, matricesB[0]);
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      result[it] = pairOf(kernel, a, matricesA[it], b, matricesB[it]);
    return;
  }

  const plugin::ElementView<CMatrix4f> viewA(context, portA, infoA->IsArray());
  const plugin::ElementView<CMatrix4f> viewB(context, portB, infoB->IsArray());
  XSI::CDataArray2D<R> result(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const std::span<const CMatrix4f> as = viewA.At(it);
    const std::span<const CMatrix4f> bs = viewB.At(it);
    std::size_t count = std::min(as.size(), bs.size());
    if (viewA.Repeats() && !as.empty()) {
      count = bs.size();
      a.share(kernel, as[0]);
    }
    if (viewB.Repeats() && !bs.empty()) {
      count = as.size();
      b.share(kernel, bs[0]);
    }
    auto out = result.Resize(it, static_cast<ULONG>(count));
    for (std::size_t j = 0; j < out.GetCount(); ++j) {
      out[static_cast<ULONG>(j)] =
          pairOf(kernel, a, as[viewA.Repeats() ? 0 : j], b, bs[viewB.Repeats() ? 0 : j]);
    }
  }
}

}  // namespace quillix::spatial
