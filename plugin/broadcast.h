// The evaluation loop of every node that combines two inputs element by element: the
// element-wise utility nodes (an operation on two values) and the matrix-pair spatial nodes
// (a test on two prepared matrices).
//
// The four single/array combinations follow one rule: single × single gives one value per
// element, array × array an array as long as the shorter one, and a single value against an
// array is paired with each of its entries. An operand may be prepared before it is paired
// (a matrix turned into a record and inverted); one that stands for many pairs — a constant
// single input, or the single side against an array — is prepared once instead of per pair.
#pragma once

#include <algorithm>
#include <optional>
#include <utility>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>

#include "plugin/evaluation.h"

namespace quillix::plugin {

// A pair kernel over host values A and B offers:
//   PreparedA PrepareA(const A& value, bool reused) const;  // reused: met in many pairs
//   PreparedB PrepareB(const B& value, bool reused) const;
//   R Pair(const PreparedA& a, const PreparedB& b) const;
// Kernels whose two sides are alike may name both Prepare (see SymmetricPairKernel).

// Adapts a plain operation op(a, b) to a pair kernel whose preparation is the value itself.
template <class Op>
struct ElementwiseKernel {
  Op op;
  template <class T>
  const T& PrepareA(const T& value, bool) const {
    return value;
  }
  template <class T>
  const T& PrepareB(const T& value, bool) const {
    return value;
  }
  template <class A, class B>
  auto Pair(const A& a, const B& b) const {
    return op(a, b);
  }
};

// Adapts a kernel with one Prepare for both sides.
template <class Kernel>
struct SymmetricPairKernel {
  const Kernel& kernel;
  template <class T>
  auto PrepareA(const T& value, bool reused) const {
    return kernel.Prepare(value, reused);
  }
  template <class T>
  auto PrepareB(const T& value, bool reused) const {
    return kernel.Prepare(value, reused);
  }
  template <class A, class B>
  auto Pair(const A& a, const B& b) const {
    return kernel.Pair(a, b);
  }
};

namespace detail {

// One side of a pair: either a value prepared once and shared, or prepared per pair.
template <class T, class Prepare>
class PairOperand {
 public:
  explicit PairOperand(Prepare prepare) : prepare_(prepare) {}

  void Share(const T& value) { shared_.emplace(prepare_(value, true)); }

  template <class Use>
  auto With(const T& value, Use&& use) const {
    if (shared_) return use(*shared_);
    return use(prepare_(value, false));
  }

 private:
  using Prepared = std::decay_t<decltype(std::declval<Prepare>()(std::declval<const T&>(), true))>;
  Prepare prepare_;
  std::optional<Prepared> shared_;
};

template <class T, class Prepare>
PairOperand<T, Prepare> MakeOperand(Prepare prepare) {
  return PairOperand<T, Prepare>(prepare);
}

}  // namespace detail

// Writes kernel.Pair(A, B) for every element of the batch into the evaluated output, of data
// type R. Writes nothing when the host cannot report either input's structure.
template <class A, class B, class R, class Kernel>
void EvaluatePairs(XSI::ICENodeContext& context, ULONG portA, ULONG portB, const Kernel& kernel) {
  const auto infoA = QueryPortInfo(context, portA);
  const auto infoB = QueryPortInfo(context, portB);
  if (!infoA || !infoB) return;
  XSI::CIndexSet indexSet(context);
  auto a = detail::MakeOperand<A>(
      [&kernel](const A& value, bool reused) { return kernel.PrepareA(value, reused); });
  auto b = detail::MakeOperand<B>(
      [&kernel](const B& value, bool reused) { return kernel.PrepareB(value, reused); });
  const auto pair = [&](const A& valueA, const B& valueB) {
    return a.With(valueA, [&](const auto& preparedA) {
      return b.With(valueB,
                    [&](const auto& preparedB) { return kernel.Pair(preparedA, preparedB); });
    });
  };

  if (!infoA->IsArray() && !infoB->IsArray()) {
    const XSI::CDataArray<A> valuesA(context, portA);
    const XSI::CDataArray<B> valuesB(context, portB);
    XSI::CDataArray<R> result(context);
    if (valuesA.GetCount() == 0 || valuesB.GetCount() == 0 || result.GetCount() == 0) return;
    if (valuesA.IsConstant()) a.Share(valuesA[0]);
    if (valuesB.IsConstant()) b.Share(valuesB[0]);
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      result[it] = pair(valuesA[it], valuesB[it]);
    return;
  }

  const ElementView<A> viewA(context, portA, infoA->IsArray());
  const ElementView<B> viewB(context, portB, infoB->IsArray());
  XSI::CDataArray2D<R> result(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const std::span<const A> as = viewA.At(it);
    const std::span<const B> bs = viewB.At(it);
    std::size_t count = std::min(as.size(), bs.size());
    if (viewA.Repeats() && !as.empty()) {
      count = bs.size();
      a.Share(as[0]);
    }
    if (viewB.Repeats() && !bs.empty()) {
      count = as.size();
      b.Share(bs[0]);
    }
    auto out = result.Resize(it, static_cast<ULONG>(count));
    for (std::size_t j = 0; j < out.GetCount(); ++j) {
      out[static_cast<ULONG>(j)] = pair(as[viewA.Repeats() ? 0 : j], bs[viewB.Repeats() ? 0 : j]);
    }
  }
}

// result = op(a, b) for every element of the batch, by the rule above.
template <class A, class B, class R, class Op>
void EvaluateElementwise(XSI::ICENodeContext& context, ULONG portA, ULONG portB, Op op) {
  EvaluatePairs<A, B, R>(context, portA, portB, ElementwiseKernel<Op>{op});
}

}  // namespace quillix::plugin
