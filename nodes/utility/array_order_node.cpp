// Quillix_arrrev and Quillix_arrshft: reverse or rotate an array of any value type.
//
// The element type is resolved once per call and one instantiation of reorderArrays runs the
// whole batch, so the inner loop is a plain copy for one concrete type.
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/array/array_order.h"
#include "plugin/callback_guard.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using quillix::plugin::EvaluateGuarded;

namespace {

constexpr ULONG kArrayPort = 1010;
constexpr ULONG kShiftPort = 1020;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kReversePorts[] = {
    {kArrayPort, PortDirection::In, siICENodeDataValue, siICENodeStructureAny, siICENodeContextAny,
     L"Array", L"Array", NoDefault(), kLinkType, kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataValue, siICENodeStructureAny,
     siICENodeContextAny, L"Result", L"Result", NoDefault(), kLinkType, kLinkStructure,
     kLinkContext},
};

constexpr PortDef kShiftPorts[] = {
    {kArrayPort, PortDirection::In, siICENodeDataValue, siICENodeStructureAny, siICENodeContextAny,
     L"Array", L"Array", NoDefault(), kLinkType, kLinkStructure, kLinkContext},
    {kShiftPort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"Shift", L"Shift", DefaultInt(0), kNoLink, kNoLink, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataValue, siICENodeStructureAny,
     siICENodeContextAny, L"Result", L"Result", NoDefault(), kLinkType, kLinkStructure,
     kLinkContext},
};

// The reordering of one node; `shifts` is null for the reverse.
struct Reordering {
  const CDataArrayLong* shifts = nullptr;

  template <class T>
  void apply(std::span<const T> input, ULONG element, std::span<T> out) const {
    if (shifts == nullptr) {
      quillix::reverseArray(input, out);
    } else {
      quillix::shiftArray(input, (*shifts)[element], out);
    }
  }
};

template <class T>
void reorderElement(const CDataArray2D<T>& input, CDataArray2D<T>& result, ULONG element,
                    const Reordering& reordering) {
  const typename CDataArray2D<T>::Accessor in = input[element];
  typename CDataArray2D<T>::Accessor out = result.Resize(element, in.GetCount());
  reordering.apply<T>({in.GetData(), in.GetCount()}, element, {out.GetData(), out.GetCount()});
}

// Strings live in host storage: the entries are reordered as views and written back whole.
void reorderElement(const CDataArray2D<CString>& input, CDataArray2D<CString>& result,
                    ULONG element, const Reordering& reordering) {
  const CDataArray2D<CString>::Accessor in = input[element];
  const ULONG count = in.GetCount();
  std::vector<std::wstring_view> entries(count);
  std::vector<std::wstring_view> reordered(count);
  for (ULONG i = 0; i < count; ++i) {
    const wchar_t* text = nullptr;
    ULONG length = 0;
    in.GetData(i, &text, length);
    entries[i] = text != nullptr ? std::wstring_view(text, length) : std::wstring_view();
  }
  reordering.apply<std::wstring_view>(entries, element, reordered);
  CDataArray2D<CString>::Accessor out = result.Resize(element, count);
  for (ULONG i = 0; i < count; ++i) {
    out.SetData(i, reordered[i].data(), static_cast<ULONG>(reordered[i].size()));
  }
}

template <class T>
void copySingle(const CDataArray<T>& input, CDataArray<T>& result, ULONG element) {
  result[element] = input[element];
}

void copySingle(const CDataArray<CString>& input, CDataArray<CString>& result, ULONG element) {
  const wchar_t* text = nullptr;
  ULONG length = 0;
  input.GetData(element, &text, length);
  result.SetData(element, text, length);
}

// A single value has nothing to reorder: it is copied through, and the shift is ignored.
template <class T>
void reorderBatch(ICENodeContext& context, siICENodeStructureType structure,
                  const Reordering& reordering) {
  CIndexSet indexSet(context);
  if (structure == siICENodeStructureSingle) {
    CDataArray<T> input(context, kArrayPort);
    CDataArray<T> result(context);
    if (input.GetCount() == 0) return;
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      copySingle(input, result, it);
    }
    return;
  }
  CDataArray2D<T> input(context, kArrayPort);
  CDataArray2D<T> result(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    reorderElement(input, result, it, reordering);
  }
}

// Resolves the element type once and runs the batch for it; any other type writes nothing.
void reorderForType(ICENodeContext& context, siICENodeDataType type,
                    siICENodeStructureType structure, const Reordering& reordering) {
  switch (type) {
    case siICENodeDataBool:
      return reorderBatch<bool>(context, structure, reordering);
    case siICENodeDataLong:
      return reorderBatch<LONG>(context, structure, reordering);
    case siICENodeDataFloat:
      return reorderBatch<float>(context, structure, reordering);
    case siICENodeDataVector2:
      return reorderBatch<MATH::CVector2f>(context, structure, reordering);
    case siICENodeDataVector3:
      return reorderBatch<MATH::CVector3f>(context, structure, reordering);
    case siICENodeDataVector4:
      return reorderBatch<MATH::CVector4f>(context, structure, reordering);
    case siICENodeDataQuaternion:
      return reorderBatch<MATH::CQuaternionf>(context, structure, reordering);
    case siICENodeDataMatrix33:
      return reorderBatch<MATH::CMatrix3f>(context, structure, reordering);
    case siICENodeDataMatrix44:
      return reorderBatch<MATH::CMatrix4f>(context, structure, reordering);
    case siICENodeDataColor4:
      return reorderBatch<MATH::CColor4f>(context, structure, reordering);
    case siICENodeDataRotation:
      return reorderBatch<MATH::CRotationf>(context, structure, reordering);
    case siICENodeDataShape:
      return reorderBatch<CShape>(context, structure, reordering);
    case siICENodeDataString:
      return reorderBatch<CString>(context, structure, reordering);
    default:
      return;
  }
}

// Common evaluation of both nodes: only the result port, and only once the host has told the
// input's resolved type and structure.
void evaluateReordering(ICENodeContext& context, bool withShift) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return;
  const std::optional<PortInfo> array = QueryPortInfo(context, kArrayPort);
  if (!array) return;
  if (!withShift) {
    reorderForType(context, array->type, array->structure, Reordering{});
    return;
  }
  const CDataArrayLong shifts(context, kShiftPort);
  if (shifts.GetCount() == 0) return;
  reorderForType(context, array->type, array->structure, Reordering{&shifts});
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_arrrev_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateReordering(context, false); });
}

XSIPLUGINCALLBACK CStatus Quillix_arrshft_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateReordering(context, true); });
}

CStatus Quillix_arrrev_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_arrrev", siICENodeMultiThreading, 1, 1, kReversePorts});
}

CStatus Quillix_arrshft_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_arrshft", siICENodeMultiThreading, 1, 1, kShiftPorts});
}
