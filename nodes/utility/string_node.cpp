// The whole-string nodes of the singleton context: Quillix_jstr joins an array of strings with a
// delimiter, Quillix_stoi packs a string into a framed integer array. Both handle element 0
// only and are registered single-threaded.
#include <optional>
#include <string_view>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "plugin/callback_guard.h"
#include "core/text/string_join.h"
#include "core/text/string_pack.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using quillix::plugin::EvaluateGuarded;

namespace {

constexpr ULONG kJoinInputPort = 1010;
constexpr ULONG kDelimiterPort = 1020;
constexpr ULONG kActivePort = 1010;
constexpr ULONG kStringPort = 1620;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kJoinPorts[] = {
    {kJoinInputPort, PortDirection::In, siICENodeDataString, siICENodeStructureAny,
     siICENodeContextSingleton, L"input", L"Input", DefaultString(L""), kNoLink, kNoLink, kNoLink},
    // Registered with the integer 0 as default, which the host shows as an empty delimiter.
    {kDelimiterPort, PortDirection::In, siICENodeDataString, siICENodeStructureSingle,
     siICENodeContextSingleton, L"delimiter", L"Delimiter", DefaultInt(0), kNoLink, kNoLink,
     kNoLink},
    {kResultPort, PortDirection::Out, siICENodeDataString, siICENodeStructureSingle,
     siICENodeContextSingleton, L"string", L"String", NoDefault(), kNoLink, kNoLink, kNoLink},
};

constexpr PortDef kPackPorts[] = {
    {kActivePort, PortDirection::In, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextSingleton, L"Active", L"Active", DefaultBool(true), kNoLink, kNoLink, kNoLink},
    {kStringPort, PortDirection::In, siICENodeDataString, siICENodeStructureSingle,
     siICENodeContextSingleton, L"String", L"String", DefaultString(L""), kNoLink, kNoLink,
     kNoLink},
    {kResultPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureArray,
     siICENodeContextSingleton, L"Array", L"Array", NoDefault(), kNoLink, kNoLink, kNoLink},
};

std::wstring_view stringAt(const CDataArrayString& array, ULONG element) {
  const wchar_t* text = nullptr;
  ULONG length = 0;
  array.GetData(element, &text, length);
  return text != nullptr ? std::wstring_view(text, length) : std::wstring_view();
}

void joinInput(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return;
  CDataArrayString result(context);
  const std::optional<PortInfo> info = QueryPortInfo(context, kJoinInputPort);
  if (!info) {
    result.SetData(0, CString(L"GetPortInfo() failed"));
    return;
  }
  if (!info->IsArray()) {
    const CDataArrayString input(context, kJoinInputPort);
    const std::wstring_view text = stringAt(input, 0);
    result.SetData(0, text.data(), static_cast<ULONG>(text.size()));
    return;
  }
  const CDataArray2DString input(context, kJoinInputPort);
  const CDataArrayString delimiter(context, kDelimiterPort);
  const CDataArray2DString::Accessor strings = input[0];
  std::vector<std::wstring_view> entries(strings.GetCount());
  for (ULONG i = 0; i < strings.GetCount(); ++i) {
    const wchar_t* text = nullptr;
    ULONG length = 0;
    strings.GetData(i, &text, length);
    if (text != nullptr) entries[i] = std::wstring_view(text, length);
  }
  const std::wstring joined = quillix::joinStrings(entries, stringAt(delimiter, 0));
  result.SetData(0, joined.c_str(), static_cast<ULONG>(joined.size()));
}

void packInput(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return;
  const CDataArrayBool active(context, kActivePort);
  const CDataArrayString text(context, kStringPort);
  CDataArray2DLong result(context);
  const bool isActive = active.GetCount() > 0 && active[0];
  const CString string = isActive ? text[0] : CString();
  const std::size_t length = string.Length();
  const std::size_t words = quillix::packedStringLength(isActive, length);
  CDataArray2DLong::Accessor out = result.Resize(0, static_cast<ULONG>(words));
  if (out.GetCount() != words) return;
  // The host's narrow conversion decides what becomes of characters beyond 8 bits.
  quillix::packString(isActive, length, string.GetAsciiString(), {out.GetData(), out.GetCount()});
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_jstr_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { joinInput(context); });
}

XSIPLUGINCALLBACK CStatus Quillix_stoi_Evaluate(ICENodeContext& context) {
  return EvaluateGuarded([&] { packInput(context); });
}

CStatus Quillix_jstr_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_jstr", siICENodeSingleThreading, 1, 1, kJoinPorts});
}

CStatus Quillix_stoi_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_stoi", siICENodeSingleThreading, 1, 1, kPackPorts});
}
