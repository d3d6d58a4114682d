// The to-string nodes: Quillix_btoa, Quillix_btoa2, Quillix_itoa, Quillix_itoa2, Quillix_ftoa,
// Quillix_ftoa2 and Quillix_ntoa. Each writes one string per element of the batch; the
// variadic ones (…2) join the renderings of all their group instances with ",".
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "plugin/callback_guard.h"
#include "core/text/number_text.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using quillix::plugin::EvaluateGuarded;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kPrecisionPort = 1020;
constexpr ULONG kTreatAsIntPort = 1030;
constexpr ULONG kLeadingZerosPort = 1040;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kResultPortDef{kResultPort,
                                 PortDirection::Out,
                                 siICENodeDataString,
                                 siICENodeStructureSingle,
                                 siICENodeContextAny,
                                 L"Result",
                                 L"Result",
                                 NoDefault(),
                                 kNoLink,
                                 kNoLink,
                                 kLinkContext};

constexpr PortDef kBoolPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataBool, siICENodeStructureAny, siICENodeContextAny,
     L"Input", L"Input", DefaultBool(false), kNoLink, kLinkStructure, kLinkContext},
    kResultPortDef,
};

constexpr PortDef kIntPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"Input", L"Input", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    kResultPortDef,
};

constexpr PortDef kFloatPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureAny, siICENodeContextAny,
     L"Input", L"Input", DefaultFloat(0.0f), kNoLink, kLinkStructure, kLinkContext},
    kResultPortDef,
};

constexpr PortDef kNumberPorts[] = {
    {kInputPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureAny, siICENodeContextAny,
     L"Input", L"Input", DefaultFloat(0.0f), kNoLink, kLinkStructure, kLinkContext},
    {kPrecisionPort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"Precision", L"Precision", DefaultInt(0), kNoLink, kLinkStructure,
     kLinkContext},
    {kTreatAsIntPort, PortDirection::In, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextAny, L"TreatAsInt", L"Treat as Integer", DefaultBool(false), kNoLink,
     kLinkStructure, kLinkContext},
    {kLeadingZerosPort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"IntLead0", L"Leading Zeros (Integer)", DefaultInt(0), kNoLink,
     kLinkStructure, kLinkContext},
    kResultPortDef,
};

// Reads a single-valued input at `element`; an input the host did not supply reads as zero.
template <class T>
T valueAt(const CDataArray<T>& array, ULONG element) {
  return array.GetCount() > 0 ? array[element] : T{};
}

void appendListText(std::span<const bool> values, std::wstring& out) {
  quillix::appendBoolListText(values, out);
}
void appendListText(std::span<const LONG> values, std::wstring& out) {
  quillix::appendIntListText(values, out);
}
void appendListText(std::span<const float> values, std::wstring& out) {
  quillix::appendFloatListText(values, out);
}

std::vector<ULONG> batchIndices(const CIndexSet& indexSet) {
  std::vector<ULONG> indices;
  indices.reserve(indexSet.GetCount());
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) indices.push_back(it);
  return indices;
}

enum class BatchEnd { AllElements, AfterShortInput };

// Renders every group instance in order and joins the renderings of an element with ",".
// With BatchEnd::AfterShortInput the batch ends right after the first element whose input has
// at most one entry; the boolean node has always done so and graphs are built around it.
template <class T>
void evaluateListText(ICENodeContext& context, bool variadic, BatchEnd end) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return;
  ULONG instanceCount = 1;
  if (variadic && context.GetGroupInstanceCount(kGroupInputs, instanceCount) != CStatus::OK) return;

  CIndexSet indexSet(context);
  const std::vector<ULONG> indices = batchIndices(indexSet);
  std::vector<std::wstring> texts(indices.size());
  std::size_t written = indices.size();
  for (ULONG instance = 0; instance < instanceCount; ++instance) {
    const std::optional<PortInfo> info = QueryPortInfo(context, kInputPort, instance);
    if (!info) return;
    const ElementView<T> input(context, kInputPort, info->IsArray(), instance);
    for (std::size_t i = 0; i < written; ++i) {
      const std::span<const T> entries = input.At(indices[i]);
      if (instance > 0) texts[i] += L",";
      appendListText(entries, texts[i]);
      if (end == BatchEnd::AfterShortInput && entries.size() <= 1) written = i + 1;
    }
  }
  CDataArrayString result(context);
  for (std::size_t i = 0; i < written; ++i) {
    result.SetData(indices[i], texts[i].c_str(), static_cast<ULONG>(texts[i].size()));
  }
}

// A single value is written bare; an array always in brackets, and an empty array ("0") ends
// the batch, as this node has always done.
void evaluateNumberText(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return;
  CDataArrayString result(context);
  const std::optional<PortInfo> info = QueryPortInfo(context, kInputPort);
  if (!info) {
    result.SetData(0, CString(L"GetPortInfo() failed"));
    return;
  }
  const ElementView<float> input(context, kInputPort, info->IsArray());
  const CDataArrayLong precision(context, kPrecisionPort);
  const CDataArrayBool treatAsInt(context, kTreatAsIntPort);
  const CDataArrayLong leadingZeros(context, kLeadingZerosPort);
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const quillix::NumberTextOptions options{valueAt(precision, it), valueAt(treatAsInt, it),
                                             valueAt(leadingZeros, it)};
    const std::span<const float> entries = input.At(it);
    std::wstring text;
    if (info->IsArray()) {
      quillix::appendNumberArrayText(entries, options, text);
    } else {
      quillix::appendNumberText(entries.empty() ? 0.0f : entries[0], options, text);
    }
    result.SetData(it, text.c_str(), static_cast<ULONG>(text.size()));
    if (info->IsArray() && entries.empty()) return;
  }
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_btoa_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded(
      [&] { evaluateListText<bool>(context, false, BatchEnd::AfterShortInput); });
}
XSIPLUGINCALLBACK CStatus Quillix_btoa2_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateListText<bool>(context, true, BatchEnd::AllElements); });
}
XSIPLUGINCALLBACK CStatus Quillix_itoa_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateListText<LONG>(context, false, BatchEnd::AllElements); });
}
XSIPLUGINCALLBACK CStatus Quillix_itoa2_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateListText<LONG>(context, true, BatchEnd::AllElements); });
}
XSIPLUGINCALLBACK CStatus Quillix_ftoa_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateListText<float>(context, false, BatchEnd::AllElements); });
}
XSIPLUGINCALLBACK CStatus Quillix_ftoa2_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateListText<float>(context, true, BatchEnd::AllElements); });
}
XSIPLUGINCALLBACK CStatus Quillix_ntoa_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { evaluateNumberText(context); });
}

namespace {

CStatus registerToString(PluginRegistrar& registrar, const wchar_t* name, bool variadic,
                         std::span<const PortDef> ports) {
  return RegisterNode(registrar,
                      {name, siICENodeMultiThreading, 1, variadic ? kUnbounded : 1, ports});
}

}  // namespace

CStatus Quillix_btoa_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_btoa", false, kBoolPorts);
}
CStatus Quillix_btoa2_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_btoa2", true, kBoolPorts);
}
CStatus Quillix_itoa_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_itoa", false, kIntPorts);
}
CStatus Quillix_itoa2_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_itoa2", true, kIntPorts);
}
CStatus Quillix_ftoa_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_ftoa", false, kFloatPorts);
}
CStatus Quillix_ftoa2_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_ftoa2", true, kFloatPorts);
}
CStatus Quillix_ntoa_Register(PluginRegistrar& r) {
  return registerToString(r, L"Quillix_ntoa", false, kNumberPorts);
}
