// The evaluation shared by Quillix_arrrev and Quillix_arrshft: reorder each element's array
// of any value type by one index mapping.
//
// The element type is resolved once per call and one instantiation of ReorderBatch runs the
// whole batch, so the inner loop is a plain copy for one concrete type.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "core/array/array_order.h"
#include "nodes/utility/host_strings.h"
#include "plugin/node.h"

namespace quillix::utility {

// The "Array" input of both nodes: any value type, single or array, any context; the result
// follows its type, structure and context.
constexpr plugin::PortDef ReorderedArrayPort(XSI::ULONG id) {
  return {.id = id,
          .direction = plugin::kIn,
          .dataTypes = XSI::siICENodeDataValue,
          .structures = XSI::siICENodeStructureAny,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = L"Array",
          .displayName = L"Array",
          .defaultValue = plugin::NoDefault(),
          .typeLink = plugin::kLinkType,
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// The "Result" output of both nodes, linked to "Array" in type, structure and context.
constexpr plugin::PortDef ReorderedResultPort(XSI::ULONG id) {
  return {.id = id,
          .direction = plugin::kOut,
          .dataTypes = XSI::siICENodeDataValue,
          .structures = XSI::siICENodeStructureAny,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = L"Result",
          .displayName = L"Result",
          .typeLink = plugin::kLinkType,
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// A reordering offers
//   template <class T> void Apply(std::span<const T> input, ULONG element, std::span<T> out) const;
// which writes element `element`'s input reordered into `out` (same length, no overlap).

struct ReverseOrder {
  template <class T>
  void Apply(std::span<const T> input, XSI::ULONG, std::span<T> out) const {
    ReverseArray(input, out);
  }
};

// Rotates each element's array by that element's shift.
struct ShiftOrder {
  const XSI::CDataArrayLong& shifts;
  template <class T>
  void Apply(std::span<const T> input, XSI::ULONG element, std::span<T> out) const {
    ShiftArray(input, shifts[element], out);
  }
};

namespace detail {

template <class T, class Reordering>
void ReorderElement(const XSI::CDataArray2D<T>& input, XSI::CDataArray2D<T>& result,
                    XSI::ULONG element, const Reordering& reordering) {
  const typename XSI::CDataArray2D<T>::Accessor in = input[element];
  typename XSI::CDataArray2D<T>::Accessor out = result.Resize(element, in.GetCount());
  reordering.template Apply<T>({in.GetData(), in.GetCount()}, element,
                               {out.GetData(), out.GetCount()});
}

// Strings live in host storage: the entries are reordered as views and written back whole.
template <class Reordering>
void ReorderElement(const XSI::CDataArray2D<XSI::CString>& input,
                    XSI::CDataArray2D<XSI::CString>& result, XSI::ULONG element,
                    const Reordering& reordering) {
  const std::vector<std::wstring_view> entries = StringEntries(input[element]);
  std::vector<std::wstring_view> reordered(entries.size());
  reordering.template Apply<std::wstring_view>(entries, element, reordered);
  XSI::CDataArray2D<XSI::CString>::Accessor out =
      result.Resize(element, static_cast<XSI::ULONG>(entries.size()));
  for (XSI::ULONG i = 0; i < out.GetCount(); ++i) {
    out.SetData(i, reordered[i].data(), static_cast<XSI::ULONG>(reordered[i].size()));
  }
}

template <class T>
void CopySingle(const XSI::CDataArray<T>& input, XSI::CDataArray<T>& result, XSI::ULONG element) {
  result[element] = input[element];
}

inline void CopySingle(const XSI::CDataArray<XSI::CString>& input,
                       XSI::CDataArray<XSI::CString>& result, XSI::ULONG element) {
  const std::wstring_view text = StringAt(input, element);
  result.SetData(element, text.data(), static_cast<XSI::ULONG>(text.size()));
}

// A single value has nothing to reorder: it is copied through, and the reordering ignored.
template <class T, class Reordering>
void ReorderBatch(XSI::ICENodeContext& context, XSI::ULONG arrayPort,
                  XSI::siICENodeStructureType structure, const Reordering& reordering) {
  XSI::CIndexSet indexSet(context);
  if (structure == XSI::siICENodeStructureSingle) {
    XSI::CDataArray<T> input(context, arrayPort);
    XSI::CDataArray<T> result(context);
    if (input.GetCount() == 0) return;
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      CopySingle(input, result, it);
    }
    return;
  }
  XSI::CDataArray2D<T> input(context, arrayPort);
  XSI::CDataArray2D<T> result(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    ReorderElement(input, result, it, reordering);
  }
}

}  // namespace detail

// Writes every element of the batch of the evaluated output as the `arrayPort` input reordered
// by `reordering`. Writes nothing when the host cannot tell the input's type, or for a type
// outside the thirteen value types.
template <class Reordering>
void ReorderArrays(XSI::ICENodeContext& context, XSI::ULONG arrayPort,
                   const Reordering& reordering) {
  using namespace XSI;
  using detail::ReorderBatch;
  const std::optional<plugin::PortInfo> array = plugin::QueryPortInfo(context, arrayPort);
  if (!array) return;
  const siICENodeStructureType structure = array->structure;
  switch (array->type) {
    case siICENodeDataBool:
      return ReorderBatch<bool>(context, arrayPort, structure, reordering);
    case siICENodeDataLong:
      return ReorderBatch<LONG>(context, arrayPort, structure, reordering);
    case siICENodeDataFloat:
      return ReorderBatch<float>(context, arrayPort, structure, reordering);
    case siICENodeDataVector2:
      return ReorderBatch<MATH::CVector2f>(context, arrayPort, structure, reordering);
    case siICENodeDataVector3:
      return ReorderBatch<MATH::CVector3f>(context, arrayPort, structure, reordering);
    case siICENodeDataVector4:
      return ReorderBatch<MATH::CVector4f>(context, arrayPort, structure, reordering);
    case siICENodeDataQuaternion:
      return ReorderBatch<MATH::CQuaternionf>(context, arrayPort, structure, reordering);
    case siICENodeDataMatrix33:
      return ReorderBatch<MATH::CMatrix3f>(context, arrayPort, structure, reordering);
    case siICENodeDataMatrix44:
      return ReorderBatch<MATH::CMatrix4f>(context, arrayPort, structure, reordering);
    case siICENodeDataColor4:
      return ReorderBatch<MATH::CColor4f>(context, arrayPort, structure, reordering);
    case siICENodeDataRotation:
      return ReorderBatch<MATH::CRotationf>(context, arrayPort, structure, reordering);
    case siICENodeDataShape:
      return ReorderBatch<CShape>(context, arrayPort, structure, reordering);
    case siICENodeDataString:
      return ReorderBatch<CString>(context, arrayPort, structure, reordering);
    default:
      return;
  }
}

}  // namespace quillix::utility
