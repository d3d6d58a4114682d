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
#include <cstddef>
#include <span>

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

// Calls body(i) for every element i of the batch; a batch without gaps, as a batch of every
// element is, runs as a plain counted loop.
template <class Body>
void ForEachElement(const XSI::CIndexSet& indexSet, Body&& body) {
  const std::span<const ULONG> indices = indexSet.GetIndices();
  if (indices.empty()) return;
  if (indices.back() - indices.front() + 1 == indices.size()) {
    for (std::size_t i = indices.front(), end = i + indices.size(); i < end; ++i) body(i);
  } else {
    for (const ULONG i : indices) body(i);
  }
}

// Calls use(operand), where operand(j) is the prepared value of entry j of `values`: entry 0
// prepared once when it is `shared` by every j, else entry j prepared on the spot. Deciding
// once per loop keeps the choice out of the loop.
template <class T, class Prepare, class Use>
void WithOperand(const T* values, bool shared, const Prepare& prepare, Use&& use) {
  if (shared) {
    const auto prepared = prepare(values[0], true);
    use([&prepared](std::size_t) -> const auto& { return prepared; });
  } else {
    use([values, &prepare](std::size_t j) { return prepare(values[j], false); });
  }
}

}  // namespace detail

// Writes kernel.Pair(A, B) for every element of the batch into the evaluated output, of data
// type R. Writes nothing when the host cannot report either input's structure. Pair must
// depend on its operands only: a pair that repeats for every element is computed once.
template <class A, class B, class R, class Kernel>
void EvaluatePairs(XSI::ICENodeContext& context, ULONG portA, ULONG portB, const Kernel& kernel) {
  const auto infoA = QueryPortInfo(context, portA);
  const auto infoB = QueryPortInfo(context, portB);
  if (!infoA || !infoB) return;
  const XSI::CIndexSet indexSet(context);
  const auto prepareA = [&kernel](const A& value, bool reused) {
    return kernel.PrepareA(value, reused);
  };
  const auto prepareB = [&kernel](const B& value, bool reused) {
    return kernel.PrepareB(value, reused);
  };

  if (!infoA->IsArray() && !infoB->IsArray()) {
    const XSI::CDataArray<A> valuesA(context, portA);
    const XSI::CDataArray<B> valuesB(context, portB);
    if (valuesA.GetCount() == 0 || valuesB.GetCount() == 0) return;
    XSI::CDataArray<R> result(context, XSI::OutputWrites::WholeBatch);
    if (result.GetCount() == 0) return;
    R* const out = result.GetData();
    if (valuesA.IsConstant() && valuesB.IsConstant()) {
      const R value = kernel.Pair(prepareA(valuesA[0], true), prepareB(valuesB[0], true));
      detail::ForEachElement(indexSet, [out, &value](std::size_t i) { out[i] = value; });
      return;
    }
    detail::WithOperand(valuesA.GetData(), valuesA.IsConstant(), prepareA, [&](const auto& a) {
      detail::WithOperand(valuesB.GetData(), valuesB.IsConstant(), prepareB, [&](const auto& b) {
        detail::ForEachElement(indexSet, [&](std::size_t i) { out[i] = kernel.Pair(a(i), b(i)); });
      });
    });
    return;
  }

  const ElementView<A> viewA(context, portA, infoA->IsArray());
  const ElementView<B> viewB(context, portB, infoB->IsArray());
  XSI::CDataArray2D<R> result(context);
  detail::ForEachElement(indexSet, [&](std::size_t i) {
    const std::span<const A> as = viewA.At(ULONG(i));
    const std::span<const B> bs = viewB.At(ULONG(i));
    std::size_t count = std::min(as.size(), bs.size());
    if (viewA.Repeats() && !as.empty()) count = bs.size();
    if (viewB.Repeats() && !bs.empty()) count = as.size();
    auto entries = result.Resize(ULONG(i), static_cast<ULONG>(count));
    R* const out = entries.GetData();
    if (entries.GetCount() == 0) return;
    detail::WithOperand(as.data(), viewA.Repeats(), prepareA, [&](const auto& a) {
      detail::WithOperand(bs.data(), viewB.Repeats(), prepareB, [&](const auto& b) {
        for (std::size_t j = 0; j < entries.GetCount(); ++j) out[j] = kernel.Pair(a(j), b(j));
      });
    });
  });
}

// result = op(a, b) for every element of the batch, by the rule above.
template <class A, class B, class R, class Op>
void EvaluateElementwise(XSI::ICENodeContext& context, ULONG portA, ULONG portB, Op op) {
  EvaluatePairs<A, B, R>(context, portA, portB, ElementwiseKernel<Op>{op});
}

}  // namespace quillix::plugin
